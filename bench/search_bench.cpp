// The two sides of the search list benchmark (see search_bench.h). Linux only: each side runs in a forked
// child whose peak resident memory is read from /proc/self/status.
#include "search_bench.h"

#include "compat/afxsortkey.h"
#include "guibase/search/UQSearchList.h"
#include "interfaces/korarchiver.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace search_bench {

namespace {

// Wall-clock and processor time (of every thread of the process) since construction.
class Clock {
public:
    Clock() : m_start(std::chrono::steady_clock::now()), m_cpuStart(cpuNow()) {}
    double seconds() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
    }
    double cpuSeconds() const { return cpuNow() - m_cpuStart; }
    // Records both times of a step.
    void stop(Result& r, Phase phase) const {
        r.seconds[phase] = seconds();
        r.cpuSeconds[phase] = cpuSeconds();
    }

private:
    static double cpuNow() {
        rusage usage;
        getrusage(RUSAGE_SELF, &usage);
        return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
    }

    std::chrono::steady_clock::time_point m_start;
    double m_cpuStart;
};

// A value in B from /proc/self/status ("VmHWM", "VmRSS").
std::uint64_t statusKiB(const char* key) {
    FILE* f = std::fopen("/proc/self/status", "r");
    if (f == nullptr)
        return 0;
    char line[256];
    std::uint64_t value = 0;
    const std::size_t keyLength = std::strlen(key);
    while (std::fgets(line, sizeof line, f) != nullptr) {
        if (std::strncmp(line, key, keyLength) == 0 && line[keyLength] == ':') {
            value = std::strtoull(line + keyLength + 1, nullptr, 10);
            break;
        }
    }
    std::fclose(f);
    return value;
}

// From here on VmHWM counts from the resident memory of now (Linux 4.0 and later).
void resetPeak() {
    if (FILE* f = std::fopen("/proc/self/clear_refs", "w")) {
        std::fputs("5", f);
        std::fclose(f);
    }
}

// The generated history is shared out to the producers by ranges of slots.
std::uint64_t firstSlot(const UQHistoryGenerator& generator, int producer, int producers) {
    return generator.mf_getSlotCount() * static_cast<std::uint64_t>(producer) /
           static_cast<std::uint64_t>(producers);
}

// The exclusion classes of the filter step: deleted files, plain and protected, are left out.
bool isDeleted(bool eventBased, bool deletionStarted) {
    return eventBased && deletionStarted;
}

// FNV-1a over the values that make a result: the sides must agree on every file, version and position.
class Hash {
public:
    void add(std::uint64_t _uValue) {
        for (int i = 0; i < 8; ++i) {
            m_uHash = (m_uHash ^ ((_uValue >> (8 * i)) & 0xFFu)) * 0x100000001B3ull;
        }
    }
    void add(const CString& _sText) {
        for (int i = 0; i < _sText.GetLength(); ++i)
            add(static_cast<std::uint64_t>(_sText[i]));
        add(UINT64_MAX);
    }
    std::uint64_t value() const { return m_uHash; }

private:
    std::uint64_t m_uHash = 0xCBF29CE484222325ull;
};

// ---------------------------------------------------------------------------------------------------------
// The list

class ListSink : public UVQueryDataSink {
public:
    explicit ListSink(UQSearchList& list) : m_list(list) {}
    void mf_onQueryData(const UQQueryData& data) override { m_list.mf_add(data); }

private:
    UQSearchList& m_list;
};

