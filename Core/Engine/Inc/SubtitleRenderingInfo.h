#ifndef TTML_ENGINE_SUBTITLERENDERINGINFO_H
#define TTML_ENGINE_SUBTITLERENDERINGINFO_H

#include "CElement.h"

#include <list>

namespace TTML {

class CRenderer;

// One schedulable interval of a document with the renderer made for it.
// Allocated by the engine one at a time with new; owned by CRenderingData
// once added. Whoever deletes a record destroys its renderer first through
// CGraphicsEngine::DestroyRenderer: the destructor releases only the
// element list.
struct SubtitleRenderingInfo {
    unsigned long long m_BeginTime = 0;  // ms on the document timeline
    unsigned long long m_EndTime = 0;    // ms; greater than the begin time
    long long m_TimeStamp = 0;           // ms, added to the media time when timing
    bool m_bFlashing = false;            // drawn at least once with flashing enabled
    bool m_bRecreateRenderer = false;    // rebuild the renderer from the list before drawing
    CRenderer* m_pRendererData = nullptr;      // owned through the graphics engine; null: none
    std::list<CElementSPTR> m_ElementList;     // shared with the document

    SubtitleRenderingInfo() = default;
    SubtitleRenderingInfo(const SubtitleRenderingInfo&) = delete;
    SubtitleRenderingInfo& operator=(const SubtitleRenderingInfo&) = delete;
};

}  // namespace TTML

#endif
