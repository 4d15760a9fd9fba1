// Shared setup of the file list tests: entries, readable item dumps and a bounded wait on another thread.
#pragma once

#include "guibase/filelist/UQFileListBase.h"
#include "support/PathList.h"

#include "support/LogCheck.h"
#include "support/TestTime.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

namespace filelisttest {

// 2024-03-07 14:05:09 in every record that shows a time.
inline const UQFileTime& testTime() {
    static const UQFileTime s_time = fileTime(2024, 3, 7, 14, 5, 9);
    return s_time;
}

// The version numbers of an item in array order.
inline std::vector<std::uint32_t> versions(const UQFileListItem& item) {
    UQFileListItem::VersionArray all;
    item.mf_getVersions(all);
    std::vector<std::uint32_t> out;
    for (INT_PTR i = 0; i < all.GetSize(); ++i)
        out.push_back(all[i]->mf_getVersion());
    return out;
}

// The items of a closed list, in list order.
struct ListItems : UQFileListItem::Array {
    explicit ListItems(UQFileListBase& list) { list.mf_getList(*this); }
};

inline std::string errorText(const UQErrnoValue& value) {
    return utf8(UQErrno(value).mf_toString());
}

// Runs f on a new thread and answers the category it threw ("no exception" when it returned). A thread
// that does not finish within the limit is stuck on a lock that was left held; the test cannot go on
// safely with it, so the process ends with a message instead of hanging.
inline std::string categoryOnOtherThread(const std::function<void()>& f,
                                         std::chrono::seconds limit = std::chrono::seconds(30)) {
    std::promise<std::string> done;
    std::future<std::string> result = done.get_future();
    std::thread worker([&] { done.set_value(thrownCategory(f)); });
    if (result.wait_for(limit) != std::future_status::ready) {
        std::fprintf(stderr, "other thread did not finish within %lld s: lock still held\n",
                     static_cast<long long>(limit.count()));
        std::abort();
    }
    worker.join();
    return result.get();
}

} // namespace filelisttest
