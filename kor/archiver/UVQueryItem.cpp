#include "interfaces/korarchiver.h"

UVQueryItem::~UVQueryItem() = default;
