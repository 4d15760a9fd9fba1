// korfiles: prints the file versions of a text file, or the files of a migration listing, as file list
// items; korfiles search runs the history search; korfiles settings shows and changes the client's GUI
// defaults. See docs/korfiles.md.
#include "ConsoleOutput.h"
#include "KorFilesTool.h"

#include <algorithm>
#include <vector>

#if !defined(_WIN32)
#include "compat/utf8.h"

#include <climits>
#include <csignal>
#include <cstring>
#include <unistd.h>
#endif

namespace {

// Copied beside the program by the build.
const wchar_t* const SAMPLE_NAME = L"korfiles-sample.txt";
const wchar_t* const LISTING_NAME = L"korfiles-listing.txt";

// The directory of the running program, with its trailing separator; empty if it cannot be found.
CString programDirectory() {
#if defined(_WIN32)
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;) {
        const DWORD n = GetModuleFileNameW(nullptr, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (n == 0)
            return CString();
        if (n < buffer.size()) {
            const CString path(buffer.data(), static_cast<int>(n));
            const int slash = std::max(path.ReverseFind(L'\\'), path.ReverseFind(L'/'));
            return path.Left(slash + 1);
        }
        buffer.resize(buffer.size() * 2);
    }
#else
    char buffer[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer);
    if (n <= 0 || static_cast<std::size_t>(n) >= sizeof buffer)
        return CString();
    const CString path = CString::FromUtf8(std::string(buffer, static_cast<std::size_t>(n)));
    return path.Left(path.ReverseFind(L'/') + 1);
#endif
}

int runTool(const std::vector<CString>& _args) {
    ConsoleOutput out(ConsoleOutput::STANDARD_OUTPUT);
    ConsoleOutput err(ConsoleOutput::STANDARD_ERROR);
    try {
        const CString directory = programDirectory();
        return KorFilesTool::mf_run(_args, directory + SAMPLE_NAME, directory + LISTING_NAME, out, err);
    } catch (...) {
        err.mf_write("korfiles: out of memory\n");
        return KorFilesTool::EXIT_INTERNAL_ERROR;
    }
}

} // namespace

#if defined(_WIN32)
// The wide entry point, so that file names outside the ANSI code page arrive intact.
int wmain(int argc, wchar_t** argv) {
    std::vector<CString> args;
    for (int i = 1; i < argc; ++i)
        args.emplace_back(argv[i]);
    return runTool(args);
}
#else
int main(int argc, char** argv) {
    // A reader that closes the pipe (head) makes writes fail with EPIPE, which the program reports with
    // its own exit code, instead of ending it by the signal.
    std::signal(SIGPIPE, SIG_IGN);
    // Every byte is kept, so that a file name that is not UTF-8 still names its file; text arguments are
    // checked where they are taken.
    std::vector<CString> args;
    for (int i = 1; i < argc; ++i) {
        const std::wstring arg = uqfmt::nativeToWide(argv[i], std::strlen(argv[i]));
        args.emplace_back(arg.c_str(), static_cast<int>(arg.size()));
    }
    return runTool(args);
}
#endif
