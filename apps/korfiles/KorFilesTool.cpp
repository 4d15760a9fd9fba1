#include "KorFilesTool.h"

#include "FileListTable.h"
#include "FileVersionList.h"
#include "FileVersionReader.h"
#include "MalformedLines.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>

namespace {

const char* const kUsage = "Usage: korfiles [--sort=path|result] [--descending] [FILE]\n";

struct Options {
    FileVersionList::SortKey key = FileVersionList::BY_PATH;
    int bAscending = 1;
    bool bHelp = false;
    CString sInput;
    bool bHasInput = false;
};

// Answers an empty string when the arguments are good, else the one line that says what is wrong.
std::string parseOptions(const std::vector<CString>& args, Options& options) {
    bool optionsEnded = false;
    for (const CString& arg : args) {
        if (!optionsEnded && arg.GetLength() > 1 && arg[0] == L'-') {
            if (arg == L"--") {
                optionsEnded = true;
            } else if (arg == L"--help" || arg == L"-h") {
                options.bHelp = true;
            } else if (arg == L"--descending") {
                options.bAscending = 0;
            } else if (arg == L"--sort=path") {
                options.key = FileVersionList::BY_PATH;
            } else if (arg == L"--sort=result") {
                options.key = FileVersionList::BY_RESULT;
            } else if (arg == L"--sort" || arg.Left(7) == L"--sort=") {
                return "--sort needs path or result, as in --sort=result, not '" + arg.ToUtf8() + "'";
            } else {
                return "unknown option '" + arg.ToUtf8() + "'";
            }
            continue;
        }
        if (options.bHasInput)
            return "only one file may be given, not both '" + options.sInput.ToUtf8() + "' and '" +
                   arg.ToUtf8() + "'";
        options.sInput = arg;
        options.bHasInput = true;
    }
    return std::string();
}

int run(const std::vector<CString>& args, const CString& defaultInput, TextOutput& out, TextOutput& err) {
    Options options;
    const std::string usageError = parseOptions(args, options);
    if (!usageError.empty()) {
        err.mf_write("korfiles: " + usageError + "\n" + kUsage);
        return KorFilesTool::EXIT_BAD_USAGE;
    }
    if (options.bHelp) {
        out.mf_write(KorFilesTool::mf_getHelp(defaultInput));
        return KorFilesTool::EXIT_ALL_READ;
    }

    const CString input = options.bHasInput ? options.sInput : defaultInput;
    const std::string inputName = input.ToUtf8();
    std::string text;
    std::string reason;
    if (!KorFilesTool::mf_readFile(input, text, reason)) {
        err.mf_write("korfiles: cannot read '" + inputName + "': " + reason + "\n");
        return KorFilesTool::EXIT_UNREADABLE;
    }

    MalformedLines problems;
    std::vector<FileVersionRecord> records;
    FileVersionReader::mf_read(text, records, problems);
    FileVersionList list;
    for (const FileVersionRecord& record : records) {
        std::string problem;
        if (!list.mf_add(record, problem))
            problems.mf_onProblem(record.nLine, problem);
    }
    problems.mf_report(inputName, err);

    UQFileListItem::Array items;
    list.mf_getSorted(items, options.key, options.bAscending);
    out.mf_write(FileListTable::mf_format(items));
    return problems.mf_getCount() > 0 ? KorFilesTool::EXIT_LINES_SKIPPED : KorFilesTool::EXIT_ALL_READ;
}

} // namespace

int KorFilesTool::mf_run(const std::vector<CString>& args, const CString& defaultInput, TextOutput& out,
                         TextOutput& err) noexcept {
    try {
        return run(args, defaultInput, out, err);
    } catch (const UQErrno& e) {
        err.mf_write("korfiles: " + e.mf_toString().ToUtf8() + "\n");
    } catch (const std::bad_alloc&) {
        err.mf_write("korfiles: out of memory\n");
    } catch (CException* e) {
        e->Delete();
        err.mf_write("korfiles: internal error: invalid argument\n");
    } catch (...) {
        err.mf_write("korfiles: internal error\n");
    }
    return EXIT_INTERNAL_ERROR;
}

int KorFilesTool::mf_readFile(const CString& path, std::string& text, std::string& reason) {
    errno = 0;
#if defined(_WIN32)
    std::FILE* file = _wfopen(path, L"rb");
#else
    std::FILE* file = std::fopen(path.ToUtf8().c_str(), "rb");
#endif
    if (file == nullptr) {
        reason = std::strerror(errno);
        return 0;
    }
    std::string content;
    char buffer[65536];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0)
        content.append(buffer, n);
    const int failed = std::ferror(file);
    const int error = errno;
    std::fclose(file);
    if (failed) {
        reason = std::strerror(error);
        return 0;
    }
    text.swap(content);
    return 1;
}

std::string KorFilesTool::mf_getHelp(const CString& defaultInput) {
    return std::string(kUsage) +
           "\n"
           "Lists the file versions in FILE, one line per file: its path, the ranges of its version\n"
           "numbers, its newest version (file name, date and time), its result and the severity of that.\n"
           "\n"
           "FILE is UTF-8 text with one version per line: path, version, size in bytes, last write time\n"
           "(YYYY-MM-DD HH:MM:SS[.mmm]) and optionally result and severity (info, warning or error),\n"
           "separated by tabs. Lines starting with '#' are comments. Malformed lines are reported as\n"
           "FILE:LINE: PROBLEM on standard error and skipped.\n"
           "Without FILE, korfiles reads the sample beside it:\n"
           "  " +
           defaultInput.ToUtf8() +
           "\n"
           "\n"
           "Options:\n"
           "  --sort=path     sort by path (the default)\n"
           "  --sort=result   sort by result text, equal results by path\n"
           "  --descending    sort in descending order (equal results stay by path ascending)\n"
           "  -h, --help      print this help and exit\n"
           "  --              take the next argument as FILE even if it starts with '-'\n"
           "\n"
           "Exit status: 0 every line was read, 1 malformed lines were skipped, 2 bad usage,\n"
           "3 FILE cannot be read, 4 internal error.\n";
}
