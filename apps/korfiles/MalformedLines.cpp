#include "MalformedLines.h"

#include <algorithm>

void MalformedLines::mf_onProblem(int line, const std::string& problem) noexcept {
    try {
        m_problems.emplace_back(line, problem);
    } catch (...) {
        ++m_nLost;
    }
}

void MalformedLines::mf_report(const std::string& file, TextOutput& err) {
    std::stable_sort(m_problems.begin(), m_problems.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& p : m_problems)
        err.mf_write(file + ":" + std::to_string(p.first) + ": " + p.second + "\n");
    if (m_nLost > 0)
        err.mf_write("korfiles: out of memory: " + std::to_string(m_nLost) +
                     " malformed lines not reported\n");
}
