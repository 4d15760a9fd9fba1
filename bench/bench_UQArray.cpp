// UQArray against the standard library: appending pointers one by one (MFC's capped growth step against
// std::vector's doubling) and the case-blind sort of a large path list (qsort over a pointer array against
// std::sort). Every benchmark reports wall-clock and CPU time per iteration; the UQArray ones also report
// "vs_std", their CPU time divided by the CPU time of the std:: counterpart measured earlier in the same run.
// CPU time, because on a shared machine it does not count the time other processes hold the core.
#include "compat/afxsortkey.h"
#include "interfaces/korbase.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr std::int64_t APPEND_COUNT = 10'000'000;
constexpr std::size_t SORT_COUNT = 1'000'000;
constexpr std::int64_t SORT_ITERATIONS = 4;
constexpr std::uint64_t START_VALUE = 0x4B4F5247u;

// CPU seconds per iteration of each subject, so a UQArray benchmark can relate itself to the
// std:: benchmark that ran before it.
std::map<std::string, double>& secondsPerIteration() {
    static std::map<std::string, double> s;
    return s;
}

class CpuClock {
public:
    CpuClock() : m_start(std::clock()) {}
    double seconds() const { return static_cast<double>(std::clock() - m_start) / CLOCKS_PER_SEC; }

private:
    std::clock_t m_start;
};

void record(benchmark::State& state, const std::string& subject, const std::string& baseline,
            double seconds) {
    if (state.iterations() == 0)
        return;
    const double perIteration = seconds / static_cast<double>(state.iterations());
    secondsPerIteration()[subject] = perIteration;
    const auto found = secondsPerIteration().find(baseline);
    if (!baseline.empty() && found != secondsPerIteration().end() && found->second > 0)
        state.counters["vs_std"] = perIteration / found->second;
}

// ---------------------------------------------------------------------------------------------------------
// Appending

void BM_VectorPushBack(benchmark::State& state) {
    double seconds = 0;
    for (auto _ : state) {
        CpuClock clock;
        std::vector<void*> v;
        for (std::int64_t i = 0; i < APPEND_COUNT; ++i)
            v.push_back(reinterpret_cast<void*>(static_cast<std::intptr_t>(i)));
        benchmark::DoNotOptimize(v.data());
        benchmark::ClobberMemory();
        v = std::vector<void*>(); // freeing belongs to the cost of the container, as for UQArray
        seconds += clock.seconds();
    }
    record(state, "append/std", "", seconds);
    state.SetItemsProcessed(state.iterations() * APPEND_COUNT);
}

void BM_UQArrayAdd(benchmark::State& state) {
    double seconds = 0;
    INT_PTR allocSize = 0;
    for (auto _ : state) {
        CpuClock clock;
        {
            UQArray<void*, void*> a;
            for (std::int64_t i = 0; i < APPEND_COUNT; ++i)
                a.Add(reinterpret_cast<void*>(static_cast<std::intptr_t>(i)));
            benchmark::DoNotOptimize(a.GetData());
            benchmark::ClobberMemory();
            allocSize = a.GetAllocSize();
        }
        seconds += clock.seconds();
    }
    record(state, "append/UQArray", "append/std", seconds);
    state.SetItemsProcessed(state.iterations() * APPEND_COUNT);
    state.counters["capacity"] = static_cast<double>(allocSize);
}

// ---------------------------------------------------------------------------------------------------------
// Sorting

// Windows paths as a file list shows them: a few roots, directory names repeated across many paths (long
// common prefixes make the comparisons realistic), mixed case, some non-ASCII names, 30 to 120 characters.
class PathGenerator {
public:
    explicit PathGenerator(std::uint64_t _seed) : m_rng(_seed) {}

