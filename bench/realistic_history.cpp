#include "realistic_history.h"

#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace realistic_history {

namespace {

const char* const ROOTS[] = {"\\\\FILESRV01\\Projects",
                             "\\\\FILESRV02\\Finance",
                             "\\\\nas-muc.example.local\\Abteilungen",
                             "\\\\fs-tokyo\\\xE5\x85\xB1\xE6\x9C\x89", // 共有
                             "C:\\Users\\asmith\\Documents",
                             "D:\\Archiv",
                             "\\\\FILESRV03\\Home$\\jroe"};

// Directory and file words in the scripts of a European and East Asian company.
const char* const WORDS[] = {
    "Projects",
    "Reports",
    "Marketing",
    "Design",
    "Archive",
    "Budget",
    "Contracts",
    "Minutes",
    "Invoices",
    "Presentations",
    "Drafts",
    "Final",
    "Scans",
    "Photos",
    "Customers",
    "Suppliers",
    "Quarterly",
    "Annual",
    "Planning",
    "Research",
    "Legal",
    "Human Resources",
    "Templates",
    "Shared",
    "Team",
    "Meeting notes",
    "2019",
    "2020",
    "2021",
    "2022",
    "2023",
    "2024",
    "Q1",
    "Q2",
    "Q3",
    "Q4",
    "old",
    "new",
    "v2",
    "backup",
    "\xC3\x9C"
    "bersicht",        // Übersicht
    "Vertr\xC3\xA4ge", // Verträge
    "Rechnungen",
    "Pr\xC3\xBC"
    "fberichte", // Prüfberichte
    "Gesch\xC3\xA4"
    "ftsf\xC3\xBChrung", // Geschäftsführung
    "Stra\xC3\x9F"
    "enbau",               // Straßenbau
    "R\xC3\xA9unions",     // Réunions
    "Comptabilit\xC3\xA9", // Comptabilité
    "Dossiers clients",
    "Ann\xC3\xA9"
    "e", // Année
    "Sprawozdania",
    "Ksi\xC4\x99gowo\xC5\x9B\xC4\x87", // Księgowość
    "\xC5\x81\xC3\xB3"
    "d\xC5\xBA",                                                                // Łódź
    "\xD0\x9E\xD1\x82\xD1\x87\xD1\x91\xD1\x82\xD1\x8B",                         // Отчёты
    "\xD0\x94\xD0\xBE\xD0\xB3\xD0\xBE\xD0\xB2\xD0\xBE\xD1\x80\xD1\x8B",         // Договоры
    "\xD0\x9F\xD1\x80\xD0\xBE\xD0\xB5\xD0\xBA\xD1\x82\xD1\x8B",                 // Проекты
    "\xCE\x88\xCF\x81\xCE\xB3\xCE\xB1",                                         // Έργα
    "\xCE\x91\xCE\xBD\xCE\xB1\xCF\x86\xCE\xBF\xCF\x81\xCE\xAD\xCF\x82",         // Αναφορές
    "\xE5\xA0\xB1\xE5\x91\x8A\xE6\x9B\xB8",                                     // 報告書
    "\xE4\xBC\x9A\xE8\xAD\xB0\xE8\xB3\x87\xE6\x96\x99",                         // 会議資料
    "\xE3\x83\x97\xE3\x83\xAD\xE3\x82\xB8\xE3\x82\xA7\xE3\x82\xAF\xE3\x83\x88", // プロジェクト
    "\xE8\xB4\xA2\xE5\x8A\xA1\xE6\x8A\xA5\xE8\xA1\xA8",                         // 财务报表
    "\xE5\x90\x88\xE5\x90\x8C",                                                 // 合同
};
const std::size_t WORD_COUNT = sizeof WORDS / sizeof WORDS[0];

const char* const EXTENSIONS[] = {".docx", ".xlsx", ".pdf", ".txt", ".pptx", ".jpg",
                                  ".png",  ".msg",  ".zip", ".csv", ".dwg",  ".tif"};

// Files per directory on average, and directories per directory.
const std::uint64_t FILES_PER_DIRECTORY = 12;
const std::uint64_t BRANCHING = 6;

std::uint64_t mix(std::uint64_t _u) {
    _u += 0x9E3779B97F4A7C15ull;
    _u = (_u ^ (_u >> 30)) * 0xBF58476D1CE4E5B9ull;
    _u = (_u ^ (_u >> 27)) * 0x94D049BB133111EBull;
    return _u ^ (_u >> 31);
}

std::uint64_t hash(std::uint64_t _uSeed, std::uint64_t _uA, std::uint64_t _uB = 0) {
    return mix(_uSeed ^ mix(_uA ^ mix(_uB + 0x632BE59BD9B4E019ull)));
}

// 1 to 8 versions, three on average.
unsigned versionCount(std::uint64_t _uSeed, std::uint64_t _uFile) {
    static const unsigned PERCENT[8] = {30, 20, 15, 12, 9, 6, 4, 4};
    unsigned roll = static_cast<unsigned>(hash(_uSeed, _uFile, 1) % 100);
    for (unsigned v = 0; v < 8; ++v) {
        if (roll < PERCENT[v])
            return v + 1;
        roll -= PERCENT[v];
    }
    return 8;
}

std::size_t characters(const std::string& _s) {
    std::size_t n = 0;
    for (const char c : _s)
        n += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
    return n;
}

// The path of file _uFile: its directory is shared with its neighbours, the directory's parents with the
// neighbouring directories, so the tree is deep and bushy as a file server's is.
std::string filePath(std::uint64_t _uSeed, std::uint64_t _uFile) {
    const std::uint64_t directory = _uFile / FILES_PER_DIRECTORY;
    std::vector<std::uint64_t> prefixes;
    for (std::uint64_t d = directory; d > 0; d /= BRANCHING)
        prefixes.push_back(d);
    std::string path = ROOTS[hash(_uSeed, 7, prefixes.empty() ? 0 : prefixes.back()) % 7];
    for (std::size_t level = prefixes.size(); level-- > 0;) {
        const std::uint64_t h = hash(_uSeed, prefixes[level], 100 + level);
        path += '\\';
        path += WORDS[h % WORD_COUNT];
        if ((h >> 20) % 4 == 0) {
            path += ' ';
            path += WORDS[(h >> 28) % WORD_COUNT];
        }
    }
    const std::uint64_t h = hash(_uSeed, _uFile, 2);
    path += '\\';
    path += WORDS[h % WORD_COUNT];
    path += (h >> 8) % 3 == 0 ? " " : "-";
    path += WORDS[(h >> 16) % WORD_COUNT];
    // The number keeps the names in one directory apart.
    const std::string number =
        std::to_string((h >> 32) % 100 * FILES_PER_DIRECTORY + _uFile % FILES_PER_DIRECTORY);
    path += (h >> 24) % 2 == 0 ? "_" + number : " (" + number + ")";
    // The long tail: one file in 50 has a long name, one in 4000 a very deep or very long path.
    if ((h >> 40) % 50 == 0) {
        for (std::uint64_t i = 0, n = 4 + (h >> 46) % 12; i < n; ++i)
            path += std::string(" ") + WORDS[hash(_uSeed, _uFile, 10 + i) % WORD_COUNT];
    }
    if ((h >> 44) % 4000 == 0) {
        for (std::uint64_t i = 0, n = 20 + (h >> 50) % 80; i < n; ++i)
            path += std::string("\\") + WORDS[hash(_uSeed, _uFile, 200 + i) % WORD_COUNT];
    }
    path += EXTENSIONS[(h >> 52) % 12];
    return path;
}

// "YYYY-MM-DD HH:MM:SS" of a day counted from 2015-01-01 and a second of that day.
std::string formatTime(std::uint64_t _uDay, std::uint64_t _uSecond) {
    // Days from 1970-01-01 to the civil date (the inverse of days_from_civil).
    const std::int64_t z = static_cast<std::int64_t>(_uDay) + 16436 + 719468;
    const std::int64_t era = z / 146097;
    const std::int64_t doe = z - era * 146097;
    const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const std::int64_t mp = (5 * doy + 2) / 153;
    const std::int64_t day = doy - (153 * mp + 2) / 5 + 1;
    const std::int64_t month = mp < 10 ? mp + 3 : mp - 9;
    const std::int64_t year = yoe + era * 400 + (month <= 2 ? 1 : 0);
    char text[48];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", static_cast<int>(year),
                  static_cast<int>(month), static_cast<int>(day), static_cast<int>(_uSecond / 3600),
                  static_cast<int>(_uSecond / 60 % 60), static_cast<int>(_uSecond % 60));
    return text;
}

