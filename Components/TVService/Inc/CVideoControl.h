#ifndef TTML_TVSERVICE_CVIDEOCONTROL_H
#define TTML_TVSERVICE_CVIDEOCONTROL_H

#include "CTVSObject.h"

namespace TTML {

// Moves and sizes the video window. Results: 1 on success, 0 on failure.
class CVideoControl : public CTVSObject {
public:
    // Screen pixels; note the order height before width.
    int ResizeVideo(int x, int y, int h, int w);
    // Back to the full screen.
    int ResetVideoSize();
};

}  // namespace TTML

#endif
