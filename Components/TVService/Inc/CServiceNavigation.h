#ifndef TTML_TVSERVICE_CSERVICENAVIGATION_H
#define TTML_TVSERVICE_CSERVICENAVIGATION_H

#include "CTVSObject.h"
#include "TVServiceTypes.h"

namespace TTML {

// What is being watched. Results: 1 on success, 0 on failure.
class CServiceNavigation : public CTVSObject {
public:
    // Fails when no service is tuned.
    int GetTvMode(TSTvMode& mode);
    // Fills data with every key criteria fetches; fails when no service is
    // tuned or mode is not the current TV mode.
    int GetCurrentServiceInfo(TSTvMode mode, const TCCriteriaHelper& criteria, TCServiceData& data);
};

}  // namespace TTML

#endif
