#include "interfaces/korutil.h"

#include <cstdio>

namespace {

const char* const FIRST_NAMES[] = {
    "Aaron",  "Abby",   "Adrian", "Alice",  "Amelia", "Anna",  "Ben",    "Carla",  "Chris", "Clara",
    "Daniel", "Diana",  "Eric",   "Emma",   "Felix",  "Grace", "Hannah", "Ian",    "Jacob", "Julia",
    "Kevin",  "Laura",  "Lucas",  "Maria",  "Martin", "Nina",  "Oliver", "Paula",  "Peter", "Rachel",
    "Simon",  "Sophie", "Thomas", "Ursula", "Victor", "Wendy", "Xavier", "Yvonne", "Zoe",   "Arne"};
const char* const LAST_NAMES[] = {"Acker",  "Baker",    "Becker",  "Carter", "Clark",   "Cole",   "Dixon",
                                  "Ecker",  "Evans",    "Fischer", "Foster", "Garcia",  "Graham", "Hall",
                                  "Hansen", "Hoffmann", "Jensen",  "Keller", "King",    "Koch",   "Lang",
                                  "Lewis",  "Meyer",    "Miller",  "Moore",  "Nagel",   "Novak",  "Olsen",
                                  "Parker", "Peters",   "Reed",    "Roth",   "Schmidt", "Scott",  "Sommer",
                                  "Taylor", "Turner",   "Vogel",   "Walker", "Weber",   "Wright", "Young"};
const char* const SERVICE_NAMES[] = {"svc-backup", "svc-print", "svc-sql", "svc-web", "scanner", "kiosk"};

// SplitMix64: a good spread from consecutive inputs.
std::uint64_t mix(std::uint64_t _uValue) {
    _uValue += 0x9E3779B97F4A7C15ull;
    _uValue = (_uValue ^ (_uValue >> 30)) * 0xBF58476D1CE4E5B9ull;
    _uValue = (_uValue ^ (_uValue >> 27)) * 0x94D049BB133111EBull;
    return _uValue ^ (_uValue >> 31);
}

template <class T, std::size_t N> const char* pick(T (&_aNames)[N], std::uint64_t _uValue) {
    return _aNames[_uValue % N];
}

std::string lower(std::string _sText) {
    for (char& c : _sText)
        c = static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
    return _sText;
}

} // namespace

UQUserGenerator::UQUserGenerator(std::uint32_t _uCount, std::uint64_t _uStartValue)
    : m_uCount(_uCount), m_uStartValue(_uStartValue) {}

UQUser UQUserGenerator::mf_getUser(std::uint32_t _uIndex) const {
    const std::uint64_t uDomain = mix(m_uStartValue);
    const std::uint64_t uValue = mix(m_uStartValue * 0x100000001B3ull + _uIndex);
    char szSid[96];
    std::snprintf(szSid, sizeof szSid, "S-1-5-21-%u-%u-%u-%u", static_cast<unsigned>(uDomain & 0x3FFFFFFF),
                  static_cast<unsigned>((uDomain >> 20) & 0x3FFFFFFF),
                  static_cast<unsigned>((uDomain >> 40) & 0xFFFFFF), 1000u + _uIndex);
    // The index keeps account names unique, as the directory requires.
    if (uValue % 16 == 0) {
        const std::string sName = std::string(pick(SERVICE_NAMES, uValue >> 8)) + std::to_string(_uIndex);
        return UQUser(CString::FromUtf8(szSid), CString::FromUtf8(sName), CString());
    }
    const std::string sFirst = pick(FIRST_NAMES, uValue >> 8);
    const std::string sLast = pick(LAST_NAMES, uValue >> 24);
    const std::string sName =
        lower(sFirst.substr(0, 1 + (uValue >> 40) % 2) + sLast) + std::to_string(_uIndex);
    return UQUser(CString::FromUtf8(szSid), CString::FromUtf8(sName),
                  CString::FromUtf8(sFirst + " " + sLast));
}

void UQUserGenerator::mf_generate(UQArray<UQSid*, UQSid*>& _rUsers) const {
    _rUsers.SetSize(_rUsers.GetSize(), static_cast<INT_PTR>(m_uCount));
    for (std::uint32_t i = 0; i < m_uCount; ++i)
        UQAllocation::mf_appendOrDelete(_rUsers, static_cast<UQSid*>(new UQUser(mf_getUser(i))));
}
