// korfiles's merge of file version lines into file list items: many versions of one path, the case that
// sorted an item's versions again for every line added.
#include "FileVersionList.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

namespace {

// The versions 1..n of one path in a scattered order, as lines of a file may list them.
std::vector<FileVersionRecord> onePath(int _nVersions) {
    std::vector<FileVersionRecord> records(static_cast<std::size_t>(_nVersions));
    for (int i = 0; i < _nVersions; ++i) {
        FileVersionRecord& r = records[static_cast<std::size_t>(i)];
        r.sPath = L"C:\\Projects\\Reports\\2024\\q1-summary.docx";
        r.uVersion = static_cast<std::uint32_t>(i + 1);
        r.size = UQFileSize(48213 + i);
        r.lastWriteTime = UQFileTime(132000000000000000ull + static_cast<std::uint64_t>(i) * 10000000ull);
        r.nLine = i + 1;
    }
    std::mt19937 generator(20240307u);
    std::shuffle(records.begin(), records.end(), generator);
    return records;
}

void BM_FileVersionListOnePath(benchmark::State& _state) {
    const std::vector<FileVersionRecord> records = onePath(static_cast<int>(_state.range(0)));
    for (auto _ : _state) {
        FileVersionList list;
        std::string problem;
        for (const FileVersionRecord& r : records)
            list.mf_add(r, problem);
        UQFileListItem::Array items;
        list.mf_getSorted(items, FileListOrder::BY_PATH, 1);
        benchmark::DoNotOptimize(items[0]->mf_getVersion());
    }
    _state.SetItemsProcessed(_state.iterations() * _state.range(0));
}

} // namespace

BENCHMARK(BM_FileVersionListOnePath)->Arg(100000)->Unit(benchmark::kMillisecond);
