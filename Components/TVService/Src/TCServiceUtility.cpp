#include "TCServiceUtility.h"

#include "CTVService.h"

namespace TTML {

bool TCServiceUtility::IsTvsTerminated(bool& bTerminate)
{
    bTerminate = CTVService::GetInstance().IsTerminated();
    return true;
}

}  // namespace TTML
