#include "UQFinishQueue.h"

#include <exception>

UQFinishQueue::UQFinishQueue() {
    try {
        m_thread = std::thread([this] { mf_implRun(); });
    } catch (const std::exception&) {
        // No second thread: mf_push finishes each file itself.
    }
}

UQFinishQueue::~UQFinishQueue() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bClosing = true;
    }
    m_changed.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void UQFinishQueue::mf_push(Item _item) {
    if (!m_thread.joinable()) {
        _item.outcome = mf_finish(_item);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_items.push_back(std::move(_item));
        ++m_nFinished;
        return;
    }
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_items.size() - m_nFinished < DEPTH; });
    m_items.push_back(std::move(_item));
    lock.unlock();
    m_changed.notify_all();
}

bool UQFinishQueue::mf_take(UQFileOutcome& _rOutcome, bool _bWait) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (_bWait)
        m_changed.wait(lock, [this] { return m_nFinished > 0 || m_items.empty(); });
    if (m_nFinished == 0)
        return false;
    _rOutcome = std::move(m_items.front().outcome);
    m_items.pop_front();
    --m_nFinished;
    lock.unlock();
    m_changed.notify_all();
    return true;
}

UQFileOutcome UQFinishQueue::mf_finish(Item& _rItem) {
    if (!_rItem.file.mf_isValid())
        return std::move(_rItem.outcome);
    SetLastError(0);
    DWORD dwError = 0;
    if (!FlushFileBuffers(_rItem.file.mf_get()))
        dwError = GetLastError() != 0 ? GetLastError() : ERROR_WRITE_FAULT;
    _rItem.file.mf_reset();
    if (dwError == 0)
        dwError = UQSafeFile::mf_commit(_rItem.sTemporary, _rItem.sTarget, 0);
    if (dwError == 0)
        return std::move(_rItem.outcome);
    DeleteFileW(UQSafeFile::mf_long(_rItem.sTemporary).c_str());
    if (dwError == ERROR_ALREADY_EXISTS || dwError == ERROR_FILE_EXISTS)
        return UQFileOutcome::mf_of(_rItem.sTarget, UQFileOutcome::YELLOW,
                                    L"Not retrieved: a file of this name exists already and is kept");
    return UQFileOutcome::mf_of(_rItem.sTarget, UQFileOutcome::RED,
                                L"Not retrieved: cannot write: " + UQSafeFile::mf_systemText(dwError));
}

void UQFinishQueue::mf_implRun() noexcept {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_items.size() > m_nFinished || m_bClosing; });
        if (m_items.size() == m_nFinished)
            return;
        Item& item = m_items[m_nFinished];
        lock.unlock();
        try {
            item.outcome = mf_finish(item);
        } catch (...) {
            // Out of memory for a path or a text: the file is not given its name.
            item.file.mf_reset();
            item.outcome.eSeverity = UQFileOutcome::RED;
            try {
                DeleteFileW(UQSafeFile::mf_long(item.sTemporary).c_str());
                item.outcome.sResult = L"Not retrieved: out of memory";
            } catch (...) {
                item.outcome.sResult.clear();
            }
        }
        lock.lock();
        ++m_nFinished;
        m_changed.notify_all();
    }
}
