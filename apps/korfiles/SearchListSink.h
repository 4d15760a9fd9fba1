#pragma once

#include "guibase/search/UQSearchList.h"
#include "interfaces/korarchiver.h"

// Hands every record of a history search to an open search list, on the searching thread; the list keeps
// a clone. A UQErrno of the list (no memory, a closed list) ends the search with that error.
class SearchListSink : public UVQueryDataSink {
public:
    explicit SearchListSink(UQSearchList& _rList) : m_rList(_rList) {}
    void mf_onQueryData(const UQQueryData& _queryData) override;

private:
    UQSearchList& m_rList;
};
