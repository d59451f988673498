#include "CServiceDataAux.h"

#include "CTVService.h"

namespace TTML {

int CServiceDataAux::SizeOfCaption(unsigned long long serviceId, unsigned int& count)
{
    return CTVService::GetInstance().GetCaptionCount(serviceId, count) ? 1 : 0;
}

}  // namespace TTML
