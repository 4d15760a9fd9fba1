// What the client knows of one stored version, and the two texts that carry it: the stub file left in
// place of a migrated file, and the header of the stored version's file on the server
// (docs/server-directory-format.md). Both are read from disk and parsed strictly: anything unexpected is
// refused with a reason, never guessed at.
#pragma once

#include <cstdint>
#include <string>

class UQVersionRecord {
public:
    // Stub files are small; a bigger file is no stub.
    static const std::size_t MAX_STUB_BYTES = 4096;
    // A stored version's header ends within this many bytes.
    static const std::size_t MAX_HEADER_BYTES = 70000;
    static const char* const STUB_MAGIC;
    static const char* const DATA_MAGIC;

    std::wstring m_sObjectPath;   // the name the server keeps the object under
    std::wstring m_sName;         // the file's name relative to the migrated folder (stored header only)
    std::uint32_t m_uVersion = 0; // the server's version number
    std::uint32_t m_uVolume = 0;  // where the data lies: volume and position
    std::uint64_t m_uPosition = 0;
    std::uint64_t m_uSize = 0; // bytes of content
    std::string m_sSha256;     // 64 lower-case hex digits of the content

    std::string mf_formatStub() const;
    std::string mf_formatHeader() const;

    // 1 when _sText is a complete stub; else 0 with the reason.
    static int mf_parseStub(const std::string& _sText, UQVersionRecord& _rRecord, std::wstring& _rsReason);
    // Whether the text starts as a stub does, so that a file can be taken for a stub before it is parsed.
    static int mf_looksLikeStub(const std::string& _sStart);
    // Parses the header at the start of _sText; 1 with its length in bytes (the content follows), else 0
    // with the reason (also when the header does not end within _sText).
    static int mf_parseHeader(const std::string& _sText, UQVersionRecord& _rRecord,
                              std::size_t& _rnHeaderBytes, std::wstring& _rsReason);

private:
    static int mf_implParseLines(const std::string& _sText, std::size_t _nEnd, int _bHeader,
                                 UQVersionRecord& _rRecord, std::wstring& _rsReason);
};
