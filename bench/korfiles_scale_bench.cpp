// korfiles search '*' over large realistic histories: time and peak memory of the program against the size
// of the store file, against the search list's own memory, and against its limit, a plain program that
// reads the same store and prints the same table. Linux only; each side runs in a process of its own.
//
//   korfiles_scale_bench RECORDS [DIRECTORY]
//
// writes DIRECTORY/history-RECORDS.txt (kept for later runs) and the outputs beside it, checks that the
// program and the limit printed the same bytes, prints the ratios and exits with 1 when the program's peak
// memory exceeds three times the store file.
#include "realistic_history.h"

#include "guibase/search/UQSearchList.h"
#include "interfaces/korarchiver.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <unordered_set>
#include <vector>

namespace {

const double MEMORY_GOAL = 3.0; // peak memory of the program at most this many times the store file

struct Measure {
    int ok = 0;
    double seconds = 0;
    double cpuSeconds = 0;
    std::uint64_t peakKiB = 0;
    std::uint64_t files = 0;
    std::uint64_t versions = 0;
    char error[200] = {};
};

std::uint64_t statusKiB(const char* _pszField) {
    std::uint64_t value = 0;
    if (std::FILE* f = std::fopen("/proc/self/status", "r")) {
        char line[256];
        const std::size_t n = std::strlen(_pszField);
        while (std::fgets(line, sizeof line, f) != nullptr) {
            if (std::strncmp(line, _pszField, n) == 0 && line[n] == ':')
                value = std::strtoull(line + n + 1, nullptr, 10);
        }
        std::fclose(f);
    }
    return value;
}

double cpuOf(const rusage& _usage) {
    return static_cast<double>(_usage.ru_utime.tv_sec + _usage.ru_stime.tv_sec) +
           static_cast<double>(_usage.ru_utime.tv_usec + _usage.ru_stime.tv_usec) / 1e6;
}

// Runs _work in a forked child; its peak is VmHWM less the resident memory it began with.
Measure inChild(const std::function<void(Measure&)>& _work) {
    int fds[2];
    if (pipe(fds) != 0)
        return Measure();
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        close(fds[0]);
        Measure m;
        if (std::FILE* f = std::fopen("/proc/self/clear_refs", "w")) {
            std::fputs("5", f);
            std::fclose(f);
        }
        const std::uint64_t baseline = statusKiB("VmRSS");
        try {
            _work(m);
        } catch (...) {
            m.ok = 0;
            std::snprintf(m.error, sizeof m.error, "exception");
        }
        const std::uint64_t peak = statusKiB("VmHWM");
        m.peakKiB = peak > baseline ? peak - baseline : 0;
        const ssize_t written = write(fds[1], &m, sizeof m);
        _exit(written == static_cast<ssize_t>(sizeof m) ? 0 : 1);
    }
    close(fds[1]);
    Measure m;
    const ssize_t got = read(fds[0], &m, sizeof m);
    close(fds[0]);
    int status = 0;
    rusage usage = {};
    wait4(pid, &status, 0, &usage);
    m.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m.cpuSeconds = cpuOf(usage);
    if (got != static_cast<ssize_t>(sizeof m))
        m.ok = 0;
    return m;
}

