#ifndef TTML_TVSERVICE_TVSERVICEAPI_H
#define TTML_TVSERVICE_TVSERVICEAPI_H

#include "CDataControl.h"
#include "CServiceDataAux.h"
#include "CServiceNavigation.h"
#include "CVideoControl.h"

namespace TTML {

// Entry to the TV service. Every object obtained is given back with Destroy.
// While the service is terminated nothing is created. Any thread.
class TVServiceAPI {
public:
    // 0 and *ppControl on success; -1 and null otherwise.
    static int CreateVideoControl(int profile, int group, CVideoControl** ppControl);
    static int CreateDataControl(int profile, int index, CDataControl** ppControl);
    // The object, or null.
    static CServiceNavigation* CreateServiceNavigation(int profile, int index, CServiceNavigation** ppNavigation);
    static CServiceDataAux* ServiceDataAux(int profile, int index);
    // Null is ignored.
    static void Destroy(CTVSObject* pObject);
};

}  // namespace TTML

#endif
