#ifndef TTML_GRAPHICS_CTEXTSURFACE_H
#define TTML_GRAPHICS_CTEXTSURFACE_H

#include "ITextSurface.h"

#include <Evas.h>

#include <string>
#include <vector>

namespace TTML {

class CRootContainer;
class CTextContext;

// ITextSurface over Evas: a clipper (region or overflow area, carries the
// opacity), a window rectangle (background colour) and, for image regions, an
// image object, all members of the root container's smart object. Paragraphs
// rendered on it (CTextContext) are clipped by its clipper.
//
// Thread: setters record state on any one thread at a time and touch the
// canvas only on the main loop; the canvas catches up with recorded state at
// the next main-loop call (RenderOn, Attach, AttachImage, Show, Hide, ...).
// Made and freed by CGraphics only.
class CTextSurface final : public ITextSurface {
public:
    // Largest side accepted by Initialize and for decoded images.
    static const int kMaxSide = 8192;
    // Largest encoded image accepted by AttachImage (bytes).
    static const size_t kMaxImageBytes = 32u * 1024u * 1024u;

    explicit CTextSurface(CRootContainer* root);  // root: not owned, outlives this
    ~CTextSurface() override;
    CTextSurface(const CTextSurface&) = delete;
    CTextSurface& operator=(const CTextSurface&) = delete;

    bool Initialize(int w, int h, const std::string& writingMode) override;
    void Deinitialize() override;
    void Show() override;
    void Hide() override;
    void SetPosition(int x, int y) override;
    void GetPosition(int* x, int* y) override;
    void SetBackgroundColor(int r, int g, int b, int a) override;
    void MovePen(int dx, int dy) override;
    void SetShowBackgroundAlways(bool always) override;
    void SetPadding(double top, double bottom, double left, double right) override;
    void SetDisplayAlign(const std::string& value) override;
    std::string GetDisplayAlign() override;
    void SetOverflowArea(bool visible, int x, int y, int w, int h) override;
    void ClearContent() override;
    void SetOpacity(double opacity) override;
    void Attach(IRootContainer* root) override;
    bool AttachImage(IRootContainer* root, const void* buffer, size_t size) override;
    void GetGeometry(int* x, int* y, int* w, int* h) override;
    void GetContentInset(int* dw, int* dh) override;
    void SetWindowVisible(bool visible) override;
    void SetBackgroundVisible(bool visible) override;
    void SetRightToLeft(bool rtl) override;

    // For CTextContext (main loop). Registers ctx as content and returns the
    // canvas point the pen stands on and the clipper; false when the surface
    // cannot draw (not initialised, no canvas).
    bool PlaceContent(CTextContext* ctx, int* x, int* y, Evas_Object** clip);
    // ctx is going away.
    void ForgetContent(CTextContext* ctx);
    CRootContainer* GetRoot() const { return m_pRoot; }
    // The whole region (padding included) in canvas pixels. Any thread.
    void GetScreenRect(int* x, int* y, int* w, int* h);
    // Paragraphs rendered on it, in order. Main loop.
    const std::vector<CTextContext*>& GetContent() const { return m_contexts; }
    bool IsRightToLeft() const { return m_bRtl; }
    bool IsBackgroundVisible() const { return m_bBackgroundVisible; }

    // Shows or hides an object; null does nothing.
    static void ShowIf(Evas_Object* pObject, bool visible);
    // Canvas object bookkeeping shared with CTextContext: the slot is cleared
    // when the canvas deletes the object first (the root container takes its
    // members with it).
    static void TrackObject(Evas_Object** slot);
    static void DeleteObject(Evas_Object** slot);

private:
    bool m_EnsureObjects();
    void m_ReleaseObjects();
    void m_Sync();
    void m_Restack();
    static std::string m_ContentText(const std::vector<CTextContext*>& contexts);

    CRootContainer* m_pRoot;
    bool m_bInitialized = false;
    int m_x = 0, m_y = 0, m_w = 0, m_h = 0;
    std::string m_writingMode;
    int m_bg[4] = {0, 0, 0, 0};  // straight 8-bit r, g, b, a
    bool m_bShowAlways = false;
    bool m_bWindowVisible = true;
    bool m_bBackgroundVisible = true;
    bool m_bShown = false;
    bool m_bRtl = false;
    double m_padTop = 0, m_padBottom = 0, m_padLeft = 0, m_padRight = 0;
    std::string m_displayAlign = "before";
    bool m_bOverflowVisible = false;
    int m_overflow[4] = {0, 0, 0, 0};
    double m_opacity = 1.0;
    int m_penX = 0, m_penY = 0;
    std::vector<CTextContext*> m_contexts;  // rendered here, in order

    Evas_Object* m_pClip = nullptr;
    Evas_Object* m_pWindow = nullptr;
    Evas_Object* m_pImage = nullptr;
};

}  // namespace TTML

#endif
