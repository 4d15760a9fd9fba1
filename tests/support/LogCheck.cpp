#include "LogCheck.h"

std::string utf8(const CString& s) {
    return s.ToUtf8();
}
std::string utf8(const wchar_t* s) {
    return CString(s).ToUtf8();
}

std::vector<LogLine> LogCheck::lines() const {
    std::vector<LogLine> out;
    for (const UQLogCapture::Entry& e : m_capture.mf_getEntries()) {
        EXPECT_TRUE(e.bLanguageSelected) << "no UQThreadContext::mf_setLoggingLanguage before record of "
                                         << utf8(e.sFunction) << ": " << utf8(e.sText);
        out.push_back(LogLine{static_cast<char>(e.cLevel), utf8(e.sFunction), utf8(e.sText)});
    }
    return out;
}

void PrintTo(const CString& s, std::ostream* os) {
    *os << "L\"" << s.ToUtf8() << "\"";
}
