#ifndef TTML_GRAPHICS_CTEXTCONTEXT_H
#define TTML_GRAPHICS_CTEXTCONTEXT_H

#include "ITextContext.h"

#include <Evas.h>

#include <string>
#include <vector>

namespace TTML {

class CRootContainer;
class CTextSurface;

// ITextContext over Evas textblocks. A paragraph is drawn as layers that
// share one markup and so one layout, bottom to top: the paragraph background
// rectangle, a layer that draws only the runs' backgrounds, edge layers (the
// text in its outline colour, shifted by the outline or shadow offsets), and
// the text itself.
//
// Thread: as ITextSurface. Made and freed by CGraphics only.
class CTextContext final : public ITextContext {
public:
    explicit CTextContext(CRootContainer* root);  // root: not owned, outlives this
    ~CTextContext() override;
    CTextContext(const CTextContext&) = delete;
    CTextContext& operator=(const CTextContext&) = delete;

    bool Initialize() override;
    void Deinitialize() override;
    void SetDirection(const std::string& direction) override;
    void SetLineGap(double px) override;
    void SetWidth(int w) override;
    void SetHeight(int h) override;
    void SetTextStyle(const std::string& text, bool decoration, Colours* colours,
                      TextOutline* outline) override;
    void SetParaBackgroundColor(const TTMLColor& colour) override;
    void SetTextAlign(const std::string& align) override;
    bool ApplyUnicodeBidi(const std::string& value, std::string& text) override;
    void SetWritingMode(const std::string& value, bool mirrored) override;
    void SetWrap(bool wrap) override;
    void SetMultiRowAlign(const std::string& align) override;
    void SetFontSize(double px) override;
    double GetFontSize() override;
    void SetText(const std::string& markup) override;
    void RenderOn(ITextSurface* surface) override;
    void GetSize(int* w, int* h) override;
    std::string FormatText(const std::map<int, std::string>& attributes) override;
    void ReplaceAttribute(std::string& markup, int attribute, const std::string& value) override;
    std::string GetText() override;
    void SetLinePadding(double px) override;
    void SetTextVisible(bool visible) override;
    void SetFillLineGap(bool fill) override;

    // From CTextSurface (main loop): taken off the surface, or the surface's
    // background visibility changed.
    void DetachFromSurface();
    void ApplyVisibility();
    // Puts its layers on top of the root container's members, in order.
    void RaiseLayers();

    // Canvas rectangle of the laid-out lines where it was last rendered;
    // false while not rendered on a surface. Main loop.
    bool GetTextRect(int* x, int* y, int* w, int* h) const;
    double GetLineGap() const { return m_lineGap; }
    // The paragraph's text without markup, line breaks as "\n". Any thread.
    std::string GetPlainText() const;
    // Layers drawn for the current style (tests look at the edge count).
    size_t GetEdgeLayerCount() const { return m_edges.size(); }

private:
    struct RunStyle {
        bool bTextAlpha = false;
        int textAlpha = 255;
        bool bBackground = false;
        TTMLColor background;
        TextOutline outline;  // type 0: none
        bool bDecoration = false;
    };

    bool m_Layout();
    bool m_BuildLayers(size_t edgeCount);
    void m_ReleaseLayers();
    bool m_IsRightToLeft() const;
    std::string m_EvasAlign(const std::string& align) const;
    std::string m_ComposeStyle() const;
    void m_Place();

    CRootContainer* m_pRoot;
    bool m_bInitialized = false;
    std::string m_markup;
    std::vector<RunStyle> m_runs;  // one per FormatText, in order
    double m_fontSize = 0;
    double m_lineGap = 0;
    double m_linePadding = 0;
    bool m_bFillLineGap = false;
    int m_boxW = 0, m_boxH = 0;
    bool m_bWrap = true;
    std::string m_textAlign, m_multiRowAlign, m_direction, m_writingMode;
    bool m_bMirrored = false;
    TTMLColor m_paraBackground;
    bool m_bTextVisible = true;
    bool m_bDirty = true;

    CTextSurface* m_pSurface = nullptr;  // rendered on, main loop
    int m_penX = 0, m_penY = 0;          // canvas point it was placed at
    int m_lastW = 0, m_lastH = 0;
    int m_blockX = 0, m_blockW = 0;  // lines' block inside the box

    // Geometry of the edge layers, in pixels relative to the text.
    struct EdgeOffset {
        int dx, dy;
    };
    std::vector<EdgeOffset> m_edgeOffsets;

    Evas_Textblock_Style* m_pStyle = nullptr;
    Evas_Object* m_pParaBg = nullptr;
    Evas_Object* m_pBacking = nullptr;
    std::vector<Evas_Object*> m_edges;
    Evas_Object* m_pText = nullptr;
};

}  // namespace TTML

#endif
