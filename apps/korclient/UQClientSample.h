// A fresh sample for the client: a folder of generated files of many sizes in nested folders, with a
// non-Latin name and a path longer than 300 characters among them, and the hash of each file's content.
#pragma once

#include <map>
#include <string>

class UQClientSample {
public:
    // Writes _nFiles files below _sFolder (created); answers 0 with the reason when that fails.
    static int mf_generate(const std::wstring& _sFolder, int _nFiles,
                           std::map<std::wstring, std::string>& _rHashes, std::wstring& _rsReason);
    // The SHA-256 of a file's content; empty when it cannot be read.
    static std::string mf_hashFile(const std::wstring& _sPath);
    // Removes a folder and everything below it, without following links.
    static void mf_removeTree(const std::wstring& _sFolder);
};
