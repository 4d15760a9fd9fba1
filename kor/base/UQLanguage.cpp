#include "interfaces/korbase.h"
#include "kor/KorReport.h"
#include "kor/base/Environment.h"

#include <mutex>
#include <utility>
#include <vector>

namespace {

const wchar_t* const FALLBACK_MODULE = L"korlang_en.dll";
// Overrides the user's interface language with an ISO 639 name ("de", "en"): for testing, screenshots and
// users whose Windows speaks a language they do not want here.
const wchar_t* const LANGUAGE_VARIABLE = L"KOR_LANGUAGE";

// Loaded modules by file name; they stay loaded for the life of the process, as dialogs and icons taken
// from them may live that long.
std::mutex g_lock;
std::vector<std::pair<CString, HMODULE>> g_modules;

// The directory of korbase.dll with a trailing backslash; empty when it cannot be told.
CString moduleDirectory() {
    HMODULE self = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<LPCWSTR>(&moduleDirectory), &self))
        return CString();
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;) {
        const DWORD n = GetModuleFileNameW(self, buffer.data(), static_cast<DWORD>(buffer.size()));
        if (n == 0)
            return CString();
        if (n < buffer.size()) {
            CString path(buffer.data(), static_cast<int>(n));
            return path.Left(path.ReverseFind(L'\\') + 1);
        }
        buffer.resize(buffer.size() * 2);
    }
}

// "korlang_de.dll" for "de"; the English module for a name that is not two or three letters, so the name
// cannot leave the directory.
CString moduleFileName(const CString& iso) {
    const int length = iso.GetLength();
    bool plain = length >= 2 && length <= 3;
    for (int i = 0; plain && i < length; ++i)
        plain = (iso[i] >= L'a' && iso[i] <= L'z') || (iso[i] >= L'A' && iso[i] <= L'Z');
    if (!plain)
        return FALLBACK_MODULE;
    CString name = L"korlang_" + iso + L".dll";
    name.MakeLower();
    return name;
}

CString moduleFileName(unsigned long language) {
    const LANGID langId = language > 0xFFFFul ? GetUserDefaultUILanguage() : static_cast<LANGID>(language);
    wchar_t iso[16] = {0};
    if (GetLocaleInfoW(MAKELCID(langId, SORT_DEFAULT), LOCALE_SISO639LANGNAME, iso, 16) > 0)
        return moduleFileName(CString(iso));
    return FALLBACK_MODULE;
}

HMODULE cached(const CString& name) {
    for (const auto& entry : g_modules) {
        if (entry.first.CompareNoCase(name) == 0)
            return entry.second;
    }
    return nullptr;
}

// The module of that name, loaded once; the English one when that module does not exist. A missing module
// is remembered as the English one, so texts looked up one by one do not ask the file system each time.
HMODULE loadModule(const CString& directory, const CString& requested) noexcept {
    static const wchar_t* const _sFunction_ = L"UQLanguage::mf_getLanguageHandle";
    CString path;
    DWORD error = 0;
    try {
        std::lock_guard<std::mutex> guard(g_lock);
        if (HMODULE module = cached(requested))
            return module;
        CString name = requested;
        if (GetFileAttributesW(directory + name) == INVALID_FILE_ATTRIBUTES)
            name = FALLBACK_MODULE;
        HMODULE module = cached(name);
        if (module == nullptr) {
            path = directory + name;
            SetLastError(0);
            module = LoadLibraryExW(path, nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
            if (module == nullptr)
                error = GetLastError();
            else
                g_modules.emplace_back(name, module);
        }
        if (module != nullptr) {
            if (name.CompareNoCase(requested) != 0)
                g_modules.emplace_back(requested, module);
            return module;
        }
    } catch (...) {
        // Only allocation can fail above; it is reported like a module that cannot be loaded.
    }
    try {
        const UQErrno failure(UQErrnoData(UQErrno::_E_::Resource), static_cast<std::uint32_t>(error));
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure loading language module '%s':\r\n%s%s",
                            path, UQLog::TAB, failure.mf_toString());
    } catch (...) {
        // The record is lost; the null answer still tells the caller.
    }
    return nullptr;
}

} // namespace

HMODULE UQLanguage::mf_getUserLanguageHandle() noexcept {
    return mf_getLanguageHandle(CURRENT);
}

HMODULE UQLanguage::mf_getLanguageHandle(unsigned long _uLanguage) noexcept {
    try {
        const CString directory = moduleDirectory();
        if (_uLanguage > 0xFFFFul) {
            const CString chosen = korenv::variable(LANGUAGE_VARIABLE);
            if (!chosen.IsEmpty())
                return loadModule(directory, moduleFileName(chosen));
        }
        return loadModule(directory, moduleFileName(_uLanguage));
    } catch (...) {
        // Out of memory before anything was loaded: the caller sees the same null as for a missing module.
        return nullptr;
    }
}
