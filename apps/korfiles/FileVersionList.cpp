#include "FileVersionList.h"

#include <algorithm>
#include <memory>

FileVersionList::~FileVersionList() {
    for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
        delete m_items[i];
}

int FileVersionList::mf_add(const FileVersionRecord& record, std::string& problem) {
    const auto key = std::make_pair(record.sPath, record.uVersion);
    const auto known = m_firstLines.find(key);
    if (known != m_firstLines.end()) {
        problem = "version " + std::to_string(record.uVersion) + " of this path is already listed on line " +
                  std::to_string(known->second);
        return 0;
    }

    UQFileListItem** begin = m_items.GetData();
    UQFileListItem** end = begin + m_items.GetSize();
    UQFileListItem** at =
        std::lower_bound(begin, end, record.sPath, [](const UQFileListItem* item, const CString& path) {
            return item->mf_getPath().Compare(path) < 0;
        });
    const INT_PTR index = at - begin;
    UQFileListItem* item;
    if (at != end && (*at)->mf_getPath() == record.sPath) {
        item = *at;
        item->mf_addVersion(record.uVersion, record.size, record.lastWriteTime);
    } else {
        std::unique_ptr<UQFileListItem> created(new UQFileListItem(record.sPath, record.uVersion, record.size,
                                                                   record.lastWriteTime, record.sResult,
                                                                   record.severity));
        m_items.InsertAt(index, created.get());
        item = created.release();
    }
    // Newest first: the ranges string then reads upwards and the newest version is the selected one.
    item->mf_sortVersions(0);
    m_firstLines.emplace(key, record.nLine);
    return 1;
}

const UQFileListItem* FileVersionList::mf_find(const CString& path) {
    return UQFileListItem::mf_findByPath(path, m_items, 1);
}

void FileVersionList::mf_getSorted(UQFileListItem::Array& items, FileListOrder::Key key,
                                   int bAscending) const {
    items.Copy(m_items);
    FileListOrder::mf_sort(items, key, bAscending);
}
