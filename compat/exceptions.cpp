#include "compat/afxtempl.h"

CException::~CException() = default;
void CException::Delete() {}
CInvalidArgException::~CInvalidArgException() = default;
CMemoryException::~CMemoryException() = default;

void AfxThrowInvalidArgException() {
    static CInvalidArgException s_exception;
    throw &s_exception;
}

void AfxThrowMemoryException() {
    static CMemoryException s_exception;
    throw &s_exception;
}