    std::wstring next() {
        const std::size_t target = 30 + pick(91); // 30..120
        std::wstring path = ROOTS[pick(std::size(ROOTS))];
        const std::wstring ext = EXTENSIONS[pick(std::size(EXTENSIONS))];
        for (;;) {
            const std::wstring dir = withCase(WORDS[pick(std::size(WORDS))]);
            if (path.size() + dir.size() + 1 + 4 + ext.size() > target)
                break;
            path += dir;
            path += L'\\';
        }
        // The file name fills the path to its length: a word, a number, random letters if still short.
        const std::size_t stemLength = target - path.size() - ext.size();
        std::wstring stem = withCase(WORDS[pick(std::size(WORDS))]) + L'_' + std::to_wstring(pick(100000));
        while (stem.size() < stemLength)
            stem += FILL[pick(std::size(FILL) - 1)];
        stem.resize(stemLength);
        return path + stem + ext;
    }

private:
    static constexpr const wchar_t* ROOTS[] = {
        L"C:\\",       L"D:\\Data\\", L"E:\\", L"\\\\fileserver01\\projects\\", L"\\\\NAS\\archive$\\",
        L"H:\\Home\\",
    };
    static constexpr const wchar_t* WORDS[] = {
        L"Users",
        L"Documents",
        L"Projects",
        L"Archive",
        L"Backup",
        L"Shared",
        L"Finance",
        L"Reports",
        L"2019",
        L"2020",
        L"2021",
        L"Q1",
        L"Q4",
        L"Customers",
        L"Invoices",
        L"src",
        L"include",
        L"Temp",
        L"Program Files",
        L"Common",
        L"Pictures",
        L"Urlaub",
        L"Daten",
        L"Migration",
        L"Volume01",
        L"Projekt_Alpha",
        L"build",
        L"release",
        L"Meeting",
        L"Minutes",
        L"Contracts",
        L"Scans",
        L"Mail",
        L"Exports",
        L"Marketing",
        L"\u00DCbersicht",
        L"R\u00E9sum\u00E9s",
        L"Entw\u00FCrfe",
        L"\u0416\u0443\u0440\u043D\u0430\u043B",
        L"Stra\u00DFe",
        L"Offers",
        L"Designs",
        L"Legacy",
        L"old",
        L"New Folder",
        L"copy of data",
    };
    static constexpr const wchar_t* EXTENSIONS[] = {
        L".docx", L".pdf", L".txt", L".xlsx", L".jpg", L".log", L".cpp", L".h", L".msg", L".zip",
    };
    static constexpr wchar_t FILL[] = L"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

    std::size_t pick(std::size_t _n) { return static_cast<std::size_t>(m_rng() % _n); }

    // Mostly as written, sometimes all lower or all upper case, as names typed by different people are.
    std::wstring withCase(const wchar_t* _psz) {
        CString s(_psz);
        const std::size_t r = pick(10);
        if (r == 0)
            s.MakeLower();
        else if (r == 1)
            s.MakeUpper();
        return std::wstring(s.GetString(), static_cast<std::size_t>(s.GetLength()));
    }

    std::mt19937_64 m_rng; // fully specified by the standard: the same list on every machine
};

const std::vector<CString>& unsortedPaths() {
    static const std::vector<CString> paths = [] {
        PathGenerator gen(START_VALUE);
        std::vector<CString> v;
        v.reserve(SORT_COUNT);
        for (std::size_t i = 0; i < SORT_COUNT; ++i)
            v.emplace_back(gen.next());
        return v;
    }();
    return paths;
}

bool lessNoCase(const CString& _a, const CString& _b) {
    return _a.CompareNoCase(_b) < 0;
}

template <class It> bool sortedNoCase(It _first, It _last) {
    return std::is_sorted(_first, _last, lessNoCase);
}

void BM_StdSortNoCase(benchmark::State& state) {
    const std::vector<CString>& source = unsortedPaths();
    // One unsorted copy per iteration, made before the clock runs.
    std::vector<std::vector<CString>> copies(static_cast<std::size_t>(state.max_iterations), source);
    std::size_t k = 0;
    double seconds = 0;
    for (auto _ : state) {
        CpuClock clock;
        std::vector<CString>& v = copies[k++];
        std::sort(v.begin(), v.end(), lessNoCase);
        benchmark::DoNotOptimize(v.data());
        seconds += clock.seconds();
    }
    if (!sortedNoCase(copies[0].begin(), copies[0].end()))
        state.SkipWithError("std::sort left the paths out of order");
    record(state, "sort/std", "", seconds);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(SORT_COUNT));
}

