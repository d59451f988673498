#ifndef TTML_MENU_CCAPTIONDIVISION_H
#define TTML_MENU_CCAPTIONDIVISION_H

#include "TTMLTypes.h"

#include <atomic>

namespace TTML {

// Caption division: the video shrinks into part of the 1920x1080 screen and
// the captions get a band of their own. Indexed by mode 0..4; mode 0 is the
// full-screen picture.
extern const TTMLRect<int> CaptionDivisionPos[5];   // video rectangle
extern const TTMLRect<int> CaptionDivisionArea[5];  // caption band

// Keeps the current division mode, resizes the video through the TV service
// and moves regions into the band. Base of the caption menu.
// Threads: the mode changes on the main loop or the source thread (show and
// hide), one change at a time (the menu serialises them);
// ApplyCaptionDivToRegion is read by the renderer on the main loop.
class CCaptionDivision {
public:
    // Moves and clips region (screen pixels) into the band of the current
    // mode. False, region unchanged, for mode 0 (or an invalid mode).
    bool ApplyCaptionDivToRegion(TTMLRect<int>& region);
    int GetCaptionDivisionMode() const { return m_ccDivisionMode; }

protected:
    CCaptionDivision() = default;
    virtual ~CCaptionDivision() = default;

    // Resizes the video for mode (above 4: 0) and makes it current. False
    // when the mode is already current or the resize failed.
    bool t_SetCaptionDivisionMode(int mode);

    int t_forcedOff = 1;  // division stays off until the controller allows it

private:
    // reset: full screen; otherwise video is the new picture rectangle,
    // through the TV service's video control.
    bool m_ResizeScreen(bool reset, const TTMLRect<int>& video);

    std::atomic<int> m_ccDivisionMode{0};
};

}  // namespace TTML

#endif