void runList(const UQHistoryGenerator& generator, int producers, Result& r) {
    UQSearchList list;
    {
        Clock clock;
        std::vector<std::thread> threads;
        std::vector<std::uint64_t> added(static_cast<std::size_t>(producers), 0);
        for (int p = 0; p < producers; ++p) {
            threads.emplace_back([&, p] {
                ListSink sink(list);
                added[static_cast<std::size_t>(p)] = generator.mf_generate(
                    firstSlot(generator, p, producers), firstSlot(generator, p + 1, producers), sink);
            });
        }
        for (std::thread& t : threads)
            t.join();
        clock.stop(r, ADD);
        for (std::uint64_t n : added)
            r.records += n;
    }
    {
        Clock clock;
        list.mf_close();
        clock.stop(r, CLOSE);
    }
    {
        Clock clock;
        list.mf_selectLatest();
        clock.stop(r, SELECT_LATEST);
    }
    {
        Clock clock;
        list.mf_sortByPath(0);
        clock.stop(r, SORT_BY_PATH);
    }
    // The views are kept, as a dialog keeps them while it shows them.
    UQSearchFileItem::Array filtered;
    {
        Clock clock;
        list.mf_getFileList(filtered, 0, 0, 0, 0, 1, 1);
        clock.stop(r, FILTERED_LIST);
    }
    UQSearchFileItem::Array selected;
    {
        Clock clock;
        list.mf_getSelectedFileList(selected, 1);
        clock.stop(r, ACCESS_ORDER);
    }
    r.peakKiB = statusKiB("VmHWM");
    r.files = list.mf_getFileItemCount();
    r.filtered = static_cast<std::uint64_t>(filtered.GetSize());
    r.selected = static_cast<std::uint64_t>(selected.GetSize());
    Hash filteredHash;
    for (INT_PTR i = 0; i < filtered.GetSize(); ++i) {
        filteredHash.add(filtered[i]->mf_getQueryData().mf_getObjectPath());
        UQSearchFileItem::VersionArray versions;
        filtered[i]->mf_getVersions(1, versions);
        for (INT_PTR v = 0; v < versions.GetSize(); ++v)
            filteredHash.add(versions[v]->mf_getVersion());
    }
    r.filteredHash = filteredHash.value();
    Hash selectedHash;
    for (INT_PTR i = 0; i < selected.GetSize(); ++i) {
        const UQQueryData& data = *selected[i]->mf_getSelectedVersion()->mf_getQueryData();
        selectedHash.add(data.mf_getObjectPath());
        selectedHash.add(data.mf_getVersion());
        selectedHash.add(data.mf_getAccessKey().uVolume);
        selectedHash.add(data.mf_getAccessKey().uPosition);
    }
    r.selectedHash = selectedHash.value();
}

// ---------------------------------------------------------------------------------------------------------
// Plain records in one vector, filled by the producers without a lock, as both plain sides keep them.

struct Record {
    CString path;
    std::uint32_t version;
    std::uint32_t flags;
    std::uint64_t lastWriteTime;
    std::int64_t size;
    std::uint64_t expiry;
    std::uint32_t volume;
    std::uint64_t position;
};

struct Group {
    std::uint32_t first;    // index of the oldest record
    std::uint32_t count;    // records of the file
    std::uint32_t selected; // index of the selected record, or UINT32_MAX
};

class VectorSink : public UVQueryDataSink {
public:
    explicit VectorSink(Record* out) : m_out(out) {}
    void mf_onQueryData(const UQQueryData& data) override {
        Record& r = *m_out++;
        r.path = data.mf_getObjectPath();
        r.version = data.mf_getVersion();
        r.flags = data.mf_getFlags();
        r.lastWriteTime = data.mf_getLastWriteTime().mf_getValue();
        r.size = data.mf_getSize().mf_getValue();
        r.expiry = data.mf_getExpiryTime().uFileTime;
        r.volume = data.mf_getAccessKey().uVolume;
        r.position = data.mf_getAccessKey().uPosition;
    }

private:
    Record* m_out;
};

