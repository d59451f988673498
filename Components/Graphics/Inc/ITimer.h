#ifndef TTML_GRAPHICS_ITIMER_H
#define TTML_GRAPHICS_ITIMER_H

namespace TTML {

// A main-loop timer, made with IGraphics::CreateObject(OBJECT_TIMER) and freed
// with IGraphics::DestroyObject.
//
// Thread: UI main loop only; a call from another thread is refused with a
// warning (Ecore timers cannot be touched elsewhere).
class ITimer {
public:
    // Called on the main loop with the data given to Start. Nonzero keeps the
    // timer running for another period; zero ends it.
    typedef int (*Callback)(void* data);

    virtual ~ITimer() {}

    // Arms the timer: callback(data) runs `seconds` from now (a negative delay
    // counts as 0), then every `seconds` while it returns nonzero. Replaces an
    // earlier Start and clears a pause.
    virtual void Start(Callback callback, double seconds, void* data) = 0;

    // Freezes the countdown; Resume continues with the time that was left.
    // Both do nothing when the timer is not running or already in that state.
    virtual void Pause() = 0;
    virtual void Resume() = 0;

    // Disarms the timer; the callback does not run again until the next Start
    // or SetInterval.
    virtual void Stop() = 0;

    // Re-arms with a new period counted from now, keeping callback and data
    // (and a pause). Also re-arms a timer that was stopped or whose callback
    // returned zero. Refused with a warning before the first Start.
    virtual void SetInterval(double seconds) = 0;
};

}  // namespace TTML

#endif
