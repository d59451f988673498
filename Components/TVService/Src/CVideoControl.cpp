#include "CVideoControl.h"

#include "CTVService.h"

namespace TTML {

int CVideoControl::ResizeVideo(int x, int y, int h, int w)
{
    return CTVService::GetInstance().SetVideoRect({x, y, w, h}) ? 1 : 0;
}

int CVideoControl::ResetVideoSize()
{
    return CTVService::GetInstance().SetVideoRect({0, 0, 1920, 1080}) ? 1 : 0;
}

}  // namespace TTML
