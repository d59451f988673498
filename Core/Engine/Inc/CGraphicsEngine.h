#ifndef TTML_ENGINE_CGRAPHICSENGINE_H
#define TTML_ENGINE_CGRAPHICSENGINE_H

#include "CElement.h"
#include "TTMLTypes.h"

#include <list>
#include <string>

namespace TTML {

class CRegionSurface;
class CRenderer;
class IGraphics;
class IMutex;

// The presentation engine's one doorway to drawing: the root container's
// geometry and cell size of the current document, one CRenderer per
// rendering record, and the region surfaces all live renderers share.
//
// Ownership: a renderer from CreateRenderer belongs to the caller's record
// and is given back once with DestroyRenderer.
// Threads: CreateRenderer and DestroyRenderer run on the engine thread or
// the main loop and are serialised by the mutex (with them the shared
// region surfaces); RenderText and IsFlashingEnabled run on the main loop
// and take no lock; CreateRootSurface runs on the engine thread before
// any renderer of its document is made, and takes the mutex because the
// main loop may be rebuilding a renderer meanwhile.
class CGraphicsEngine {
public:
    // pGraphics: the controller's graphics object, not owned. With null no
    // root container is known, so every region is refused as abnormal.
    explicit CGraphicsEngine(IGraphics* pGraphics);
    ~CGraphicsEngine();
    CGraphicsEngine(const CGraphicsEngine&) = delete;
    CGraphicsEngine& operator=(const CGraphicsEngine&) = delete;

    // The document's ttp:cellResolution, tts:extent and aspect ratio (as
    // parsed; empty when absent): letterboxes the root container and works
    // out the cell size in pixels.
    void CreateRootSurface(const std::string& cellResolution, const std::string& extent,
                           const std::string& aspectRatio);
    // Lays out the interval's elements (not kept); null list: warning and
    // null. fontScaleFlag: subtitle-mode bit value 2.
    CRenderer* CreateRenderer(const std::list<CElementSPTR>* pElementList, bool fontScaleFlag);
    // 1 drawn, 0 for null or when a region could not be drawn. Main loop.
    int RenderText(CRenderer* pRenderer);
    bool IsFlashingEnabled(CRenderer* pRenderer);
    // Takes the renderer's paragraphs off the screen and deletes it.
    void DestroyRenderer(CRenderer* pRenderer);

    IGraphics* GetGraphics() const { return m_pGraphics; }
    // Screen pixels of the root container and the cell size, as of the last
    // CreateRootSurface.
    TTMLRect<int> GetRootRect() const { return m_rootRect; }
    Size GetCellSize() const { return m_cellSize; }

private:
    IGraphics* m_pGraphics;                // not owned
    CRegionSurface* m_pRegionSurface;      // shared by live renderers; null when none
    TTMLRect<int> m_rootRect;
    Size m_cellSize;
    IMutex* m_pMutex;
};

}  // namespace TTML

#endif
