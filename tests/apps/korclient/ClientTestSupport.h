// What the korclient tests share: a scratch folder of their own, files written and read back byte for
// byte, and a look at everything below a folder.
#pragma once

#include "UQFileOutcome.h"
#include "UQRetrieval.h"
#include "UQSafeFile.h"
#include "UQServerDirectory.h"

#include <string>
#include <vector>

namespace clienttest {

// A fresh folder below the temporary folder, removed with everything in it when the object goes.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::wstring& _sName);
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    const std::wstring& path() const noexcept { return m_sPath; }

private:
    std::wstring m_sPath;
};

std::string utf8(const std::wstring& _sText);
// Writes _sContent to _sPath, creating its folders; false when that fails.
bool writeFile(const std::wstring& _sPath, const std::string& _sContent);
// The bytes of a file; "<missing>" when it cannot be read.
std::string readFile(const std::wstring& _sPath);
bool exists(const std::wstring& _sPath);
// Every file below _sFolder, as paths relative to it, sorted.
std::vector<std::wstring> filesBelow(const std::wstring& _sFolder);
// Content that differs from file to file.
std::string contentOf(int _nStart, std::size_t _nBytes);
// The outcome for _sPath among _outcomes; an outcome with an empty path and result when there is none.
UQFileOutcome outcomeOf(const std::vector<UQFileOutcome>& _outcomes, const std::wstring& _sPath);
// A stored version of object C:\data\object<position>, version 1, written into _rServer as the server
// would, under any name the server cares to give; answers the request that retrieves it.
UQRetrieval::Request craftVersion(UQServerDirectory& _rServer, std::uint64_t _uPosition,
                                  const std::wstring& _sName, const std::string& _sContent);
// Makes _sLink a symbolic link to _sTarget (a folder or a file); false when none could be made. Under Wine 8,
// whose CreateSymbolicLinkW makes nothing, the link is a Linux one beside the Wine drive.
bool plantSymbolicLink(const std::wstring& _sTarget, const std::wstring& _sLink, bool _bFolder);
// Removes a link plantSymbolicLink made, never what it leads to.
bool removeSymbolicLink(const std::wstring& _sLink);

} // namespace clienttest
