#include "compat/UQHandle.h"
#include "interfaces/korarchiver.h"
#include "kor/KorReport.h"

#include <cerrno>
#include <cstdio>
#include <cwchar>
#include <memory>

namespace {

constexpr std::uint64_t TICKS_PER_SECOND = 10000000u;
constexpr std::uint64_t TICKS_PER_DAY = 86400u * TICKS_PER_SECOND;
// 2019-01-01 00:00:00 as a file time.
constexpr std::uint64_t FIRST_DAY = 131907744000000000u;
constexpr std::size_t MIN_GENERATED_PATH = 60;
constexpr std::size_t MAX_GENERATED_PATH = 130;

std::uint64_t mix(std::uint64_t _uX) noexcept {
    // splitmix64's finaliser: every bit of the input reaches every bit of the output.
    _uX += 0x9E3779B97F4A7C15ull;
    _uX = (_uX ^ (_uX >> 30)) * 0xBF58476D1CE4E5B9ull;
    _uX = (_uX ^ (_uX >> 27)) * 0x94D049BB133111EBull;
    return _uX ^ (_uX >> 31);
}

// (a * b) mod m for a, b < m < 2^40, without overflow: b is taken in two parts of 20 bits.
std::uint64_t mulMod(std::uint64_t _uA, std::uint64_t _uB, std::uint64_t _uM) noexcept {
    const std::uint64_t high = (_uA * (_uB >> 20)) % _uM;
    return ((high << 20) % _uM + _uA * (_uB & 0xFFFFFu)) % _uM;
}

std::uint64_t gcd(std::uint64_t _uA, std::uint64_t _uB) noexcept {
    while (_uB != 0) {
        const std::uint64_t t = _uA % _uB;
        _uA = _uB;
        _uB = t;
    }
    return _uA;
}

const wchar_t* const SERVERS[] = {L"\\\\FILESRV01", L"\\\\FILESRV02", L"\\\\FILESRV03", L"\\\\NAS-BRANCH"};
const wchar_t* const SHARES[] = {L"Projects", L"Finance", L"Engineering", L"Human Resources",
                                 L"Sales",    L"Archive", L"Users",       L"Legal"};
const wchar_t* const DIRECTORIES[] = {L"2019",
                                      L"2020",
                                      L"2021",
                                      L"2022",
                                      L"2023",
                                      L"2024",
                                      L"Atlas",
                                      L"Meridian",
                                      L"Northwind",
                                      L"Harbour Bridge",
                                      L"Drawings",
                                      L"Contracts",
                                      L"Correspondence",
                                      L"Data Sheets",
                                      L"Meeting Minutes",
                                      L"Invoices",
                                      L"Working Copies",
                                      L"Final",
                                      L"Q1 Reports",
                                      L"Q3 Reports",
                                      L"Customer Acme Corporation",
                                      L"Supplier Audits",
                                      L"Site Surveys",
                                      L"Templates",
                                      L"Photos",
                                      L"Budget Planning",
                                      L"Old Versions",
                                      L"Scans",
                                      L"Tender Documents",
                                      L"Quality Records"};
const wchar_t* const STEMS[] = {L"Quarterly report", L"assembly",        L"invoice",     L"contract draft",
                                L"meeting notes",    L"budget forecast", L"site survey", L"test protocol",
                                L"presentation",     L"data sheet",      L"memo",        L"inspection photo"};
const wchar_t* const EXTENSIONS[] = {L".docx", L".xlsx", L".pdf", L".dwg", L".pptx",
                                     L".msg",  L".txt",  L".zip", L".jpg", L".vsdx"};

template <class T, std::size_t N> constexpr std::size_t countOf(T (&)[N]) noexcept {
    return N;
}

// A path assembled in a fixed buffer, so that a record costs one string allocation.
class PathBuilder {
public:
    PathBuilder() : m_n(0) {}
    void append(const wchar_t* _pszS) noexcept {
        while (*_pszS != 0 && m_n < CAPACITY)
            m_text[m_n++] = *_pszS++;
    }
    void separator() noexcept { append(L"\\"); }
    // At least seven digits, with leading zeros.
    void number(std::uint32_t _uValue) noexcept {
        wchar_t digits[11];
        int i = 10;
        digits[i] = 0;
        do {
            digits[--i] = static_cast<wchar_t>(L'0' + _uValue % 10);
            _uValue /= 10;
        } while (_uValue != 0 || i > 3);
        append(digits + i);
    }
    std::size_t size() const noexcept { return m_n; }
    void truncate(std::size_t _nN) noexcept { m_n = _nN; }
    CString text() const { return CString(m_text, static_cast<int>(m_n)); }

private:
    static constexpr std::size_t CAPACITY = 256;
    wchar_t m_text[CAPACITY];
    std::size_t m_n;
};

std::size_t length(const wchar_t* _pszS) noexcept {
    return std::wcslen(_pszS);
}

// The path of a file: server, share, two to four directories, and a name made unique by the file's
// number, kept between MIN_GENERATED_PATH and MAX_GENERATED_PATH characters.
CString pathOf(std::uint64_t _uH, std::uint32_t _uFile) {
    const wchar_t* server = SERVERS[_uH % countOf(SERVERS)];
    const wchar_t* share = SHARES[(_uH >> 3) % countOf(SHARES)];
    const wchar_t* stem = STEMS[(_uH >> 7) % countOf(STEMS)];
    const wchar_t* extension = EXTENSIONS[(_uH >> 11) % countOf(EXTENSIONS)];
    const std::size_t nameLength = length(stem) + 1 + 7 + length(extension);
    std::size_t total = length(server) + 1 + length(share) + 1 + nameLength;

    const wchar_t* directories[8];
    std::size_t count = 0;
    std::uint64_t choice = mix(_uH);
    const std::size_t wanted = 2 + (_uH >> 15) % 3;
    while (count < 8) {
        const wchar_t* d = DIRECTORIES[choice % countOf(DIRECTORIES)];
        choice = mix(choice);
        if (count >= wanted && total >= MIN_GENERATED_PATH)
            break;
        if (count >= 1 && total + length(d) + 1 > MAX_GENERATED_PATH)
            break;
        directories[count++] = d;
        total += length(d) + 1;
    }
    PathBuilder path;
    path.append(server);
    path.separator();
    path.append(share);
    for (std::size_t i = 0; i < count; ++i) {
        path.separator();
        path.append(directories[i]);
    }
    path.separator();
    path.append(stem);
    path.append(L" ");
    path.number(_uFile);
    path.append(extension);
    return path.text();
}

} // namespace

