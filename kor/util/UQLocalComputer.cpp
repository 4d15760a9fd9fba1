#include "kor/util/UQLocalComputer.h"

#include "kor/KorReport.h"
#include <cerrno>
#include <memory>

#if defined(_WIN32)
#include <lm.h>
#include <sddl.h>
#else
#include <pwd.h>
#include <unistd.h>

#include <mutex>
#endif

namespace {

const wchar_t* const FUNCTION_QUERY = L"UQLocalComputer::mf_queryDisplayUsers";

[[noreturn]] void queryFailure(const UQErrno& _error, const wchar_t* _pszWhat) {
    UQKorReport::mf_fail(_error, FUNCTION_QUERY, L"Failure %s:\r\n%s%s", _pszWhat, UQLog::TAB,
                         _error.mf_toString());
}

// Takes the new users over only when all of them were made, so that a failure leaves the array as it was.
void appendAll(std::vector<std::unique_ptr<UQUser>>& _users, UQArray<UQSid*, UQSid*>& _rUsers) {
    _rUsers.SetSize(_rUsers.GetSize(), static_cast<INT_PTR>(_users.size()) + 1);
    for (std::unique_ptr<UQUser>& pUser : _users)
        UQAllocation::mf_appendOrDelete(_rUsers, static_cast<UQSid*>(pUser.release()));
}

#if defined(_WIN32)
CString sidOfAccount(const wchar_t* _pszName) {
    BYTE sid[SECURITY_MAX_SID_SIZE];
    DWORD dwSidSize = sizeof sid;
    wchar_t szDomain[256];
    DWORD dwDomainSize = 256;
    SID_NAME_USE eUse;
    if (!LookupAccountNameW(nullptr, _pszName, sid, &dwSidSize, szDomain, &dwDomainSize, &eUse))
        return CString();
    wchar_t* pszSid = nullptr;
    if (!ConvertSidToStringSidW(sid, &pszSid))
        return CString();
    CString sSid(pszSid);
    LocalFree(pszSid);
    return sSid;
}
#endif

} // namespace

UQLocalComputer::UQLocalComputer() : UQSidAuthority(mf_implComputerName(), mf_implComputerName(), 0) {}

UQLocalComputer::~UQLocalComputer() = default;

CString UQLocalComputer::mf_implComputerName() {
#if defined(_WIN32)
    wchar_t szName[MAX_COMPUTERNAME_LENGTH + 1];
    DWORD dwSize = MAX_COMPUTERNAME_LENGTH + 1;
    return GetComputerNameW(szName, &dwSize) ? CString(szName) : CString(L"localhost");
#else
    char szName[256] = {};
    return gethostname(szName, sizeof szName - 1) == 0 ? CString::FromUtf8(szName) : CString(L"localhost");
#endif
}

void UQLocalComputer::mf_queryDisplayUsers(UQArray<UQSid*, UQSid*>& _rUsers) const {
    std::vector<std::unique_ptr<UQUser>> users;
#if defined(_WIN32)
    // Level 10 brings the full names; Wine 8 knows only level 0 (names) and answers ERROR_INVALID_LEVEL.
    DWORD dwLevel = 10;
    DWORD dwResume = 0;
    NET_API_STATUS nStatus;
    do {
        LPBYTE pBuffer = nullptr;
        DWORD dwRead = 0, dwTotal = 0;
        nStatus = NetUserEnum(nullptr, dwLevel, FILTER_NORMAL_ACCOUNT, &pBuffer, MAX_PREFERRED_LENGTH,
                              &dwRead, &dwTotal, &dwResume);
        if (nStatus == ERROR_INVALID_LEVEL && dwLevel == 10 && users.empty()) {
            if (pBuffer != nullptr)
                NetApiBufferFree(pBuffer);
            dwLevel = 0;
            dwResume = 0;
            nStatus = ERROR_MORE_DATA;
            continue;
        }
        if (nStatus != NERR_Success && nStatus != ERROR_MORE_DATA) {
            if (pBuffer != nullptr)
                NetApiBufferFree(pBuffer);
            queryFailure(UQErrno(UQErrnoData(UQErrno::_E_::System), static_cast<std::uint32_t>(nStatus)),
                         L"enumerating the local accounts");
        }
        try {
            for (DWORD i = 0; i < dwRead; ++i) {
                if (dwLevel == 0) {
                    const USER_INFO_0* pInfo = reinterpret_cast<const USER_INFO_0*>(pBuffer);
                    users.emplace_back(
                        new UQUser(sidOfAccount(pInfo[i].usri0_name), pInfo[i].usri0_name, CString()));
                    continue;
                }
                const USER_INFO_10* pInfo = reinterpret_cast<const USER_INFO_10*>(pBuffer);
                // The full name is the second text; without one, the account's comment.
                CString sSecond(pInfo[i].usri10_full_name != nullptr ? pInfo[i].usri10_full_name : L"");
                if (sSecond.IsEmpty() && pInfo[i].usri10_comment != nullptr)
                    sSecond = pInfo[i].usri10_comment;
                users.emplace_back(
                    new UQUser(sidOfAccount(pInfo[i].usri10_name), pInfo[i].usri10_name, sSecond));
            }
        } catch (...) {
            NetApiBufferFree(pBuffer);
            throw;
        }
        if (pBuffer != nullptr)
            NetApiBufferFree(pBuffer);
    } while (nStatus == ERROR_MORE_DATA);
#else
    // getpwent walks one cursor for the whole process.
    static std::mutex s_lock;
    std::lock_guard<std::mutex> lock(s_lock);
    errno = 0;
    setpwent();
    try {
        while (const passwd* pEntry = getpwent()) {
            std::string sGecos = pEntry->pw_gecos != nullptr ? pEntry->pw_gecos : "";
            sGecos = sGecos.substr(0, sGecos.find(','));
            users.emplace_back(new UQUser(CString::FromUtf8("S-1-22-1-" + std::to_string(pEntry->pw_uid)),
                                          CString::FromUtf8(pEntry->pw_name), CString::FromUtf8(sGecos)));
        }
    } catch (...) {
        endpwent();
        throw;
    }
    const int nError = errno;
    endpwent();
    if (nError != 0 && nError != ENOENT && users.empty())
        queryFailure(UQErrno(UQErrnoData(UQErrno::_E_::System), static_cast<std::uint32_t>(nError)),
                     L"reading the user database");
#endif
    appendAll(users, _rUsers);
}
