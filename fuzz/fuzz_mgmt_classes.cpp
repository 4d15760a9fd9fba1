// The management class file of the storage server stand-in over any text.
#include "FuzzSupport.h"

#include "interfaces/korarchiver.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    f_discardLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* _pData, std::size_t _nSize) {
    const UQMgmtClassFile::Result result = UQMgmtClassFile::mf_readText(f_bytes(_pData, _nSize), L"fuzz.mcl");
    for (const UQQueryMgmtClassData& data : result.classes)
        f_require(!data.mf_getName().IsEmpty(), "a class taken has a name");
    for (const UQErrno& error : result.errors)
        f_require(!error.mf_toString().IsEmpty(), "an error has a text");
    return 0;
}
