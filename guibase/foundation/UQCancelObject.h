// UQCancelObject lives in korbase (interfaces/korbase.h), beside the thread base that derives from it.
#pragma once

#include "interfaces/korbase.h"
