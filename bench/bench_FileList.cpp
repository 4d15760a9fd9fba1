// UQFileList against its limit: 1 M UQFileList::mf_add calls of migration entries in ascending path order,
// then mf_close and mf_getList, from one producer thread and from two. The limit is a std::vector of plain
// records filled by the same find-or-add (std::lower_bound on the path, append when absent), under a
// std::mutex when two threads fill it. Each benchmark reports items per second, the items it ended with, the
// resident memory it grew by per item ("bytes_per_item", VmRSS of /proc/self/status before filling and after
// reading the list back), and the list's "vs_limit": its processor time divided by the limit's of the same
// producer count, measured earlier in the same run.
//
// Two producers: the calls are split at a path boundary into a lower and an upper half of the ascending
// sequence, so each producer owns a distinct path range and adds its own range in ascending order, the
// second version of a path right after its first. The two ranges interleave in the list, though, and the
// halving search assumes the whole list ascends: probing an item of the other range sends it the wrong way.
// Both sides therefore also report "missed_merges", the second versions that became items of their own.
#include "guibase/filelist/UQFileList.h"

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t CALL_COUNT = 1'000'000;
constexpr std::uint64_t SEED = 0x46494C45u;
// One path in ten gets a second version right after its first.
constexpr unsigned REPEAT_ONE_IN = 10;

// Windows paths of 40 to 120 characters: a few roots, directory words shared by many paths, mixed case, a
// numbered file name padded with letters, an extension. Drawn from std::mt19937_64 without library
// distributions, so every machine generates the same paths.
class PathGenerator {
public:
    explicit PathGenerator(std::uint64_t _seed) : m_rng(_seed) {}

    std::wstring next() {
        const std::size_t target = 40 + pick(81); // 40..120
        std::wstring path = ROOTS[pick(std::size(ROOTS))];
        const std::wstring ext = EXTENSIONS[pick(std::size(EXTENSIONS))];
        for (;;) {
            std::wstring dir = WORDS[pick(std::size(WORDS))];
            if (pick(4) == 0)
                std::transform(dir.begin(), dir.end(), dir.begin(), [](wchar_t c) {
                    return (c >= L'a' && c <= L'z') ? static_cast<wchar_t>(c - L'a' + L'A') : c;
                });
            if (path.size() + dir.size() + 1 + 8 + ext.size() > target)
                break;
            path += dir;
            path += L'\\';
        }
        const std::size_t stemLength = target - path.size() - ext.size();
        std::wstring stem =
            std::wstring(WORDS[pick(std::size(WORDS))]) + L'_' + std::to_wstring(pick(1000000));
        while (stem.size() < stemLength)
            stem += static_cast<wchar_t>(L'a' + pick(26));
        stem.resize(stemLength);
        return path + stem + ext;
    }

    std::uint64_t pick(std::uint64_t _n) { return m_rng() % _n; }

private:
    static constexpr const wchar_t* ROOTS[] = {
        L"C:\\",       L"D:\\Data\\", L"E:\\", L"\\\\fileserver01\\projects\\", L"\\\\NAS\\archive$\\",
        L"H:\\Home\\",
    };
    static constexpr const wchar_t* WORDS[] = {
        L"Users",     L"Documents",     L"Projects",    L"Archive",  L"Backup",    L"Shared",
        L"Finance",   L"Reports",       L"2019",        L"2020",     L"2021",      L"Q1",
        L"Q4",        L"Customers",     L"Invoices",    L"src",      L"include",   L"Temp",
        L"Common",    L"Program Files", L"Pictures",    L"Daten",    L"Migration", L"Scans",
        L"Contracts", L"Marketing",     L"Engineering", L"Drawings",
    };
    static constexpr const wchar_t* EXTENSIONS[] = {
        L".docx", L".xlsx", L".pdf", L".txt", L".dwg", L".jpg", L".msg", L".zip", L".cpp", L".log",
    };
    std::mt19937_64 m_rng;
};

// The calls of a run: entries in ascending ordinal path order (the order UQFileListItem compares in), a
// tenth of the paths twice in a row with versions 1 and 2. Built once; the text is shared by both sides.
struct Input {
    std::vector<UQCMEntry> entries;
    std::size_t distinctPaths = 0;
    std::size_t split = 0; // the first call of the upper half, at a path boundary
};

const Input& input() {
    static const Input s = [] {
        PathGenerator generator(SEED);
        std::vector<std::wstring> paths;
        paths.reserve(CALL_COUNT);
        for (std::size_t i = 0; i < CALL_COUNT; ++i)
            paths.push_back(generator.next());
        std::sort(paths.begin(), paths.end());
        paths.erase(std::unique(paths.begin(), paths.end()), paths.end());
        Input in;
        in.entries.reserve(CALL_COUNT);
        for (std::size_t p = 0; p < paths.size() && in.entries.size() < CALL_COUNT; ++p) {
            const CString path(paths[p].c_str());
            const UQFileSize size(static_cast<std::int64_t>(generator.pick(1u << 30)));
            const UQFileTime time(132000000000000000ull + generator.pick(10000000000000000ull));
            if (in.split == 0 && in.entries.size() >= CALL_COUNT / 2)
                in.split = in.entries.size();
            in.entries.emplace_back(path, 1, size, time);
            ++in.distinctPaths;
            if (generator.pick(REPEAT_ONE_IN) == 0 && in.entries.size() < CALL_COUNT)
                in.entries.emplace_back(path, 2, UQFileSize(size.mf_getValue() + 4096),
                                        UQFileTime(time.mf_getValue() + 1));
        }
        return in;
    }();
    return s;
}

