// Adders of the option-file MRU that run at the same time: each update reads, changes and writes the list
// as one, so no addition is lost, whether the adders are threads of one process or several processes.
#include "GuiRegistryTestSupport.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace settingstest;

namespace {

CString adderPath(int adder, int i) {
    CString path;
    path.Format(L"C:\\options\\adder%02d-%03d.opt", adder, i);
    return path;
}

std::vector<std::string> expectedPaths(int adders, int each) {
    std::vector<std::string> out;
    for (int a = 0; a < adders; ++a) {
        for (int i = 0; i < each; ++i)
            out.push_back(utf8(adderPath(a, i)));
    }
    std::sort(out.begin(), out.end());
    return out;
}

// Lets every adder start at once, so that their read-modify-writes overlap.
class StartLine {
public:
    explicit StartLine(int count) : m_nWaiting(count) {}
    // False when the others did not arrive within the time limit.
    bool arrive() {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (--m_nWaiting == 0)
            m_cv.notify_all();
        return m_cv.wait_for(lock, std::chrono::seconds(30), [this] { return m_nWaiting <= 0; });
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_cv;
    int m_nWaiting;
};

} // namespace

TEST_F(GuiRegistryTest, ThreadsAddingToTheMruAtOnceLoseNoPath) {
    // A Win32 mutex belongs to a thread, so threads wait for each other's updates as processes do.
    const int ADDERS = 4;
    const int EACH = 25;
    StartLine start(ADDERS);
    std::atomic<int> added{0};
    std::atomic<int> late{0};
    std::vector<std::thread> threads;
    for (int a = 0; a < ADDERS; ++a) {
        threads.emplace_back([&, a] {
            if (!start.arrive())
                ++late;
            for (int i = 0; i < EACH; ++i)
                added += UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(adderPath(a, i), 0);
        });
    }
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(late.load(), 0);
    EXPECT_EQ(added.load(), ADDERS * EACH);
    EXPECT_EQ(mru(), expectedPaths(ADDERS, EACH));
    EXPECT_EQ(m_log.lines().size(), static_cast<std::size_t>(ADDERS * EACH));
    for (const LogLine& line : m_log.lines())
        EXPECT_EQ(line.level, 'G') << line.text;
}

#if !defined(_WIN32)

TEST_F(GuiRegistryTest, ProcessesAddingToTheMruAtOnceLoseNoPath) {
    const int ADDERS = 4;
    const int EACH = 20;
    int start[2];
    ASSERT_EQ(::pipe(start), 0);
    std::vector<pid_t> children;
    for (int a = 0; a < ADDERS; ++a) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            ::close(start[1]);
            // Released together when the parent closes the pipe.
            char go = 0;
            if (::read(start[0], &go, 1) != 0)
                ::_exit(3);
            int failed = 0;
            for (int i = 0; i < EACH; ++i)
                failed += UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(adderPath(a, i), 0) != 1;
            ::_exit(failed == 0 ? 0 : 1);
        }
        children.push_back(child);
    }
    ::close(start[0]);
    ::close(start[1]);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(120);
    for (pid_t child : children) {
        int status = 0;
        pid_t done = 0;
        while ((done = ::waitpid(child, &status, WNOHANG)) == 0 &&
               std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        if (done == 0) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            ADD_FAILURE() << "adder " << child << " did not end within the time limit";
            continue;
        }
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "adder status " << status;
    }
    EXPECT_EQ(mru(), expectedPaths(ADDERS, EACH));
    EXPECT_EQ(m_log.count(), 0u);
}

#endif

TEST_F(GuiRegistryTest, UpdateNotCommittedLeavesTheValueAsItWas) {
    storeMru({"a.opt"});
    {
        UQRegistryUpdate update(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER);
        UQArray<CString> list;
        list.Add(L"b.opt");
        UQRegistry::mf_setValues(L"BackupOptionFilesMru", list, L"", HKEY_CURRENT_USER);
        EXPECT_EQ(mru(), (std::vector<std::string>{"b.opt"})) << "the update's own thread sees its write";
    }
#if defined(_WIN32)
    // The registry has no transactions: the write landed when it was made.
    EXPECT_EQ(mru(), (std::vector<std::string>{"b.opt"}));
#else
    EXPECT_EQ(mru(), (std::vector<std::string>{"a.opt"}));
#endif
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(GuiRegistryTest, CommittedUpdateKeepsItsWrite) {
    storeMru({"a.opt"});
    {
        UQRegistryUpdate update(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER);
        UQArray<CString> list;
        list.Add(L"b.opt");
        UQRegistry::mf_setValues(L"BackupOptionFilesMru", list, L"", HKEY_CURRENT_USER);
        update.mf_commit();
    }
    EXPECT_EQ(mru(), (std::vector<std::string>{"b.opt"}));
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(GuiRegistryTest, UpdateInAnUnknownHiveIsRefusedAndLogged) {
    EXPECT_EQ(thrownCategory([&] { UQRegistryUpdate update(L"X", L"K", nullptr); }), "_E_::Parameter");
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistryUpdate::UQRegistryUpdate",
                                                    "Unknown registry hive 0000000000000000 for value 'X' in "
                                                    "key 'K'"}}));
}
