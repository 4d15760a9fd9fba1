// Events and listeners: delivery by id on the publishing thread, copies, unregistering while others
// publish, and listeners that unregister or destroy themselves from inside their own mf_onEvent.
#include "ThreadTestSupport.h"
#include "support/LogCheck.h"

#include <functional>
#include <map>
#include <vector>

using threadtest::LIMIT_MS;
using threadtest::Signal;

namespace {

// Every test uses ids of its own, so that listeners of one test never see another's events.
const UQEVENT_ID ID_A = 0x0000000100000001ull;
const UQEVENT_ID ID_B = 0x0000000100000002ull;

class Listener : public UQEventListener {
public:
    explicit Listener(UQEVENT_ID id, const wchar_t* name = L"test-listener", int bRegister = 1)
        : UQEventListener(id, 0), m_sName(name) {
        if (bRegister)
            mf_register(); // only now: another thread may be publishing the id
    }
    Listener(const Listener& other)
        : UQEventListener(other), m_sName(other.m_sName), onEvent(other.onEvent) {}
    ~Listener() override { mf_unregister(); }

    void mf_onEvent(const UQEvent& event) override {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_threads.push_back(GetCurrentThreadId());
            m_ids.push_back(event.mf_getId());
        }
        received.raise();
        if (onEvent)
            onEvent(event);
    }
    const CString mf_toString() const override { return m_sName; }

    std::vector<DWORD> threads() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_threads;
    }
    std::vector<UQEVENT_ID> ids() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_ids;
    }

    CString m_sName;
    std::function<void(const UQEvent&)> onEvent;
    Signal received;

private:
    std::mutex m_mutex;
    std::vector<DWORD> m_threads;
    std::vector<UQEVENT_ID> m_ids;
};

// An event of the tests' own, carrying the number of the thread that published it.
class NumberedEvent : public UQEvent {
public:
    NumberedEvent(UQEVENT_ID id, int nPublisher) : UQEvent(id), m_nPublisher(nPublisher) {}
    int m_nPublisher;
};

} // namespace

TEST(UQEvent, NamesItsId) {
    EXPECT_EQ(UQEvent(UQEVENT_ID_PROGRESS).mf_toString(), CString(L"Event id=0x0040000000000000"));
    const UQEvent original(ID_A);
    UQEvent copy(ID_B);
    copy = original;
    EXPECT_EQ(copy.mf_getId(), ID_A);
}

TEST(UQEventListener, ReceivesTheEventsOfItsIdOnly) {
    Listener a(ID_A), b(ID_B);
    EXPECT_TRUE(a.mf_isRegistered());
    EXPECT_EQ(a.mf_getEventId(), ID_A);
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 1);
    EXPECT_EQ(a.received.count(), 1);
    EXPECT_EQ(b.received.count(), 0);
    EXPECT_EQ(UQEventManager::mf_publish(UQEvent(ID_B)), 1);
    EXPECT_EQ(b.ids(), (std::vector<UQEVENT_ID>{ID_B}));
    EXPECT_EQ(UQEvent(0x0000000100000003ull).mf_publish(), 0); // nobody listens
}

TEST(UQEventListener, OnEventRunsOnThePublishingThread) {
    Listener listener(ID_A);
    DWORD publisher = 0;
    std::thread t([&] {
        publisher = GetCurrentThreadId();
        UQEvent(ID_A).mf_publish();
    });
    t.join();
    EXPECT_EQ(listener.threads(), (std::vector<DWORD>{publisher}));
    EXPECT_NE(publisher, GetCurrentThreadId());
}

TEST(UQEventListener, DestructorUnregisters) {
    {
        Listener listener(ID_A);
        EXPECT_EQ(UQEventManager::mf_getListenerCount(ID_A), 1);
    }
    EXPECT_EQ(UQEventManager::mf_getListenerCount(ID_A), 0);
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 0);
}

TEST(UQEventListener, UnregisteredListenerReceivesNothingAndCanRegisterAgain) {
    Listener listener(ID_A);
    listener.mf_unregister();
    listener.mf_unregister(); // twice is harmless
    EXPECT_FALSE(listener.mf_isRegistered());
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 0);
    listener.mf_register();
    listener.mf_register();
    EXPECT_EQ(UQEventManager::mf_getListenerCount(ID_A), 1);
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 1);
    EXPECT_EQ(listener.received.count(), 1);
}

TEST(UQEventListener, CopyIsRegisteredForTheSameId) {
    Listener original(ID_A);
    {
        Listener copy(original);
        EXPECT_EQ(copy.mf_getEventId(), ID_A);
        EXPECT_EQ(UQEvent(ID_A).mf_publish(), 2);
        EXPECT_EQ(copy.received.count(), 1);
    }
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 1);
    EXPECT_EQ(original.received.count(), 2);

    original.mf_unregister();
    Listener copyOfUnregistered(original);
    EXPECT_FALSE(copyOfUnregistered.mf_isRegistered());
}

