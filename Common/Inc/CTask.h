#ifndef TTML_COMMON_CTASK_H
#define TTML_COMMON_CTASK_H

#include "ICallback.h"

#include <cstddef>
#include <deque>
#include <pthread.h>
#include <semaphore.h>
#include <sys/types.h>

namespace TTML {

// One worker thread with a first-in first-out queue of opaque event
// pointers. The worker hands each non-null event to the event callback, one
// at a time, without holding the queue lock, so a handler may post to its
// own task.
//
// A posted pointer belongs to the receiver: the event callback (or the
// cleanup callback, for events dropped unprocessed) frees it. Events still
// queued when the task is destroyed are not freed.
//
// A null event is never a payload: it is the marker that ends the worker.
// Reset() queues a marker of its own (never null, never handed to a
// callback), so a stop and a reset racing each other cannot be confused;
// resets still pending when the worker ends are released then. Owners end the
// worker with Stop(), which also joins it; a null posted by hand ends it
// unjoined.
//
// Any thread may call SendEvent, Reset, Stop, SetTaskState and IsTaskIgnored;
// Reset and Stop must not be called from the worker thread, since they wait
// for it. Start and Stop of one task must not race each other.
class CTask {
public:
    CTask();
    // Stops a live worker (with a warning) after setting the ignore flag.
    virtual ~CTask();
    CTask(const CTask&) = delete;
    CTask& operator=(const CTask&) = delete;

    // Takes ownership of both callbacks (either may be null; previously
    // connected ones are deleted). Call before Start: the worker reads them
    // without a lock.
    void Connect(ICallback* pEventCb, ICallback* pCleanupCb);

    // Creates the worker thread, named after `name` cut to 15 characters
    // (null or empty: the name is inherited). False when a worker is already
    // running or preparing, or the thread could not be created.
    bool Start(const char* name);

    // Appends the event and wakes the worker. Without a worker, the queue is
    // trimmed to its 20 newest events through the cleanup callback.
    void SendEvent(void* event);

    // Returns once the worker has handled every event posted before the
    // call. Queued events are not dropped; owners that want them discarded
    // set the ignore flag first. Returns at once when there is no worker.
    void Reset();

    // Ends the worker after the events queued ahead of the call and joins
    // it. Without a worker, queued events go to the cleanup callback.
    void Stop();

    // The ignore flag is for the owner's handlers: when set they free
    // events unread. The task itself never reads it.
    void SetTaskState(bool ignore);
    bool IsTaskIgnored() const;

    // Take and release the queue mutex (recursive) from outside.
    void Lock();
    void Unlock();

private:
    static void* m_Run_Cb(void* arg);
    void m_Run();
    // Appends under the queue mutex; returns the queue size after it.
    size_t m_Post(void* event);
    void m_Clear(bool all);
    size_t m_QueueSize();
    bool m_IsRunning() const;
    bool m_IsPreparing() const;
    bool m_IsLive() const;
    void m_SetPreparing(bool preparing);
    void m_JoinEnded();

    ICallback* m_pEventCb;    // owned
    ICallback* m_pCleanupCb;  // owned, may be null

    pid_t m_ThreadId;  // kernel id of the worker, 0 when not running
    mutable pthread_mutex_t m_ThreadIdMutex;

    pthread_t m_Thread;
    bool m_Joinable;  // m_Thread was created and not joined yet; owner threads only

    std::deque<void*> m_Queue;
    pthread_mutexattr_t m_QueueMutexAttr;
    pthread_mutex_t m_QueueMutex;  // recursive; also guards the two below
    pthread_cond_t m_QueueCond;
    int m_PendingResets;  // reset markers queued and not yet acknowledged
    bool m_Exiting;       // worker took its stop marker

    sem_t m_ResetSem;
    bool m_SemReady;

    bool m_Ignored;
    mutable pthread_mutex_t m_IgnoreMutex;

    bool m_Preparing;  // from Start until the worker runs
    mutable pthread_mutex_t m_PrepareMutex;
};

}  // namespace TTML

#endif
