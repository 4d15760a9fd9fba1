// The attribute list is declared by korbase, where the archiver's management classes use it too.
#pragma once

#include "interfaces/korbase.h"
