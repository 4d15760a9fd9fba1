#include "kor/archiver/TextFile.h"

#include "compat/utf8.h"

#include <cerrno>

namespace kortext {

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
        detail.Format(L"%s: cannot open (errno %d)", file, openError);
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(UQLogData::LEVEL_E, function, L"Failure opening %s '%s'", what, file);
        throw UQErrno(UQErrnoData(UQErrno::_E_::File), detail);
    }
    return f;
}

} // namespace kortext
