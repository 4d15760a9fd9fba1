#include "interfaces/korarchiver.h"

const UQBackend UQBackend::NONE(0);
const UQBackend UQBackend::VRS(1);

CString UQBackend::mf_getPrefix(const UQBackend& _backend) {
    // Only the constants above can be copied, so every value is one of them.
    return _backend == VRS ? CString(L"VRS") : CString();
}
