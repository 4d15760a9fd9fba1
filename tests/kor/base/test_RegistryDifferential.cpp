// The same scripts of UQRegistry operations on both targets, answer for answer: the registry itself under
// Wine recorded the answers (registry-diff/*.answers); the native store must give each of them, but for the
// deviations listed with their reasons in registry-diff/deviations.txt. Script and answer formats:
// registry-diff/README.md.
#include "BaseTestSupport.h"
#include "guibase/settings/RegistrySandbox.h"
#include "support/LogCheck.h"

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <map>
#include <string>
#include <vector>

namespace {

// Longer texts are answered by their length and a hash, so that answer files stay small.
const int SHOWN_UNITS = 64;

std::string environment(const char* _pszName) {
    const char* value = std::getenv(_pszName);
    return value != nullptr ? value : "";
}

// One field of a script line: \\ \t \n \0, \uXXXX (one UTF-16 unit), \rN; (the unit before, N times in all).
CString unescape(const std::string& _field) {
    const CString text = CString::FromUtf8(_field);
    CString out;
    for (int i = 0; i < text.GetLength(); ++i) {
        const wchar_t c = text[i];
        if (c != L'\\' || i + 1 >= text.GetLength()) {
            out += c;
            continue;
        }
        const wchar_t e = text[++i];
        if (e == L't') {
            out += L'\t';
        } else if (e == L'n') {
            out += L'\n';
        } else if (e == L'0') {
            out += CString(L"\0", 1);
        } else if (e == L'u' && i + 4 < text.GetLength()) {
            out += static_cast<wchar_t>(std::stoul(text.Mid(i + 1, 4).ToUtf8(), nullptr, 16));
            i += 4;
        } else if (e == L'r') {
            const int end = text.Find(L';', i);
            const int count = std::atoi(text.Mid(i + 1, end - i - 1).ToUtf8().c_str());
            if (!out.IsEmpty() && count > 1)
                out += CString(out[out.GetLength() - 1], count - 1);
            i = end;
        } else {
            out += e;
        }
    }
    return out;
}

// A text as an answer shows it: escaped, or its length and FNV-1a hash over its units when long.
std::string shown(const CString& _s) {
    if (_s.GetLength() > SHOWN_UNITS) {
        std::uint32_t hash = 2166136261u;
        for (int i = 0; i < _s.GetLength(); ++i) {
            hash ^= static_cast<std::uint32_t>(_s[i]) & 0xFFFFu;
            hash *= 16777619u;
        }
        char text[48];
        std::snprintf(text, sizeof text, "#%d:%08x", _s.GetLength(), static_cast<unsigned>(hash));
        return text;
    }
    std::string out = "\"";
    for (int i = 0; i < _s.GetLength(); ++i) {
        const unsigned u = static_cast<unsigned>(_s[i]) & 0xFFFFu;
        if (u >= 0x20 && u < 0x7F && u != '\\' && u != '"') {
            out += static_cast<char>(u);
        } else {
            char text[8];
            std::snprintf(text, sizeof text, "\\u%04x", u);
            out += text;
        }
    }
    return out + "\"";
}

// Every field, the empty ones at the end included.
std::vector<std::string> fieldsOf(const std::string& _line) {
    std::vector<std::string> fields(1);
    for (const char c : _line) {
        if (c == '\t')
            fields.emplace_back();
        else if (c != '\r')
            fields.back() += c;
    }
    return fields;
}

HKEY hiveOf(const std::string& _text) {
    return _text == "HKLM" ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

// The answer to one operation: its result, or the category of the UQErrno it threw.
std::string answer(const std::vector<std::string>& _fields) {
    const std::string& op = _fields.at(0);
    const HKEY hive = hiveOf(_fields.at(1));
    const CString key = unescape(_fields.at(2));
    try {
        if (op == "pathexists")
            return std::to_string(UQRegistry::mf_PathExists(key, hive));
        const CString name = unescape(_fields.at(3));
        if (op == "set" || op == "setx") {
            UQRegistry::mf_setValue(name, unescape(_fields.at(4)), op == "setx" ? 1 : 0, key, hive);
            return "ok";
        }
        if (op == "setn") {
            UQRegistry::mf_setValue(name, static_cast<int>(std::stoll(_fields.at(4))), key, hive);
            return "ok";
        }
        if (op == "setl") {
            UQArray<CString> entries;
            const int count = std::stoi(_fields.at(4));
            for (int i = 0; i < count; ++i)
                entries.Add(unescape(_fields.at(5 + static_cast<std::size_t>(i))));
            UQRegistry::mf_setValues(name, entries, key, hive);
            return "ok";
        }
        if (op == "get") {
            CString value;
            UQRegistry::mf_getValue(name, value, key, hive);
            return shown(value);
        }
        if (op == "getn") {
            int value = 0;
            UQRegistry::mf_getValue(name, value, key, hive);
            return std::to_string(value);
        }
        if (op == "getl") {
            UQArray<CString> values;
            UQRegistry::mf_getValues(name, values, key, hive);
            std::string out = "[" + std::to_string(values.GetSize()) + "]";
            for (INT_PTR i = 0; i < values.GetSize(); ++i)
                out += " " + shown(values[i]);
            return out;
        }
        if (op == "gos") {
            int value = static_cast<int>(std::stoll(_fields.at(4)));
            const int found = UQRegistry::mf_getOrSetValue(name, value, key, hive);
            return std::to_string(found) + " " + std::to_string(value);
        }
        if (op == "gosu") {
            DWORD value = static_cast<DWORD>(std::stoul(_fields.at(4)));
            const int found = UQRegistry::mf_getOrSetValue(name, value, key, hive);
            return std::to_string(found) + " " + std::to_string(value);
        }
        if (op == "exists")
            return std::to_string(UQRegistry::mf_exists(name, key, hive));
        return "unknown operation " + op;
    } catch (const UQErrno& e) {
        const UQErrnoValue* v = e.mf_getData().mf_getValue();
        return std::string("error ") + (v != nullptr ? utf8(v->mf_getName()) : "empty UQErrno");
    }
}

std::vector<std::string> linesOf(const std::string& _path) {
    std::ifstream in(_path, std::ios::binary);
    EXPECT_TRUE(in.is_open()) << _path;
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        if (!line.empty() && line[0] != '#')
            lines.push_back(line);
    return lines;
}

// Runs a script in a registry of its own; one answer per operation, numbered from 1.
std::vector<std::string> run(const std::string& _script) {
    basetest::EnvironmentOverride a(L"KOR_DIFF_A", L"alpha");
    basetest::EnvironmentOverride nope(L"NOPE", nullptr);
    registrytest::RegistrySandbox sandbox;
    LogCheck quiet; // the failures each operation logs are not what this test looks at
    std::vector<std::string> answers;
    for (const std::string& line : linesOf(_script)) {
        answers.push_back(std::to_string(answers.size() + 1) + " " + answer(fieldsOf(line)));
        quiet.clear();
    }
    return answers;
}

#if !defined(_WIN32)
// "script:index native-answer\treason" lines: where the native store may answer otherwise, and why.
std::map<std::string, std::string> deviations(const std::string& _scriptName) {
    std::map<std::string, std::string> out;
    for (const std::string& line : linesOf(environment("KOR_REGDIFF_DIR") + "/deviations.txt")) {
        const std::size_t colon = line.find(':');
        const std::size_t tab = line.find('\t');
        if (colon == std::string::npos || tab == std::string::npos || line.substr(0, colon) != _scriptName)
            continue;
        out[line.substr(colon + 1, tab - colon - 1)] = line.substr(tab + 1);
    }
    return out;
}
#endif

void compare(const std::string& _scriptName, const std::string& _script) {
    const std::string answersFile = environment("KOR_REGDIFF_DIR") + "/" + _scriptName + ".answers";
    const std::vector<std::string> actual = run(_script);
    if (!environment("KOR_REGDIFF_RECORD").empty()) {
        std::ofstream out(answersFile, std::ios::binary);
        for (const std::string& line : actual)
            out << line << "\n";
        GTEST_SKIP() << "recorded " << actual.size() << " answers in " << answersFile;
    }
    const std::vector<std::string> expected = linesOf(answersFile);
    ASSERT_EQ(expected.size(), actual.size()) << answersFile;
#if defined(_WIN32)
    const std::map<std::string, std::string> listed;
#else
    const std::map<std::string, std::string> listed = deviations(_scriptName);
#endif
    int nDiffering = 0;
    int nListed = 0;
    for (std::size_t i = 0; i < actual.size(); ++i) {
        if (actual[i] == expected[i])
            continue;
        const auto it = listed.find(actual[i]);
        if (it != listed.end()) {
            ++nListed;
            continue;
        }
        if (++nDiffering <= 20)
            ADD_FAILURE() << _scriptName << " operation " << (i + 1) << ": registry " << expected[i]
                          << ", here " << actual[i];
    }
    EXPECT_EQ(0, nDiffering) << "answers that differ from the registry's";
    EXPECT_EQ(static_cast<int>(listed.size()), nListed) << "listed deviations that no longer occur";
    std::printf("%s: %zu operations, %d listed deviations\n", _scriptName.c_str(), actual.size(), nListed);
}

} // namespace

TEST(RegistryDifferential, HandWrittenEdgeCasesAnswerAsTheRegistry) {
    compare("edge-cases", environment("KOR_REGDIFF_DIR") + "/edge-cases.txt");
}

TEST(RegistryDifferential, GeneratedOperationsAnswerAsTheRegistry) {
    compare("generated", environment("KOR_REGDIFF_SCRIPT"));
}
