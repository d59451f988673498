#ifndef TTML_GRAPHICS_CMAINTHREADUTILS_H
#define TTML_GRAPHICS_CMAINTHREADUTILS_H

#include <Ecore.h>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

namespace TTML {

// Runs functions on the UI main loop for other threads, in the order they were
// asked for, with a stop state that keeps a reset or destroy from deadlocking.
//
// There is one instance per process. It is usable while a graphics object is
// initialised (Acquire/Release); GetInstance returns null otherwise.
//
// Stop state (SetStop(true) until SetStop(false)): synchronous calls that are
// waiting return at once without running their function, and new ones do the
// same; new asynchronous calls are refused; queued asynchronous calls wait
// (Stop() drops them). This is what lets the main loop wait for a worker that
// is itself blocked in a synchronous call.
//
// Thread: every operation may be called from any thread. Functions run on the
// main loop; a synchronous call made on the main loop runs its function
// directly (queuing it would wait for ourselves).
class CMainThreadUtils {
public:
    typedef void* (*Func)(void* data);
    // Called instead of a dropped asynchronous call's function, so that the
    // caller can free data; runs on the thread that dropped it.
    typedef void (*DropFunc)(void* data);

    enum AsyncResult {
        ASYNC_QUEUED = 0,
        ASYNC_INVALID = 1,   // null function
        ASYNC_STOPPED = 2,   // stop state, or the service is not running
        ASYNC_NO_MEMORY = 3
    };

    // The instance, or null while no graphics object holds it.
    static CMainThreadUtils* GetInstance();

    // Main loop, with Ecore initialised. The first Acquire makes the instance
    // available; the last Release leaves the stop state set, drops every queued
    // call and makes GetInstance return null. Counted.
    static bool Acquire();
    static void Release();

    // Runs fn(data) on the main loop, waits, returns its result. Null (and
    // *pRan false) when it did not run: stop state, no function, or service
    // released. pRan may be null. name is used in log lines only.
    void* RunEflSafeCallFunctionSync(const char* name, Func fn, void* data, bool* pRan = nullptr);

    // Queues fn(data) for the main loop and returns ASYNC_QUEUED, or another
    // AsyncResult when it will not run (data stays the caller's). A queued call
    // that Stop() drops gets drop(data) instead, when drop is given.
    int RunEflSafeCallFunctionAsync(const char* name, Func fn, void* data, DropFunc drop = nullptr);

    void SetStop(bool stop);
    bool IsStopped() const;

    // Releases every waiting synchronous caller and drops every queued
    // asynchronous call: after it returns no call queued before runs. A call
    // whose function is already running finishes.
    void Stop();

    // Calls queued and not yet finished (running ones included).
    size_t GetPendingCount() const;

    CMainThreadUtils(const CMainThreadUtils&) = delete;
    CMainThreadUtils& operator=(const CMainThreadUtils&) = delete;

private:
    struct Record;

    CMainThreadUtils() = default;
    ~CMainThreadUtils() = default;
    static CMainThreadUtils& m_Instance();

    // Locked: whether the caller must wake the main loop.
    bool m_NeedWake();
    void m_Wake();
    void m_Dispatch();
    // Locked: takes every queued synchronous record out and releases it.
    size_t m_ReleaseWaiters();

    static void m_Dispatch_Cb(void* data);
    static void m_DispatchJob_Cb(void* data);

    mutable std::mutex m_lock;
    std::condition_variable m_finished;
    std::deque<Record*> m_queue;
    size_t m_pending = 0;
    int m_refs = 0;
    std::atomic<bool> m_bActive{false};
    bool m_bStopped = false;
    bool m_bWakePending = false;
    Ecore_Job* m_pJob = nullptr;  // main loop only
};

}  // namespace TTML

#endif
