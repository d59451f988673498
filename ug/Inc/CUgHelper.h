#ifndef TTML_UG_CUGHELPER_H
#define TTML_UG_CUGHELPER_H

#include <Evas.h>
#include <ui-gadget-module.h>

namespace TTML {

class ICore;
class ITTMLSource;
class ITTMLSourceControl;

// The working half of the gadget: the base layout over the gadget window,
// the choice of the subtitle source for the current mode, and the core made
// and destroyed with that source and layout. Everything runs on the main
// loop, called from the gadget's lifecycle callbacks.
class CUgHelper {
public:
    CUgHelper();
    virtual ~CUgHelper();

protected:
    // pUgWin: the gadget window (an Evas object). Returns the base layout, a
    // box on layer 6 covering the window, owned until t_DestroyBaseLayout;
    // the same box when it exists already; null on failure.
    Evas_Object* t_CreateBaseLayout(Evas_Object* pUgWin);
    void t_DestroyBaseLayout();

    // Makes the source for the mode (when missing) and the core over it, then
    // starts the source. False, with nothing half-built, on any failure.
    bool t_CreateTTMLView();
    // Stops and destroys a broadcast source (the broadband source belongs to
    // its holder and is only forgotten), then destroys the core.
    void t_DestroyTTMLView();

    void t_ShowCaption();
    void t_HideCaption();

    // true: broadcast (ATSC 3.0 or DVB source); false: the shared broadband
    // source. Switch only without a view.
    void t_SetBroadcastMode(bool bBroadcast);

    // Not owned; the framework's handle, used for results.
    void t_SetUgHandle(ui_gadget_h pUG) { m_pUG = pUG; }

private:
    CUgHelper(const CUgHelper&) = delete;
    CUgHelper& operator=(const CUgHelper&) = delete;

    // Sends key = "caption" to the gadget's caller.
    void m_UgSendRequest(char* key);

    void m_UpdateSource();
    // The current source's show/hide control, after m_UpdateSource; null
    // (with a warning) when the source has none.
    ITTMLSourceControl* m_GetSourceControl();
    bool m_CreateBCSource();
    bool m_IsSysSupportedDvbTtml();
    bool m_IsSysSupportedAtsc3();
    static void m_ResizeCB(void* data, Evas* e, Evas_Object* obj, void* event_info);

    ui_gadget_h m_pUG = nullptr;
    Evas_Object* m_pBaseLayout = nullptr;
    ITTMLSource* m_pSource = nullptr;
    ICore* m_pCore = nullptr;
    bool m_bBroadcastMode = true;
};

}  // namespace TTML

#endif
