// The history store reader over any text, with a query that takes every record and one with a pattern.
#include "FuzzSupport.h"

#include "interfaces/korarchiver.h"

namespace {

class CountingSink : public UVQueryDataSink {
public:
    void mf_onQueryData(const UQQueryData& _queryData) override {
        ++m_uRecords;
        (void)_queryData.mf_toString();
    }
    std::uint32_t m_uRecords = 0;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    f_discardLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* _pData, std::size_t _nSize) {
    const std::string text = f_bytes(_pData, _nSize);
    CountingSink all;
    const UQHistoryStore::Result every =
        UQHistoryStore::mf_searchText(text, L"fuzz.hst", UQHistoryQuery(), all);
    f_require(every.uMatches == all.m_uRecords, "every match reached the sink");
    f_require(every.uMatches == every.uRecords, "an empty query matches every good record");

    UQHistoryQuery query;
    query.sPattern = L"*\\Finance\\*";
    CountingSink some;
    const UQHistoryStore::Result matched = UQHistoryStore::mf_searchText(text, L"fuzz.hst", query, some);
    f_require(matched.uRecords == every.uRecords, "the pattern does not change what is read");
    f_require(matched.uMatches <= matched.uRecords, "no more matches than records");
    return 0;
}