// Fills _rRecords from the producers, each into its own part of a vector sized beforehand.
void addRecords(const UQHistoryGenerator& generator, int producers, std::vector<Record>& records, Result& r) {
    // Where each producer writes: counted before the clock starts, so the limit never grows its vector.
    std::vector<std::uint64_t> offsets(static_cast<std::size_t>(producers) + 1, 0);
    for (int p = 0; p < producers; ++p)
        offsets[static_cast<std::size_t>(p) + 1] =
            offsets[static_cast<std::size_t>(p)] +
            generator.mf_countRecords(firstSlot(generator, p, producers),
                                      firstSlot(generator, p + 1, producers));
    records.resize(static_cast<std::size_t>(offsets.back()));
    {
        Clock clock;
        std::vector<std::thread> threads;
        for (int p = 0; p < producers; ++p) {
            threads.emplace_back([&, p] {
                VectorSink sink(records.data() + offsets[static_cast<std::size_t>(p)]);
                generator.mf_generate(firstSlot(generator, p, producers),
                                      firstSlot(generator, p + 1, producers), sink);
            });
        }
        for (std::thread& t : threads)
            t.join();
        clock.stop(r, ADD);
        r.records = records.size();
    }
}

// Hashes of the plain sides' results, as the list's are made.
template <class PathOf>
void hashResults(const std::vector<Record>& records, const std::vector<const Group*>& filtered,
                 const std::vector<const Group*>& selected, const PathOf& pathOf, Result& r) {
    Hash filteredHash;
    for (const Group* g : filtered) {
        filteredHash.add(records[pathOf(g->first + g->count - 1)].path);
        for (std::uint32_t v = 0; v < g->count; ++v)
            filteredHash.add(records[pathOf(g->first + v)].version);
    }
    r.filteredHash = filteredHash.value();
    Hash selectedHash;
    for (const Group* g : selected) {
        const Record& x = records[pathOf(g->selected)];
        selectedHash.add(x.path);
        selectedHash.add(x.version);
        selectedHash.add(x.volume);
        selectedHash.add(x.position);
    }
    r.selectedHash = selectedHash.value();
}

// ---------------------------------------------------------------------------------------------------------
// The std:: reference: std::sort with UQPath::mf_compare, folding every character at every comparison.

void runStdReference(const UQHistoryGenerator& generator, int producers, Result& r) {
    std::vector<Record> records;
    addRecords(generator, producers, records, r);
    std::vector<Group> groups;
    {
        Clock clock;
        std::sort(records.begin(), records.end(), [](const Record& a, const Record& b) {
            const int c = UQPath::mf_compare(a.path, b.path);
            return c != 0 ? c < 0 : a.version < b.version;
        });
        for (std::size_t i = 0; i < records.size(); ++i) {
            if (i == 0 || UQPath::mf_compare(records[i - 1].path, records[i].path) != 0)
                groups.push_back(Group{static_cast<std::uint32_t>(i), 0, UINT32_MAX});
            ++groups.back().count;
        }
        clock.stop(r, CLOSE);
    }
    {
        Clock clock;
        for (Group& g : groups)
            g.selected = g.first + g.count - 1;
        clock.stop(r, SELECT_LATEST);
    }
    {
        Clock clock;
        std::sort(groups.begin(), groups.end(), [&records](const Group& a, const Group& b) {
            return UQPath::mf_compare(records[a.selected].path, records[b.selected].path) > 0;
        });
        clock.stop(r, SORT_BY_PATH);
    }
    std::vector<const Group*> filtered;
    {
        Clock clock;
        for (const Group& g : groups) {
            const Record& latest = records[g.first + g.count - 1];
            if (!isDeleted((latest.flags & UQQueryData::FLAG_EVENT_BASED) != 0,
                           (latest.flags & UQQueryData::FLAG_DELETION_STARTED) != 0))
                filtered.push_back(&g);
        }
        clock.stop(r, FILTERED_LIST);
    }
    std::vector<const Group*> selected;
    {
        Clock clock;
        for (const Group& g : groups)
            if (g.selected != UINT32_MAX)
                selected.push_back(&g);
        std::sort(selected.begin(), selected.end(), [&records](const Group* a, const Group* b) {
            const Record& x = records[a->selected];
            const Record& y = records[b->selected];
            if (x.volume != y.volume)
                return x.volume < y.volume;
            if (x.position != y.position)
                return x.position < y.position;
            const int c = UQPath::mf_compare(x.path, y.path);
            return c != 0 ? c < 0 : x.version < y.version;
        });
        clock.stop(r, ACCESS_ORDER);
    }
    r.files = groups.size();
    r.filtered = filtered.size();
    r.selected = selected.size();
    r.peakKiB = statusKiB("VmHWM");
    hashResults(
        records, filtered, selected, [](std::uint32_t _i) { return _i; }, r);
}

