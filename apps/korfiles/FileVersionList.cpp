#include "FileVersionList.h"

#include <algorithm>
#include <memory>

FileVersionList::~FileVersionList() {
    for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
        delete m_items[i];
}

int FileVersionList::mf_add(const FileVersionRecord& _record, std::string& _rProblem) {
    const auto key = std::make_pair(_record.sPath, _record.uVersion);
    const auto known = m_firstLines.find(key);
    if (known != m_firstLines.end()) {
        _rProblem = "version " + std::to_string(_record.uVersion) +
                    " of this path is already listed on line " + std::to_string(known->second);
        return 0;
    }

    UQFileListItem** begin = m_items.GetData();
    UQFileListItem** end = begin + m_items.GetSize();
    UQFileListItem** at =
        std::lower_bound(begin, end, _record.sPath, [](const UQFileListItem* _pItem, const CString& _sPath) {
            return _pItem->mf_getPath().Compare(_sPath) < 0;
        });
    const INT_PTR index = at - begin;
    UQFileListItem* item;
    if (at != end && (*at)->mf_getPath() == _record.sPath) {
        item = *at;
        item->mf_addVersion(_record.uVersion, _record.size, _record.lastWriteTime);
    } else {
        std::unique_ptr<UQFileListItem> created(new UQFileListItem(_record.sPath, _record.uVersion,
                                                                   _record.size, _record.lastWriteTime,
                                                                   _record.sResult, _record.severity));
        m_items.InsertAt(index, created.get());
        item = created.release();
    }
    // Newest first: the ranges string then reads upwards and the newest version is the selected one.
    item->mf_sortVersions(0);
    m_firstLines.emplace(key, _record.nLine);
    return 1;
}

const UQFileListItem* FileVersionList::mf_find(const CString& _sPath) {
    return UQFileListItem::mf_findByPath(_sPath, m_items, 1);
}

void FileVersionList::mf_getSorted(UQFileListItem::Array& _rItems, FileListOrder::Key _key,
                                   int _bAscending) const {
    _rItems.Copy(m_items);
    FileListOrder::mf_sort(_rItems, _key, _bAscending);
}
