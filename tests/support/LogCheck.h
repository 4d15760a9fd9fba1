// Log and error assertions shared by the tests.
#pragma once

#include "interfaces/korbase_testing.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

// One log record as the tests compare it; texts in UTF-8 so that failures read well.
struct LogLine {
    char level;
    std::string function;
    std::string text;

    friend bool operator==(const LogLine& a, const LogLine& b) {
        return a.level == b.level && a.function == b.function && a.text == b.text;
    }
    friend std::ostream& operator<<(std::ostream& os, const LogLine& l) {
        return os << "{" << l.level << ", \"" << l.function << "\", \"" << l.text << "\"}";
    }
};

// Captures every record written while it lives. lines() also checks that the logging language was
// selected on the writing thread right before each record.
class LogCheck {
public:
    std::vector<LogLine> lines() const;
    std::size_t count() const { return m_capture.mf_getEntries().size(); }
    void clear() { m_capture.mf_clear(); }

private:
    UQLogCapture m_capture;
};

std::string utf8(const CString& s);
std::string utf8(const wchar_t* s);

// The category name of the UQErrno that f throws: "_E_::Range" and so on; "no exception" or
// "other exception" otherwise.
template <class F> std::string thrownCategory(F&& f) {
    try {
        f();
    } catch (const UQErrno& e) {
        const UQErrnoValue* v = e.mf_getData().mf_getValue();
        return v != nullptr ? utf8(v->mf_getName()) : std::string("empty UQErrno");
    } catch (...) {
        return "other exception";
    }
    return "no exception";
}

// Prints CStrings readably in gtest messages.
void PrintTo(const CString& s, std::ostream* os);
