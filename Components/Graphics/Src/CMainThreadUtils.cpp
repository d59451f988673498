#include "CMainThreadUtils.h"

#include "TTMLLog.h"

#include <new>
#include <vector>

namespace TTML {

struct CMainThreadUtils::Record {
    enum State { QUEUED, RUNNING, DONE, RELEASED };

    const char* name;
    Func fn;
    void* data;
    DropFunc drop;
    bool bSync;
    State state;
    void* result;
};

CMainThreadUtils& CMainThreadUtils::m_Instance()
{
    // Never destroyed before exit, so a late caller or a posted wake-up can
    // never reach freed memory.
    static CMainThreadUtils s_instance;
    return s_instance;
}

CMainThreadUtils* CMainThreadUtils::GetInstance()
{
    CMainThreadUtils& inst = m_Instance();
    return inst.m_bActive.load() ? &inst : nullptr;
}

bool CMainThreadUtils::Acquire()
{
    if (!eina_main_loop_is()) {
        TTML_WARN("CMainThreadUtils must be acquired on the main loop");
        return false;
    }
    CMainThreadUtils& inst = m_Instance();
    std::lock_guard<std::mutex> guard(inst.m_lock);
    if (inst.m_refs++ == 0) {
        inst.m_bStopped = false;
        inst.m_bActive = true;
    }
    return true;
}

void CMainThreadUtils::Release()
{
    CMainThreadUtils& inst = m_Instance();
    {
        std::lock_guard<std::mutex> guard(inst.m_lock);
        if (inst.m_refs == 0) {
            TTML_WARN("CMainThreadUtils released more often than acquired");
            return;
        }
        if (--inst.m_refs > 0)
            return;
        inst.m_bActive = false;
    }
    inst.SetStop(true);
    inst.Stop();
    if (inst.m_pJob && eina_main_loop_is()) {
        ecore_job_del(inst.m_pJob);
        inst.m_pJob = nullptr;
        std::lock_guard<std::mutex> guard(inst.m_lock);
        inst.m_bWakePending = false;
    }
}

bool CMainThreadUtils::m_NeedWake()
{
    if (m_bWakePending || m_bStopped || m_queue.empty())
        return false;
    m_bWakePending = true;
    return true;
}

void CMainThreadUtils::m_Wake()
{
    // On the main loop Ecore would run a "thread-safe" call at once, inside
    // the caller: a job keeps asynchronous calls asynchronous there.
    if (eina_main_loop_is()) {
        m_pJob = ecore_job_add(m_DispatchJob_Cb, this);
        if (!m_pJob) {
            TTML_ERROR("ecore_job_add failed");
            std::lock_guard<std::mutex> guard(m_lock);
            m_bWakePending = false;
        }
        return;
    }
    ecore_main_loop_thread_safe_call_async(m_Dispatch_Cb, this);
}

void CMainThreadUtils::m_Dispatch_Cb(void* data)
{
    static_cast<CMainThreadUtils*>(data)->m_Dispatch();
}

void CMainThreadUtils::m_DispatchJob_Cb(void* data)
{
    CMainThreadUtils* pThis = static_cast<CMainThreadUtils*>(data);
    pThis->m_pJob = nullptr;
    pThis->m_Dispatch();
}

void CMainThreadUtils::m_Dispatch()
{
    std::unique_lock<std::mutex> lock(m_lock);
    m_bWakePending = false;
    // Functions may queue, stop or release from inside: re-check every round.
    while (m_bActive && !m_bStopped && !m_queue.empty()) {
        Record* pRec = m_queue.front();
        m_queue.pop_front();
        pRec->state = Record::RUNNING;
        lock.unlock();
        void* result = pRec->fn(pRec->data);
        lock.lock();
        --m_pending;
        if (pRec->bSync) {
            // The waiter owns the record: do not touch it after this.
            pRec->result = result;
            pRec->state = Record::DONE;
            m_finished.notify_all();
        } else {
            delete pRec;
        }
    }
}

size_t CMainThreadUtils::m_ReleaseWaiters()
{
    size_t released = 0;
    for (auto it = m_queue.begin(); it != m_queue.end();) {
        if ((*it)->bSync) {
            (*it)->state = Record::RELEASED;
            it = m_queue.erase(it);
            --m_pending;
            ++released;
        } else {
            ++it;
        }
    }
    if (released)
        m_finished.notify_all();
    return released;
}

void* CMainThreadUtils::RunEflSafeCallFunctionSync(const char* name, Func fn, void* data, bool* pRan)
{
    if (pRan)
        *pRan = false;
    if (!name)
        name = "";
    if (!fn) {
        TTML_WARN("%s: fn is null", name);
        return nullptr;
    }
    std::unique_lock<std::mutex> lock(m_lock);
    if (!m_bActive || m_bStopped) {
        TTML_INFO("%s: stop state, not run", name);
        return nullptr;
    }
    if (eina_main_loop_is()) {
        lock.unlock();
        void* result = fn(data);
        if (pRan)
            *pRan = true;
        return result;
    }
    Record rec{name, fn, data, nullptr, true, Record::QUEUED, nullptr};
    m_queue.push_back(&rec);
    ++m_pending;
    if (m_NeedWake()) {
        lock.unlock();
        m_Wake();
        lock.lock();
    }
    m_finished.wait(lock, [&rec] { return rec.state == Record::DONE || rec.state == Record::RELEASED; });
    if (rec.state == Record::RELEASED) {
        TTML_INFO("%s: released by the stop state, not run", name);
        return nullptr;
    }
    if (pRan)
        *pRan = true;
    return rec.result;
}

int CMainThreadUtils::RunEflSafeCallFunctionAsync(const char* name, Func fn, void* data, DropFunc drop)
{
    if (!name)
        name = "";
    if (!fn) {
        TTML_WARN("%s: fn is null", name);
        return ASYNC_INVALID;
    }
    Record* pRec = new (std::nothrow) Record{name, fn, data, drop, false, Record::QUEUED, nullptr};
    if (!pRec) {
        TTML_WARN("%s: no memory for the call", name);
        return ASYNC_NO_MEMORY;
    }
    bool wake;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        if (!m_bActive || m_bStopped) {
            TTML_WARN("%s: refused in stop state", name);
            delete pRec;
            return ASYNC_STOPPED;
        }
        m_queue.push_back(pRec);
        ++m_pending;
        wake = m_NeedWake();
    }
    if (wake)
        m_Wake();
    return ASYNC_QUEUED;
}

void CMainThreadUtils::SetStop(bool stop)
{
    bool wake = false;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_bStopped = stop;
        if (stop) {
            size_t released = m_ReleaseWaiters();
            TTML_INFO("stop state set, %zu waiting calls released", released);
        } else {
            TTML_INFO("stop state cleared");
            wake = m_bActive && m_NeedWake();
        }
    }
    if (wake)
        m_Wake();
}

bool CMainThreadUtils::IsStopped() const
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_bStopped;
}

void CMainThreadUtils::Stop()
{
    std::vector<Record*> dropped;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_ReleaseWaiters();
        dropped.assign(m_queue.begin(), m_queue.end());
        m_queue.clear();
        m_pending -= dropped.size();
    }
    if (!dropped.empty())
        TTML_INFO("%zu queued calls dropped", dropped.size());
    for (Record* pRec : dropped) {
        if (pRec->drop)
            pRec->drop(pRec->data);
        delete pRec;
    }
}

size_t CMainThreadUtils::GetPendingCount() const
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_pending;
}

}  // namespace TTML
