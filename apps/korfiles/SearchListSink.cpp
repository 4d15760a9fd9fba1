#include "SearchListSink.h"

void SearchListSink::mf_onQueryData(const UQQueryData& _queryData) {
    m_rList.mf_add(_queryData);
}