// ---------------------------------------------------------------------------------------------------------
// The limit: each path folded once into an order key (the exact order of UQPath::mf_compare), keys built
// and sorted on both cores, groups found by comparing neighbouring keys.

// Runs _work(from, to) over [0, _nCount) on this thread and a second one, each on one half.
template <class Work> void onTwoThreads(std::size_t _nCount, const Work& _work) {
    std::thread other([&] { _work(_nCount / 2, _nCount); });
    _work(0, _nCount / 2);
    other.join();
}

void runLimit(const UQHistoryGenerator& generator, int producers, Result& r) {
    std::vector<Record> records;
    addRecords(generator, producers, records, r);
    // Sorted keys of the records; a group's indices point into them, and uIndex to the record.
    std::vector<AfxSortKey> keys;
    std::vector<std::uint16_t> arena;
    std::vector<Group> groups;
    {
        Clock clock;
        const std::size_t n = records.size();
        keys.resize(n);
        std::uint64_t units = 0;
        for (std::size_t i = 0; i < n; ++i) {
            keys[i].uOffset = static_cast<std::uint32_t>(units);
            units += AfxSortKeyTailUnits(records[i].path.GetLength());
        }
        if (units > UINT32_MAX)
            throw std::runtime_error("the keys do not fit 32-bit offsets");
        arena.resize(static_cast<std::size_t>(units) + 1);
        onTwoThreads(n, [&](std::size_t _from, std::size_t _to) {
            for (std::size_t i = _from; i < _to; ++i) {
                const CString& path = records[i].path;
                if (!AfxMakeSortKey(path.GetString(), path.GetLength(), AFX_KEY_PATH, arena.data(),
                                    keys[i].uOffset, keys[i]))
                    std::abort();
                keys[i].uTie = records[i].version;
                keys[i].uIndex = static_cast<std::uint32_t>(i);
            }
        });
        AfxSortByKeys(keys.data(), n, arena.data(), 0);
        for (std::size_t i = 0; i < n; ++i) {
            if (i == 0 || AfxCompareSortKeys(arena.data(), keys[i - 1], keys[i]) != 0)
                groups.push_back(Group{static_cast<std::uint32_t>(i), 0, UINT32_MAX});
            ++groups.back().count;
        }
        clock.stop(r, CLOSE);
    }
    {
        Clock clock;
        for (Group& g : groups)
            g.selected = g.first + g.count - 1;
        clock.stop(r, SELECT_LATEST);
    }
    {
        Clock clock;
        // The close left the groups ascending by key, and no two keys are equal: descending is the
        // same order turned round.
        std::reverse(groups.begin(), groups.end());
        clock.stop(r, SORT_BY_PATH);
    }
    std::vector<const Group*> filtered;
    {
        Clock clock;
        for (const Group& g : groups) {
            const Record& latest = records[keys[g.first + g.count - 1].uIndex];
            if (!isDeleted((latest.flags & UQQueryData::FLAG_EVENT_BASED) != 0,
                           (latest.flags & UQQueryData::FLAG_DELETION_STARTED) != 0))
                filtered.push_back(&g);
        }
        clock.stop(r, FILTERED_LIST);
    }
    std::vector<const Group*> selected;
    {
        Clock clock;
        // The sort keys side by side, so that no comparison reads a record. The groups stand descending
        // by path, all paths different: a group's place decides a tie of volume and position as its path
        // would.
        struct Access {
            std::uint64_t position;
            std::uint32_t volume;
            std::uint32_t rank;
        };
        std::vector<Access> access;
        access.reserve(groups.size());
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const Group& g = groups[i];
            if (g.selected == UINT32_MAX)
                continue;
            const Record& x = records[keys[g.selected].uIndex];
            access.push_back(Access{x.position, x.volume, static_cast<std::uint32_t>(groups.size() - 1 - i)});
        }
        std::sort(access.begin(), access.end(), [](const Access& a, const Access& b) {
            if (a.volume != b.volume)
                return a.volume < b.volume;
            if (a.position != b.position)
                return a.position < b.position;
            return a.rank < b.rank;
        });
        selected.reserve(access.size());
        for (const Access& a : access)
            selected.push_back(&groups[groups.size() - 1 - a.rank]);
        clock.stop(r, ACCESS_ORDER);
    }
    r.files = groups.size();
    r.filtered = filtered.size();
    r.selected = selected.size();
    r.peakKiB = statusKiB("VmHWM");
    hashResults(
        records, filtered, selected, [&keys](std::uint32_t _i) { return keys[_i].uIndex; }, r);
}

