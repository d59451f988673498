#ifndef TTML_ENGINE_CRENDERER_H
#define TTML_ENGINE_CRENDERER_H

#include "CElement.h"
#include "TTMLTypes.h"

#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace TTML {

class CImageData;
class CRegionContext;
class CRegionSurface;
class IGraphics;
class ITextContext;
class ITextSurface;

// Draws one subtitle interval: one text surface per region (shared with the
// other live renderers through CRegionSurface), one text context per
// paragraph, styled from the document with the viewer's caption settings
// (CTTMLMenu's record) on top.
//
// Lifecycle: made and laid out by CGraphicsEngine::CreateRenderer
// (ProcessElementList, engine thread or main loop), drawn any number of
// times (RenderText, main loop; once per flashing tick), cleared once
// (Clear, under the graphics engine's mutex) and then deleted.
// Units: screen pixels; cell size in pixels per cell.
// The elements are not kept; their tts:fontSize is rewritten in pixels once
// scaled (see the element's font-scale mark).
class CRenderer {
public:
    struct FontFactors {
        double fontSizeFactor = 0;
        double lineHeightFactor = 0;
        Size cellSize;
        bool fontScaleFlag = false;
    };

    // Takes a reference on pRegionSurface (not owned).
    CRenderer(IGraphics* pGraphics, CRegionSurface* pRegionSurface);
    ~CRenderer();
    CRenderer(const CRenderer&) = delete;
    CRenderer& operator=(const CRenderer&) = delete;

    // rootRect: the root container in screen pixels; cellSize: one cell.
    void ProcessElementList(const std::list<CElementSPTR>* pElementList, const TTMLRect<int>& rootRect,
                            const Size& cellSize, bool fontScaleFlag);
    // 1 on success, 0 when a region could not be drawn. Main loop.
    int RenderText();
    // True while the caption settings make something of it blink.
    bool IsFlashingEnabled() const { return m_bFlashingEnabled; }
    // Takes everything off the screen and gives back its paragraphs; true
    // when this released the last reference to the shared region surfaces
    // and destroyed them (and the registry).
    bool Clear();

    // One region as drawn: its id, shared surface and this renderer's
    // paragraphs on it (a single null for an image region).
    struct RegionView {
        std::string id;
        ITextSurface* pSurface;
        std::list<void*> contexts;
    };
    // The renderer's regions in id order, for tools describing a drawing.
    void GetRegions(std::list<RegionView>& regions) const;

    // The caption menu's edge type (outline.type 1..5) on an outline: offsets
    // in pixels of fontSize, thickness fontSize / 10 for type 3; a type
    // above 5 becomes 0 (no edge).
    static void ApplyEdgeType(double fontSize, TextOutline& outline);

private:
    // The font factors by family (monospaced or not) and font-scale flag.
    static void m_GetFontFactors(const std::string& fontFamily, bool fontScaleFlag, FontFactors& factors);
    // The caption menu's opacity value (0..7) on a colour's alpha.
    static void m_ApplyMenuOpacity(int value, TTMLColor& colour);
    bool m_GetRegionArea(const CElementSPTR& element, TTMLRect<int>& area);
    ITextContext* m_HandleNewPElem(const CElementSPTR& element, const TTMLRect<int>& area, const Size& cellSize,
                                   std::pair<int, int>& inset);
    ITextContext* m_CreateTextContext();
    // The shared surface of region id, made and registered when it has none
    // yet (an animation step updates an existing one); null when it cannot be made.
    ITextSurface* m_GetRegionSurface(const std::string& id, const CElementSPTR& element, const TTMLRect<int>& area,
                                     const Size& cellSize);
    ITextSurface* m_CreateTextSurface(const CElementSPTR& element, const TTMLRect<int>& area,
                                      const Size& cellSize);
    void m_UpdateTextSurface(const CElementSPTR& element, const TTMLRect<int>& area, ITextSurface* pSurface,
                             const Size& cellSize);
    void m_SetOpacity(const CElementSPTR& element, ITextSurface* pSurface);
    bool m_SetContextProperties(const CElementSPTR& element, ITextContext* pContext,
                                const std::pair<double, double>& paragraphArea, const Size& cellSize,
                                bool fontScaleFlag);
    void m_CalculateFontSize(const CElementSPTR& element, ITextContext* pContext, const FontFactors& factors);
    void m_CalculateLineHeight(const CElementSPTR& element, ITextContext* pContext, const FontFactors& factors);
    void m_HandleImage(const CElementSPTR& element, const TTMLRect<int>& area, const Size& cellSize);

    void m_HandleCaptionDivisionMode();
    int m_RenderText(ITextSurface* pSurface, const std::list<void*>* pContexts);
    void m_HandleMenuOptions(ITextContext* pContext);
    void m_SetTextAttr(const CElementSPTR& element, const Size& cellSize,
                       std::pair<TTMLColor, TTMLColor> colours, ITextContext* pContext);
    void m_SetTextOutline(const CElementSPTR& element, const Size& cellSize, TextOutline& outline);
    void m_SetParaBGColor(const CElementSPTR& element, ITextContext* pContext);
    void m_ApplyFontFlashing(const std::list<void*>* pContexts);
    void m_ApplyBGnWinFlashing(ITextSurface* pSurface);

    IGraphics* m_pGraphics;                  // not owned
    CRegionContext* m_pRegionContext;        // owned; from ProcessElementList to Clear
    CRegionSurface* m_pRegionSurface;        // shared; null once released
    bool m_bFlashingEnabled;
    bool m_bTextVisible;                     // flashing phase of the text
    bool m_bBackgroundVisible;               // flashing phase of backgrounds and window
    std::map<std::string, std::shared_ptr<CImageData>> m_imageMap;
};

}  // namespace TTML

#endif
