#ifndef TTML_ENGINE_CENGINE_H
#define TTML_ENGINE_CENGINE_H

#include "CTask.h"

#include <atomic>

namespace TTML {

class IGraphics;

// Stand-in until the presentation engine lands: counts and frees documents.
// It keeps the engine's public operations, its worker thread ("Engine") and
// its one-live-engine rule, so the controller drives it as it will drive the
// real one; documents are freed on the engine thread without being shown.
//
// Ownership: a document given to AddToQueue belongs to the engine, which
// deletes it exactly once (processed, or dropped by Reset or Destroy).
// Threads: Initialize and Destroy on the main loop; AddToQueue from the
// parser thread; the notifications (Start .. Reset) from the source thread.
class CEngine : public CTask {
public:
    // pGraphics: the controller's graphics object, not owned.
    explicit CEngine(IGraphics* pGraphics);
    // Calls Destroy (with a warning) when the owner forgot.
    ~CEngine() override;
    CEngine(const CEngine&) = delete;
    CEngine& operator=(const CEngine&) = delete;

    // subtitleMode: the source's bit set. False with "Already created" while
    // another engine of the process is initialised, and without graphics.
    bool Initialize(int subtitleMode);
    // Takes a CSubtitleInfo (allocated with new). The engine owns it from
    // here on. False only for null, which is refused.
    bool AddToQueue(void* pSubtitleInfo);
    // bandMode: documents arrive as in-band segments.
    bool Start(bool bandMode);
    bool Pause();
    bool Resume();
    void SeekStart(long long milliseconds);
    void SeekCompleted();
    // Drops every queued document (freed unread).
    void Reset();
    // Drops every queued document and ends the thread.
    void Destroy();

    // Tests: what every engine of the process has been asked, since the
    // last ClearCounters. Any thread.
    struct Counters {
        int documentsQueued = 0;
        int documentsProcessed = 0;  // freed after being read on the engine thread
        int documentsDropped = 0;    // freed unread by Reset or Destroy
        int intervals = 0;           // distinct (begin, end) pairs of processed documents
        int starts = 0;
        bool lastBandMode = false;
        int pauses = 0;
        int resumes = 0;
        int seekStarts = 0;
        long long lastSeekPosition = -1;
        int seekCompletes = 0;
        int resets = 0;
        int destroys = 0;
        int subtitleMode = -1;       // of the last successful Initialize
    };
    static Counters GetCounters();
    static void ClearCounters();

private:
    void m_ProcessQueue(void* pData);
    static void m_OnMenuUpdateCb(void* pData);

    IGraphics* m_pGraphics;  // not owned
    int m_subtitleMode;
    bool m_bOwnsCreated;  // this object is the initialised one

    // One initialised engine per process.
    static std::atomic<bool> m_bCreated;
};

}  // namespace TTML

#endif
