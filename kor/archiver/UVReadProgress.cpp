#include "interfaces/korarchiver.h"

UVReadProgress::~UVReadProgress() = default;
