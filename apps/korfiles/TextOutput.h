#pragma once

#include <string>

// Where korfiles writes its text: the console, or a string in tests.
class TextOutput {
public:
    // _sText is UTF-8 with "\n" line ends. Failures to write are not reported.
    virtual void mf_write(const std::string& _sText) noexcept = 0;
    // Whether a person watches it: only a terminal gets lines rewritten in place (ProgressLine).
    virtual bool mf_isTerminal() const noexcept { return false; }

protected:
    ~TextOutput() = default;
};
