#include "CServiceNavigation.h"

#include "CTVService.h"

namespace TTML {

int CServiceNavigation::GetTvMode(TSTvMode& mode)
{
    unsigned long long serviceId = 0;
    return CTVService::GetInstance().GetService(serviceId, mode) ? 1 : 0;
}

int CServiceNavigation::GetCurrentServiceInfo(TSTvMode mode, const TCCriteriaHelper& criteria, TCServiceData& data)
{
    unsigned long long serviceId = 0;
    TSTvMode current = TV_MODE_NONE;
    if (!CTVService::GetInstance().GetService(serviceId, current) || mode != current)
        return 0;
    if (criteria.Fetches(SERVICE_INFO_SERVICE_ID))
        data.Set(SERVICE_INFO_SERVICE_ID, serviceId);
    return 1;
}

}  // namespace TTML
