// Producers add from their own threads while others read the count, fail inside locked operations or
// close the list. Threads are joined with time limits; nothing waits by sleeping.
#include "guibase/filelist/UQFileList.h"
#include "guibase/filelist/UQListingFileList.h"
#include "interfaces/korbase_testing.h"

#include "FileListTestSupport.h"

#include <algorithm>
#include <atomic>
#include <set>
#include <vector>

using namespace filelisttest;

namespace {

constexpr int PER_PRODUCER = 3000;
constexpr int TOTAL = 2 * PER_PRODUCER;
const std::chrono::seconds LIMIT(120);

// The outcome of a thread's work: empty when everything went as expected, else what went wrong.
typedef std::future<std::string> Outcome;

template <class F> Outcome start(F f) {
    return std::async(std::launch::async, [f]() -> std::string {
        try {
            return f();
        } catch (const UQErrno& e) {
            return "UQErrno " + utf8(e.mf_toString());
        } catch (...) {
            return "other exception";
        }
    });
}

// A thread that does not finish in time is stuck on a lock; the process cannot go on safely with it.
std::string finish(Outcome& outcome, const char* what) {
    if (outcome.wait_for(LIMIT) != std::future_status::ready) {
        std::fprintf(stderr, "%s did not finish within %lld s\n", what,
                     static_cast<long long>(LIMIT.count()));
        std::abort();
    }
    return outcome.get();
}

CString producerPath(wchar_t drive, int i) {
    CString path;
    path.Format(L"%c:\\data\\%05d.txt", drive, i);
    return path;
}

// Adds PER_PRODUCER entries in ascending path order, version = index + 1.
std::string produce(UQFileList& list, wchar_t drive) {
    for (int i = 0; i < PER_PRODUCER; ++i)
        list.mf_add(
            UQCMEntry(producerPath(drive, i), static_cast<std::uint32_t>(i + 1), UQFileSize(i), testTime()),
            L"Migrated");
    return std::string();
}

// Reads the count until both producers are done: it never goes down and never passes TOTAL.
std::string poll(UQFileListBase& list, const std::atomic<int>& producersLeft, int total) {
    int last = 0;
    for (;;) {
        // Read the flag before the count, so that the last count is taken after every add.
        const bool done = producersLeft.load() == 0;
        const int count = list.mf_getCurrentItemCount();
        if (count < last)
            return "count went down from " + std::to_string(last) + " to " + std::to_string(count);
        if (count > total)
            return "count " + std::to_string(count) + " above " + std::to_string(total);
        last = count;
        if (done)
            return count == total ? std::string() : "final count " + std::to_string(count);
    }
}

// The paths of one drive, in the order in which the list holds them.
std::vector<std::string> pathsOfDrive(const UQFileListItem::Array& items, char drive) {
    std::vector<std::string> out;
    for (const std::string& p : paths(items))
        if (p[0] == drive)
            out.push_back(p);
    return out;
}

std::vector<std::string> expectedPaths(wchar_t drive) {
    std::vector<std::string> out;
    for (int i = 0; i < PER_PRODUCER; ++i)
        out.push_back(utf8(producerPath(drive, i)));
    return out;
}

} // namespace

