#include "interfaces/korbase.h"

UVSeverity::~UVSeverity() = default;
UQSeverity::~UQSeverity() = default;

const UQSeverity UQSeverity::Info(UVSeverity::GREEN);
const UQSeverity UQSeverity::Warning(UVSeverity::YELLOW);
const UQSeverity UQSeverity::Error(UVSeverity::RED);

CString UVSeverity::mf_toString(const UVSeverity& _severity) {
    switch (_severity.mf_getValue()) {
    case GREEN:
        return UQString(1100);
    case YELLOW:
        return UQString(1101);
    case RED:
        return UQString(1102);
    default: {
        CString s;
        s.Format(L"Severity %d", _severity.mf_getValue());
        return s;
    }
    }
}
