#ifndef TTML_ENGINE_CPRESENTER_H
#define TTML_ENGINE_CPRESENTER_H

#include "CTimerManager.h"

#include <list>

namespace TTML {

class CDocumentKeeper;
class CGraphicsEngine;
class CRenderingData;
class CTimerData;
class IGraphics;
class IMutex;
struct SubtitleRenderingInfo;

// What is on screen. Owns the rendering schedule, the one timer and the
// graphics engine whose renderers draw the records. Each timer expiry draws
// the record beginning and removes the one ending at that time, then arms
// the timer for the next time in the schedule; flashing records are drawn
// again every flash period.
//
// Ownership: records handed in (Add, AddIfAhead, KeepUnscheduled) are the
// presenter's; each is deleted, renderer first, when removed or cleared.
// Threads: the UI main loop, except AddIfAhead and KeepUnscheduled (engine
// thread) and IsWaiting, IsTimerAdded (any thread).
// Lock order: rendering mutex, timer mutex, the keeper's document mutex.
class CPresenter {
public:
    // pGraphics: not owned, makes timers and surfaces. pKeeper: not owned,
    // outlives this; told when records end so it can let go of in-band
    // documents. mediaTime: as CTimerManager (empty: the core controller).
    CPresenter(IGraphics* pGraphics, CDocumentKeeper* pKeeper,
               CTimerManager::MediaTimeSource mediaTime = CTimerManager::MediaTimeSource());
    // Deletes every record still held.
    ~CPresenter();
    CPresenter(const CPresenter&) = delete;
    CPresenter& operator=(const CPresenter&) = delete;

    // Subtitle-mode bits: 2 makes renderers with the font-scale flag, 64
    // resynchronises with the media time on every expiry. Set before start.
    void SetSubtitleMode(int subtitleMode);
    void SetBandMode(bool bandMode);
    CGraphicsEngine* GetGraphicsEngine() { return m_pGraphicsEngine; }
    // Guards the schedule and the records on their way; recursive.
    IMutex* GetRenderingMutex() { return m_pRenderingMutex; }

    // Engine thread: files a record that overlaps nothing and begins after
    // the armed time (the armed timer reaches it). False, record untouched,
    // when it has to go through the main loop instead.
    bool AddIfAhead(SubtitleRenderingInfo* pRecord);
    // Main loop: files a record and re-arms for the front of the schedule.
    void Add(SubtitleRenderingInfo* pRecord);
    // A record whose main-loop request never ran (stop state); deleted by
    // the next Clear, on the main loop, so renderers die there.
    void KeepUnscheduled(SubtitleRenderingInfo* pRecord);
    // Destroys the record's renderer and deletes it.
    void Discard(SubtitleRenderingInfo* pRecord);
    // Takes everything off the screen, empties the schedule, stops the timer.
    void Clear();

    void Pause();
    // Resumes and arms for the front of the schedule when no timer is.
    void Resume();
    // A schedule kept while there was no media time is armed once there is.
    void ArmIfIdle();
    // Paused, or records waiting without an armed timer.
    bool IsWaiting();
    bool IsTimerAdded();
    // Draws the record on screen again with a new renderer (which reads the
    // caption preferences when it is built).
    void UpdateCurrentSubtitle();

private:
    bool m_SyncNextSubtitle();
    static unsigned char m_OnTimer_Cb(void* pData);
    bool m_OnViewUpdate(CTimerData* pTimerData);
    void m_OnTextRender(SubtitleRenderingInfo* pRenderingInfo);
    void m_OnTextRemove(SubtitleRenderingInfo* pRenderingInfo);

    CDocumentKeeper* m_pKeeper;          // not owned
    CTimerManager* m_pTimerManager;      // owned
    CGraphicsEngine* m_pGraphicsEngine;  // owned
    int m_subtitleMode;
    CRenderingData* m_pRenderingData;    // owned
    std::list<SubtitleRenderingInfo*> m_unscheduled;  // owned records
    IMutex* m_pRenderingMutex;  // owned; guards the schedule and the list above
};

}  // namespace TTML

#endif
