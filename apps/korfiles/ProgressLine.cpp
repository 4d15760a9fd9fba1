#include "ProgressLine.h"

#include <string>

namespace {

const std::chrono::milliseconds QUIET_TIME(1000);
const std::chrono::milliseconds INTERVAL(200);

std::chrono::steady_clock::time_point now() {
    return std::chrono::steady_clock::now();
}

} // namespace

ProgressLine::ProgressLine(TextOutput& _rErr, std::uint64_t _uTotalBytes)
    : ProgressLine(_rErr, _uTotalBytes, &now) {}

ProgressLine::ProgressLine(TextOutput& _rErr, std::uint64_t _uTotalBytes, Clock _clock)
    : m_rErr(_rErr), m_uTotalBytes(_uTotalBytes), m_clock(std::move(_clock)),
      m_bEnabled(_rErr.mf_isTerminal()), m_bShown(false), m_nShownLength(0) {
    m_start = m_clock();
    m_lastShown = m_start;
}

ProgressLine::~ProgressLine() {
    mf_finish();
}

void ProgressLine::mf_onProgress(std::uint64_t _uRecords, std::uint64_t _uBytes) noexcept {
    if (!m_bEnabled)
        return;
    try {
        const auto t = m_clock();
        if (t - m_start < QUIET_TIME || (m_bShown && t - m_lastShown < INTERVAL))
            return;
        const std::uint64_t percent = m_uTotalBytes == 0 ? 100 : _uBytes * 100 / m_uTotalBytes;
        const std::string text = "korfiles: " + std::to_string(_uRecords) + " records read (" +
                                 std::to_string(percent > 100 ? 100 : percent) + "%)";
        // Blanks over what a longer line before left.
        const std::size_t pad = m_nShownLength > text.size() ? m_nShownLength - text.size() : 0;
        m_rErr.mf_write("\r" + text + std::string(pad, ' '));
        m_bShown = true;
        m_lastShown = t;
        m_nShownLength = text.size();
    } catch (...) {
        // Out of memory or a clock that failed: the read goes on without its progress line.
        m_bEnabled = false;
    }
}

void ProgressLine::mf_onReadProgress(std::uint64_t _uLines, std::uint64_t _uBytes,
                                     std::uint64_t _uTotalBytes) noexcept {
    if (_uTotalBytes != 0)
        m_uTotalBytes = _uTotalBytes;
    mf_onProgress(_uLines, _uBytes);
}

void ProgressLine::mf_finish() noexcept {
    if (!m_bShown)
        return;
    m_bShown = false;
    try {
        m_rErr.mf_write("\r" + std::string(m_nShownLength, ' ') + "\r");
    } catch (...) {
        // Out of memory: the line stays, the next text follows it.
    }
}
