#pragma once

#include "FileVersionRecord.h"

#include <cstdint>
#include <string>
#include <vector>

// Reads the korfiles text format (docs/file-versions-format.md): UTF-8, one file version per line,
// tab-separated path, version, size, last write time and optional result and severity.
class FileVersionReader {
public:
    // Told of each malformed line as it is found; the reader then skips that line.
    class ProblemSink {
    public:
        // _sProblem is UTF-8 and names what is wrong, quoting the offending field.
        virtual void mf_onProblem(int _nLine, const std::string& _sProblem) noexcept = 0;

    protected:
        ~ProblemSink() = default;
    };

    // Told now and then how far a read has come.
    class ProgressSink {
    public:
        // _uRecords lines read so far, the first _uBytes bytes of the text.
        virtual void mf_onProgress(std::uint64_t _uRecords, std::uint64_t _uBytes) noexcept = 0;

    protected:
        ~ProgressSink() = default;
    };

    // Parses a whole file's text. Good lines are appended to _rRecords in file order; each malformed line
    // goes to _rProblems. A UTF-8 byte order mark at the start of a line, LF or CRLF line ends, blank lines
    // and '#' comment lines are accepted. _pProgress, if given, hears of every 4096th line. Answers the
    // number of malformed lines.
    static int mf_read(const std::string& _sText, std::vector<FileVersionRecord>& _rRecords,
                       ProblemSink& _rProblems, ProgressSink* _pProgress = nullptr);

    // One line without its line end. Answers 1 and fills _rRecord (but not its line number) for a version
    // line, 0 with _rProblem set for a malformed one; blank and comment lines are neither and answer 0 with
    // _rProblem empty.
    static int mf_parseLine(const std::string& _sLine, FileVersionRecord& _rRecord, std::string& _rProblem);

    // "YYYY-MM-DD HH:MM:SS" or "YYYY-MM-DD HH:MM:SS.mmm", taken as it is written (no time zone).
    static int mf_parseTime(const std::string& _sText, UQFileTime& _rTime, std::string& _rProblem);
};
