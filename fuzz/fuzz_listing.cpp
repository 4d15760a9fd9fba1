// The listing reader over any text: every line is either taken or reported, never both, never lost.
#include "FuzzSupport.h"

#include "interfaces/korarchiver.h"

namespace {

class CountingListener : public UVListingFileReader {
public:
    void mf_onMigrationEntry(std::uint32_t _uNumber, const UQFileTime& _time, const CString& _sPath,
                             std::uint32_t _uVersion, const CString& _sResult,
                             const UQSeverity& _severity) override {
        ++m_uEntries;
        // Touch what was handed over, so that the sanitizers see a bad string.
        (void)_sPath.GetLength();
        (void)_sResult.GetLength();
    }
    std::uint32_t m_uEntries = 0;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    f_discardLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* _pData, std::size_t _nSize) {
    CountingListener listener;
    const UQListingReader::Result result =
        UQListingReader::mf_readText(f_bytes(_pData, _nSize), L"fuzz.lst", listener);
    f_require(result.uEntries == listener.m_uEntries, "every entry taken was reported to the listener");
    for (const UQErrno& error : result.errors)
        f_require(!error.mf_toString().IsEmpty(), "an error has a text");
    return 0;
}
