#include "interfaces/korarchiver.h"

UVListingFileReader::~UVListingFileReader() = default;
