// Events and their listeners. One registry for the process under one mutex; deliveries run outside it.
//
// Each listener has a node, shared between the listener and any publisher that is delivering to it. A
// publisher takes a snapshot of the nodes registered for the id, then for each node: under the mutex it
// checks that the node is still registered and counts itself in (active), calls mf_onEvent without the
// mutex, and counts itself out. Unregistering marks the node unregistered under the mutex (no delivery
// starts after that) and waits until the only active deliveries left are the calling thread's own, which
// are further up its stack (a listener that unregisters from inside its own mf_onEvent).
#include "interfaces/korbase.h"

#include "kor/KorReport.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <vector>

struct UQEventListener::Node {
    explicit Node(UQEventListener* _pListener, UQEVENT_ID _id) : pListener(_pListener), id(_id) {}
    UQEventListener* pListener;
    UQEVENT_ID id;            // under the registry mutex once registered
    bool bRegistered = false; // under the registry mutex
    int nActive = 0;          // deliveries under way, under the registry mutex
};

namespace {

typedef std::shared_ptr<UQEventListener::Node> NodePtr;

struct Registry {
    std::mutex mutex;
    std::condition_variable cond;
    std::map<UQEVENT_ID, std::vector<NodePtr>> listeners;
};

// Never destroyed: listeners may unregister from static destructors of other modules.
Registry& registry() {
    static Registry* s_registry = new Registry;
    return *s_registry;
}

// The deliveries the calling thread has under way, innermost first; a list of stack frames, so that the
// thread-local is trivial.
struct Delivery {
    const void* pNode;
    Delivery* pOuter;
};
thread_local Delivery* t_pDeliveries = nullptr;

int ownDeliveries(const void* _pNode) noexcept {
    int n = 0;
    for (const Delivery* d = t_pDeliveries; d != nullptr; d = d->pOuter)
        if (d->pNode == _pNode)
            ++n;
    return n;
}

} // namespace

// ---------------------------------------------------------------------------------------------------------
// UQEvent

UQEvent::~UQEvent() = default;

CString UQEvent::mf_toString() const {
    CString s;
    s.Format(L"Event id=0x%8.8x%8.8x", static_cast<unsigned>(m_id >> 32), static_cast<unsigned>(m_id));
    return s;
}

int UQEvent::mf_publish() const {
    return UQEventManager::mf_publish(*this);
}

// ---------------------------------------------------------------------------------------------------------
// UQEventListener

UQEventListener::UQEventListener(UQEVENT_ID _id) : m_node(std::make_shared<Node>(this, _id)) {
    mf_register();
}

UQEventListener::UQEventListener(UQEVENT_ID _id, int _bRegister) : m_node(std::make_shared<Node>(this, _id)) {
    if (_bRegister)
        mf_register();
}

UQEventListener::UQEventListener(const UQEventListener& _other)
    : m_node(std::make_shared<Node>(this, _other.mf_getEventId())) {
    if (_other.mf_isRegistered())
        mf_register();
}

UQEventListener& UQEventListener::operator=(const UQEventListener& _other) {
    if (this == &_other)
        return *this;
    const UQEVENT_ID id = _other.mf_getEventId();
    const bool bRegistered = mf_isRegistered() != 0;
    mf_unregister();
    {
        Registry& r = registry();
        std::lock_guard<std::mutex> lock(r.mutex);
        m_node->id = id;
    }
    if (bRegistered)
        mf_register();
    return *this;
}

UQEventListener::~UQEventListener() {
    mf_unregister();
}

void UQEventListener::mf_onEvent(const UQEvent&) {}

const CString UQEventListener::mf_toString() const {
    return CString(L"event-listener");
}

UQEVENT_ID UQEventListener::mf_getEventId() const noexcept {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return m_node->id;
}

int UQEventListener::mf_isRegistered() const noexcept {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    return m_node->bRegistered ? 1 : 0;
}

void UQEventListener::mf_register() {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    if (m_node->bRegistered)
        return;
    m_node->bRegistered = true;
    r.listeners[m_node->id].push_back(m_node);
}

void UQEventListener::mf_unregister() noexcept {
    Registry& r = registry();
    const int own = ownDeliveries(m_node.get());
    std::unique_lock<std::mutex> lock(r.mutex);
    if (m_node->bRegistered) {
        m_node->bRegistered = false;
        auto it = r.listeners.find(m_node->id);
        if (it != r.listeners.end()) {
            std::vector<NodePtr>& nodes = it->second;
            nodes.erase(std::remove(nodes.begin(), nodes.end(), m_node), nodes.end());
            if (nodes.empty())
                r.listeners.erase(it);
        }
    }
    // Deliveries that other threads have under way end before this returns; this thread's own are
    // further up its stack and cannot be waited for.
    Node* pNode = m_node.get();
    r.cond.wait(lock, [pNode, own] { return pNode->nActive <= own; });
}

// ---------------------------------------------------------------------------------------------------------
// UQEventManager

int UQEventManager::mf_publish(const UQEvent& _event) {
    static const wchar_t* const _sFunction_ = L"UQEventManager::mf_publish";
    Registry& r = registry();
    std::vector<NodePtr> snapshot;
    {
        std::lock_guard<std::mutex> lock(r.mutex);
        auto it = r.listeners.find(_event.mf_getId());
        if (it == r.listeners.end())
            return 0;
        snapshot = it->second;
    }
    int delivered = 0;
    for (const NodePtr& node : snapshot) {
        {
            std::lock_guard<std::mutex> lock(r.mutex);
            if (!node->bRegistered || node->id != _event.mf_getId())
                continue; // unregistered (or moved to another id) since the snapshot
            ++node->nActive;
        }
        Delivery frame{node.get(), t_pDeliveries};
        t_pDeliveries = &frame;
        UQEventListener* pListener = node->pListener;
        try {
            pListener->mf_onEvent(_event);
        } catch (const UQErrno& e) {
            UQKorReport::mf_log(
                UQLogData::LEVEL_E, _sFunction_, L"Failure delivering event to '%s':\r\n%s%s\r\n%s%s",
                pListener->mf_toString(), UQLog::TAB, e.mf_toString(), UQLog::TAB, _event.mf_toString());
        } catch (const std::exception& e) {
            UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                                L"Unexpected exception delivering event to '%s': %s",
                                pListener->mf_toString(), CString::FromUtf8(e.what()));
        } catch (...) {
            UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                                L"Unexpected exception delivering event to '%s': unknown type",
                                pListener->mf_toString());
        }
        t_pDeliveries = frame.pOuter;
        ++delivered;
        {
            std::lock_guard<std::mutex> lock(r.mutex);
            --node->nActive;
        }
        r.cond.notify_all();
    }
    return delivered;
}

int UQEventManager::mf_getListenerCount(UQEVENT_ID _id) {
    Registry& r = registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto it = r.listeners.find(_id);
    return it == r.listeners.end() ? 0 : static_cast<int>(it->second.size());
}
