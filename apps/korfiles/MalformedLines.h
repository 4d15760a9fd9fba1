#pragma once

#include "FileVersionReader.h"
#include "TextOutput.h"

#include <string>
#include <utility>
#include <vector>

// Collects the malformed lines of one file, whichever step found them, and reports them in line order as
// "<file>:<line>: <what is wrong>".
class MalformedLines : public FileVersionReader::ProblemSink {
public:
    void mf_onProblem(int _nLine, const std::string& _sProblem) noexcept override;
    int mf_getCount() const noexcept { return static_cast<int>(m_problems.size()) + m_nLost; }
    // _sFile is UTF-8, as it should appear in the reports.
    void mf_report(const std::string& _sFile, TextOutput& _rErr);

private:
    std::vector<std::pair<int, std::string>> m_problems;
    // Problems that memory did not suffice to keep; counted, not reported one by one.
    int m_nLost = 0;
};