TEST(FileListConcurrency, TwoProducersAndAPollerThenCloseReadAndSort) {
    LogCheck log;
    UQFileList list;
    std::atomic<int> producersLeft(2);
    Outcome poller = start([&] { return poll(list, producersLeft, TOTAL); });
    Outcome a = start([&] {
        const std::string r = produce(list, L'A');
        --producersLeft;
        return r;
    });
    Outcome b = start([&] {
        const std::string r = produce(list, L'B');
        --producersLeft;
        return r;
    });
    EXPECT_EQ(finish(a, "producer A"), "");
    EXPECT_EQ(finish(b, "producer B"), "");
    EXPECT_EQ(finish(poller, "poller"), "");

    list.mf_close();
    EXPECT_EQ(list.mf_getItemCount(), static_cast<std::uint32_t>(TOTAL));
    ListItems items(list);
    // Every entry became its own item, and each producer's items keep that producer's order.
    EXPECT_EQ(pathsOfDrive(items, 'A'), expectedPaths(L'A'));
    EXPECT_EQ(pathsOfDrive(items, 'B'), expectedPaths(L'B'));

    list.mf_sort(1);
    ListItems sorted(list);
    std::vector<std::string> all = expectedPaths(L'A');
    const std::vector<std::string> second = expectedPaths(L'B');
    all.insert(all.end(), second.begin(), second.end());
    EXPECT_EQ(paths(sorted), all);
    for (INT_PTR i = 0; i < sorted.GetSize(); ++i)
        ASSERT_EQ(sorted[i]->mf_getVersion(), static_cast<std::uint32_t>(i % PER_PRODUCER + 1)) << i;

    list.mf_sortVersions(0);
    EXPECT_EQ(sorted[0]->mf_getVersionIndex(), 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(FileListConcurrency, FailuresInsideLockedOperationsNeverBlockAProducer) {
    LogCheck log;
    UQFileList list;
    std::atomic<int> producersLeft(1);
    constexpr int ROUNDS = 500;
    Outcome producer = start([&] {
        const std::string r = produce(list, L'A');
        --producersLeft;
        return r;
    });
    // Each of these fails inside the lock while the list is open.
    Outcome failing = start([&]() -> std::string {
        for (int i = 0; i < ROUNDS; ++i) {
            UQFileListItem::Array items;
            for (const std::string& c :
                 {thrownCategory([&] { list.mf_getItemCount(); }), thrownCategory([&] { list.mf_sort(1); }),
                  thrownCategory([&] { list.mf_getList(items); })})
                if (c != "_E_::Initialization")
                    return "round " + std::to_string(i) + ": " + c;
        }
        return std::string();
    });
    EXPECT_EQ(finish(failing, "failing thread"), "");
    EXPECT_EQ(finish(producer, "producer"), "");
    EXPECT_EQ(list.mf_getCurrentItemCount(), PER_PRODUCER);

    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(3 * ROUNDS));
    for (std::size_t i = 0; i < lines.size(); i += 3) {
        ASSERT_EQ(lines[i], (LogLine{'E', "UQFileListBase::mf_getItemCount",
                                     "File item list must be close before items can be accessed"}));
        ASSERT_EQ(lines[i + 1], (LogLine{'E', "UQFileListBase::mf_sort",
                                         "File item list must be closed before items can be sorted"}));
        ASSERT_EQ(lines[i + 2], (LogLine{'E', "UQFileListBase::mf_getList",
                                         "File item list must be closed before items can be accessed"}));
    }
}

TEST(FileListConcurrency, InjectedFailuresOnOneProducerLeaveTheOtherUntouched) {
    LogCheck log;
    UQFileList list;
    constexpr int EVERY = 100;
    // Producer A makes every 100th add fail with its own (per-thread) allocation failure.
    Outcome a = start([&]() -> std::string {
        for (int i = 0; i < PER_PRODUCER; ++i) {
            if (i % EVERY == 0)
                UQAllocationInjection::mf_injectFailure(0);
            const std::string c = thrownCategory([&] {
                list.mf_add(UQCMEntry(producerPath(L'A', i), 1, UQFileSize(i), testTime()), L"Migrated");
            });
            if (c != (i % EVERY == 0 ? "_E_::Memory" : "no exception"))
                return "add " + std::to_string(i) + ": " + c;
        }
        return std::string();
    });
    Outcome b = start([&] { return produce(list, L'B'); });
    EXPECT_EQ(finish(a, "producer A"), "");
    EXPECT_EQ(finish(b, "producer B"), "");

    list.mf_close();
    ListItems items(list);
    std::vector<std::string> expectedA;
    for (int i = 0; i < PER_PRODUCER; ++i)
        if (i % EVERY != 0)
            expectedA.push_back(utf8(producerPath(L'A', i)));
    EXPECT_EQ(pathsOfDrive(items, 'A'), expectedA);
    EXPECT_EQ(pathsOfDrive(items, 'B'), expectedPaths(L'B'));
    // Two records for each failed add, both from producer A's thread.
    EXPECT_EQ(log.lines().size(), static_cast<std::size_t>(2 * PER_PRODUCER / EVERY));
}

TEST(FileListConcurrency, CloseWhileAProducerAddsFreezesTheList) {
    LogCheck log;
    UQFileList list;
    std::atomic<int> added(0);
    Outcome producer = start([&]() -> std::string {
        // Adds until refused; the cap only keeps a broken close from filling memory.
        for (int i = 0; i < 1000000; ++i) {
            const std::string c = thrownCategory([&] {
                list.mf_add(UQCMEntry(producerPath(L'A', i), 1, UQFileSize(i), testTime()), L"Migrated");
            });
            if (c == "_E_::AlreadyInitialized")
                return std::string();
            if (c != "no exception")
                return c;
            ++added;
        }
        return std::string("never refused");
    });
    const auto deadline = std::chrono::steady_clock::now() + LIMIT;
    while (list.mf_getCurrentItemCount() < 100 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::yield();
    list.mf_close();
    EXPECT_EQ(finish(producer, "producer"), "");
    EXPECT_GE(added.load(), 100);
    EXPECT_EQ(list.mf_getItemCount(), static_cast<std::uint32_t>(added.load()));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQFileList::mf_add::2", "File item list has already been closed"}}));
}

TEST(FileListConcurrency, ListingEntriesFromAReaderThreadWhileTheGuiThreadPolls) {
    LogCheck log;
    UQListingFileList list;
    std::atomic<int> readersLeft(1);
    const UQSeverity severities[] = {UQSeverity(UVSeverity::GREEN), UQSeverity(UVSeverity::YELLOW),
                                     UQSeverity(UVSeverity::RED)};
    // Every path comes with versions 1 and 2 in a row, so each merges into its item.
    Outcome reader = start([&]() -> std::string {
        UVListingFileReader& listener = list;
        for (int i = 0; i < PER_PRODUCER; ++i)
            for (std::uint32_t v = 1; v <= 2; ++v)
                listener.mf_onMigrationEntry(0, UQFileTime(), producerPath(L'C', i), v, L"Migrated",
                                             severities[i % 3]);
        --readersLeft;
        return std::string();
    });
    Outcome poller = start([&] { return poll(list, readersLeft, PER_PRODUCER); });
    EXPECT_EQ(finish(reader, "reader"), "");
    EXPECT_EQ(finish(poller, "poller"), "");

    list.mf_close();
    UQFileListItem::Array red;
    list.mf_getList(red, 0, 1, 1, 0);
    ASSERT_EQ(red.GetSize(), PER_PRODUCER / 3);
    for (INT_PTR i = 0; i < red.GetSize(); ++i) {
        EXPECT_TRUE(red[i]->mf_getSeverity().mf_isRed());
        EXPECT_EQ(red[i]->mf_getVersionCount(), 2);
    }
    EXPECT_EQ(log.count(), 0u);
}
