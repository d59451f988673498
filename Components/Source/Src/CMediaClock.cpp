#include "CMediaClock.h"

#include <time.h>

#include <utility>

namespace TTML {

CMediaClock::CMediaClock() : m_timeSource(&CMediaClock::MonotonicMs) {}

CMediaClock::CMediaClock(TimeSource timeSource) : m_timeSource(std::move(timeSource))
{
    if (!m_timeSource)
        m_timeSource = &CMediaClock::MonotonicMs;
}

long long CMediaClock::MonotonicMs()
{
    struct timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return static_cast<long long>(ts.tv_sec) * 1000LL + ts.tv_nsec / 1000000L;
}

long long CMediaClock::m_PositionLocked() const
{
    if (m_state == RUNNING)
        return m_base + (m_timeSource() - m_anchor);
    return m_base;
}

void CMediaClock::Start()
{
    std::lock_guard<std::mutex> lock(m_lock);
    m_base = 0;
    m_anchor = m_timeSource();
    m_state = RUNNING;
}

void CMediaClock::Stop()
{
    std::lock_guard<std::mutex> lock(m_lock);
    m_state = STOPPED;
    m_base = 0;
}

bool CMediaClock::Pause()
{
    std::lock_guard<std::mutex> lock(m_lock);
    if (m_state != RUNNING)
        return false;
    m_base = m_PositionLocked();
    m_state = PAUSED;
    return true;
}

bool CMediaClock::Resume()
{
    std::lock_guard<std::mutex> lock(m_lock);
    if (m_state != PAUSED)
        return false;
    m_anchor = m_timeSource();
    m_state = RUNNING;
    return true;
}

bool CMediaClock::Seek(long long positionMs)
{
    std::lock_guard<std::mutex> lock(m_lock);
    if (m_state == STOPPED || positionMs < 0)
        return false;
    m_base = positionMs;
    m_anchor = m_timeSource();
    return true;
}

bool CMediaClock::Now(long long& positionMs) const
{
    std::lock_guard<std::mutex> lock(m_lock);
    if (m_state == STOPPED)
        return false;
    positionMs = m_PositionLocked();
    return true;
}

bool CMediaClock::IsRunning() const
{
    std::lock_guard<std::mutex> lock(m_lock);
    return m_state == RUNNING;
}

bool CMediaClock::IsPaused() const
{
    std::lock_guard<std::mutex> lock(m_lock);
    return m_state == PAUSED;
}

bool CMediaClock::IsStopped() const
{
    std::lock_guard<std::mutex> lock(m_lock);
    return m_state == STOPPED;
}

}  // namespace TTML
