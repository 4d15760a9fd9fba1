#include "compat/UQHandle.h"
#include "interfaces/korarchiver.h"
#include "kor/KorReport.h"

#include <cerrno>
#include <cstdio>
#include <cwchar>
#include <memory>

namespace {

constexpr std::uint64_t kTicksPerSecond = 10000000u;
constexpr std::uint64_t kTicksPerDay = 86400u * kTicksPerSecond;
// 2019-01-01 00:00:00 as a file time.
constexpr std::uint64_t kFirstDay = 131907744000000000u;
constexpr std::size_t kMinPath = 60;
constexpr std::size_t kMaxPath = 130;

std::uint64_t mix(std::uint64_t x) noexcept {
    // splitmix64's finaliser: every bit of the input reaches every bit of the output.
    x += 0x9E3779B97F4A7C15ull;
    x = (x ^ (x >> 30)) * 0xBF58476D1CE4E5B9ull;
    x = (x ^ (x >> 27)) * 0x94D049BB133111EBull;
    return x ^ (x >> 31);
}

// (a * b) mod m for a, b < m < 2^40, without overflow: b is taken in two parts of 20 bits.
std::uint64_t mulMod(std::uint64_t a, std::uint64_t b, std::uint64_t m) noexcept {
    const std::uint64_t high = (a * (b >> 20)) % m;
    return ((high << 20) % m + a * (b & 0xFFFFFu)) % m;
}

std::uint64_t gcd(std::uint64_t a, std::uint64_t b) noexcept {
    while (b != 0) {
        const std::uint64_t t = a % b;
        a = b;
        b = t;
    }
    return a;
}

const wchar_t* const kServers[] = {L"\\\\FILESRV01", L"\\\\FILESRV02", L"\\\\FILESRV03", L"\\\\NAS-BRANCH"};
const wchar_t* const kShares[] = {L"Projects", L"Finance", L"Engineering", L"Human Resources",
                                  L"Sales",    L"Archive", L"Users",       L"Legal"};
const wchar_t* const kDirectories[] = {L"2019",
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
const wchar_t* const kStems[] = {L"Quarterly report", L"assembly",      L"invoice",
                                 L"contract draft",   L"meeting notes", L"budget forecast",
                                 L"site survey",      L"test protocol", L"presentation",
                                 L"data sheet",       L"memo",          L"inspection photo"};
const wchar_t* const kExtensions[] = {L".docx", L".xlsx", L".pdf", L".dwg", L".pptx",
                                      L".msg",  L".txt",  L".zip", L".jpg", L".vsdx"};

template <class T, std::size_t N> constexpr std::size_t countOf(T (&)[N]) noexcept {
    return N;
}

// A path assembled in a fixed buffer, so that a record costs one string allocation.
class PathBuilder {
public:
    PathBuilder() : m_n(0) {}
    void append(const wchar_t* s) noexcept {
        while (*s != 0 && m_n < kCapacity)
            m_text[m_n++] = *s++;
    }
    void separator() noexcept { append(L"\\"); }
    // At least seven digits, with leading zeros.
    void number(std::uint32_t value) noexcept {
        wchar_t digits[11];
        int i = 10;
        digits[i] = 0;
        do {
            digits[--i] = static_cast<wchar_t>(L'0' + value % 10);
            value /= 10;
        } while (value != 0 || i > 3);
        append(digits + i);
    }
    std::size_t size() const noexcept { return m_n; }
    void truncate(std::size_t n) noexcept { m_n = n; }
    CString text() const { return CString(m_text, static_cast<int>(m_n)); }

private:
    static constexpr std::size_t kCapacity = 256;
    wchar_t m_text[kCapacity];
    std::size_t m_n;
};

std::size_t length(const wchar_t* s) noexcept {
    return std::wcslen(s);
}

// The path of a file: server, share, two to four directories, and a name made unique by the file's
// number, kept between kMinPath and kMaxPath characters.
CString pathOf(std::uint64_t h, std::uint32_t file) {
    const wchar_t* server = kServers[h % countOf(kServers)];
    const wchar_t* share = kShares[(h >> 3) % countOf(kShares)];
    const wchar_t* stem = kStems[(h >> 7) % countOf(kStems)];
    const wchar_t* extension = kExtensions[(h >> 11) % countOf(kExtensions)];
    const std::size_t nameLength = length(stem) + 1 + 7 + length(extension);
    std::size_t total = length(server) + 1 + length(share) + 1 + nameLength;

    const wchar_t* directories[8];
    std::size_t count = 0;
    std::uint64_t choice = mix(h);
    const std::size_t wanted = 2 + (h >> 15) % 3;
    while (count < 8) {
        const wchar_t* d = kDirectories[choice % countOf(kDirectories)];
        choice = mix(choice);
        if (count >= wanted && total >= kMinPath)
            break;
        if (count >= 1 && total + length(d) + 1 > kMaxPath)
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
    path.number(file);
    path.append(extension);
    return path.text();
}

} // namespace

UQHistoryGenerator::UQHistoryGenerator(std::uint32_t files, std::uint64_t start)
    : m_uFiles(files), m_uSeed(start), m_uStep(1) {
    const std::uint64_t slots = mf_getSlotCount();
    if (slots > 2) {
        // A step coprime to the slot count visits every slot once, scattered like records on tapes.
        std::uint64_t step = static_cast<std::uint64_t>(static_cast<double>(slots) * 0.6180339887) | 1u;
        while (gcd(step, slots) != 1)
            step += 2;
        m_uStep = step % slots;
    }
}

std::uint64_t UQHistoryGenerator::mf_implFileOfSlot(std::uint64_t slot,
                                                    std::uint32_t& versionIndex) const noexcept {
    const std::uint64_t slots = mf_getSlotCount();
    const std::uint64_t scattered = (mulMod(slot, m_uStep, slots) + m_uSeed % slots) % slots;
    versionIndex = static_cast<std::uint32_t>(scattered % 5);
    return scattered / 5;
}

std::uint64_t UQHistoryGenerator::mf_countRecords(std::uint64_t firstSlot,
                                                  std::uint64_t endSlot) const noexcept {
    std::uint64_t count = 0;
    if (endSlot > mf_getSlotCount())
        endSlot = mf_getSlotCount();
    for (std::uint64_t slot = firstSlot; slot < endSlot; ++slot) {
        std::uint32_t versionIndex = 0;
        const std::uint64_t file = mf_implFileOfSlot(slot, versionIndex);
        const std::uint64_t h = mix(m_uSeed ^ mix(file));
        if (versionIndex < 1 + h % 5)
            ++count;
    }
    return count;
}

std::uint64_t UQHistoryGenerator::mf_generate(std::uint64_t firstSlot, std::uint64_t endSlot,
                                              UVQueryDataSink& sink) const {
    std::uint64_t count = 0;
    if (endSlot > mf_getSlotCount())
        endSlot = mf_getSlotCount();
    for (std::uint64_t slot = firstSlot; slot < endSlot; ++slot) {
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
            kFirstDay + ((h >> 22) % (5 * 365)) * kTicksPerDay + ((h >> 34) % 86400) * kTicksPerSecond;
        const std::uint64_t lastWrite =
            firstWrite + v * (1 + (h >> 43) % 90) * kTicksPerDay + (hv % 86400) * kTicksPerSecond;
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
            expiry.uFileTime = lastWrite + (365 + (hv >> 23) % 30) * kTicksPerDay;
        const UQQueryData::AccessKey access = {static_cast<std::uint32_t>(1 + (hv >> 17) % 400),
                                               (hv >> 27) % (1ull << 36)};
        const CString path = pathOf(h, static_cast<std::uint32_t>(file));
        const UQQueryData data(path, path, number, UQFileTime(lastWrite), UQFileSize(size), flags, expiry,
                               access);
        sink.mf_onQueryData(data);
        ++count;
    }
    return count;
}

void UQHistoryGenerator::mf_writeStore(const CString& file) const {
    static const wchar_t* const _sFunction_ = L"UQHistoryGenerator::mf_writeStore";
#if defined(_WIN32)
    FILE* f = _wfopen(file, L"wb");
#else
    FILE* f = std::fopen(file.ToUtf8().c_str(), "wb");
#endif
    const int openError = errno;
    if (f == nullptr) {
        CString detail;
        detail.Format(L"%s: cannot create (errno %d)", file, openError);
        UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::File), detail), _sFunction_,
                             L"Failure creating history store '%s'", file);
    }
    const UQStdFile closer(f);

    class Writer : public UVQueryDataSink {
    public:
        explicit Writer(FILE* f) : m_f(f), m_bFailed(false) {}
        void mf_onQueryData(const UQQueryData& data) override {
            std::string line = UQHistoryStore::mf_formatRecord(data);
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
        detail.Format(L"%s: write error", file);
        UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::File), detail), _sFunction_,
                             L"Failure writing history store '%s'", file);
    }
}
