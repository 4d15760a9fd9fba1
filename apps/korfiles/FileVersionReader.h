#pragma once

#include "FileVersionRecord.h"

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

    // Parses a whole file's text. Good lines are appended to _rRecords in file order; each malformed line
    // goes to _rProblems. A leading UTF-8 byte order mark, LF or CRLF line ends, blank lines and '#' comment
    // lines are accepted. Answers the number of malformed lines.
    static int mf_read(const std::string& _sText, std::vector<FileVersionRecord>& _rRecords,
                       ProblemSink& _rProblems);

    // One line without its line end. Answers 1 and fills _rRecord (but not its line number) for a version
    // line, 0 with _rProblem set for a malformed one; blank and comment lines are neither and answer 0 with
    // _rProblem empty.
    static int mf_parseLine(const std::string& _sLine, FileVersionRecord& _rRecord, std::string& _rProblem);

    // "YYYY-MM-DD HH:MM:SS" or "YYYY-MM-DD HH:MM:SS.mmm", taken as it is written (no time zone).
    static int mf_parseTime(const std::string& _sText, UQFileTime& _rTime, std::string& _rProblem);
};