const CString& resultText(std::size_t _i) {
    static const CString RESULTS[] = {CString(L"Migrated"), CString(L"Migrated (stub kept)"),
                                      CString(L"Skipped: file is in use")};
    return RESULTS[_i % 3 == 2 && _i % 7 == 0 ? 2 : _i % 2];
}

// Resident memory of the process in bytes, after returning freed heap pages to the system so that what one
// side freed does not hide the other side's growth.
double residentBytes() {
    malloc_trim(0);
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line))
        if (line.rfind("VmRSS:", 0) == 0)
            return std::stod(line.substr(6)) * 1024.0;
    return 0;
}

std::map<int, double>& limitSecondsPerItem() {
    static std::map<int, double> s;
    return s;
}

// Process processor time, every thread included.
class CpuClock {
public:
    CpuClock() : m_start(std::clock()) {}
    double seconds() const { return static_cast<double>(std::clock() - m_start) / CLOCKS_PER_SEC; }

private:
    std::clock_t m_start;
};

// Runs _add(first, last) over the calls, on this thread or split over two producer threads.
template <class Add> void produce(int _producers, Add&& _add) {
    const Input& in = input();
    if (_producers == 1) {
        _add(std::size_t{0}, in.entries.size());
        return;
    }
    std::thread lower([&] { _add(std::size_t{0}, in.split); });
    _add(in.split, in.entries.size());
    lower.join();
}

void report(benchmark::State& _state, std::size_t _items, double _bytes, double _cpuSeconds, bool _limit) {
    const Input& in = input();
    const int producers = static_cast<int>(_state.range(0));
    _state.SetItemsProcessed(static_cast<std::int64_t>(_state.iterations() * in.entries.size()));
    _state.counters["items"] = static_cast<double>(_items);
    _state.counters["missed_merges"] = static_cast<double>(_items - in.distinctPaths);
    _state.counters["bytes_per_item"] = _bytes / static_cast<double>(_items);
    const double perIteration = _cpuSeconds / static_cast<double>(_state.iterations());
    if (_limit) {
        limitSecondsPerItem()[producers] = perIteration;
    } else {
        const auto found = limitSecondsPerItem().find(producers);
        if (found != limitSecondsPerItem().end() && found->second > 0)
            _state.counters["vs_limit"] = perIteration / found->second;
    }
}

// ---------------------------------------------------------------------------------------------------------
// The limit

struct LimitVersion {
    std::uint32_t version;
    UQFileSize size;
    UQFileTime time;
};

// What a list item holds: path, first version, result, severity; further versions beside it.
struct LimitRecord {
    CString path;
    std::uint32_t version;
    UQFileSize size;
    UQFileTime time;
    CString result;
    UQSeverity severity;
    std::vector<LimitVersion> further;
};

void BM_FileListLimit(benchmark::State& _state) {
    const Input& in = input();
    const int producers = static_cast<int>(_state.range(0));
    double cpu = 0, bytes = 0;
    std::size_t items = 0;
    for (auto _ : _state) {
        _state.PauseTiming();
        auto records = std::make_unique<std::vector<LimitRecord>>();
        std::mutex lock;
        const double before = residentBytes();
        _state.ResumeTiming();
        CpuClock clock;
        produce(producers, [&](std::size_t first, std::size_t last) {
            for (std::size_t i = first; i < last; ++i) {
                const UQCMEntry& e = in.entries[i];
                const CString& path = e.mf_getUNCPath();
                std::lock_guard<std::mutex> guard(lock);
                const auto found = std::lower_bound(
                    records->begin(), records->end(), path,
                    [](const LimitRecord& r, const CString& p) { return r.path.Compare(p) < 0; });
                if (found != records->end() && found->path.Compare(path) == 0)
                    found->further.push_back({e.mf_getVersion(), e.mf_getSize(), e.mf_getLastWriteTime()});
                else
                    records->push_back({path,
                                        e.mf_getVersion(),
                                        e.mf_getSize(),
                                        e.mf_getLastWriteTime(),
                                        resultText(i),
                                        UQSeverity(),
                                        {}});
            }
        });
        std::vector<const LimitRecord*> list;
        for (const LimitRecord& r : *records)
            list.push_back(&r);
        benchmark::DoNotOptimize(list.data());
        cpu += clock.seconds();
        _state.PauseTiming();
        bytes = residentBytes() - before;
        items = list.size();
        list = {};
        records.reset();
        _state.ResumeTiming();
    }
    report(_state, items, bytes, cpu, true);
}

// ---------------------------------------------------------------------------------------------------------
// The list

void BM_FileList(benchmark::State& _state) {
    const Input& in = input();
    const int producers = static_cast<int>(_state.range(0));
    double cpu = 0, bytes = 0;
    std::size_t items = 0;
    for (auto _ : _state) {
        _state.PauseTiming();
        auto list = std::make_unique<UQFileList>();
        UQFileListItem::Array read;
        const double before = residentBytes();
        _state.ResumeTiming();
        CpuClock clock;
        produce(producers, [&](std::size_t first, std::size_t last) {
            for (std::size_t i = first; i < last; ++i)
                list->mf_add(in.entries[i], resultText(i));
        });
        list->mf_close();
        list->mf_getList(read);
        benchmark::DoNotOptimize(read.GetData());
        cpu += clock.seconds();
        _state.PauseTiming();
        bytes = residentBytes() - before;
        items = static_cast<std::size_t>(read.GetSize());
        read.RemoveAll();
        read.FreeExtra();
        list.reset();
        _state.ResumeTiming();
    }
    report(_state, items, bytes, cpu, false);
}

} // namespace

// Each side's iteration fills a fresh container once; run.sh's repetitions give the spread. Limit first, so
// the list can relate itself to it.
BENCHMARK(BM_FileListLimit)
    ->Arg(1)
    ->Arg(2)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK(BM_FileList)
    ->Arg(1)
    ->Arg(2)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
