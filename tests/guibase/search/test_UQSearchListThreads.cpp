#include "guibase/search/UQSearchList.h"

#include "SearchRecords.h"

#include <atomic>
#include <thread>
#include <vector>

using namespace search_test;

namespace {

constexpr std::uint32_t FILES_PER_PRODUCER = 400;
constexpr std::uint32_t VERSIONS = 3;

// Producer _nProducer adds VERSIONS versions of its own FILES_PER_PRODUCER files, the latest first; every
// tenth file of the second producer is protected.
void produce(UQSearchList& list, int producer) {
    for (std::uint32_t v = VERSIONS; v >= 1; --v) {
        for (std::uint32_t f = 0; f < FILES_PER_PRODUCER; ++f) {
            CString path;
            path.Format(L"\\\\srv\\producer %d\\file %04lu.txt", producer, f);
            const std::uint32_t flags = producer == 2 && f % 10 == 0 ? P : 0;
            list.mf_add(
                UQQueryData(path, CString(), v, writeTime(), UQFileSize(v), flags, noExpiry(), {1, f}));
        }
    }
}

} // namespace

TEST(UQSearchListThreads, TwoProducersAddWhileAnotherThreadPollsTheCount) {
    UQSearchList list;
    std::atomic<bool> done{false};
    std::atomic<int> failures{0};
    std::vector<std::uint32_t> seen;
    std::thread poller([&] {
        std::uint32_t previous = 0;
        while (!done.load()) {
            const std::uint32_t count = list.mf_getQueryItemCount();
            if (count < previous || count > 2 * FILES_PER_PRODUCER * VERSIONS)
                ++failures;
            if (count != previous)
                seen.push_back(count);
            previous = count;
            std::this_thread::yield();
        }
        // On a busy machine the producers may finish before this thread runs at all: the count it reads
        // last is then the first it sees.
        const std::uint32_t last = list.mf_getQueryItemCount();
        if (last != previous)
            seen.push_back(last);
    });
    std::thread first([&] { produce(list, 1); });
    std::thread second([&] { produce(list, 2); });
    first.join();
    second.join();
    done = true;
    poller.join();

    EXPECT_EQ(failures.load(), 0);
    EXPECT_FALSE(seen.empty());
    EXPECT_EQ(list.mf_getQueryItemCount(), 2 * FILES_PER_PRODUCER * VERSIONS);
    EXPECT_EQ(list.mf_hasProtectedItems(), 1);

    LogCheck log;
    list.mf_close();
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'T', "UQSearchList::mf_close",
                                     "Created, sorted and closed search file list (800 files)"}}));
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    ASSERT_EQ(items.GetSize(), 2 * FILES_PER_PRODUCER);
    for (INT_PTR i = 0; i < items.GetSize(); ++i) {
        EXPECT_EQ(utf8(items[i]->mf_getRangesDisplayString()), "1 - 3");
        EXPECT_EQ(items[i]->mf_getSelectedVersion()->mf_getVersion(), VERSIONS);
        if (i > 0) {
            EXPECT_LT(UQPath::mf_compare(items[i - 1]->mf_getPath(), items[i]->mf_getPath()), 0);
        }
    }
    UQSearchFileItem::Array unprotected;
    list.mf_getFileList(unprotected, 0, 1, 0, 1, 0, 1);
    EXPECT_EQ(unprotected.GetSize(), 2 * FILES_PER_PRODUCER - FILES_PER_PRODUCER / 10);
}
