#ifndef TTML_ENGINE_CENGINE_H
#define TTML_ENGINE_CENGINE_H

#include "CTask.h"
#include "CTimerManager.h"

#include <atomic>
#include <list>

namespace TTML {

class CGraphicsEngine;
class CRenderingData;
class CSubtitleInfo;
class CTimerData;
class IGraphics;
class IMutex;
struct SubtitleRenderingInfo;

// The presentation engine. Its worker thread ("Engine") cuts each parsed
// document into one rendering record per time interval, each with a
// renderer, and files them in the rendering schedule; one timer, armed for
// the earliest time in the schedule, draws and removes them on the UI main
// loop in step with the media time. Playback notifications and caption menu
// changes are carried out on the main loop.
//
// Ownership: a document given to AddToQueue belongs to the engine, which
// deletes it exactly once (kept as the current document or in the band-mode
// list until replaced, reset or destroyed, or dropped unread). The graphics
// object is the controller's.
// Threads: construction, Initialize and Destroy on the main loop (Destroy
// also from another thread while the main loop runs); AddToQueue from the
// parser thread; Start .. Reset from the source thread: they only post.
// Lock order: rendering mutex, then the timer manager's mutex.
class CEngine : public CTask {
public:
    // pGraphics: the controller's graphics object, not owned.
    explicit CEngine(IGraphics* pGraphics);
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

    // Tests and tools: where the timer reads the media time (null: the
    // core controller). Set before documents arrive.
    void SetMediaTimeSource(CTimerManager::MediaTimeSource source, void* pUser);

private:
    // One request for the main loop.
    struct MainLoopThreadSafCallData {
        int m_MsgId = -1;
        void* m_pData = nullptr;
        CEngine* m_pEngine = nullptr;
    };

    // Nonzero when the request did not run (then data is still the caller's).
    int m_DoMainLoopThreadSafeCall(void* pData, int msgId, bool sync);
    static void* m_MainLoopThreadSafeCall_Cb(void* pData);
    // A queued asynchronous request dropped by the stop state.
    static void m_DropMainLoopCall_Cb(void* pData);

    // Engine thread.
    void m_ProcessQueue(void* pData);
    void m_ManageSubtitle(SubtitleRenderingInfo* pRenderingData);
    // Deletes a document dropped unread.
    void m_DropDocument(CSubtitleInfo* pSubtitleInfo);
    // Destroys the renderer and deletes the record.
    void m_DeleteRecord(SubtitleRenderingInfo* pRecord);

    // Main loop handlers of the request table.
    void m_Destroy();
    void m_Reset();
    void m_AddSubtitleData(SubtitleRenderingInfo* pSubData);
    void m_Pause();
    void m_Resume();
    void m_Seek(long long* pPosition);
    void m_SeekCompleted();
    void m_UpdateCurrentSubtitle();
    // Arms for the front of the schedule when no timer is armed.
    void m_ArmIfIdle();

    // Main loop, timer side.
    bool m_SyncNextSubtitle();
    static unsigned char m_OnTimer_Cb(void* pData);
    bool m_OnViewUpdate(CTimerData* pTimerData);
    void m_OnTextRender(SubtitleRenderingInfo* pRenderingInfo);
    void m_OnTextRemove(SubtitleRenderingInfo* pRenderingInfo);
    void m_RemoveTimerAndData();
    void m_DestroySubtitleInfo(bool all, unsigned long long time);

    // Thread of the menu notification.
    static void m_OnMenuUpdateCb(void* pData);

    IGraphics* m_pGraphics;             // not owned
    CTimerManager* m_pTimerManager;     // owned
    CGraphicsEngine* m_pGraphicsEngine; // owned
    int m_subtitleMode;
    bool m_bSeekPending;
    long long m_seekPosition;           // media time in ms
    IMutex* m_pSeekMutex;               // owned; guards the two above
    CSubtitleInfo* m_pSubtitleInfo;     // out of band only; owned
    std::list<CSubtitleInfo*> m_subtitleInfoList;  // band mode only; owned
    bool m_bOutOfBand;
    int m_documentsInFlight;  // queued (or replayed) and not yet kept or dropped
    bool m_bReplayWanted;     // a seek completed while documents were in flight
    IMutex* m_pSubtitleInfoMutex;       // owned; guards the five above
    CRenderingData* m_pRenderingData;   // owned
    // Records whose request never reached the main loop (stop state); they
    // are deleted there, with the schedule, so renderers die on the main loop.
    std::list<SubtitleRenderingInfo*> m_unscheduled;
    IMutex* m_pRenderingMutex;          // owned; guards the schedule and the list above
    std::atomic<bool> m_bInitialized;   // this object holds m_bCreated

    // One initialised engine per process.
    static std::atomic<bool> m_bCreated;
};

}  // namespace TTML

#endif