UQHistoryGenerator::UQHistoryGenerator(std::uint32_t _uFiles, std::uint64_t _uSeed)
    : m_uFiles(_uFiles), m_uSeed(_uSeed), m_uStep(1) {
    const std::uint64_t slots = mf_getSlotCount();
    if (slots > 2) {
        // A step coprime to the slot count visits every slot once, scattered like records on tapes.
        std::uint64_t step = static_cast<std::uint64_t>(static_cast<double>(slots) * 0.6180339887) | 1u;
        while (gcd(step, slots) != 1)
            step += 2;
        m_uStep = step % slots;
    }
}

std::uint64_t UQHistoryGenerator::mf_implFileOfSlot(std::uint64_t _uSlot,
                                                    std::uint32_t& _rVersionIndex) const noexcept {
    const std::uint64_t slots = mf_getSlotCount();
    const std::uint64_t scattered = (mulMod(_uSlot, m_uStep, slots) + m_uSeed % slots) % slots;
    _rVersionIndex = static_cast<std::uint32_t>(scattered % 5);
    return scattered / 5;
}

std::uint64_t UQHistoryGenerator::mf_countRecords(std::uint64_t _uFirstSlot,
                                                  std::uint64_t _uEndSlot) const noexcept {
    std::uint64_t count = 0;
    if (_uEndSlot > mf_getSlotCount())
        _uEndSlot = mf_getSlotCount();
    for (std::uint64_t slot = _uFirstSlot; slot < _uEndSlot; ++slot) {
        std::uint32_t versionIndex = 0;
        const std::uint64_t file = mf_implFileOfSlot(slot, versionIndex);
        const std::uint64_t h = mix(m_uSeed ^ mix(file));
        if (versionIndex < 1 + h % 5)
            ++count;
    }
    return count;
}

