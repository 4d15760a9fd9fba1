#include "SearchListSink.h"

void SearchListSink::mf_onQueryData(const UQQueryData& queryData) {
    m_rList.mf_add(queryData);
}
