#pragma once

#include <string>

// Where korfiles writes its text: the console, or a string in tests.
class TextOutput {
public:
    // _sText is UTF-8 with "\n" line ends. Failures to write are not reported.
    virtual void mf_write(const std::string& _sText) noexcept = 0;

protected:
    ~TextOutput() = default;
};
