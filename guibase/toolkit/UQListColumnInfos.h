#pragma once

#include "guibase/toolkit/UQListColumnInfo.h"

// The columns of a list panel; the position in the array is the column index.
class UQListColumnInfos : public UQArray<UQListColumnInfo, const UQListColumnInfo&> {};
