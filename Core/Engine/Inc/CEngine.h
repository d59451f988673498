#ifndef TTML_ENGINE_CENGINE_H
#define TTML_ENGINE_CENGINE_H

#include "CTask.h"
#include "CTimerManager.h"

#include <atomic>

namespace TTML {

class CDocumentKeeper;
class CPresenter;
class CRecordBuilder;
class IGraphics;
struct SubtitleRenderingInfo;

// The presentation engine. Its worker thread ("Engine") cuts each parsed
// document into one rendering record per time interval, each with a
// renderer, and files them in the rendering schedule; one timer, armed for
// the earliest time in the schedule, draws and removes them on the UI main
// loop in step with the media time. Playback notifications and caption menu
// changes are carried out on the main loop.
//
// This class is the lifecycle and the posting: the records are built by a
// CRecordBuilder, shown and removed by a CPresenter, and the documents kept
// by a CDocumentKeeper, all three owned here.
//
// Ownership: a document given to AddToQueue belongs to the engine, which
// deletes it exactly once (kept as the current document or in the band-mode
// list until replaced, reset or destroyed, or dropped unread). The graphics
// object is the controller's.
// Threads: construction, Initialize and Destroy on the main loop (Destroy
// also from another thread while the main loop runs); AddToQueue from the
// parser thread; Start .. Reset from the source thread: they only post.
// Lock order: rendering mutex, the timer manager's mutex, document mutex,
// seek mutex.
class CEngine : public CTask {
public:
    // pGraphics: the controller's graphics object, not owned. mediaTime:
    // where the timer reads the media time; empty reads it from the core
    // controller.
    explicit CEngine(IGraphics* pGraphics,
                     CTimerManager::MediaTimeSource mediaTime = CTimerManager::MediaTimeSource());
    // Calls Destroy (with a warning) when the owner forgot.
    ~CEngine() override;
    CEngine(const CEngine&) = delete;
    CEngine& operator=(const CEngine&) = delete;

    // subtitleMode: the source's bit set (2: font-scale flag of every
    // renderer; 64: resynchronise with the media time on every expiry).
    // False with "Already created" while an engine of the process is
    // initialised, and without graphics.
    bool Initialize(int subtitleMode);
    // Takes a CSubtitleInfo (allocated with new); the engine owns it from
    // here on. Null is refused (it would end the worker) and gives false.
    bool AddToQueue(void* pSubtitleInfo);
    // bandMode: documents arrive as in-band segments.
    bool Start(bool bandMode);
    bool Pause();
    bool Resume();
    // Position: media time in ms (each document's time stamp shifts it onto
    // that document's timeline).
    void SeekStart(long long milliseconds);
    void SeekCompleted();
    // Empties queue, schedule and kept documents; the engine stays usable.
    void Reset();
    // Ends the thread and frees everything; waits for the main loop.
    void Destroy();

private:
    // One request for the main loop.
    struct MainLoopThreadSafCallData {
        int m_MsgId = -1;
        void* m_pData = nullptr;
        CEngine* m_pEngine = nullptr;
    };
    // A main-loop handler, by message id; pData is the request's payload.
    typedef void (CEngine::*MainLoopHandler)(void* pData);
    static const MainLoopHandler m_mainLoopHandlers[];

    // Nonzero when the request did not run (then data is still the caller's).
    int m_DoMainLoopThreadSafeCall(void* pData, int msgId, bool sync);
    static void* m_MainLoopThreadSafeCall_Cb(void* pData);
    // A queued asynchronous request dropped by the stop state.
    static void m_DropMainLoopCall_Cb(void* pData);

    // Engine thread.
    void m_ProcessQueue(void* pData);
    void m_ManageSubtitle(SubtitleRenderingInfo* pRenderingData);

    // Main loop handlers of the request table.
    void m_Destroy(void* pData);
    void m_Reset(void* pData);
    void m_AddSubtitleData(void* pSubData);
    void m_Pause(void* pData);
    void m_Resume(void* pData);
    void m_Seek(void* pPosition);
    void m_SeekCompleted(void* pData);
    void m_UpdateCurrentSubtitle(void* pData);

    // Thread of the menu notification.
    static void m_OnMenuUpdateCb(void* pData);

    IGraphics* m_pGraphics;          // not owned
    CDocumentKeeper* m_pKeeper;      // owned; outlives the presenter
    CPresenter* m_pPresenter;        // owned
    CRecordBuilder* m_pBuilder;      // owned; uses the presenter's graphics engine
    std::atomic<bool> m_bInitialized;  // this object holds m_bCreated

    // One initialised engine per process.
    static std::atomic<bool> m_bCreated;
};

}  // namespace TTML

#endif
