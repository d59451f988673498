#include "CCaptionDivision.h"

#include "CTVServiceSubscriber.h"
#include "TTMLLog.h"
#include "TVServiceAPI.h"

namespace TTML {

const TTMLRect<int> CaptionDivisionPos[5] = {
    {0, 0, 1920, 1080}, {0, 0, 1920, 739}, {0, 341, 1920, 739}, {303, 0, 1314, 739}, {303, 341, 1314, 739},
};

const TTMLRect<int> CaptionDivisionArea[5] = {
    {0, 0, 1920, 1080}, {31, 767, 1860, 284}, {31, 29, 1860, 284}, {31, 767, 1860, 284}, {31, 29, 1860, 284},
};

bool CCaptionDivision::ApplyCaptionDivToRegion(TTMLRect<int>& region)
{
    const int mode = m_ccDivisionMode;
    if (mode == 0)
        return false;
    if (mode < 1 || mode > 4) {
        TTML_WARN("Invalid caption division mode to apply! m_ccDivisionMode=%d", mode);
        return false;
    }
    const TTMLRect<int>& area = CaptionDivisionArea[mode];
    TTML_INFO("Region old origin/extents: x=%d, y=%d, h=%d, w=%d", region.x, region.y, region.h, region.w);
    if (region.x < area.x)
        region.x = area.x;
    // The band's right edge is compared with its width, as the TV does.
    if (region.x + region.w > area.w) {
        if (region.w <= area.w) {
            region.x = area.w - region.w;
        } else {
            region.w = area.w;
            region.x = area.x;
        }
    }
    region.y = area.y;
    if (region.h > area.h)
        region.h = area.h;
    TTML_INFO("Region new origin/extents: x=%d, y=%d, h=%d, w=%d", region.x, region.y, region.h, region.w);
    return true;
}

bool CCaptionDivision::t_SetCaptionDivisionMode(int mode)
{
    if (mode < 0 || mode > 4) {
        TTML_WARN("Invalid caption division=%d", mode);
        mode = 0;
    }
    if (mode == m_ccDivisionMode) {
        TTML_INFO("Current caption division mode is same as new =[%d]", mode);
        return false;
    }
    const bool resized = m_ResizeScreen(mode == 0, CaptionDivisionPos[mode]);
    if (resized)
        m_ccDivisionMode = mode;
    return resized;
}

bool CCaptionDivision::m_ResizeScreen(bool reset, const TTMLRect<int>& video)
{
    CVideoControl* pVideoCtrl = nullptr;
    TVServiceAPI::CreateVideoControl(CTVServiceSubscriber::m_profile, CTVServiceSubscriber::m_group, &pVideoCtrl);
    if (!pVideoCtrl) {
        TTML_WARN("pVideoCtrl is null!");
        return false;
    }
    int ret = 0;
    if (reset) {
        TTML_INFO("Resetting video size to default");
        ret = pVideoCtrl->ResetVideoSize();
    } else {
        TTML_INFO("Resizing video for x=%d, y=%d, h=%d, w=%d", video.x, video.y, video.h, video.w);
        ret = pVideoCtrl->ResizeVideo(video.x, video.y, video.h, video.w);
    }
    TVServiceAPI::Destroy(pVideoCtrl);
    if (ret >= 1) {
        TTML_INFO("Resize is success");
        return true;
    }
    TTML_WARN("Resize failed. ret=%d", ret);
    return false;
}

}  // namespace TTML
