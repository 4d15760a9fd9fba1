#include "kor/archiver/TextFile.h"

#include "compat/utf8.h"

#include <cerrno>
#include <system_error>

namespace kortext {

namespace {

// The system's words for an errno; std::strerror may share its buffer between threads.
CString systemReason(int error) {
    return CString::FromUtf8(std::error_code(error, std::generic_category()).message());
}

} // namespace

FILE* openForReading(const CString& file, const wchar_t* function, const wchar_t* what) {
#if defined(_WIN32)
    FILE* f = _wfopen(file, L"rb");
#else
    // A name that is not UTF-8 keeps its bytes (uqfmt::nativeToWide).
    FILE* f = std::fopen(uqfmt::wideToNative(file.GetString(), file.GetLength()).c_str(), "rb");
#endif
    const int openError = errno;
    if (f == nullptr) {
        CString detail;
        detail.Format(L"%s: cannot open: %s (errno %d)", file, systemReason(openError), openError);
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(UQLogData::LEVEL_E, function, L"Failure opening %s '%s'", what, file);
        throw UQErrno(UQErrnoData(UQErrno::_E_::File), detail);
    }
    return f;
}

CString readErrorDetail(const CString& file, int error) {
    CString detail;
    detail.Format(L"%s: read error: %s (errno %d)", file, systemReason(error), error);
    return detail;
}

} // namespace kortext
