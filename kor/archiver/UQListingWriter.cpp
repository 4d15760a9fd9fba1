#include "interfaces/korarchiver.h"
#include "kor/KorReport.h"
#include "kor/archiver/TextFile.h"

namespace {

const wchar_t* const FUNCTION = L"UQListingWriter::mf_formatLine";

[[noreturn]] void refuse(const CString& _sPath, const CString& _sWhy) {
    CString text;
    text.Format(L"The path '%s' cannot be written to a listing: %s", kortext::shownText(_sPath), _sWhy);
    UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::Parameter), text), FUNCTION, L"%s", text);
}

// The reader splits at tabs and lines, and writes text as UTF-8: what it could not give back is refused.
void refuseUnwritable(const CString& _sPath, const CString& _sText, const wchar_t* _pszWhere) {
    CString what;
    const int at = kortext::findUnwritable(_sText, what);
    if (at < 0)
        return;
    CString why;
    why.Format(L"%s at unit %d%s", what, at + 1, _pszWhere);
    refuse(_sPath, why);
}

} // namespace

std::string UQListingWriter::mf_formatLine(const CString& _sPath, std::uint32_t _uVersion, STATUS _eStatus,
                                           const CString& _sResult) {
    if (_sPath.IsEmpty())
        refuse(_sPath, L"the path is empty");
    // The reader trims the blanks around a field: such a path would come back as another one.
    if (_sPath[0] == L' ' || _sPath[_sPath.GetLength() - 1] == L' ')
        refuse(_sPath, L"it begins or ends with a space");
    refuseUnwritable(_sPath, _sPath, L"");
    refuseUnwritable(_sPath, _sResult, L" of its result text");
    const char* pszStatus = "migrated";
    switch (_eStatus) {
    case STATUS_MIGRATED:
        break;
    case STATUS_STUB:
        pszStatus = "stub";
        break;
    case STATUS_WARNING:
        pszStatus = "warning";
        break;
    case STATUS_FAILED:
        pszStatus = "failed";
        break;
    default:
        refuse(_sPath, L"the status is none of migrated, stub, warning and failed");
    }
    CString trimmed = _sResult;
    trimmed.Trim(L" ");
    if ((_eStatus == STATUS_WARNING || _eStatus == STATUS_FAILED) && trimmed.IsEmpty())
        refuse(_sPath, CString(L"status '") + CString::FromUtf8(pszStatus) + L"' needs a result text");
    std::string line = _sPath.ToUtf8();
    line += '\t';
    line += std::to_string(_uVersion);
    line += '\t';
    line += pszStatus;
    if (!_sResult.IsEmpty()) {
        line += '\t';
        line += _sResult.ToUtf8();
    }
    line += '\n';
    return line;
}
