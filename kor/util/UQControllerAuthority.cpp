#include "kor/util/UQControllerAuthority.h"

#include "kor/KorReport.h"

UQControllerAuthority::UQControllerAuthority(const CString& _sFile, const UQDirectoryController& _controller)
    : UQSidAuthority(_controller.sName, _controller.sDisplayName, _controller.bMarked), m_sFile(_sFile) {}

UQControllerAuthority::~UQControllerAuthority() = default;

void UQControllerAuthority::mf_queryDisplayUsers(UQArray<UQSid*, UQSid*>& _rUsers) const {
    static const wchar_t* const _sFunction_ = L"UQControllerAuthority::mf_queryDisplayUsers";
    const UQDirectoryFile::Result result = UQDirectoryFile::mf_read(m_sFile);
    for (const UQDirectoryController& controller : result.controllers) {
        if (controller.sName.Compare(mf_getName()) != 0)
            continue;
        if (!controller.bAnswers) {
            CString sDetail;
            sDetail.Format(L"The domain controller '%s' does not answer", mf_getName());
            UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::Resource), sDetail), _sFunction_,
                                 L"Domain controller '%s' does not answer", mf_getName());
        }
        UQArray<UQSid*, UQSid*> users;
        try {
            users.SetSize(0, static_cast<INT_PTR>(controller.users.size() + controller.uGenerated) + 1);
            for (const UQUser& user : controller.users)
                UQAllocation::mf_appendOrDelete(users, static_cast<UQSid*>(new UQUser(user)));
            UQUserGenerator(controller.uGenerated, controller.uStartValue).mf_generate(users);
            _rUsers.Append(users);
        } catch (...) {
            for (INT_PTR i = 0; i < users.GetSize(); ++i)
                delete users[i];
            throw;
        }
        return;
    }
    CString sDetail;
    sDetail.Format(L"%s: no controller '%s'", m_sFile, mf_getName());
    UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::ItemNotFound), sDetail), _sFunction_,
                         L"Domain controller '%s' is no longer in the directory", mf_getName());
}
