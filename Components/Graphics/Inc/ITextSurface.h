#ifndef TTML_GRAPHICS_ITEXTSURFACE_H
#define TTML_GRAPHICS_ITEXTSURFACE_H

#include <cstddef>
#include <string>

namespace TTML {

class IRootContainer;

// One region on screen: a window with background, padding and display
// alignment, into which paragraphs (ITextContext) are rendered at a pen
// position. Made with IGraphics::CreateObject(OBJECT_TEXT_SURFACE), given back
// with Deinitialize() then IGraphics::DestroyObject.
//
// Units: pixels of the root container; colour channels 0..65535 (the
// TTMLColor range); opacity 0..1. Keyword values are lower-case TTML
// keywords as stored by the parser ("before", "center", "after", "lrtb", ...).
// Thread: drawing operations run on the UI main loop; set-up before Attach
// may run on the engine thread.
class ITextSurface {
public:
    virtual ~ITextSurface() {}

    virtual bool Initialize(int w, int h, const std::string& writingMode) = 0;
    virtual void Deinitialize() = 0;
    virtual void Show() = 0;
    virtual void Hide() = 0;
    virtual void SetPosition(int x, int y) = 0;
    virtual void GetPosition(int* x, int* y) = 0;  // null pointers allowed
    virtual void SetBackgroundColor(int r, int g, int b, int a) = 0;
    // Moves the pen that RenderOn places the next paragraph at; starts at the top.
    virtual void MovePen(int dx, int dy) = 0;
    // Background drawn even while no paragraph is shown.
    virtual void SetShowBackgroundAlways(bool always) = 0;
    virtual void SetPadding(double top, double bottom, double left, double right) = 0;
    virtual void SetDisplayAlign(const std::string& value) = 0;
    virtual std::string GetDisplayAlign() = 0;
    // With visible set, content may spill into (x, y, w, h) instead of being
    // clipped to the region.
    virtual void SetOverflowArea(bool visible, int x, int y, int w, int h) = 0;
    virtual void ClearContent() = 0;
    virtual void SetOpacity(double opacity) = 0;
    // Puts the region on screen inside the root container (not owned).
    virtual void Attach(IRootContainer* root) = 0;
    // Same for an image region: buffer is the encoded image (not owned, read
    // during the call), size its length in bytes.
    virtual void AttachImage(IRootContainer* root, const void* buffer, size_t size) = 0;
    virtual void GetGeometry(int* x, int* y, int* w, int* h) = 0;  // null pointers allowed
    // Space taken by padding and frame: added by the caller to a paragraph box.
    virtual void GetContentInset(int* dw, int* dh) = 0;
    virtual void SetWindowVisible(bool visible) = 0;
    virtual void SetBackgroundVisible(bool visible) = 0;
    virtual void SetRightToLeft(bool rtl) = 0;
};

}  // namespace TTML

#endif