Result runSide(Side side, std::uint32_t files, int producers) {
    Result r;
    std::memset(&r, 0, sizeof r);
    resetPeak();
    r.baselineKiB = statusKiB("VmRSS");
    try {
        const UQHistoryGenerator generator(files, 1);
        if (side == LIST)
            runList(generator, producers, r);
        else if (side == LIMIT)
            runLimit(generator, producers, r);
        else
            runStdReference(generator, producers, r);
        for (int phase = 0; phase < PHASES; ++phase) {
            r.total += r.seconds[phase];
            r.cpuTotal += r.cpuSeconds[phase];
        }
        r.ok = 1;
    } catch (const UQErrno& e) {
        std::snprintf(r.error, sizeof r.error, "%s", e.mf_toString().ToUtf8().c_str());
    } catch (const std::exception& e) {
        std::snprintf(r.error, sizeof r.error, "%s", e.what());
    } catch (...) {
        std::snprintf(r.error, sizeof r.error, "unexpected exception");
    }
    return r;
}

} // namespace

const char* phaseName(int phase) {
    static const char* const names[PHASES] = {
        "add", "close", "select_latest", "sort_path_desc", "filtered_list", "access_order"};
    return phase >= 0 && phase < PHASES ? names[phase] : "?";
}

Result runInChildProcess(Side side, std::uint32_t files, int producers) {
    Result r;
    std::memset(&r, 0, sizeof r);
    int fds[2];
    if (pipe(fds) != 0) {
        std::snprintf(r.error, sizeof r.error, "pipe failed");
        return r;
    }
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child < 0) {
        close(fds[0]);
        close(fds[1]);
        std::snprintf(r.error, sizeof r.error, "fork failed");
        return r;
    }
    if (child == 0) {
        close(fds[0]);
        const Result measured = runSide(side, files, producers);
        const char* p = reinterpret_cast<const char*>(&measured);
        std::size_t left = sizeof measured;
        while (left > 0) {
            const ssize_t n = write(fds[1], p, left);
            if (n <= 0)
                break;
            p += n;
            left -= static_cast<std::size_t>(n);
        }
        _exit(0);
    }
    close(fds[1]);
    char* p = reinterpret_cast<char*>(&r);
    std::size_t got = 0;
    while (got < sizeof r) {
        const ssize_t n = read(fds[0], p + got, sizeof r - got);
        if (n <= 0)
            break;
        got += static_cast<std::size_t>(n);
    }
    close(fds[0]);
    int status = 0;
    waitpid(child, &status, 0);
    if (got != sizeof r) {
        std::memset(&r, 0, sizeof r);
        std::snprintf(r.error, sizeof r.error, "the side's process ended without a result (status %d)",
                      status);
    }
    return r;
}

} // namespace search_bench