std::string record(std::uint64_t _uSeed, std::uint64_t _uFile, const std::string& _sPath, unsigned _uIndex) {
    const std::uint64_t h = hash(_uSeed, _uFile, 1000 + _uIndex);
    // One file in ten skips a version number.
    const unsigned gap = hash(_uSeed, _uFile, 3) % 10 == 0 && _uIndex > 1 ? 1 : 0;
    std::string line = _sPath;
    line += "\t=\t";
    line += std::to_string(_uIndex + gap);
    line += '\t';
    line += formatTime(hash(_uSeed, _uFile, 4) % 2500 + _uIndex * 20 + h % 20, h % 86400);
    line += '\t';
    line += std::to_string((h >> 17) % 50000000);
    line += '\t';
    std::string flags;
    if ((h >> 3) % 10 < 6)
        flags += 'S';
    if ((h >> 7) % 10 == 0)
        flags += 'A';
    const unsigned state = static_cast<unsigned>((h >> 11) % 20);
    if (state == 0)
        flags += "ED"; // deleted
    if ((h >> 15) % 7 == 0)
        flags += 'P';
    line += flags.empty() ? std::string("-") : flags;
    line += '\t';
    // One version in ten expires.
    line += state == 1 || state == 2 ? formatTime(3000 + h % 700, (h >> 5) % 86400) : std::string("-");
    line += '\t';
    line += std::to_string((h >> 23) % 200);
    line += ':';
    line += std::to_string((h >> 31) % 100000000);
    line += '\n';
    return line;
}

} // namespace

