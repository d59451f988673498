#ifndef TTML_SOURCE_ITTMLSOURCECONTROL_H
#define TTML_SOURCE_ITTMLSOURCECONTROL_H

namespace TTML {

// The face of a source that the gadget drives. Start, Stop and Deinitialize
// wait for the source thread, so from inside a callback of the same source
// they are refused with an error.
class ITTMLSourceControl {
public:
    virtual ~ITTMLSourceControl() {}

    // Starts playing: the media clock starts and the source thread begins
    // sending messages. False when there is nothing to play.
    virtual bool Start() = 0;
    // Make the source send show (11) / hide (12) from its thread. False when
    // the source is not playing (the request is dropped).
    virtual bool ShowCaption() = 0;
    virtual bool HideCaption() = 0;
    // Stops playing; returns once the source thread has ended.
    virtual void Stop() = 0;
    // Stops and releases what the source holds to play.
    virtual void Deinitialize() = 0;
};

}  // namespace TTML

#endif
