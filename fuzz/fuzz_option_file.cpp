// The option-file validator over any file content: valid, or refused with an error that names the file.
#include "FuzzSupport.h"

#include "compat/utf8.h"
#include "interfaces/korarchiver.h"

#include <fstream>
#include <string>
#include <unistd.h>

namespace {

std::string g_path;
UQBackup* g_pBackup = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    f_discardLog();
    g_path = "/tmp/kor-fuzz-options-" + std::to_string(getpid()) + ".opt";
    g_pBackup = UQBackup::mf_createInstance(UQBackend::VRS);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* _pData, std::size_t _nSize) {
    {
        std::ofstream file(g_path, std::ios::binary | std::ios::trunc);
        file.write(reinterpret_cast<const char*>(_pData), static_cast<std::streamsize>(_nSize));
    }
    const std::wstring sPath = uqfmt::nativeToWide(g_path.data(), g_path.size());
    UQBackupOptions options;
    options.mf_setOptionsFilePath(CString(sPath.c_str()));
    UQErrnoData error;
    try {
        f_require(UQBackup::mf_validateOptions(g_pBackup, options, error) == 1,
                  "a file that passes answers 1");
    } catch (const UQErrno& failure) {
        f_require(failure.mf_getDetail().Find(CString(sPath.c_str())) >= 0, "the error names the file");
    }
    return 0;
}