int writeStore(const std::string& _sFile, std::uint64_t _uRecords, std::uint64_t _uSeed, Summary& _rSummary,
               std::string& _rsError) {
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(_sFile.c_str(), "wb"), std::fclose);
    if (!file) {
        _rsError = "cannot create " + _sFile + ": " + std::strerror(errno);
        return 0;
    }
    std::uint64_t files = 0;
    for (std::uint64_t total = 0; total < _uRecords; ++files)
        total += versionCount(_uSeed, files);
    Summary summary;
    summary.files = files;
    std::string header = "# A generated history store: " + std::to_string(files) + " files\n";
    std::fputs(header.c_str(), file.get());
    summary.bytes += header.size();
    double pathCharacters = 0;
    std::string piece;
    for (unsigned version = 1; version <= 8; ++version) {
        for (std::uint64_t f = 0; f < files; ++f) {
            if (versionCount(_uSeed, f) < version)
                continue;
            const std::string path = filePath(_uSeed, f);
            if (version == 1) {
                const std::size_t n = characters(path);
                pathCharacters += static_cast<double>(n);
                summary.longestPath = n > summary.longestPath ? n : summary.longestPath;
                summary.pathsOver200 += n > 200 ? 1 : 0;
                summary.nonAsciiPaths += n != path.size() ? 1 : 0;
            }
            piece += record(_uSeed, f, path, version);
            ++summary.records;
            if (piece.size() > (1u << 20)) {
                summary.bytes += piece.size();
                if (std::fwrite(piece.data(), 1, piece.size(), file.get()) != piece.size()) {
                    _rsError = "cannot write " + _sFile + ": " + std::strerror(errno);
                    return 0;
                }
                piece.clear();
            }
        }
    }
    summary.bytes += piece.size();
    if (std::fwrite(piece.data(), 1, piece.size(), file.get()) != piece.size() ||
        std::fclose(file.release()) != 0) {
        _rsError = "cannot write " + _sFile + ": " + std::strerror(errno);
        return 0;
    }
    summary.averagePath = files == 0 ? 0 : pathCharacters / static_cast<double>(files);
    _rSummary = summary;
    return 1;
}

} // namespace realistic_history
