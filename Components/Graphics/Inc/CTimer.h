#ifndef TTML_GRAPHICS_CTIMER_H
#define TTML_GRAPHICS_CTIMER_H

#include "ITimer.h"

#include <Ecore.h>

namespace TTML {

// ITimer over one Ecore_Timer at a time. Every operation, construction and
// destruction run on the UI main loop.
//
// The callback may stop, re-arm or destroy its own timer: re-arming swaps in
// a new Ecore timer and the one that fired ends, and destruction is deferred
// until the callback has returned (use CTimer::Release, not delete).
class CTimer final : public ITimer {
public:
    CTimer() = default;
    CTimer(const CTimer&) = delete;
    CTimer& operator=(const CTimer&) = delete;

    // Frees the timer, or marks it to be freed when it is inside its callback.
    static void Release(CTimer* pTimer);

    void Start(Callback callback, double seconds, void* data) override;
    void Pause() override;
    void Resume() override;
    void Stop() override;
    void SetInterval(double seconds) override;

    // Armed (possibly paused).
    bool IsRunning() const { return m_pTimer != nullptr; }
    bool IsPaused() const { return m_bPaused; }

private:
    ~CTimer() override;  // Release() only

    bool m_CheckThread(const char* operation) const;
    void m_Arm(double seconds);
    void m_Disarm();
    static Eina_Bool m_OnTimer_Cb(void* data);

    Ecore_Timer* m_pTimer = nullptr;
    Ecore_Timer* m_pFiring = nullptr;  // the Ecore timer whose callback is running
    Callback m_callback = nullptr;
    void* m_pData = nullptr;
    double m_seconds = 0.0;
    bool m_bPaused = false;
    bool m_bReleasePending = false;
};

}  // namespace TTML

#endif
