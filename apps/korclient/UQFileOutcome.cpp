#include "UQFileOutcome.h"

#include "guibase/foundation/UQReport.h"

void UQFileOutcome::mf_log(const wchar_t* _pszFunction) const {
    UQReport::mf_log(eSeverity == GREEN ? UQLogData::LEVEL_T : UQLogData::LEVEL_W, _pszFunction, L"%s: %s",
                     sPath.c_str(), sResult.c_str());
}
