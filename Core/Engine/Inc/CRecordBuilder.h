#ifndef TTML_ENGINE_CRECORDBUILDER_H
#define TTML_ENGINE_CRECORDBUILDER_H

#include "CSubtitleInfo.h"

#include <set>

namespace TTML {

class CGraphicsEngine;
class IMutex;
struct SubtitleRenderingInfo;

// Cuts a parsed document into rendering records: one per distinct
// (begin, end) interval, in time order, each with its elements and a
// renderer. A pending seek moves the cut to the interval holding the seek
// position, so that interval is the first one built again.
//
// Threads: Begin, HasNext and Next on the engine thread; MarkSeek on the UI
// main loop; IsSeekPending from either. The seek state has its own mutex
// (the engine's seek mutex).
class CRecordBuilder {
public:
    // pGraphicsEngine: makes the root surface and the renderers, not owned.
    // pRenderingMutex: not owned; the main loop rebuilds renderers under it,
    // reading the root geometry that Begin sets.
    CRecordBuilder(CGraphicsEngine* pGraphicsEngine, IMutex* pRenderingMutex);
    ~CRecordBuilder();
    CRecordBuilder(const CRecordBuilder&) = delete;
    CRecordBuilder& operator=(const CRecordBuilder&) = delete;

    // The renderers' font-scale flag.
    void SetFontScale(bool fontScale);
    // Starts on a document (not owned; it outlives the Next calls): sets the
    // root surface from it and reads its intervals.
    void Begin(const CSubtitleInfo* pSubtitleInfo);
    bool HasNext() const;
    // The record of the next interval (new, the caller's), or null when it
    // could not be made (that interval is skipped).
    SubtitleRenderingInfo* Next();

    // position: media time in ms; each document's time stamp shifts it onto
    // that document's timeline when the next interval is taken.
    void MarkSeek(long long position);
    bool IsSeekPending() const;

private:
    CGraphicsEngine* m_pGraphicsEngine;  // not owned
    IMutex* m_pRenderingMutex;           // not owned
    bool m_bFontScale;
    const CSubtitleInfo* m_pSubtitleInfo;  // not owned; the one being cut
    std::set<CSubtitleInfo::TimeInterval> m_keys;
    std::set<CSubtitleInfo::TimeInterval>::const_iterator m_next;
    bool m_bSeekPending;
    long long m_seekPosition;  // media time in ms
    IMutex* m_pSeekMutex;      // owned; guards the two above
};

}  // namespace TTML

#endif
