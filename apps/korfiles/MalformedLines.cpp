#include "MalformedLines.h"

#include <algorithm>

void MalformedLines::mf_onProblem(int _nLine, const std::string& _sProblem) noexcept {
    try {
        m_problems.emplace_back(_nLine, _sProblem);
    } catch (...) {
        ++m_nLost;
    }
}

void MalformedLines::mf_report(const std::string& _sFile, TextOutput& _rErr) {
    std::stable_sort(m_problems.begin(), m_problems.end(),
                     [](const auto& _a, const auto& _b) { return _a.first < _b.first; });
    for (const auto& p : m_problems)
        _rErr.mf_write(_sFile + ":" + std::to_string(p.first) + ": " + p.second + "\n");
    if (m_nLost > 0)
        _rErr.mf_write("korfiles: out of memory: " + std::to_string(m_nLost) +
                       " malformed lines not reported\n");
}
