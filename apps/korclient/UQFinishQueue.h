// Makes retrieved files durable and gives them their names on a thread of its own, in the order they come,
// so that the wait for the disk overlaps the reading and checking of the next files. A file reaches the
// queue written under its temporary name and checked; an outcome decided before (a failure) passes through
// as it is, so that the outcomes leave in the order of the files.
#pragma once

#include "UQFileOutcome.h"
#include "UQSafeFile.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

class UQFinishQueue {
public:
    struct Item {
        UQFileOutcome outcome; // what the file gets once named, or an outcome decided before; finishing
                               // replaces it by what happened
        UQFileHandle file;     // the written file, open; none when the outcome is decided
        std::wstring sTemporary;
        std::wstring sTarget;
    };

    // Files waiting at most: each holds its file open.
    static const std::size_t DEPTH = 4;

    UQFinishQueue();
    // Finishes what is still queued, then ends the thread.
    ~UQFinishQueue();
    UQFinishQueue(const UQFinishQueue&) = delete;
    UQFinishQueue& operator=(const UQFinishQueue&) = delete;

    // Queues a file; waits while DEPTH files wait. Without a thread (none could be started) the file is
    // finished at once.
    void mf_push(Item _item);
    // The next outcome in the order pushed. Without _bWait: false when none is finished yet. With _bWait:
    // waits for it; false when every pushed file's outcome has been taken.
    bool mf_take(UQFileOutcome& _rOutcome, bool _bWait);

    // Flushes, closes and names (never replacing) one file; on a failure deletes it.
    static UQFileOutcome mf_finish(Item& _rItem);

private:
    void mf_implRun() noexcept;

    std::mutex m_mutex;
    std::condition_variable m_changed;
    // Pushed and not yet taken, in order; the first m_nFinished are finished. The thread finishes an item
    // in place (a deque keeps its elements where they are as others come and go at its ends).
    std::deque<Item> m_items;
    std::size_t m_nFinished = 0;
    bool m_bClosing = false;
    std::thread m_thread; // last: starts when everything it uses is there
};
