#ifndef TTML_ENGINE_CGRAPHICSENGINE_H
#define TTML_ENGINE_CGRAPHICSENGINE_H

#include "CElement.h"

#include <cstddef>
#include <list>
#include <string>
#include <vector>

namespace TTML {

class IGraphics;
class IMutex;

// Stand-in renderer: holds a copy of the element list it was made for.
// Defined in CGraphicsEngine.cpp; only the graphics engine looks inside.
class CRenderer;

// Stand-in graphics engine until the rendering code lands; that work
// replaces this class (and CRenderer) with the real renderer. It has the
// operations the presentation engine and the schedule call, draws nothing,
// and records what it is asked so the schedule can be tested end to end:
// every renderer created, drawn and destroyed, numbered in creation order.
//
// Ownership: a renderer from CreateRenderer belongs to the caller's record
// and is given back with DestroyRenderer, exactly once. A renderer that is
// not live (never created here, or already destroyed) is refused with a
// warning and counted, never freed twice.
// Threads: any; creation, destruction and the records take the mutex.
class CGraphicsEngine {
public:
    enum EventKind { RENDERER_CREATED, RENDERER_DRAWN, RENDERER_DESTROYED };
    struct Event {
        EventKind kind;
        int serial;            // creation number of the renderer, from 1
        std::size_t elements;  // size of its element list
        long long steadyNs;    // std::chrono::steady_clock when the call was made, ns
        // Document time (ms) during which all of the renderer's elements are
        // shown: the latest begin and earliest end of the elements carrying
        // both; 0 and 0 when none does. Contains the record's interval.
        unsigned long long begin;
        unsigned long long end;
    };
    // Sees every event of every graphics engine as it is recorded, on the
    // thread making the call, with that engine's mutex held: it must not
    // call back into a graphics engine. pUser is what SetObserver was given.
    typedef void (*EventObserver)(const Event& event, void* pUser);

    // pGraphics: the controller's graphics object, not owned; may be null
    // for the stand-in.
    explicit CGraphicsEngine(IGraphics* pGraphics);
    // Frees renderers that were never given back, with a warning.
    virtual ~CGraphicsEngine();
    CGraphicsEngine(const CGraphicsEngine&) = delete;
    CGraphicsEngine& operator=(const CGraphicsEngine&) = delete;

    // Strings from the parsed document; only counted here.
    void CreateRootSurface(const std::string& cellResolution, const std::string& extent,
                           const std::string& aspectRatio);
    // Null list: warning and null. fontScaleFlag is recorded with the renderer.
    CRenderer* CreateRenderer(const std::list<CElementSPTR>* pElementList, bool fontScaleFlag);
    // Nonzero on success; 0 for null or a renderer that is not live.
    int RenderText(CRenderer* pRenderer);
    // False for null; otherwise what SetFlashing set for new renderers.
    bool IsFlashingEnabled(CRenderer* pRenderer);
    void DestroyRenderer(CRenderer* pRenderer);

    IGraphics* GetGraphics() const { return m_pGraphics; }

    // Test controls and records.
    // One observer for the process (null removes it); once this returns the
    // previous observer is not called again. Lets a tool or test follow the
    // renderers of an engine it cannot reach (the controller's).
    static void SetObserver(EventObserver observer, void* pUser);
    void SetFlashing(bool enabled);  // applies to renderers created afterwards
    std::vector<Event> GetEvents() const;
    int Count(EventKind kind) const;
    int GetLiveCount() const;
    int GetRejectedCount() const;  // calls with a renderer that was not live
    int GetRootSurfaceCount() const;
    // Creation number of a live renderer, -1 otherwise.
    int GetSerial(const CRenderer* pRenderer) const;
    // Copy of a live renderer's element list (empty otherwise).
    std::list<CElementSPTR> GetElements(const CRenderer* pRenderer) const;
    // Font-scale flag given at creation (false when not live).
    bool GetFontScaleFlag(const CRenderer* pRenderer) const;

private:
    bool m_IsLive(const CRenderer* pRenderer) const;
    // Appends the event and shows it to the observer; mutex held.
    void m_Record(EventKind kind, const CRenderer* pRenderer);

    IGraphics* m_pGraphics;  // not owned
    IMutex* m_pMutex;
    bool m_bFlashing;
    int m_nextSerial;
    int m_rejected;
    int m_rootSurfaces;
    std::list<CRenderer*> m_live;
    std::vector<Event> m_events;
};

}  // namespace TTML

#endif
