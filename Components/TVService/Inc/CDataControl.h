#ifndef TTML_TVSERVICE_CDATACONTROL_H
#define TTML_TVSERVICE_CDATACONTROL_H

#include "CTVSObject.h"
#include "TVServiceTypes.h"

namespace TTML {

// The tuned service's caption tracks, by index from 0. Results: 1 on
// success, 0 on failure.
class CDataControl : public CTVSObject {
public:
    // Fail when the service has no preferred (current) track.
    int GetPreferredCaption(TCCaption& caption, unsigned int& index);
    int GetCurrentCaption(TCCaption& caption, unsigned int& index);
    // Fails when index names no track.
    int SetCurrentCaption(unsigned int index);
};

}  // namespace TTML

#endif
