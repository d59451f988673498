#ifndef TTML_CONTROLLER_CCONTROLLER_H
#define TTML_CONTROLLER_CCONTROLLER_H

#include "ICore.h"

#include <atomic>

namespace TTML {

class CEngine;
class CParser;
class CSubtitleInfo;
class IGraphics;
class ITTMLSource;

// The only ICore: ties one source to the graphics object, the parser task and
// the engine, and routes the source's messages (ids 0..13) to them and to the
// caption menu.
//
// Threads: Initialize and Destroy on the main loop; m_OnSource_CB on the
// source's thread; m_OnParser_CB on the parser thread; GetVideoCurrentTime
// wherever a timer is armed or checked. There is no lock of its own: every
// handler forwards to objects that serialise themselves, and Destroy stops
// listening to the source before it tears anything down.
class CController : public ICore {
public:
    bool Initialize(ITTMLSource* pSource, void* pParent) override;
    bool Destroy() override;
    void ResizeCaption(int width, int height) override;

    // The source's media time in ms. False with "pSource is null" once the
    // source has gone (message 5), and whenever the source has no time.
    bool GetVideoCurrentTime(long long* pTime);

    // Queues a parsed document on the engine. True: the engine owns it.
    // False ("m_pEngine nullptr", or the engine refused it): the caller keeps it.
    bool AddSubtitleInfo(CSubtitleInfo* pInfo);

    CController(const CController&) = delete;
    CController& operator=(const CController&) = delete;

private:
    friend class ICore;

    CController();
    // Runs Destroy's teardown (with a warning) when still initialised.
    ~CController() override;

    static void m_OnSource_CB(int msgId, void* pData);
    static void m_OnParser_CB(int msgId, void* pData);

    static void m_OnReceiveSubtitleXmlData_Cb(void* pData);
    static void m_OnStartNotify_Cb(void* pData);
    static void m_OnStopNotify_Cb(void* pData);
    static void m_OnPauseNotify_Cb(void* pData);
    static void m_OnResumeNotify_Cb(void* pData);
    static void m_OnInvalidateNotify_Cb(void* pData);
    static void m_OnSeekStartNotify_Cb(void* pData);
    static void m_OnSeekCompletedNotify_Cb(void* pData);
    static void m_RegisterMenuCallbacks(void* pData);
    static void m_UnregisterMenuCallbacks(void* pData);
    static void m_SetMenuLang(void* pData);
    static void m_Show(void* pData);
    static void m_Hide(void* pData);
    static void m_OnErrorDownloadableFonts(void* pData);

    ITTMLSource* m_GetSource();
    void m_SetSource(ITTMLSource* pSource);
    void m_SetCallBacks();
    void m_UnsetCallBacks();
    bool m_CreateGraphics(void* pParent);
    bool m_CreateEngine(IGraphics* pGraphics, int subtitleMode);
    bool m_CreateParser(int subtitleMode);
    void m_DestroyGraphics();
    void m_DestroyEngine();
    void m_DestroyParser();
    void m_ResetEngine();
    void m_ResetParser();
    // Destroy's steps up to the menu; shared with the destructor.
    void m_TearDown();

    // Not owned. Cleared by message 5 on the source thread while the main
    // loop may be reading it, hence atomic.
    std::atomic<ITTMLSource*> m_pSource;
    IGraphics* m_pGraphics;  // owned; Destroy() gives it back
    CParser* m_pParser;      // owned
    CEngine* m_pEngine;      // owned
    bool m_bBandMode;        // from the last start message
    bool m_bInitialized;

    static CController* m_pCore;
};

}  // namespace TTML

#endif