TEST(UQEventListener, AssignmentTakesOverTheOtherId) {
    Listener counting(ID_B);
    UQEventListener a(ID_A), b(ID_B);
    a = b;
    EXPECT_EQ(a.mf_getEventId(), ID_B);
    EXPECT_TRUE(a.mf_isRegistered());
    EXPECT_EQ(UQEventManager::mf_getListenerCount(ID_A), 0);
    EXPECT_EQ(UQEventManager::mf_getListenerCount(ID_B), 3);
    EXPECT_EQ(UQEvent(ID_B).mf_publish(), 3);
    a.mf_unregister();
    a = b; // an unregistered listener stays unregistered
    EXPECT_FALSE(a.mf_isRegistered());
}

TEST(UQEventListener, ListenersReceiveInTheOrderTheyRegistered) {
    std::vector<int> order;
    Listener first(ID_A), second(ID_A), third(ID_A);
    first.onEvent = [&](const UQEvent&) { order.push_back(1); };
    second.onEvent = [&](const UQEvent&) { order.push_back(2); };
    third.onEvent = [&](const UQEvent&) { order.push_back(3); };
    UQEvent(ID_A).mf_publish();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST(UQEventListener, SeveralPublishingThreadsReachEveryListener) {
    const int PUBLISHERS = 4, EVENTS = 500, LISTENERS = 3;
    std::vector<std::unique_ptr<Listener>> listeners;
    std::vector<std::unique_ptr<std::atomic<int>[]>> counts;
    for (int l = 0; l < LISTENERS; ++l) {
        listeners.emplace_back(new Listener(ID_A));
        counts.emplace_back(new std::atomic<int>[PUBLISHERS]());
        std::atomic<int>* perPublisher = counts.back().get();
        listeners.back()->onEvent = [perPublisher](const UQEvent& event) {
            const NumberedEvent* numbered = dynamic_cast<const NumberedEvent*>(&event);
            if (numbered != nullptr)
                ++perPublisher[numbered->m_nPublisher];
        };
    }
    std::atomic<bool> go{false};
    std::vector<std::thread> publishers;
    for (int p = 0; p < PUBLISHERS; ++p)
        publishers.emplace_back([&, p] {
            while (!go.load())
                std::this_thread::yield();
            for (int i = 0; i < EVENTS; ++i)
                EXPECT_EQ(NumberedEvent(ID_A, p).mf_publish(), LISTENERS);
        });
    go = true;
    for (std::thread& t : publishers)
        t.join();
    for (int l = 0; l < LISTENERS; ++l) {
        EXPECT_EQ(listeners[l]->received.count(), PUBLISHERS * EVENTS);
        for (int p = 0; p < PUBLISHERS; ++p)
            EXPECT_EQ(counts[l][p].load(), EVENTS) << "listener " << l << ", publisher " << p;
    }
}

// While one thread publishes without pause, listeners come and go on another; none is called once its
// unregistering has returned, and none is called after it was destroyed (AddressSanitizer and
// ThreadSanitizer watch the second).
TEST(UQEventListener, UnregisterWhileAnotherThreadPublishes) {
    std::atomic<bool> bStop{false};
    std::atomic<int> published{0};
    std::thread publisher([&] {
        while (!bStop.load()) {
            UQEvent(ID_A).mf_publish();
            ++published;
        }
    });
    for (int round = 0; round < 50; ++round) {
        std::atomic<bool> bUnregistered{false};
        std::atomic<int> lateEvents{0};
        auto* listener = new Listener(ID_A, L"coming-and-going", 0);
        listener->onEvent = [&](const UQEvent&) {
            if (bUnregistered.load())
                ++lateEvents;
        };
        listener->mf_register();
        ASSERT_TRUE(listener->received.waitFor(1)) << "round " << round;
        if (round % 2 == 0) {
            listener->mf_unregister();
            bUnregistered = true;
            EXPECT_EQ(lateEvents.load(), 0) << "round " << round;
        }
        delete listener;
        EXPECT_EQ(lateEvents.load(), 0) << "round " << round;
    }
    bStop = true;
    publisher.join();
    EXPECT_GT(published.load(), 0);
}

// Unregistering waits for the delivery that another thread has under way to the listener.
TEST(UQEventListener, UnregisterWaitsForADeliveryInFlight) {
    Listener listener(ID_A);
    Signal entered, release;
    std::atomic<bool> bDeliveryDone{false};
    listener.onEvent = [&](const UQEvent&) {
        entered.raise();
        EXPECT_TRUE(release.waitFor());
        bDeliveryDone = true;
    };
    std::thread publisher([] { UQEvent(ID_A).mf_publish(); });
    ASSERT_TRUE(entered.waitFor());
    std::atomic<bool> bDoneWhenUnregistered{false};
    std::thread unregistering([&] {
        listener.mf_unregister();
        bDoneWhenUnregistered = bDeliveryDone.load();
    });
    // Unregistering has begun once the listener is no longer counted; it must now wait for the delivery.
    EXPECT_TRUE(threadtest::eventually([] { return UQEventManager::mf_getListenerCount(ID_A) == 0; }));
    release.raise();
    unregistering.join();
    publisher.join();
    EXPECT_TRUE(bDoneWhenUnregistered.load());
}

TEST(UQEventListener, ListenerUnregistersItselfInsideOnEvent) {
    Listener self(ID_A), other(ID_A);
    self.onEvent = [&](const UQEvent&) { self.mf_unregister(); };
    EXPECT_TRUE(threadtest::returnsWithin([] { UQEvent(ID_A).mf_publish(); }));
    EXPECT_EQ(self.received.count(), 1);
    EXPECT_EQ(other.received.count(), 1);
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 1);
    EXPECT_EQ(self.received.count(), 1);
}