// korfiles search '*' --store=STORE > OUT 2> ERR.
Measure runKorfiles(const std::string& _sProgram, const std::string& _sStore, const std::string& _sOut,
                    const std::string& _sErr) {
    Measure m;
    const auto start = std::chrono::steady_clock::now();
    const pid_t pid = fork();
    if (pid == 0) {
        const int out = open(_sOut.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        const int err = open(_sErr.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        if (out < 0 || err < 0 || dup2(out, 1) < 0 || dup2(err, 2) < 0)
            _exit(127);
        const std::string store = "--store=" + _sStore;
        execl(_sProgram.c_str(), _sProgram.c_str(), "search", "*", store.c_str(),
              static_cast<char*>(nullptr));
        _exit(127);
    }
    int status = 0;
    rusage usage = {};
    wait4(pid, &status, 0, &usage);
    m.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    m.cpuSeconds = cpuOf(usage);
    m.peakKiB = static_cast<std::uint64_t>(usage.ru_maxrss);
    m.ok = WIFEXITED(status) && WEXITSTATUS(status) == 0;
    if (!m.ok)
        std::snprintf(m.error, sizeof m.error, "korfiles ended with status %d", status);
    return m;
}

// The search list's own memory: filled by the history search and closed, nothing printed.
class ListSink : public UVQueryDataSink {
public:
    explicit ListSink(UQSearchList& _rList) : m_rList(_rList) {}
    void mf_onQueryData(const UQQueryData& _data) override { m_rList.mf_add(_data); }

private:
    UQSearchList& m_rList;
};

void searchListOnly(const std::string& _sStore, Measure& _rMeasure) {
    UQSearchList list;
    ListSink sink(list);
    UQHistoryQuery query;
    query.sPattern = L"*";
    const UQHistoryStore::Result result = UQHistoryStore(CString::FromUtf8(_sStore)).mf_search(query, sink);
    list.mf_close();
    _rMeasure.files = static_cast<std::uint64_t>(list.mf_getFileItemCount());
    _rMeasure.versions = result.uMatches;
    _rMeasure.ok = result.errors.empty() ? 1 : 0;
}

// ---- The limit: the same table from the same store with plain containers. ----

struct LimitVersion {
    std::uint32_t number;
    std::uint8_t status; // 0..5 as the status texts below
    bool security;
    bool streams;
};

struct LimitFile {
    std::wstring path;
    std::vector<LimitVersion> versions;
};

// The order of UQPath::mf_compare: separators first, then the case-folded character.
unsigned orderKey(wchar_t _c) {
    return _c == L'\\' || _c == L'/' ? 0u : static_cast<unsigned>(AfxFoldLower(_c)) + 1u;
}

struct FoldedHash {
    std::size_t operator()(const LimitFile* _p) const {
        std::uint64_t h = 14695981039346656037ull;
        for (const wchar_t c : _p->path)
            h = (h ^ orderKey(c)) * 1099511628211ull;
        return static_cast<std::size_t>(h);
    }
};

struct FoldedEqual {
    bool operator()(const LimitFile* _a, const LimitFile* _b) const {
        if (_a->path.size() != _b->path.size())
            return false;
        for (std::size_t i = 0; i < _a->path.size(); ++i) {
            if (orderKey(_a->path[i]) != orderKey(_b->path[i]))
                return false;
        }
        return true;
    }
};

bool pathLess(const LimitFile* _a, const LimitFile* _b) {
    const std::size_t n = std::min(_a->path.size(), _b->path.size());
    for (std::size_t i = 0; i < n; ++i) {
        const unsigned x = orderKey(_a->path[i]);
        const unsigned y = orderKey(_b->path[i]);
        if (x != y)
            return x < y;
    }
    return _a->path.size() < _b->path.size();
}

std::wstring decodeUtf8(const char* _p, std::size_t _n) {
    std::wstring out;
    out.reserve(_n);
    for (std::size_t i = 0; i < _n;) {
        const unsigned char c = static_cast<unsigned char>(_p[i]);
        unsigned cp = c;
        std::size_t more = c < 0x80 ? 0 : c < 0xE0 ? 1 : c < 0xF0 ? 2 : 3;
        if (more > 0)
            cp = c & (0x3Fu >> more);
        for (std::size_t k = 1; k <= more && i + k < _n; ++k)
            cp = (cp << 6) | (static_cast<unsigned char>(_p[i + k]) & 0x3Fu);
        out += static_cast<wchar_t>(cp);
        i += more + 1;
    }
    return out;
}

void appendUtf8(std::string& _rOut, const std::wstring& _s) {
    for (const wchar_t wc : _s) {
        const unsigned cp = static_cast<unsigned>(wc);
        if (cp < 0x80) {
            _rOut += static_cast<char>(cp);
        } else if (cp < 0x800) {
            _rOut += static_cast<char>(0xC0 | (cp >> 6));
            _rOut += static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            _rOut += static_cast<char>(0xE0 | (cp >> 12));
            _rOut += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            _rOut += static_cast<char>(0x80 | (cp & 0x3F));
        } else {
            _rOut += static_cast<char>(0xF0 | (cp >> 18));
            _rOut += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            _rOut += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            _rOut += static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
}

// Oldest first; a run of two shows both numbers, a longer one "start - end".
std::string ranges(const std::vector<LimitVersion>& _versions) {
    std::string text;
    std::uint64_t start = 0, end = 0;
    auto close = [&]() {
        if (end == start + 1)
            text += ", " + std::to_string(end);
        else if (end != start)
            text += " - " + std::to_string(end);
    };
    for (std::size_t i = 0; i < _versions.size(); ++i) {
        const std::uint64_t n = _versions[i].number;
        if (i == 0) {
            text += std::to_string(n);
            start = end = n;
        } else if (n == end + 1) {
            end = n;
        } else {
            close();
            text += ", " + std::to_string(n);
            start = end = n;
        }
    }
    if (!_versions.empty())
        close();
    return text;
}

std::size_t codePoints(const std::string& _s) {
    std::size_t n = 0;
    for (const char c : _s)
        n += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
    return n;
}

void limit(const std::string& _sStore, const std::string& _sOut, Measure& _rMeasure) {
    static const char* const STATUS[6] = {"Available", "Available (protected)",
                                          "Expiring",  "Expiring (protected)",
                                          "Deleted",   "Deleted (protected)"};
    std::unordered_set<LimitFile*, FoldedHash, FoldedEqual> files;
    std::vector<std::unique_ptr<LimitFile>> owned;
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> in(std::fopen(_sStore.c_str(), "rb"), std::fclose);
    if (!in)
        return;
    std::vector<char> buffer(1 << 16);
    std::string carry;
    LimitFile probe;
    auto line = [&](const char* _p, std::size_t _n) {
        if (_n == 0 || _p[0] == '#')
            return;
        const char* fields[8];
        std::size_t lengths[8];
        std::size_t field = 0, begin = 0;
        for (std::size_t i = 0; i <= _n && field < 8; ++i) {
            if (i == _n || _p[i] == '\t') {
                fields[field] = _p + begin;
                lengths[field++] = i - begin;
                begin = i + 1;
            }
        }
        if (field != 8)
            return;
        probe.path = decodeUtf8(fields[0], lengths[0]);
        LimitVersion v;
        v.number =
            static_cast<std::uint32_t>(std::strtoul(std::string(fields[2], lengths[2]).c_str(), nullptr, 10));
        const std::string flags(fields[5], lengths[5]);
        const bool eventBased = flags.find('E') != std::string::npos;
        const bool deletion = flags.find('D') != std::string::npos;
        const bool expires = !(lengths[6] == 1 && fields[6][0] == '-');
        const int offset = flags.find('P') != std::string::npos ? 1 : 0;
        v.status = static_cast<std::uint8_t>((eventBased && deletion   ? 4
                                              : !eventBased && expires ? 2
                                                                       : 0) +
                                             offset);
        v.security = flags.find('S') != std::string::npos;
        v.streams = flags.find('A') != std::string::npos;
        auto found = files.find(&probe);
        if (found == files.end()) {
            owned.emplace_back(new LimitFile{std::move(probe.path), {}});
            found = files.insert(owned.back().get()).first;
        }
        (*found)->versions.push_back(v);
    };
    std::size_t n;
    while ((n = std::fread(buffer.data(), 1, buffer.size(), in.get())) > 0) {
        std::size_t start = 0;
        for (std::size_t i = 0; i < n; ++i) {
            if (buffer[i] != '\n')
                continue;
            if (carry.empty()) {
                line(buffer.data() + start, i - start);
            } else {
                carry.append(buffer.data() + start, i - start);
                line(carry.data(), carry.size());
                carry.clear();
            }
            start = i + 1;
        }
        carry.append(buffer.data() + start, n - start);
    }
    line(carry.data(), carry.size());
    files = decltype(files)();

    std::vector<LimitFile*> sorted;
    sorted.reserve(owned.size());
    for (const auto& f : owned) {
        std::sort(f->versions.begin(), f->versions.end(),
                  [](const LimitVersion& _a, const LimitVersion& _b) { return _a.number < _b.number; });
        sorted.push_back(f.get());
        _rMeasure.versions += f->versions.size();
    }
    std::sort(sorted.begin(), sorted.end(), pathLess);
    _rMeasure.files = sorted.size();

    // The table: columns as wide as their widest cell, at most 100 characters.
    const std::vector<std::string> headers = {"Path", "Versions", "Status", "Security", "Streams"};
    std::vector<std::size_t> widths;
    for (const auto& h : headers)
        widths.push_back(h.size());
    std::vector<std::string> row(5);
    auto cells = [&](const LimitFile& _f) {
        row[0].clear();
        appendUtf8(row[0], _f.path);
        row[1] = ranges(_f.versions);
        const LimitVersion& latest = _f.versions.back();
        row[2] = STATUS[latest.status];
        row[3] = latest.security ? "Yes" : "No";
        row[4] = latest.streams ? "Yes" : "No";
    };
    for (const LimitFile* f : sorted) {
        cells(*f);
        for (std::size_t c = 0; c < 5; ++c)
            widths[c] = std::max(widths[c], std::min<std::size_t>(codePoints(row[c]), 100));
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> out(std::fopen(_sOut.c_str(), "wb"), std::fclose);
    if (!out)
        return;
    std::string piece;
    auto writeLine = [&](const std::vector<std::string>& _cells) {
        std::size_t column = 0, start = 0;
        for (std::size_t c = 0; c < _cells.size(); ++c) {
            if (c > 0)
                start += widths[c - 1] + 2;
            std::size_t at = start;
            if (column > 0 && column + 2 > at)
                at = column + 2;
            piece.append(at - column, ' ');
            piece += _cells[c];
            column = at + codePoints(_cells[c]);
        }
        piece += '\n';
        if (piece.size() >= 65536) {
            std::fwrite(piece.data(), 1, piece.size(), out.get());
            piece.clear();
        }
    };
    writeLine(headers);
    for (const LimitFile* f : sorted) {
        cells(*f);
        writeLine(row);
    }
    std::fwrite(piece.data(), 1, piece.size(), out.get());
    _rMeasure.ok = std::fclose(out.release()) == 0 ? 1 : 0;
}

bool sameBytes(const std::string& _a, const std::string& _b) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> a(std::fopen(_a.c_str(), "rb"), std::fclose);
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> b(std::fopen(_b.c_str(), "rb"), std::fclose);
    if (!a || !b)
        return false;
    std::vector<char> x(1 << 16), y(1 << 16);
    for (;;) {
        const std::size_t n = std::fread(x.data(), 1, x.size(), a.get());
        const std::size_t m = std::fread(y.data(), 1, y.size(), b.get());
        if (n != m || std::memcmp(x.data(), y.data(), n) != 0)
            return false;
        if (n == 0)
            return true;
    }
}

double loadAverage() {
    double load = -1;
    if (std::FILE* f = std::fopen("/proc/loadavg", "r")) {
        if (std::fscanf(f, "%lf", &load) != 1)
            load = -1;
        std::fclose(f);
    }
    return load;
}

double mib(std::uint64_t _uKiB) {
    return static_cast<double>(_uKiB) / 1024.0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: korfiles_scale_bench RECORDS [DIRECTORY]\n");
        return 2;
    }
    const std::uint64_t records = std::strtoull(argv[1], nullptr, 10);
    const std::string directory = argc > 2 ? argv[2] : "/tmp/korfiles-scale";
    mkdir(directory.c_str(), 0755);
    const std::string base = directory + "/history-" + std::to_string(records);
    const std::string store = base + ".txt";

    struct stat info = {};
    if (stat(store.c_str(), &info) != 0) {
        realistic_history::Summary summary;
        std::string error;
        const auto start = std::chrono::steady_clock::now();
        if (!realistic_history::writeStore(store, records, 1, summary, error)) {
            std::fprintf(stderr, "%s\n", error.c_str());
            return 1;
        }
        std::printf(
            "generated %s in %.1f s: %llu records of %llu files, paths %.1f characters on average, "
            "longest %llu, %llu over 200, %llu with non-ASCII names\n",
            store.c_str(), std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
            static_cast<unsigned long long>(summary.records), static_cast<unsigned long long>(summary.files),
            summary.averagePath, static_cast<unsigned long long>(summary.longestPath),
            static_cast<unsigned long long>(summary.pathsOver200),
            static_cast<unsigned long long>(summary.nonAsciiPaths));
        stat(store.c_str(), &info);
    }
    const double storeMiB = static_cast<double>(info.st_size) / (1024.0 * 1024.0);
    std::printf("store %s: %.1f MiB; load average before the runs %.2f\n", store.c_str(), storeMiB,
                loadAverage());
    std::fflush(stdout);

    const Measure program =
        runKorfiles(KORFILES_PROGRAM, store, base + ".korfiles.out", base + ".korfiles.err");
    const double loadAfterProgram = loadAverage();
    const Measure list = inChild([&](Measure& _m) { searchListOnly(store, _m); });
    const Measure plain = inChild([&](Measure& _m) { limit(store, base + ".limit.out", _m); });
    const double loadAtEnd = loadAverage();
    if (!program.ok || !list.ok || !plain.ok) {
        std::fprintf(stderr, "a side failed: korfiles %s, search list %d, limit %d\n", program.error, list.ok,
                     plain.ok);
        return 1;
    }
    const bool same = sameBytes(base + ".korfiles.out", base + ".limit.out");
    std::printf("\n%-34s %10s %10s %12s %10s\n", "side", "wall s", "cpu s", "peak MiB", "files");
    std::printf("%-34s %10.2f %10.2f %12.1f %10s\n", "korfiles search '*'", program.seconds,
                program.cpuSeconds, mib(program.peakKiB), "");
    std::printf("%-34s %10.2f %10.2f %12.1f %10llu\n", "search list alone (read + close)", list.seconds,
                list.cpuSeconds, mib(list.peakKiB), static_cast<unsigned long long>(list.files));
    std::printf("%-34s %10.2f %10.2f %12.1f %10llu\n", "limit (plain containers)", plain.seconds,
                plain.cpuSeconds, mib(plain.peakKiB), static_cast<unsigned long long>(plain.files));
    std::printf("\noutput of korfiles and the limit: %s\n", same ? "the same bytes" : "DIFFERENT");
    std::printf("korfiles peak memory / store file:        %.2fx (goal <= %.1fx)\n",
                mib(program.peakKiB) / storeMiB, MEMORY_GOAL);
    std::printf("korfiles peak memory / search list alone: %.2fx\n",
                static_cast<double>(program.peakKiB) / static_cast<double>(list.peakKiB));
    std::printf("korfiles peak memory / limit:             %.2fx\n",
                static_cast<double>(program.peakKiB) / static_cast<double>(plain.peakKiB));
    std::printf("korfiles time / store file:               %.2f s per 100 MiB\n",
                program.seconds / storeMiB * 100.0);
    std::printf("korfiles time / search list alone:        %.2fx (cpu %.2fx)\n",
                program.seconds / list.seconds, program.cpuSeconds / list.cpuSeconds);
    std::printf("korfiles time / limit:                    %.2fx (cpu %.2fx)\n",
                program.seconds / plain.seconds, program.cpuSeconds / plain.cpuSeconds);
    std::printf("load average after korfiles %.2f, at the end %.2f\n", loadAfterProgram, loadAtEnd);
    const bool met = mib(program.peakKiB) <= MEMORY_GOAL * storeMiB;
    std::printf("memory goal: %s\n", met ? "met" : "MISSED");
    return same && met ? 0 : 1;
}
