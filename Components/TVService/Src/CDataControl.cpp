#include "CDataControl.h"

#include "CTVService.h"

namespace TTML {

int CDataControl::GetPreferredCaption(TCCaption& caption, unsigned int& index)
{
    return CTVService::GetInstance().GetCaption(true, caption, index) ? 1 : 0;
}

int CDataControl::GetCurrentCaption(TCCaption& caption, unsigned int& index)
{
    return CTVService::GetInstance().GetCaption(false, caption, index) ? 1 : 0;
}

int CDataControl::SetCurrentCaption(unsigned int index)
{
    return CTVService::GetInstance().SetCurrentCaption(index) ? 1 : 0;
}

}  // namespace TTML
