#pragma once

#include <string>

// Where korfiles writes its text: the console, or a string in tests.
class TextOutput {
public:
    // _sText is UTF-8 with "\n" line ends. A write that fails is remembered (mf_getError) and every later
    // write is dropped, so that a full disk or a closed pipe ends the output at the first failure.
    virtual void mf_write(const std::string& _sText) noexcept = 0;
    // Whether a person watches it: only a terminal gets lines rewritten in place (ProgressLine).
    virtual bool mf_isTerminal() const noexcept { return false; }
    // The errno of the first write that failed; 0 while every write went through.
    virtual int mf_getError() const noexcept { return 0; }

protected:
    ~TextOutput() = default;
};