// The limit of a case-blind sort of strings: each string folded once into an order key (on two threads),
// the keys sorted on two threads (compat/afxsortkey.h), and the strings moved into that order. Argument 1:
// the keys' MSD radix sort (four key units a round); 0: std::sort comparing the first four units as a
// number, then memcmp.
void BM_KeyedSortLimit(benchmark::State& state) {
    const unsigned flags = state.range(0) != 0 ? 0u : static_cast<unsigned>(AFX_SORT_BY_COMPARISON);
    const std::vector<CString>& source = unsortedPaths();
    std::vector<std::vector<CString>> copies(static_cast<std::size_t>(state.max_iterations), source);
    std::size_t k = 0;
    for (auto _ : state) {
        std::vector<CString>& v = copies[k++];
        const std::size_t n = v.size();
        std::vector<AfxSortKey> keys(n);
        std::uint32_t units = 0;
        for (std::size_t i = 0; i < n; ++i) {
            keys[i].uOffset = units;
            units += static_cast<std::uint32_t>(AfxSortKeyTailUnits(v[i].GetLength()));
        }
        std::vector<std::uint16_t> arena(units + 1u);
        auto build = [&](std::size_t _from, std::size_t _to) {
            for (std::size_t i = _from; i < _to; ++i) {
                if (!AfxMakeSortKey(v[i].GetString(), v[i].GetLength(), AFX_KEY_NOCASE, arena.data(),
                                    keys[i].uOffset, keys[i]))
                    std::abort();
                keys[i].uTie = 0;
                keys[i].uIndex = static_cast<std::uint32_t>(i);
            }
        };
        AfxRunOnTwoThreads(n, build);
        AfxSortByKeys(keys.data(), n, arena.data(), flags);
        std::vector<CString> sorted(n);
        for (std::size_t i = 0; i < n; ++i)
            sorted[i] = std::move(v[keys[i].uIndex]);
        v.swap(sorted);
        benchmark::DoNotOptimize(v.data());
    }
    if (!sortedNoCase(copies[0].begin(), copies[0].end()))
        state.SkipWithError("the keyed sort left the paths out of order");
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(SORT_COUNT));
}

void BM_UQArraySortPointerArray(benchmark::State& state) {
    const std::vector<CString>& source = unsortedPaths();
    std::vector<std::unique_ptr<UQArray<CString, const CString&>>> copies;
    for (std::int64_t i = 0; i < state.max_iterations; ++i) {
        auto a = std::make_unique<UQArray<CString, const CString&>>();
        a->SetSize(static_cast<INT_PTR>(source.size()));
        for (std::size_t j = 0; j < source.size(); ++j)
            (*a)[static_cast<INT_PTR>(j)] = source[j];
        copies.push_back(std::move(a));
    }
    std::size_t k = 0;
    double seconds = 0;
    for (auto _ : state) {
        CpuClock clock;
        UQArray<CString, const CString&>& a = *copies[k++];
        a.mf_sortPointerArray();
        benchmark::DoNotOptimize(a.GetData());
        seconds += clock.seconds();
    }
    const UQArray<CString, const CString&>& first = *copies[0];
    if (!sortedNoCase(first.GetData(), first.GetData() + first.GetSize()))
        state.SkipWithError("mf_sortPointerArray left the paths out of order");
    record(state, "sort/UQArray", "sort/std", seconds);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(SORT_COUNT));
}

} // namespace

// Each pair runs the std:: baseline first so the UQArray benchmark can report its ratio.
BENCHMARK(BM_VectorPushBack)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_UQArrayAdd)->Unit(benchmark::kMillisecond)->MinTime(2.0);
BENCHMARK(BM_StdSortNoCase)->Unit(benchmark::kMillisecond)->Iterations(SORT_ITERATIONS);
BENCHMARK(BM_KeyedSortLimit)
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(SORT_ITERATIONS)
    ->UseRealTime();
BENCHMARK(BM_UQArraySortPointerArray)->Unit(benchmark::kMillisecond)->Iterations(SORT_ITERATIONS);

BENCHMARK_MAIN();
