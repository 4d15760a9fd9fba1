// UQSearchList against its limit over a generated history of 1 M and 10 M query records (about a third as
// many files of 1 to 5 versions, paths of 60 to 130 characters), added from two threads, then closed,
// selected, sorted by path descending, filtered and listed in access order. Three sides, each in a process
// of its own (search_bench.cpp), run in this order: the limit (order keys folded once per record, both
// cores), the std:: reference (std::sort with the per-character UQPath::mf_compare) and the list. The list
// must give exactly the results of both (files, versions, filter, selection and access order, compared by
// hash) and reports its time and peak memory relative to each: "vs_limit" on wall-clock time,
// "cpu_vs_limit" on processor time of all threads, "mem_vs_limit" (goals 1.3, -, 1.3), and "vs_std",
// "cpu_vs_std", "mem_vs_std" against the reference. Counters: wall-clock ("s_") and processor ("cpu_")
// seconds per step, the list's step times over the limit's ("x_"), peak resident memory in MiB (the
// process's VmHWM) and the part of it the side added to the process it started in ("MiB_own", which the
// memory ratios use). The benchmark's own Time is the wall-clock total; its CPU column is the parent's,
// which only waits.
#include "search_bench.h"

#include <benchmark/benchmark.h>

#include <map>
#include <string>

namespace {

using search_bench::Result;

constexpr int PRODUCERS = 2;

// The plain sides' results per history size, so that the list can relate itself to them.
std::map<std::uint32_t, Result>& results(search_bench::Side side) {
    static std::map<std::uint32_t, Result> m[3];
    return m[side];
}

bool sameResults(const Result& a, const Result& b) {
    return a.files == b.files && a.filtered == b.filtered && a.selected == b.selected &&
           a.filteredHash == b.filteredHash && a.selectedHash == b.selectedHash;
}

// The list's ratios to a plain side, under counter names ending in the suffix.
void relate(benchmark::State& state, const Result& r, const Result& l, const std::string& suffix,
            bool steps) {
    state.counters["vs_" + suffix] = r.total / l.total;
    state.counters["cpu_vs_" + suffix] = r.cpuTotal / l.cpuTotal;
    state.counters["mem_vs_" + suffix] =
        static_cast<double>(r.peakKiB - r.baselineKiB) / static_cast<double>(l.peakKiB - l.baselineKiB);
    if (!steps)
        return;
    for (int phase = 0; phase < search_bench::PHASES; ++phase)
        if (l.seconds[phase] > 0)
            state.counters[std::string("x_") + search_bench::phaseName(phase)] =
                r.seconds[phase] / l.seconds[phase];
}

void report(benchmark::State& state, const Result& r) {
    for (int phase = 0; phase < search_bench::PHASES; ++phase) {
        state.counters[std::string("s_") + search_bench::phaseName(phase)] = r.seconds[phase];
        state.counters[std::string("cpu_") + search_bench::phaseName(phase)] = r.cpuSeconds[phase];
    }
    state.counters["cpu_total"] = r.cpuTotal;
    state.counters["records"] = static_cast<double>(r.records);
    state.counters["files"] = static_cast<double>(r.files);
    state.counters["MiB_peak"] = static_cast<double>(r.peakKiB) / 1024.0;
    state.counters["MiB_own"] = static_cast<double>(r.peakKiB - r.baselineKiB) / 1024.0;
}

void run(benchmark::State& state, search_bench::Side side) {
    const std::uint32_t files = static_cast<std::uint32_t>(state.range(0));
    for (auto _ : state) {
        const Result r = search_bench::runInChildProcess(side, files, PRODUCERS);
        if (!r.ok) {
            state.SkipWithError(r.error);
            return;
        }
        state.SetIterationTime(r.total);
        report(state, r);
        if (side != search_bench::LIST) {
            results(side)[files] = r;
            continue;
        }
        const auto limit = results(search_bench::LIMIT).find(files);
        if (limit != results(search_bench::LIMIT).end()) {
            if (!sameResults(r, limit->second)) {
                state.SkipWithError("the list and the limit disagree on the files");
                return;
            }
            relate(state, r, limit->second, "limit", true);
        }
        const auto reference = results(search_bench::STD_REFERENCE).find(files);
        if (reference != results(search_bench::STD_REFERENCE).end()) {
            if (!sameResults(r, reference->second)) {
                state.SkipWithError("the list and the std:: reference disagree on the files");
                return;
            }
            relate(state, r, reference->second, "std", false);
        }
    }
}

void BM_SearchLimit(benchmark::State& state) {
    run(state, search_bench::LIMIT);
}
void BM_SearchStdReference(benchmark::State& state) {
    run(state, search_bench::STD_REFERENCE);
}
void BM_SearchList(benchmark::State& state) {
    run(state, search_bench::LIST);
}

// 333,333 files give about 1 M records, 3,333,333 about 10 M.
BENCHMARK(BM_SearchLimit)
    ->Arg(333333)
    ->Arg(3333333)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
BENCHMARK(BM_SearchStdReference)
    ->Arg(333333)
    ->Arg(3333333)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);
BENCHMARK(BM_SearchList)
    ->Arg(333333)
    ->Arg(3333333)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(1);

} // namespace
