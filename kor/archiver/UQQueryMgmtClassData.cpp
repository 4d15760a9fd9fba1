#include "interfaces/korarchiver.h"

#include "kor/KorReport.h"
UQQueryMgmtClassData::UQQueryMgmtClassData(const CString& _sName, const CString& _sDescription,
                                           const UQAttributeList& _attributes,
                                           const UQSeverity& _commentSeverity, const CString& _sComment,
                                           CommentState _eCommentState)
    : m_sName(_sName), m_sDescription(_sDescription), m_attributes(_attributes),
      m_commentSeverity(_commentSeverity), m_sComment(_sComment), m_eCommentState(_eCommentState) {}

UQQueryMgmtClassData::~UQQueryMgmtClassData() = default;

// The server keeps one form of its comments, the user's: _bForUser chooses nothing here.
UQSeverity UQQueryMgmtClassData::mf_queryUserComment(CString& _rsComment, int _bForUser) const {
    static const wchar_t* const _sFunction_ = L"UQQueryMgmtClassData::mf_queryUserComment";
    if (m_eCommentState == COMMENT_UNAVAILABLE) {
        CString sDetail;
        sDetail.Format(L"The server keeps no comment for management class '%s'", m_sName);
        UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::Resource), sDetail), _sFunction_,
                             L"Failure querying comment of management class '%s'", m_sName);
    }
    _rsComment = m_sComment;
    return m_commentSeverity;
}
