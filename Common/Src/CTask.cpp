#include "CTask.h"

#include "TTMLLog.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <sys/syscall.h>
#include <unistd.h>

namespace TTML {

namespace {

// Without a worker the queue keeps at most this many events.
const size_t kMinQueueSize = 20;
// Thread names are limited to 15 characters plus the terminator.
const size_t kThreadNameSize = 16;

// A reset's marker is this address, not null: with both markers null, a stop
// marker queued ahead of a concurrent reset's marker was taken as the reset's
// acknowledgement, and the reset returned before the events ahead of it ran.
char g_resetMarker;
void* const kResetMarker = &g_resetMarker;

pid_t KernelThreadId()
{
    return static_cast<pid_t>(syscall(SYS_gettid));
}

// strerror_r is the GNU or the XSI variant depending on the C library.
[[maybe_unused]] const char* PickErrorText(char* text, char* /*buffer*/)
{
    return text;
}

[[maybe_unused]] const char* PickErrorText(int /*rc*/, char* buffer)
{
    return buffer;
}

}  // namespace

CTask::CTask()
    : m_pEventCb(nullptr),
      m_pCleanupCb(nullptr),
      m_ThreadId(0),
      m_ThreadIdMutex(),
      m_Thread(),
      m_Joinable(false),
      m_Queue(),
      m_QueueMutexAttr(),
      m_QueueMutex(),
      m_QueueCond(),
      m_PendingResets(0),
      m_Exiting(false),
      m_ResetSem(),
      m_SemReady(false),
      m_Ignored(false),
      m_IgnoreMutex(),
      m_Preparing(false),
      m_PrepareMutex()
{
    if (sem_init(&m_ResetSem, 0, 0) != 0)
        TTML_ERROR("Error returned by sem_init");
    else
        m_SemReady = true;

    pthread_mutexattr_init(&m_QueueMutexAttr);
    pthread_mutexattr_settype(&m_QueueMutexAttr, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&m_QueueMutex, &m_QueueMutexAttr);
    pthread_mutex_init(&m_ThreadIdMutex, nullptr);
    pthread_mutex_init(&m_IgnoreMutex, nullptr);
    pthread_mutex_init(&m_PrepareMutex, nullptr);
    pthread_cond_init(&m_QueueCond, nullptr);
}

CTask::~CTask()
{
    if (m_IsLive()) {
        TTML_WARN("Task still running. Stopping now.");
        SetTaskState(true);
        Stop();
    } else {
        m_JoinEnded();
    }
    pthread_cond_destroy(&m_QueueCond);
    pthread_mutex_destroy(&m_QueueMutex);
    pthread_mutex_destroy(&m_ThreadIdMutex);
    pthread_mutex_destroy(&m_IgnoreMutex);
    pthread_mutex_destroy(&m_PrepareMutex);
    pthread_mutexattr_destroy(&m_QueueMutexAttr);
    if (m_SemReady)
        sem_destroy(&m_ResetSem);
    delete m_pEventCb;
    delete m_pCleanupCb;
}

void CTask::Connect(ICallback* pEventCb, ICallback* pCleanupCb)
{
    if (m_pEventCb != pEventCb)
        delete m_pEventCb;
    if (m_pCleanupCb != pCleanupCb)
        delete m_pCleanupCb;
    m_pEventCb = pEventCb;
    m_pCleanupCb = pCleanupCb;
}

bool CTask::Start(const char* name)
{
    // Claim the preparing flag in one step so that two concurrent starts
    // cannot both pass; the flag is checked before the id because the worker
    // records its id before it clears the flag.
    pthread_mutex_lock(&m_PrepareMutex);
    bool claimed = !m_Preparing;
    m_Preparing = true;
    pthread_mutex_unlock(&m_PrepareMutex);
    if (!claimed || m_IsRunning()) {
        if (claimed)
            m_SetPreparing(false);
        TTML_ERROR("Thread is already created. New request for creation should not be made!");
        return false;
    }

    m_JoinEnded();
    pthread_mutex_lock(&m_QueueMutex);
    m_Exiting = false;
    pthread_mutex_unlock(&m_QueueMutex);

    if (pthread_create(&m_Thread, nullptr, &CTask::m_Run_Cb, this) != 0) {
        TTML_ERROR("pthread_create FAILED !!");
        m_SetPreparing(false);
        return false;
    }
    m_Joinable = true;

    if (name && name[0]) {
        char threadName[kThreadNameSize];
        std::strncpy(threadName, name, kThreadNameSize - 1);
        threadName[kThreadNameSize - 1] = '\0';
        if (std::strlen(name) > kThreadNameSize - 1)
            TTML_WARN("Name [%s] is too long", name);
        int rc = pthread_setname_np(m_Thread, threadName);
        if (rc != 0)
            TTML_WARN("pthread_setname_np failed: [%d]", rc);
    }
    return true;
}

void* CTask::m_Run_Cb(void* arg)
{
    TTML_INFO("Enter");
    static_cast<CTask*>(arg)->m_Run();
    return nullptr;
}

void CTask::m_Run()
{
    pthread_mutex_lock(&m_ThreadIdMutex);
    m_ThreadId = KernelThreadId();
    pthread_mutex_unlock(&m_ThreadIdMutex);
    m_SetPreparing(false);

    for (;;) {
        pthread_mutex_lock(&m_QueueMutex);
        while (m_Queue.empty()) {
            // Wake up every second even without a signal, as a safety net.
            timespec deadline;
            clock_gettime(CLOCK_REALTIME, &deadline);
            deadline.tv_sec += 1;
            pthread_cond_timedwait(&m_QueueCond, &m_QueueMutex, &deadline);
        }
        void* event = m_Queue.front();
        m_Queue.pop_front();
        int acks = 0;
        if (event == kResetMarker) {
            --m_PendingResets;
            acks = 1;
        } else if (!event) {
            m_Exiting = true;
            // Resets whose markers sit behind the stop marker will never be
            // reached: release them now and drop their markers.
            acks = m_PendingResets;
            m_PendingResets = 0;
            for (auto it = m_Queue.begin(); it != m_Queue.end();)
                it = *it == kResetMarker ? m_Queue.erase(it) : it + 1;
        }
        pthread_mutex_unlock(&m_QueueMutex);

        for (int i = 0; i < acks; ++i) {
            if (sem_post(&m_ResetSem) != 0)
                TTML_ERROR("Error returned by sem_post");
        }
        if (!event)
            break;
        if (event != kResetMarker && m_pEventCb)
            m_pEventCb->Invoke(event);
    }

    TTML_INFO("Task: Stop task event: stopping infinite loop.");
    pthread_mutex_lock(&m_ThreadIdMutex);
    m_ThreadId = 0;
    pthread_mutex_unlock(&m_ThreadIdMutex);
    TTML_INFO("Exit");
}

size_t CTask::m_Post(void* event)
{
    pthread_mutex_lock(&m_QueueMutex);
    m_Queue.push_back(event);
    size_t size = m_Queue.size();
    pthread_cond_signal(&m_QueueCond);
    pthread_mutex_unlock(&m_QueueMutex);
    return size;
}

void CTask::SendEvent(void* event)
{
    size_t size = m_Post(event);
    if (size > kMinQueueSize && !m_IsLive())
        m_Clear(false);
}

void CTask::m_Clear(bool all)
{
    const size_t floor = all ? 0 : kMinQueueSize;
    if (!m_pCleanupCb) {
        TTML_WARN("No Cleanup CB is registered!!! queueSize=[%zu]", m_QueueSize());
        return;
    }
    size_t size = m_QueueSize();
    if (size <= floor) {
        TTML_INFO("Event queueSize is less than minQueueSize. queueSize=[%zu]", size);
        return;
    }
    for (;;) {
        pthread_mutex_lock(&m_QueueMutex);
        if (m_Queue.size() <= floor) {
            pthread_mutex_unlock(&m_QueueMutex);
            break;
        }
        void* event = m_Queue.front();
        m_Queue.pop_front();
        pthread_mutex_unlock(&m_QueueMutex);
        // The callback may post again: call it without the queue mutex.
        if (event)
            m_pCleanupCb->Invoke(event);
    }
}

void CTask::Reset()
{
    // A preparing worker counts: it will reach the marker once it runs.
    if (!m_IsLive()) {
        TTML_INFO("Returning as task is not running");
        return;
    }
    if (!m_SemReady) {
        TTML_ERROR("Error returned by sem_wait");
        return;
    }
    pthread_mutex_lock(&m_QueueMutex);
    if (m_Exiting) {
        // The worker already took its stop marker and would never answer.
        pthread_mutex_unlock(&m_QueueMutex);
        TTML_INFO("Returning as task is not running");
        return;
    }
    // A count, not a flag, so that concurrent resets each get their answer.
    ++m_PendingResets;
    m_Queue.push_back(kResetMarker);
    pthread_cond_signal(&m_QueueCond);
    pthread_mutex_unlock(&m_QueueMutex);

    while (sem_wait(&m_ResetSem) != 0) {
        if (errno != EINTR) {
            TTML_ERROR("Error returned by sem_wait");
            break;
        }
    }
}

void CTask::Stop()
{
    if (!m_IsLive()) {
        size_t size = m_QueueSize();
        TTML_INFO("Task is neither running nor in preparation stage! Q Size=[%zu]", size);
        if (size > 0)
            m_Clear(true);
        m_JoinEnded();
        return;
    }

    m_Post(nullptr);
    int rc = pthread_join(m_Thread, nullptr);
    m_Joinable = false;
    if (rc != 0) {
        char buffer[256] = {0};
        const char* text = PickErrorText(strerror_r(rc, buffer, sizeof(buffer)), buffer);
        TTML_WARN("pthread_join FAILED with errorCode: [%d][%s]!", rc, text);
    }
    TTML_INFO("After pthread_join");
    m_SetPreparing(false);
}

void CTask::m_JoinEnded()
{
    // Callers know the worker is not live. One that ended on a marker nobody
    // joined for (a null event posted by hand) still holds its resources.
    if (m_Joinable) {
        pthread_join(m_Thread, nullptr);
        m_Joinable = false;
    }
}

void CTask::SetTaskState(bool ignore)
{
    pthread_mutex_lock(&m_IgnoreMutex);
    m_Ignored = ignore;
    pthread_mutex_unlock(&m_IgnoreMutex);
}

bool CTask::IsTaskIgnored() const
{
    pthread_mutex_lock(&m_IgnoreMutex);
    bool ignored = m_Ignored;
    pthread_mutex_unlock(&m_IgnoreMutex);
    return ignored;
}

void CTask::Lock()
{
    pthread_mutex_lock(&m_QueueMutex);
}

void CTask::Unlock()
{
    pthread_mutex_unlock(&m_QueueMutex);
}

size_t CTask::m_QueueSize()
{
    pthread_mutex_lock(&m_QueueMutex);
    size_t size = m_Queue.size();
    pthread_mutex_unlock(&m_QueueMutex);
    return size;
}

bool CTask::m_IsRunning() const
{
    pthread_mutex_lock(&m_ThreadIdMutex);
    bool running = m_ThreadId != 0;
    pthread_mutex_unlock(&m_ThreadIdMutex);
    return running;
}

bool CTask::m_IsPreparing() const
{
    pthread_mutex_lock(&m_PrepareMutex);
    bool preparing = m_Preparing;
    pthread_mutex_unlock(&m_PrepareMutex);
    return preparing;
}

bool CTask::m_IsLive() const
{
    // Preparing first: the worker records its id before clearing the flag,
    // so this order never misses a live worker.
    return m_IsPreparing() || m_IsRunning();
}

void CTask::m_SetPreparing(bool preparing)
{
    pthread_mutex_lock(&m_PrepareMutex);
    m_Preparing = preparing;
    pthread_mutex_unlock(&m_PrepareMutex);
}

}  // namespace TTML
