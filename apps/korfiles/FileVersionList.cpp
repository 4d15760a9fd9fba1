#include "FileVersionList.h"

#include <memory>

FileVersionList::~FileVersionList() {
    for (auto& item : m_items)
        delete item.second.pItem;
}

int FileVersionList::mf_add(const FileVersionRecord& _record, std::string& _rProblem) {
    const auto key = std::make_pair(_record.sPath, _record.uVersion);
    const auto known = m_firstLines.find(key);
    if (known != m_firstLines.end()) {
        _rProblem = "version " + std::to_string(_record.uVersion) +
                    " of this path is already listed on line " + std::to_string(known->second);
        return 0;
    }

    const auto found = m_items.find(_record.sPath);
    if (found != m_items.end()) {
        found->second.pItem->mf_addVersion(_record.uVersion, _record.size, _record.lastWriteTime);
        found->second.bUnsorted = true;
    } else {
        std::unique_ptr<UQFileListItem> created(new UQFileListItem(_record.sPath, _record.uVersion,
                                                                   _record.size, _record.lastWriteTime,
                                                                   _record.sResult, _record.severity));
        m_items.emplace(_record.sPath, Entry{created.get(), true});
        static_cast<void>(created.release()); // the map owns the item now
    }
    m_firstLines.emplace(key, _record.nLine);
    return 1;
}

UQFileListItem* FileVersionList::mf_implSorted(Entry& _rEntry) {
    if (_rEntry.bUnsorted) {
        // Newest first: the ranges string then reads upwards and the newest version is the selected one.
        _rEntry.pItem->mf_sortVersions(0);
        _rEntry.bUnsorted = false;
    }
    return _rEntry.pItem;
}

const UQFileListItem* FileVersionList::mf_find(const CString& _sPath) {
    const auto found = m_items.find(_sPath);
    return found == m_items.end() ? nullptr : mf_implSorted(found->second);
}

void FileVersionList::mf_getSorted(UQFileListItem::Array& _rItems, FileListOrder::Key _key, int _bAscending) {
    _rItems.RemoveAll();
    _rItems.SetSize(0, static_cast<INT_PTR>(m_items.size()));
    for (auto& item : m_items)
        _rItems.Add(mf_implSorted(item.second));
    FileListOrder::mf_sort(_rItems, _key, _bAscending);
}
