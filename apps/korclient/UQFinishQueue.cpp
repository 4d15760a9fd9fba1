#include "UQFinishQueue.h"

#include <exception>

UQFinishQueue::UQFinishQueue(const wchar_t* _pszOutOfMemory) : m_pszOutOfMemory(_pszOutOfMemory) {
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

int UQFinishQueue::mf_runAll(int _nTotal, const UQCancelSwitch* _pCancel,
                             const std::function<Item(int)>& _start,
                             const std::function<void(int, UQFileOutcome&)>& _taken) {
    int nTaken = 0;
    const auto takeFinished = [&](bool _bWait) {
        UQFileOutcome outcome;
        while (mf_take(outcome, _bWait))
            _taken(nTaken++, outcome);
    };
    int nStarted = 0;
    try {
        for (; nStarted < _nTotal; ++nStarted) {
            if (_pCancel != nullptr && _pCancel->mf_isCancelled())
                break;
            mf_push(_start(nStarted));
            takeFinished(false);
        }
    } catch (...) {
        // The files started are finished whatever stopped the starting; their outcomes are still told.
        try {
            takeFinished(true);
        } catch (...) {
            // The first failure is the one the caller hears of.
        }
        throw;
    }
    takeFinished(true);
    return nStarted;
}

void UQFinishQueue::mf_push(Item _item) {
    if (!m_thread.joinable()) {
        mf_implFinish(_item);
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

void UQFinishQueue::mf_implFinish(Item& _rItem) noexcept {
    if (!_rItem.job)
        return;
    try {
        _rItem.job->mf_finish(_rItem.outcome);
    } catch (...) {
        // Out of memory for a path or a text: the file is not finished, and what it wrote goes.
        _rItem.job.reset();
        _rItem.outcome.eSeverity = UQFileOutcome::RED;
        try {
            _rItem.outcome.sResult = m_pszOutOfMemory;
        } catch (...) {
            _rItem.outcome.sResult.clear();
        }
    }
    _rItem.job.reset();
}

void UQFinishQueue::mf_implRun() noexcept {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_items.size() > m_nFinished || m_bClosing; });
        if (m_items.size() == m_nFinished)
            return;
        Item& item = m_items[m_nFinished];
        lock.unlock();
        mf_implFinish(item);
        lock.lock();
        ++m_nFinished;
        m_changed.notify_all();
    }
}
