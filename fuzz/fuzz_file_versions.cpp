// The file-versions reader of korfiles over any text: good and malformed lines add up to what was read.
#include "FuzzSupport.h"

#include "FileVersionReader.h"

#include <vector>

namespace {

class CountingProblems : public FileVersionReader::ProblemSink {
public:
    void mf_onProblem(int _nLine, const std::string& _sProblem) noexcept override {
        ++m_nProblems;
        if (_nLine <= 0 || _sProblem.empty())
            m_bBad = true;
    }
    int m_nProblems = 0;
    bool m_bBad = false;
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    f_discardLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* _pData, std::size_t _nSize) {
    std::vector<FileVersionRecord> records;
    CountingProblems problems;
    const int nMalformed = FileVersionReader::mf_read(f_bytes(_pData, _nSize), records, problems);
    f_require(nMalformed == problems.m_nProblems, "every malformed line reached the sink");
    f_require(!problems.m_bBad, "a problem names its line and says what is wrong");
    return 0;
}
