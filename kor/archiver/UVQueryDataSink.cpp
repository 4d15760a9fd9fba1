#include "interfaces/korarchiver.h"

UVQueryDataSink::~UVQueryDataSink() = default;
