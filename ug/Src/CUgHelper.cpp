#include "CUgHelper.h"

#include "CATSCSource.h"
#include "CDVBSource.h"
#include "CSourceHolder.h"
#include "CTTMLSource.h"
#include "ICore.h"
#include "ITTMLSourceControl.h"
#include "TTMLLog.h"

#include <app_control.h>
#include <system_info.h>

#include <new>

namespace TTML {

namespace {

// The gadget's layer on the window's canvas; drawing above it stays the TV's.
const short kBaseLayoutLayer = 6;
// DTV type of a set that carries DVB TTML subtitles.
const int kDtvTypeDvb = 1;

}  // namespace

CUgHelper::CUgHelper()
{
    TTML_INFO("");
}

CUgHelper::~CUgHelper()
{
    TTML_INFO("");
}

Evas_Object* CUgHelper::t_CreateBaseLayout(Evas_Object* pUgWin)
{
    TTML_INFO("");
    if (!pUgWin) {
        TTML_WARN("pUgWin is null");
        return nullptr;
    }
    if (m_pBaseLayout) {
        TTML_WARN("m_pBaseLayout is already created. Check this!!!");
        return m_pBaseLayout;
    }
    Evas_Object* pLayout = evas_object_box_add(evas_object_evas_get(pUgWin));
    if (!pLayout) {
        TTML_WARN("layout is null");
        return nullptr;
    }
    int x = 0, y = 0, w = 0, h = 0;
    evas_object_geometry_get(pUgWin, &x, &y, &w, &h);
    TTML_INFO("Ug win size: x=%d, y=%d, w=%d, h=%d", x, y, w, h);
    evas_object_move(pLayout, x, y);
    evas_object_resize(pLayout, w, h);
    evas_object_show(pLayout);
    evas_object_layer_set(pLayout, kBaseLayoutLayer);
    evas_object_event_callback_add(pLayout, EVAS_CALLBACK_RESIZE, m_ResizeCB, this);
    m_pBaseLayout = pLayout;
    return pLayout;
}

void CUgHelper::t_DestroyBaseLayout()
{
    TTML_INFO("");
    if (!m_pBaseLayout) {
        TTML_WARN("Base layout is null");
        return;
    }
    evas_object_del(m_pBaseLayout);
    m_pBaseLayout = nullptr;
}

void CUgHelper::m_ResizeCB(void* data, Evas* /*e*/, Evas_Object* obj, void* /*event_info*/)
{
    TTML_INFO("");
    CUgHelper* pThis = static_cast<CUgHelper*>(data);
    if (!pThis) {
        TTML_WARN("Return coz ptr is null");
        return;
    }
    if (pThis->m_pCore) {
        int w = 0, h = 0;
        evas_object_geometry_get(obj, nullptr, nullptr, &w, &h);
        // The root container follows the layout by itself; the core only hears of it.
        pThis->m_pCore->ResizeCaption(w, h);
    }
}

void CUgHelper::t_SetBroadcastMode(bool bBroadcast)
{
    TTML_INFO("");
    m_bBroadcastMode = bBroadcast;
    m_UpdateSource();
}

void CUgHelper::m_UpdateSource()
{
    TTML_INFO("");
    if (m_bBroadcastMode) {
        m_CreateBCSource();
        if (m_pSource)
            return;
    } else {
        m_pSource = CSourceHolder::GetSource();
        if (m_pSource)
            return;
    }
    TTML_ERROR("m_pSource is null!");
}

bool CUgHelper::m_CreateBCSource()
{
    TTML_INFO("");
    if (m_pSource) {
        TTML_WARN("m_pSource is already created!");
        return false;
    }
    // ATSC 3.0 wins on a set that has both.
    if (m_IsSysSupportedAtsc3())
        m_pSource = new (std::nothrow) CATSCSource();
    else if (m_IsSysSupportedDvbTtml())
        m_pSource = new (std::nothrow) CDVBSource();
    else
        TTML_WARN("TTML not supported by system.");
    if (!m_pSource) {
        TTML_ERROR("m_pSource null");
        return false;
    }
    return true;
}

bool CUgHelper::m_IsSysSupportedAtsc3()
{
    TTML_INFO("");
    bool bSupported = false;
    if (system_info_get_value_bool(SYSTEM_INFO_KEY_ATSC3_SUPPORTED, &bSupported) != SYSTEM_INFO_ERROR_NONE) {
        TTML_WARN("system_info_get_value_bool SYSTEM_INFO_KEY_ATSC3_SUPPORTED failed");
        return false;
    }
    return bSupported;
}

bool CUgHelper::m_IsSysSupportedDvbTtml()
{
    TTML_INFO("");
    int dtvType = 0;
    if (system_info_get_value_int(SYSTEM_INFO_KEY_DTV_TYPE, &dtvType) != SYSTEM_INFO_ERROR_NONE) {
        TTML_WARN("system_info_get_value_int failed!");
        return false;
    }
    TTML_INFO("DTV type : %d", dtvType);
    return dtvType == kDtvTypeDvb;
}

bool CUgHelper::t_CreateTTMLView()
{
    TTML_INFO("");
    m_UpdateSource();
    if (!m_pSource || !m_pBaseLayout) {
        TTML_WARN("Source/BaseLayout should not be null! src:[%p] m_pBaseLayout:[%p]", static_cast<void*>(m_pSource),
                  static_cast<void*>(m_pBaseLayout));
        return false;
    }
    if (m_pCore) {
        TTML_WARN("Error: Core must be null");
        return false;
    }
    m_pCore = ICore::GetInstance();
    if (!m_pCore->Initialize(m_pSource, m_pBaseLayout)) {
        TTML_WARN("Unable to initialize core");
        m_pCore->Destroy();
        m_pCore = nullptr;
        return false;
    }
    ITTMLSourceControl* pControl = dynamic_cast<ITTMLSourceControl*>(m_pSource);
    if (!pControl) {
        TTML_WARN("dynamic_cast failed for ITTMLSourceControl");
        m_pCore->Destroy();
        m_pCore = nullptr;
        return false;
    }
    pControl->Start();
    TTML_INFO("Core initialized successfully");
    return true;
}

void CUgHelper::t_DestroyTTMLView()
{
    TTML_INFO("");
    if (m_bBroadcastMode) {
        ITTMLSourceControl* pControl = dynamic_cast<ITTMLSourceControl*>(m_pSource);
        if (pControl) {
            pControl->Stop();
            pControl->Deinitialize();
        } else {
            TTML_WARN("dynamic_cast failed for ITTMLSourceControl");
        }
        CTTMLSource* pBroadcast = dynamic_cast<CTTMLSource*>(m_pSource);
        if (pBroadcast) {
            TTML_INFO("Calling BroadcastSource Destroy");
            pBroadcast->Destroy();
        } else {
            TTML_WARN("dynamic_cast failed for CTTMLSource.");
        }
    }
    // The broadband source stays with its holder.
    m_pSource = nullptr;
    if (m_pCore) {
        m_pCore->Destroy();
        m_pCore = nullptr;
    }
    TTML_INFO("TTML destroyed");
}

ITTMLSourceControl* CUgHelper::m_GetSourceControl()
{
    m_UpdateSource();
    ITTMLSourceControl* pControl = dynamic_cast<ITTMLSourceControl*>(m_pSource);
    if (!pControl)
        TTML_WARN("dynamic_cast failed for ITTMLSourceControl");
    return pControl;
}

void CUgHelper::t_ShowCaption()
{
    TTML_INFO("");
    if (ITTMLSourceControl* pControl = m_GetSourceControl())
        pControl->ShowCaption();
}

void CUgHelper::t_HideCaption()
{
    TTML_INFO("");
    if (ITTMLSourceControl* pControl = m_GetSourceControl())
        pControl->HideCaption();
}

void CUgHelper::m_UgSendRequest(char* key)
{
    TTML_INFO("");
    app_control_h pService = nullptr;
    if (app_control_create(&pService) != APP_CONTROL_ERROR_NONE) {
        TTML_INFO("Service handler creation failed.");
    }
    TTML_INFO("Service handler created successfully.");
    app_control_add_extra_data(pService, key, "caption");
    if (ug_send_result(m_pUG, pService) != 0)
        TTML_INFO("ug_send_result failed.");
    else
        TTML_INFO("ug_send_result successful.");
    if (pService && app_control_destroy(pService) == APP_CONTROL_ERROR_NONE)
        TTML_INFO("Service destroyed successfully.");
    else
        TTML_INFO("Cannot destroy service.");
}

}  // namespace TTML
