#include "kor/archiver/TextFile.h"
#include "kor/KorReport.h"

#include <cerrno>

namespace kortext {

UQStdFile openForReading(const CString& _sFile, const wchar_t* _pszFunction, const wchar_t* _pszWhat) {
#if defined(_WIN32)
    FILE* f = _wfopen(_sFile, L"rb");
#else
    FILE* f = std::fopen(_sFile.ToUtf8().c_str(), "rb");
#endif
    const int openError = errno;
    if (f == nullptr) {
        CString detail;
        detail.Format(L"%s: cannot open (errno %d)", _sFile, openError);
        UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::File), detail), _pszFunction,
                             L"Failure opening %s '%s'", _pszWhat, _sFile);
    }
    return UQStdFile(f);
}

void failReading(const CString& _sFile, const wchar_t* _pszFunction, const wchar_t* _pszWhat) {
    CString sDetail;
    sDetail.Format(L"%s: read error", _sFile);
    UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::File), sDetail), _pszFunction,
                         L"Failure reading %s '%s'", _pszWhat, _sFile);
}

} // namespace kortext
