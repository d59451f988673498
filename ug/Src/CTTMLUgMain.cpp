#include "CTTMLUgMain.h"

#include "TTMLLog.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace TTML {

namespace {

const char kCmdKey[] = "cmd";
const char kServiceModeKey[] = "service-mode";
const char kBroadbandOnly[] = "broadbandonly";

// Gadget commands are recognised by their beginning.
bool StartsWith(const char* value, const char* command)
{
    return std::strncmp(value, command, std::strlen(command)) == 0;
}

}  // namespace

CTTMLUgMain::CTTMLUgMain()
{
    TTML_INFO("");
}

CTTMLUgMain::~CTTMLUgMain()
{
    TTML_INFO("");
}

bool CTTMLUgMain::Initialize(ug_module_ops* ops)
{
    TTML_INFO("");
    if (!ops || !ops->priv) {
        TTML_WARN("ops/ops->priv is/are null");
        return false;
    }
    ops->create = m_OnCreate;
    ops->start = m_OnStart;
    ops->pause = m_OnPause;
    ops->resume = m_OnResume;
    ops->destroy = m_OnDestroy;
    ops->message = m_OnMessage;
    ops->event = m_OnEvent;
    ops->opt = static_cast<ug_option>(0);
    CTTMLUgMain* pUG = new (std::nothrow) CTTMLUgMain();
    TTML_ASSERT(pUG);
    *static_cast<CTTMLUgMain**>(ops->priv) = pUG;
    return true;
}

CTTMLUgMain* CTTMLUgMain::m_FromPriv(void* pData)
{
    if (!pData) {
        TTML_WARN("pData is null !");
        return nullptr;
    }
    CTTMLUgMain* pUG = *static_cast<CTTMLUgMain**>(pData);
    if (!pUG)
        TTML_WARN("pUG is null");
    return pUG;
}

void* CTTMLUgMain::m_OnCreate(ui_gadget_h pUG, ug_mode /*mode*/, app_control_h pAppControl, void* pData)
{
    TTML_INFO("");
    if (!pUG || !pData) {
        TTML_WARN("UG/pData is null");
        return nullptr;
    }
    CTTMLUgMain* pThis = *static_cast<CTTMLUgMain**>(pData);
    if (!pThis) {
        TTML_WARN("Return coz pUG is null");
        return nullptr;
    }
    pThis->t_SetUgHandle(pUG);
    pThis->m_bBroadbandOnly = pThis->m_IsBroadbandOnlyMode(pAppControl);
    pThis->t_SetBroadcastMode(!pThis->m_bBroadbandOnly);
    if (pThis->m_bBroadbandOnly)
        TTML_INFO("######################## IBB/HBBTV Broadband only #######################");
    else
        TTML_INFO("######################## ATSC/DVB Broadcast #######################");
    return pThis->t_CreateBaseLayout(static_cast<Evas_Object*>(ug_get_window()));
}

void CTTMLUgMain::m_OnStart(ui_gadget_h /*pUG*/, app_control_h /*pAppControl*/, void* pData)
{
    TTML_INFO("");
    CTTMLUgMain* pThis = m_FromPriv(pData);
    if (pThis && !pThis->m_bBroadbandOnly)
        pThis->t_CreateTTMLView();
}

void CTTMLUgMain::m_OnPause(ui_gadget_h /*pUG*/, app_control_h /*pAppControl*/, void* pData)
{
    TTML_INFO("");
    CTTMLUgMain* pThis = m_FromPriv(pData);
    if (pThis)
        pThis->t_HideCaption();
}

void CTTMLUgMain::m_OnResume(ui_gadget_h /*pUG*/, app_control_h /*pAppControl*/, void* pData)
{
    TTML_INFO("");
    CTTMLUgMain* pThis = m_FromPriv(pData);
    if (pThis)
        pThis->t_ShowCaption();
}

