// The directory file of the account stand-in (controllers and their users) over any text.
#include "FuzzSupport.h"

#include "interfaces/korutil.h"

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    f_discardLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* _pData, std::size_t _nSize) {
    const UQDirectoryFile::Result result = UQDirectoryFile::mf_readText(f_bytes(_pData, _nSize), L"fuzz.dir");
    for (const UQDirectoryController& controller : result.controllers)
        f_require(!controller.sName.IsEmpty(), "a controller taken has a name");
    for (const UQErrno& error : result.errors)
        f_require(!error.mf_toString().IsEmpty(), "an error has a text");
    return 0;
}
