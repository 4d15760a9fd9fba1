// Finishes written files on a thread of its own, in the order they come, so that the waits for the disk
// overlap the work on the next files: retrieval flushes and names each file there, migration records each
// stored version and puts its stub in place. An outcome decided before (a failure) passes through as it is,
// so that the outcomes leave in the order of the files.
#pragma once

#include "UQFileOutcome.h"

#include "interfaces/korbase.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

class UQFinishQueue {
public:
    // What is left to do for one file. A job destroyed unfinished removes what it wrote.
    class Job {
    public:
        virtual ~Job() = default;
        // Does it; _rOutcome, the one the file was queued with, becomes what happened. May throw (out of
        // memory).
        virtual void mf_finish(UQFileOutcome& _rOutcome) = 0;
    };

    struct Item {
        UQFileOutcome outcome;    // what the file gets once finished, or an outcome decided before
        std::unique_ptr<Job> job; // none when the outcome is decided
    };

    // Files waiting at most: each may hold files open.
    static const std::size_t DEPTH = 4;

    // _pszOutOfMemory: the result of a file whose finishing ran out of memory; a literal, it must outlive the
    // queue.
    explicit UQFinishQueue(const wchar_t* _pszOutOfMemory);
    // Finishes what is still queued, then ends the thread.
    ~UQFinishQueue();
    UQFinishQueue(const UQFinishQueue&) = delete;
    UQFinishQueue& operator=(const UQFinishQueue&) = delete;

    // Starts files 0 to _nTotal - 1 in turn (_start does the first part of one and answers its item) while
    // the files before it are finished, and hands each outcome to _taken in the order of the files, on the
    // calling thread. A tripped cancel switch stops the starting between two files; the files started are
    // still finished, and so they are when _start or _taken throws, which then goes on to the caller.
    // Answers the number of files started.
    int mf_runAll(int _nTotal, const UQCancelSwitch* _pCancel, const std::function<Item(int _nIndex)>& _start,
                  const std::function<void(int _nIndex, UQFileOutcome& _rOutcome)>& _taken);

private:
    // Queues a file; waits while DEPTH files wait. Without a thread (none could be started) the file is
    // finished at once.
    void mf_push(Item _item);
    // The next outcome in the order pushed. Without _bWait: false when none is finished yet. With _bWait:
    // waits for it; false when every pushed file's outcome has been taken.
    bool mf_take(UQFileOutcome& _rOutcome, bool _bWait);
    // Finishes an item in place, whatever its job throws.
    void mf_implFinish(Item& _rItem) noexcept;
    void mf_implRun() noexcept;

    const wchar_t* const m_pszOutOfMemory;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Pushed and not yet taken, in order; the first m_nFinished are finished. The thread finishes an item
    // in place (a deque keeps its elements where they are as others come and go at its ends).
    std::deque<Item> m_items;
    std::size_t m_nFinished = 0;
    bool m_bClosing = false;
    std::thread m_thread; // last: starts when everything it uses is there
};
