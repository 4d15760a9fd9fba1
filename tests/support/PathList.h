// The paths of a list's items in list order, as UTF-8: what the list tests compare. The one place the
// tests build them.
#pragma once

#include "support/LogCheck.h"

#include <string>
#include <vector>

template <class ARRAY> std::vector<std::string> paths(const ARRAY& _items) {
    std::vector<std::string> asPaths;
    for (INT_PTR i = 0; i < _items.GetSize(); ++i)
        asPaths.push_back(utf8(_items[i]->mf_getPath()));
    return asPaths;
}
