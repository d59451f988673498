#ifndef TTML_ENGINE_CTIMERMANAGER_H
#define TTML_ENGINE_CTIMERMANAGER_H

#include "CTimerData.h"

#include <functional>

namespace TTML {

class IGraphics;
class IMutex;
class ITimer;

// The presentation engine's one timer. Turns a document time into a delay
// against the current media time (media time + timestamp = document time),
// and arms, re-arms, pauses, resumes and stops a graphics-component timer
// whose expiry calls the engine back with the timer data.
//
// Units: document times unsigned ms, media time and timestamps signed ms,
// delays seconds.
// Threads: arming, re-arming, pausing and stopping run on the UI main loop
// (graphics timers live there); IsTimerAdded, GetTimerTimeInfo and
// GetRenderedSubData may be read from any thread. A recursive mutex guards
// the timer and the timer data: a zero delay calls the engine back at once,
// with the mutex held, and the engine arms again from inside that call.
// Lock order: the engine's rendering mutex before this one.
class CTimerManager {
public:
    // Gets the timer data; its result is handed to the graphics timer,
    // nonzero keeps the timer running.
    typedef unsigned char (*TimerCallback)(void* pTimerData);
    // Writes the media time in ms; false when there is none. Called with
    // the mutex held, on the thread that arms.
    typedef std::function<bool(long long* pTime)> MediaTimeSource;

    // pGraphics: not owned, makes the timer. pUserData: the engine, not
    // owned, handed back through CTimerData::GetUserData. mediaTime: where
    // the media time comes from; empty reads it from the core controller.
    CTimerManager(IGraphics* pGraphics, TimerCallback callback, void* pUserData,
                  MediaTimeSource mediaTime = MediaTimeSource());
    // Stops the timer.
    virtual ~CTimerManager();
    CTimerManager(const CTimerManager&) = delete;
    CTimerManager& operator=(const CTimerManager&) = delete;

    // Arms for a record drawn at `begin` and removed at `end`. A begin in the
    // past calls back at once. False without a media time, when `end` has
    // passed, when no timer could be made, and in band mode for a begin more
    // than 600 s ahead.
    bool SetTimer(unsigned long long begin, unsigned long long end, long long timeStamp);
    // Re-arms when the timer fired more than 10 ms before its time. True
    // when it re-armed.
    bool SyncCurrentSubtitles();
    // Switches the timer to the 0.3 s flash period while at least that much
    // of the record (ending at `end`) remains; makes a timer when the record
    // was late and the timer was stopped.
    bool SetFlashInterval(unsigned long long end, long long timeStamp);
    // The paused state outlives the timer: a timer armed while paused is
    // made paused, and a late record then waits for ResumeTimer instead of
    // calling back at once.
    void PauseTimer();
    void ResumeTimer();
    bool IsPaused();
    // Destroys the timer (if any) and clears the timer data; the paused
    // state stays.
    void StopTimer();
    // Whether a media time can be read now (logs a warning when not).
    bool HasMediaTime();

    bool IsTimerAdded();
    unsigned long long GetTimerTimeInfo();
    // The record on screen (SubtitleRenderingInfo*, not owned), or null.
    void* GetRenderedSubData();
    void SetRenderedSubData(void* pSubData);
    void SetBandMode(bool bandMode);

private:
    bool m_GetMediaTime(long long* pTime);
    bool m_SetTimer(unsigned long long time, long long timeStamp, double seconds);
    // Makes, starts (and pauses, while paused) a timer; under the mutex.
    bool m_StartTimer(double seconds);
    void m_SetPaused(bool paused);
    static int m_OnTimerExpiry_Cb(void* pData);

    IGraphics* m_pGraphics;  // not owned
    bool m_bBandMode;
    IMutex* m_pMutex;
    ITimer* m_pTimer;  // null when no timer is armed
    TimerCallback m_pCallback;
    CTimerData m_timerData;
    MediaTimeSource m_mediaTime;
    bool m_bPaused;
};

}  // namespace TTML

#endif
