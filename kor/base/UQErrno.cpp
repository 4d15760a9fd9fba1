#include "interfaces/korbase.h"

#include <cstdio>

// Each category names its catalogue text (resources/texts/english.txt, 1000-1099).
const UQErrnoValue UQErrno::_E_::Parameter(L'E', L"_E_::Parameter", 1000);
const UQErrnoValue UQErrno::_E_::ItemNotFound(L'E', L"_E_::ItemNotFound", 1001);
const UQErrnoValue UQErrno::_E_::Initialization(L'E', L"_E_::Initialization", 1002);
const UQErrnoValue UQErrno::_E_::AlreadyInitialized(L'E', L"_E_::AlreadyInitialized", 1003);
const UQErrnoValue UQErrno::_E_::Range(L'E', L"_E_::Range", 1004);
const UQErrnoValue UQErrno::_E_::Memory(L'E', L"_E_::Memory", 1005);
const UQErrnoValue UQErrno::_E_::Gui(L'E', L"_E_::Gui", 1006);
const UQErrnoValue UQErrno::_E_::Conversion(L'E', L"_E_::Conversion", 1007);
const UQErrnoValue UQErrno::_E_::Synchronization(L'E', L"_E_::Synchronization", 1008);
const UQErrnoValue UQErrno::_E_::Internal(L'E', L"_E_::Internal", 1009);
const UQErrnoValue UQErrno::_E_::State(L'E', L"_E_::State", 1010);
const UQErrnoValue UQErrno::_E_::DataCorrupted(L'E', L"_E_::DataCorrupted", 1011);
const UQErrnoValue UQErrno::_E_::Resource(L'E', L"_E_::Resource", 1012);
const UQErrnoValue UQErrno::_E_::System(L'E', L"_E_::System", 1013);
const UQErrnoValue UQErrno::_E_::NotImplemented(L'E', L"_E_::NotImplemented", 1014);
const UQErrnoValue UQErrno::_E_::BufferTooSmall(L'E', L"_E_::BufferTooSmall", 1015);
const UQErrnoValue UQErrno::_E_::File(L'E', L"_E_::File", 1016);
const UQErrnoValue UQErrno::_E_::Format(L'E', L"_E_::Format", 1017);
const UQErrnoValue UQErrno::_E_::Registry(L'E', L"_E_::Registry", 1018);
const UQErrnoValue UQErrno::_W_::ItemNotFound(L'W', L"_W_::ItemNotFound", 1050);
const UQErrnoValue UQErrno::_W_::UserCanceled(L'W', L"_W_::UserCanceled", 1051);
const UQErrnoValue UQErrno::_I_::StubFile(L'I', L"_I_::StubFile", 1080);

namespace {

CString catalogueText(unsigned _uNumber) {
    try {
        return UQString(_uNumber);
    } catch (const UQErrno&) {
        CString s;
        s.Format(L"Message %u", _uNumber);
        return s;
    }
}

#if !defined(_WIN32)
const wchar_t* nativeSystemMessage(std::uint32_t _uN) {
    switch (_uN) {
    case 0:
        return L"The operation completed successfully.";
    case 1:
        return L"Incorrect function.";
    case 2:
        return L"The system cannot find the file specified.";
    case 3:
        return L"The system cannot find the path specified.";
    case 5:
        return L"Access is denied.";
    case 6:
        return L"The handle is invalid.";
    case 8:
        return L"Not enough memory resources are available to process this command.";
    case 14:
        return L"Not enough memory resources are available to complete this operation.";
    case 32:
        return L"The process cannot access the file because it is being used by another process.";
    case 80:
        return L"The file exists.";
    case 87:
        return L"The parameter is incorrect.";
    case 122:
        return L"The data area passed to a system call is too small.";
    case 183:
        return L"Cannot create a file when that file already exists.";
    case 234:
        return L"More data is available.";
    case 259:
        return L"No more data is available.";
    case 1223:
        return L"The operation was canceled by the user.";
    case 1400:
        return L"Invalid window handle.";
    case 1421:
        return L"Control ID not found.";
    default:
        return nullptr;
    }
}
#endif

} // namespace

UQSeverity UQErrnoValue::mf_getSeverity() const noexcept {
    return m_cSeverity == L'E' ? UQSeverity::Error
                               : (m_cSeverity == L'W' ? UQSeverity::Warning : UQSeverity::Info);
}

UQErrno::UQErrno(const UQErrnoValue& _value) : m_data(_value), m_uSystemError(0) {}
UQErrno::UQErrno(const UQErrnoData& _data) : m_data(_data), m_uSystemError(0) {}
UQErrno::UQErrno(const UQErrnoData& _data, std::uint32_t _uSystemError)
    : m_data(_data), m_uSystemError(_uSystemError) {}
UQErrno::UQErrno(const UQErrnoData& _data, const CString& _sDetail)
    : m_data(_data), m_uSystemError(0), m_sDetail(_sDetail) {}
UQErrno::UQErrno(const UQErrno& _other) = default;
UQErrno& UQErrno::operator=(const UQErrno& _other) = default;
UQErrno::~UQErrno() = default;

CString UQErrno::mf_getString() const {
    const UQErrnoValue* v = m_data.mf_getValue();
    return v != nullptr ? catalogueText(v->mf_getMessageNumber()) : CString(L"No error.");
}

CString UQErrno::mf_toString() const {
    const UQErrnoValue* v = m_data.mf_getValue();
    CString s;
    if (v == nullptr) {
        s = L"No error.";
    } else {
        s.Format(L"[%c] %s: %s", v->mf_getSeverityLetter(), v->mf_getName(), mf_getString());
    }
    if (!m_sDetail.IsEmpty())
        s.AppendFormat(L" (%s)", m_sDetail);
    if (m_uSystemError != 0)
        s.AppendFormat(L" (system error %lu: %s)", m_uSystemError, mf_getSystemMessage(m_uSystemError));
    return s;
}

CString UQErrno::mf_toGuiMessage(const UQErrnoData& _data, const CString& _sPrefix) {
    const UQErrnoValue* v = _data.mf_getValue();
    CString s(_sPrefix);
    s += v != nullptr ? catalogueText(v->mf_getMessageNumber()) : CString(L"No error.");
    return s;
}

CString UQErrno::mf_getSystemMessage(std::uint32_t _uSystemError) {
    CString s;
#if defined(_WIN32)
    wchar_t* buffer = nullptr;
    const DWORD len = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        _uSystemError, 0, reinterpret_cast<wchar_t*>(&buffer), 0, nullptr);
    if (len > 0 && buffer != nullptr)
        s = CString(buffer, static_cast<int>(len));
    if (buffer != nullptr)
        LocalFree(buffer);
#else
    const wchar_t* text = nativeSystemMessage(_uSystemError);
    if (text != nullptr)
        s = text;
#endif
    s.TrimRight(L"\r\n ");
    if (s.IsEmpty())
        s.Format(L"Unknown error %lu", _uSystemError);
    return s;
}
