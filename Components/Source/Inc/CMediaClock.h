#ifndef TTML_SOURCE_CMEDIACLOCK_H
#define TTML_SOURCE_CMEDIACLOCK_H

#include <functional>
#include <mutex>

namespace TTML {

// Media position in ms against a monotonic time source: stopped until
// Start, runs in real time, freezes on Pause, jumps on Seek. Thread-safe.
class CMediaClock {
public:
    // Current time in ms from any fixed origin; must never go backwards.
    typedef std::function<long long()> TimeSource;

    // Uses CLOCK_MONOTONIC.
    CMediaClock();
    // Tests inject their own time source.
    explicit CMediaClock(TimeSource timeSource);

    // Position 0, running (also from paused or running: a restart).
    void Start();
    // Back to stopped; Now fails until the next Start.
    void Stop();
    // False when not running.
    bool Pause();
    // False when not paused.
    bool Resume();
    // Moves the position, keeping running or paused. False when stopped or
    // for a negative position.
    bool Seek(long long positionMs);
    // False while stopped; otherwise the position in ms.
    bool Now(long long& positionMs) const;
    bool IsRunning() const;
    bool IsPaused() const;
    bool IsStopped() const;

    // CLOCK_MONOTONIC in ms.
    static long long MonotonicMs();

private:
    enum State { STOPPED, RUNNING, PAUSED };

    long long m_PositionLocked() const;

    TimeSource m_timeSource;
    mutable std::mutex m_lock;
    State m_state = STOPPED;
    long long m_base = 0;     // position at m_anchor (running) or the frozen position
    long long m_anchor = 0;   // time-source value when the position was m_base
};

}  // namespace TTML

#endif
