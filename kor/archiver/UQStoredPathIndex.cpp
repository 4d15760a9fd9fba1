#include "kor/archiver/UQStoredPathIndex.h"

std::size_t UQStoredPathIndex::mf_implHash(const CString& _sPath) noexcept {
    // FNV-1a over the characters as UQPath::mf_compare sees them: folded, '/' as '\'.
    std::uint64_t hash = 14695981039346656037ull;
    const wchar_t* p = _sPath.GetString();
    for (int i = 0; i < _sPath.GetLength(); ++i) {
        // ASCII inline: the call per character is most of a hash's time otherwise.
        const wchar_t c = p[i] == L'/'                   ? L'\\'
                          : p[i] >= L'A' && p[i] <= L'Z' ? static_cast<wchar_t>(p[i] + 32)
                          : p[i] < 0x80                  ? p[i]
                                                         : AfxFoldLower(p[i]);
        hash = (hash ^ static_cast<std::uint64_t>(static_cast<std::uint32_t>(c))) * 1099511628211ull;
    }
    return static_cast<std::size_t>(hash);
}

bool UQStoredPathIndex::FoldedEqual::operator()(const Path& _a, const Path& _b) const noexcept {
    return _a.uHash == _b.uHash && _a.sText.GetLength() == _b.sText.GetLength() &&
           UQPath::mf_compare(_a.sText, _b.sText) == 0;
}

std::uint32_t UQStoredPathIndex::mf_note(CString& _rsPath, std::uint32_t _uVersion, std::uint32_t _uLine) {
    const auto inserted = m_paths.insert(Path{_rsPath, mf_implHash(_rsPath), {}});
    const Path& path = *inserted.first;
    if (!inserted.second) {
        for (const auto& known : path.versions) {
            if (known.first == _uVersion)
                return known.second;
        }
        if (path.sText == _rsPath)
            _rsPath = path.sText;
    }
    path.versions.emplace_back(_uVersion, _uLine);
    return 0;
}