TEST(UQEventListener, ListenerDestroysItselfInsideOnEvent) {
    auto* self = new Listener(ID_A);
    Listener other(ID_A);
    std::atomic<int> destroyed{0};
    self->onEvent = [&destroyed, self](const UQEvent&) {
        std::atomic<int>* pDestroyed = &destroyed; // the closure goes with the listener
        delete self;
        ++*pDestroyed;
    };
    EXPECT_TRUE(threadtest::returnsWithin([] { UQEvent(ID_A).mf_publish(); }));
    EXPECT_EQ(destroyed.load(), 1);
    EXPECT_EQ(other.received.count(), 1);
    EXPECT_EQ(UQEventManager::mf_getListenerCount(ID_A), 1);
}

TEST(UQEventListener, ListenerUnregisteredByAnEarlierListenerOfTheSameEventIsSkipped) {
    Listener first(ID_A), second(ID_A);
    first.onEvent = [&](const UQEvent&) { second.mf_unregister(); };
    EXPECT_TRUE(threadtest::returnsWithin([] { EXPECT_EQ(UQEvent(ID_A).mf_publish(), 1); }));
    EXPECT_EQ(second.received.count(), 0);
}

TEST(UQEventListener, ListenerRegisteredDuringAPublishGetsTheNextEvent) {
    Listener first(ID_A);
    std::unique_ptr<Listener> late;
    first.onEvent = [&](const UQEvent&) {
        if (!late)
            late.reset(new Listener(ID_A));
    };
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 1);
    ASSERT_TRUE(late);
    EXPECT_EQ(late->received.count(), 0);
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 2);
    EXPECT_EQ(late->received.count(), 1);
}

TEST(UQEventListener, ListenerMayPublishFromInsideOnEvent) {
    Listener a(ID_A), b(ID_B);
    a.onEvent = [](const UQEvent&) { UQEvent(ID_B).mf_publish(); };
    b.onEvent = [](const UQEvent&) { UQEvent(ID_B + 1).mf_publish(); };
    EXPECT_TRUE(threadtest::returnsWithin([] { UQEvent(ID_A).mf_publish(); }));
    EXPECT_EQ(b.received.count(), 1);
}

TEST(UQEventListener, FailingListenerIsLoggedAndTheOthersStillReceive) {
    LogCheck log;
    Listener failing(ID_A, L"failing-listener"), odd(ID_A, L"odd-listener"), fine(ID_A);
    failing.onEvent = [](const UQEvent&) { throw UQErrno(UQErrno::_E_::State); };
    odd.onEvent = [](const UQEvent&) { throw 7; };
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 3);
    EXPECT_EQ(fine.received.count(), 1);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].level, 'E');
    EXPECT_EQ(lines[0].function, "UQEventManager::mf_publish");
    EXPECT_EQ(lines[0].text, "Failure delivering event to 'failing-listener':\r\n    " +
                                 utf8(UQErrno(UQErrno::_E_::State).mf_toString()) +
                                 "\r\n    Event id=0x0000000100000001");
    EXPECT_EQ(lines[1], (LogLine{'E', "UQEventManager::mf_publish",
                                 "Unexpected exception delivering event to 'odd-listener': unknown type"}));
}

TEST(UQEventListener, BaseListenerIgnoresEventsAndNamesItself) {
    UQEventListener plain(ID_A);
    EXPECT_EQ(plain.mf_toString(), CString(L"event-listener"));
    EXPECT_EQ(UQEvent(ID_A).mf_publish(), 1);
}

// The progress dialog's shape: a worker thread publishes, the listener is told on the worker's thread
// and the thread that owns the listener waits for the worker before the listener goes.
TEST(UQEventListener, WorkerThreadPublishesToAListenerOfAnotherThread) {
    class Publisher : public UQThreads {
    public:
        Publisher() : UQThreads(L"Publishing worker", UQThreadContext::TYPE_WORKER, 0) {}
        ~Publisher() override { mf_stopWait(INFINITE); }
        void mf_implExecute(int) override {
            for (int i = 0; i < 100; ++i)
                UQEvent(ID_A).mf_publish();
        }
    };
    Listener listener(ID_A);
    Publisher worker;
    worker.mf_start();
    ASSERT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    const std::vector<DWORD> threads = listener.threads();
    ASSERT_EQ(threads.size(), 100u);
    EXPECT_EQ(threads.front(), worker.mf_getThreadId());
}
