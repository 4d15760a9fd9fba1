// Makes written files durable and gives them their names on a thread of its own, in the order they come, so
// that the wait for the disk overlaps the work on the next files. A file reaches the queue written under its
// temporary name; an outcome decided before (a failure) passes through as it is, so that the outcomes leave
// in the order of the files. What finishing a file means is the owner's: retrieval names a new file,
// migration puts a stub in place of the original.
#pragma once

#include "UQFileOutcome.h"
#include "UQSafeFile.h"

#include "interfaces/korbase.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

class UQFinishQueue {
public:
    struct Item {
        UQFileOutcome outcome; // what the file gets once named, or an outcome decided before; finishing
                               // replaces it by what happened
        UQFileHandle file;     // the written file, open; none when the outcome is decided
        UQFileHandle
            original; // the file that sTarget names, held until it is replaced; none when there is none
        std::wstring sTemporary;
        std::wstring sTarget;
    };

    // Finishes one item and answers its outcome. It may throw (out of memory); the queue then deletes the
    // temporary file and answers the outcome's path with the failure text it was given.
    using Finish = UQFileOutcome (*)(Item& _rItem);

    // Files waiting at most: each holds its file open.
    static const std::size_t DEPTH = 4;

    // _pszOutOfMemory: the result of a file whose finishing ran out of memory; a literal, it must outlive the
    // queue.
    UQFinishQueue(Finish _finish, const wchar_t* _pszOutOfMemory);
    // Finishes what is still queued, then ends the thread.
    ~UQFinishQueue();
    UQFinishQueue(const UQFinishQueue&) = delete;
    UQFinishQueue& operator=(const UQFinishQueue&) = delete;

    // Starts files 0 to _nTotal - 1 in turn (_start writes one and answers its item) while the files before
    // it are finished, and hands each outcome to _taken in the order of the files, on the calling thread. A
    // tripped cancel switch stops the starting between two files; the files started are still finished.
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
    // Finishes an item in place, whatever the finishing throws.
    void mf_implFinish(Item& _rItem) noexcept;
    void mf_implRun() noexcept;

    const Finish m_finish;
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
