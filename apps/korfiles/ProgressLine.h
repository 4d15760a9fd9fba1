#pragma once

#include "FileVersionReader.h"
#include "TextOutput.h"

#include "interfaces/korarchiver.h"

#include <chrono>
#include <cstdint>
#include <functional>

// How far a long read has come, on standard error: "korfiles: 120000 records read (45%)", rewritten in
// place (carriage return) at most five times a second, once the read has taken longer than a second, and
// erased when it ends. Silent unless standard error is a terminal, so that logs and pipes get only the
// closing count line. It hears the file versions reader and korarchiver's readers (listings, history
// stores) alike; a history search tells it on the search's thread while the program waits.
class ProgressLine : public FileVersionReader::ProgressSink, public UVReadProgress {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    // _uTotalBytes: the size of what is read, for the percentage.
    ProgressLine(TextOutput& _rErr, std::uint64_t _uTotalBytes);
    // With the time taken from _clock, for tests.
    ProgressLine(TextOutput& _rErr, std::uint64_t _uTotalBytes, Clock _clock);
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine();

    void mf_onProgress(std::uint64_t _uRecords, std::uint64_t _uBytes) noexcept override;
    // A total of 0 keeps the size given on construction.
    void mf_onReadProgress(std::uint64_t _uLines, std::uint64_t _uBytes,
                           std::uint64_t _uTotalBytes) noexcept override;
    // Erases the line if it was shown; nothing else is written afterwards.
    void mf_finish() noexcept;

private:
    TextOutput& m_rErr;
    std::uint64_t m_uTotalBytes;
    Clock m_clock;
    bool m_bEnabled;
    bool m_bShown;
    std::chrono::steady_clock::time_point m_start;
    std::chrono::steady_clock::time_point m_lastShown;
    std::size_t m_nShownLength;
};