void CTTMLUgMain::m_OnDestroy(ui_gadget_h /*pUG*/, app_control_h /*pAppControl*/, void* pData)
{
    TTML_INFO("");
    CTTMLUgMain* pThis = m_FromPriv(pData);
    if (!pThis)
        return;
    pThis->t_DestroyTTMLView();
    pThis->t_DestroyBaseLayout();
    delete pThis;
    *static_cast<CTTMLUgMain**>(pData) = nullptr;
    TTML_INFO("Ug destroyed");
}

void CTTMLUgMain::m_OnEvent(ui_gadget_h pUG, ug_event /*event*/, app_control_h /*pAppControl*/, void* pData)
{
    TTML_INFO("");
    if (!pUG || !pData) {
        TTML_WARN("Null arguments");
        return;
    }
    // No event changes anything; they are only heard.
    TTML_INFO("");
}

void CTTMLUgMain::m_OnMessage(ui_gadget_h /*pUG*/, app_control_h pMsg, app_control_h /*pAppControl*/, void* pData)
{
    TTML_INFO("");
    CTTMLUgMain* pThis = m_FromPriv(pData);
    if (!pThis)
        return;
    char* pValue = nullptr;
    if (app_control_get_extra_data(pMsg, kCmdKey, &pValue) != APP_CONTROL_ERROR_NONE) {
        TTML_WARN("service get extra data failed");
        std::free(pValue);
        return;
    }
    if (!pValue) {
        if (pThis->m_IsCommandPresent(pMsg, "enable"))
            pThis->m_OnEnable();
        else if (pThis->m_IsCommandPresent(pMsg, "disable"))
            pThis->m_OnDisable();
        else
            TTML_WARN("Null message received");
        return;
    }
    TTML_INFO("%s", pValue);
    if (StartsWith(pValue, "show"))
        pThis->t_ShowCaption();
    else if (StartsWith(pValue, "hide"))
        pThis->t_HideCaption();
    else if (StartsWith(pValue, "enable"))
        pThis->m_OnEnable();
    else if (StartsWith(pValue, "disable"))
        pThis->m_OnDisable();
    std::free(pValue);
}

bool CTTMLUgMain::m_IsCommandPresent(app_control_h pAppControl, const char* command)
{
    TTML_INFO("");
    char** ppValues = nullptr;
    int length = 0;
    bool bPresent = false;
    if (app_control_get_extra_data_array(pAppControl, command, &ppValues, &length) == APP_CONTROL_ERROR_NONE &&
        length >= 2) {
        TTML_INFO("Received Message %s from caller %s", command, ppValues[1]);
        bPresent = std::strcmp(ppValues[1], command) == 0;
    }
    for (int i = 0; ppValues && i < length; ++i)
        std::free(ppValues[i]);
    std::free(ppValues);
    return bPresent;
}

bool CTTMLUgMain::m_IsBroadbandOnlyMode(app_control_h pAppControl)
{
    TTML_INFO("");
    char* pValue = nullptr;
    bool bBroadbandOnly = app_control_get_extra_data(pAppControl, kServiceModeKey, &pValue) ==
                              APP_CONTROL_ERROR_NONE &&
                          pValue && StartsWith(pValue, kBroadbandOnly);
    TTML_INFO("isBBOnlyMode=%d", bBroadbandOnly);
    std::free(pValue);
    return bBroadbandOnly;
}

void CTTMLUgMain::m_OnEnable()
{
    TTML_INFO("");
    if (!m_bBroadbandOnly) {
        t_DestroyTTMLView();
        t_SetBroadcastMode(false);
    }
    t_CreateTTMLView();
    t_ShowCaption();
}

void CTTMLUgMain::m_OnDisable()
{
    TTML_INFO("");
    t_HideCaption();
    t_DestroyTTMLView();
    if (!m_bBroadbandOnly) {
        t_SetBroadcastMode(true);
        t_CreateTTMLView();
    }
}

}  // namespace TTML

extern "C" int UG_TTML_MODULE_INIT(ug_module_ops* ops)
{
    TTML_INFO("");
    if (!TTML::CTTMLUgMain::Initialize(ops)) {
        TTML_WARN("Initialize failed.");
        return -1;
    }
    return 0;
}