std::uint64_t UQHistoryGenerator::mf_generate(std::uint64_t _uFirstSlot, std::uint64_t _uEndSlot,
                                              UVQueryDataSink& _rSink) const {
    std::uint64_t count = 0;
    if (_uEndSlot > mf_getSlotCount())
        _uEndSlot = mf_getSlotCount();
    for (std::uint64_t slot = _uFirstSlot; slot < _uEndSlot; ++slot) {
        std::uint32_t v = 0;
        const std::uint64_t file = mf_implFileOfSlot(slot, v);
        const std::uint64_t h = mix(m_uSeed ^ mix(file));
        const std::uint32_t versions = static_cast<std::uint32_t>(1 + h % 5);
        if (v >= versions)
            continue;
        const std::uint64_t hv = mix(h + v + 1);
        // One file in eight skips a number after its second version.
        const std::uint32_t number = v + 1 + ((h >> 19) % 8 == 0 && v >= 2 ? 1 : 0);
        const std::uint64_t firstWrite =
            FIRST_DAY + ((h >> 22) % (5 * 365)) * TICKS_PER_DAY + ((h >> 34) % 86400) * TICKS_PER_SECOND;
        const std::uint64_t lastWrite =
            firstWrite + v * (1 + (h >> 43) % 90) * TICKS_PER_DAY + (hv % 86400) * TICKS_PER_SECOND;
        const std::int64_t size =
            static_cast<std::int64_t>(512 + (h >> 20) % (64u << 20) + v * ((hv >> 8) % 4096));
        std::uint32_t flags = 0;
        if ((h >> 29) % 10 < 6)
            flags |= UQQueryData::FLAG_SECURITY;
        if ((h >> 37) % 20 == 0)
            flags |= UQQueryData::FLAG_AD_STREAMS;
        if ((hv >> 3) % 10 == 0)
            flags |= UQQueryData::FLAG_PROTECTED;
        const bool eventBased = (h >> 45) % 16 == 0;
        if (eventBased) {
            flags |= UQQueryData::FLAG_EVENT_BASED;
            if ((h >> 50) % 2 == 0)
                flags |= UQQueryData::FLAG_DELETION_STARTED;
        }
        UQExpiryTime expiry = {0};
        if (!eventBased && (hv >> 13) % 8 == 0)
            expiry.uFileTime = lastWrite + (365 + (hv >> 23) % 30) * TICKS_PER_DAY;
        const UQQueryData::AccessKey access = {static_cast<std::uint32_t>(1 + (hv >> 17) % 400),
                                               (hv >> 27) % (1ull << 36)};
        const CString path = pathOf(h, static_cast<std::uint32_t>(file));
        const UQQueryData data(path, path, number, UQFileTime(lastWrite), UQFileSize(size), flags, expiry,
                               access);
        _rSink.mf_onQueryData(data);
        ++count;
    }
    return count;
}

void UQHistoryGenerator::mf_writeStore(const CString& _sFile) const {
    static const wchar_t* const _sFunction_ = L"UQHistoryGenerator::mf_writeStore";
#if defined(_WIN32)
    FILE* f = _wfopen(_sFile, L"wb");
#else
    FILE* f = std::fopen(_sFile.ToUtf8().c_str(), "wb");
#endif
    const int openError = errno;
    if (f == nullptr) {
        CString detail;
        detail.Format(L"%s: cannot create (errno %d)", _sFile, openError);
        UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::File), detail), _sFunction_,
                             L"Failure creating history store '%s'", _sFile);
    }
    const UQStdFile closer(f);

    class Writer : public UVQueryDataSink {
    public:
        explicit Writer(FILE* _pF) : m_f(_pF), m_bFailed(false) {}
        void mf_onQueryData(const UQQueryData& _data) override {
            std::string line = UQHistoryStore::mf_formatRecord(_data);
            line += '\n';
            if (std::fwrite(line.data(), 1, line.size(), m_f) != line.size())
                m_bFailed = true;
        }
        bool failed() const { return m_bFailed; }

    private:
        FILE* m_f;
        bool m_bFailed;
    } writer(f);

    char header[160];
    std::snprintf(header, sizeof header,
                  "# History store made by UQHistoryGenerator: %lu files, start %llu\n"
                  "# object path\tfile path\tversion\tlast write\tsize\tflags\texpiry\tvolume:position\n",
                  static_cast<unsigned long>(m_uFiles), static_cast<unsigned long long>(m_uSeed));
    const bool headerWritten = std::fputs(header, f) >= 0;
    mf_generate(0, mf_getSlotCount(), writer);
    if (!headerWritten || writer.failed() || std::fflush(f) != 0) {
        CString detail;
        detail.Format(L"%s: write error", _sFile);
        UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::File), detail), _sFunction_,
                             L"Failure writing history store '%s'", _sFile);
    }
}
