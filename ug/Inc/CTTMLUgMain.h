#ifndef TTML_UG_CTTMLUGMAIN_H
#define TTML_UG_CTTMLUGMAIN_H

#include "CUgHelper.h"
#include "UgTTMLModule.h"

#include <app_control.h>
#include <ui-gadget-module.h>

namespace TTML {

// The gadget object behind the lifecycle callbacks. The framework hands
// every callback the `priv` of the operation table, which points to a slot
// holding this object; destroy deletes it and empties the slot. Main loop.
class CTTMLUgMain : private CUgHelper {
public:
    // Fills the callbacks of `ops`, sets `opt` to 0 and stores a new gadget
    // object in the slot `ops->priv` points to. False for a null table or slot.
    static bool Initialize(ug_module_ops* ops);

    CTTMLUgMain();
    ~CTTMLUgMain() override;

private:
    static void* m_OnCreate(ui_gadget_h pUG, ug_mode mode, app_control_h pAppControl, void* pData);
    static void m_OnStart(ui_gadget_h pUG, app_control_h pAppControl, void* pData);
    static void m_OnPause(ui_gadget_h pUG, app_control_h pAppControl, void* pData);
    static void m_OnResume(ui_gadget_h pUG, app_control_h pAppControl, void* pData);
    static void m_OnDestroy(ui_gadget_h pUG, app_control_h pAppControl, void* pData);
    static void m_OnMessage(ui_gadget_h pUG, app_control_h pMsg, app_control_h pAppControl, void* pData);
    static void m_OnEvent(ui_gadget_h pUG, ug_event event, app_control_h pAppControl, void* pData);

    // The object in the slot `pData` points to; null (with the warning) when
    // either is missing.
    static CTTMLUgMain* m_FromPriv(void* pData);

    void m_OnEnable();
    void m_OnDisable();
    bool m_IsBroadbandOnlyMode(app_control_h pAppControl);
    bool m_IsCommandPresent(app_control_h pAppControl, const char* command);

    bool m_bBroadbandOnly = false;
};

}  // namespace TTML

#endif
