#ifndef TTML_ENGINE_CDOCUMENTKEEPER_H
#define TTML_ENGINE_CDOCUMENTKEEPER_H

#include <list>

namespace TTML {

class CRecordBuilder;
class CSubtitleInfo;
class IMutex;

// The documents the engine keeps once their records are built. Out of band
// one document describes the whole programme: it is kept as the current
// document so that a seek can replay it. In band, segments stay in a list
// until their content has ended. Also counts the documents on their way to
// the engine thread, so that a seek replays the newest one.
//
// Ownership: every document handed in belongs to the keeper until it is
// given back out for a replay (then it is the engine queue's again).
// Threads: any; one mutex (the engine's document mutex) guards everything.
// Lock order: the engine's rendering mutex and the timer mutex before this
// one; this one before the builder's seek mutex.
class CDocumentKeeper {
public:
    CDocumentKeeper();
    // Deletes every kept document.
    ~CDocumentKeeper();
    CDocumentKeeper(const CDocumentKeeper&) = delete;
    CDocumentKeeper& operator=(const CDocumentKeeper&) = delete;

    void SetBandMode(bool bandMode);
    // A document was queued to the engine thread.
    void Queued();
    // A queued document dropped unread: deleted here.
    void Drop(CSubtitleInfo* pSubtitleInfo);
    // Keeps a document whose records were built (out of band it replaces
    // and deletes the current one). Returns the document to queue again at
    // once, counted as queued, when a seek completed while it was on its
    // way and the builder still waits for the seek position; else null.
    CSubtitleInfo* Keep(CSubtitleInfo* pSubtitleInfo, const CRecordBuilder& builder);
    // Seek completed: the current document to queue again (counted as
    // queued), or null in band mode, without a document, or while a newer
    // document is on its way (that one replays when kept).
    CSubtitleInfo* TakeForReplay();
    // In band mode with more than two documents kept, deletes those whose
    // content ended at or before `time` (document ms).
    void PruneEnded(unsigned long long time);
    // Deletes every kept document and forgets a wanted replay.
    void DestroyAll();

private:
    CSubtitleInfo* m_pSubtitleInfo;                // out of band only; owned
    std::list<CSubtitleInfo*> m_subtitleInfoList;  // band mode only; owned
    bool m_bOutOfBand;
    int m_documentsInFlight;  // queued (or replayed) and not yet kept or dropped
    bool m_bReplayWanted;     // a seek completed while documents were in flight
    IMutex* m_pSubtitleInfoMutex;  // owned; guards the five above
};

}  // namespace TTML

#endif
