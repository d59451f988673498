#ifndef TTML_TVSERVICE_CSERVICEDATAAUX_H
#define TTML_TVSERVICE_CSERVICEDATAAUX_H

#include "CTVSObject.h"

namespace TTML {

// Auxiliary service data. Results: 1 on success, 0 on failure.
class CServiceDataAux : public CTVSObject {
public:
    // Number of caption tracks of the service; fails for a service that is
    // not the tuned one.
    int SizeOfCaption(unsigned long long serviceId, unsigned int& count);
};

}  // namespace TTML

#endif
