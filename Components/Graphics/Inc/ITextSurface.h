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
// Units: pixels; positions are relative to the root container's top-left.
// Colour channels 0..65535 (the TTMLColor range); opacity 0..1. Keyword
// values are lower-case TTML keywords as stored by the parser ("before",
// "center", "after", "lrtb", ...).
// Thread: the drawing calls (Show, Hide, ClearContent, Attach, AttachImage,
// and ITextContext::RenderOn/GetSize) run on the UI main loop. The setters
// may run on another thread while the object is being set up (the engine
// builds renderers there); they only record state, which the canvas takes
// up at the next drawing call. One thread at a time per object.
class ITextSurface {
public:
    virtual ~ITextSurface() {}

    // w, h: region size, 1..8192 each; false (with a warning) otherwise.
    // writingMode is recorded; vertical modes are laid out horizontally.
    virtual bool Initialize(int w, int h, const std::string& writingMode) = 0;
    virtual void Deinitialize() = 0;
    virtual void Show() = 0;
    virtual void Hide() = 0;
    virtual void SetPosition(int x, int y) = 0;
    virtual void GetPosition(int* x, int* y) = 0;  // null pointers allowed
    virtual void SetBackgroundColor(int r, int g, int b, int a) = 0;
    // Moves the pen that RenderOn places the next paragraph at. The pen is
    // relative to the content box (region minus padding) and starts at its
    // top-left; ClearContent puts it back there.
    virtual void MovePen(int dx, int dy) = 0;
    // Window colour drawn even while no paragraph is shown (by default only
    // while the region has content).
    virtual void SetShowBackgroundAlways(bool always) = 0;
    virtual void SetPadding(double top, double bottom, double left, double right) = 0;
    // Recorded for the caller, which stacks paragraphs with MovePen.
    virtual void SetDisplayAlign(const std::string& value) = 0;
    virtual std::string GetDisplayAlign() = 0;
    // With visible set, content may spill into (x, y, w, h) (root
    // coordinates) instead of being clipped to the region; the window colour
    // still covers the region only.
    virtual void SetOverflowArea(bool visible, int x, int y, int w, int h) = 0;
    // Takes every paragraph and image off the region; the window stays.
    virtual void ClearContent() = 0;
    virtual void SetOpacity(double opacity) = 0;
    // Puts the region on screen inside the root container (not owned; must
    // be the graphics object's own) above the regions attached before it.
    virtual void Attach(IRootContainer* root) = 0;
    // Same for an image region. buffer: a PNG file's bytes (not owned, copied
    // during the call), size its length. The image is scaled to the region.
    // False (with a warning, nothing shown) for a null or empty buffer, more
    // than 32 MiB, data that does not decode, or an image side above 8192.
    virtual bool AttachImage(IRootContainer* root, const void* buffer, size_t size) = 0;
    // x, y: the region's position; w, h: its content box (region minus
    // padding), the height paragraphs are stacked in. Null pointers allowed.
    virtual void GetGeometry(int* x, int* y, int* w, int* h) = 0;
    // Change from the region's size to its content box: minus the padding,
    // so zero or negative. Added by the caller to a paragraph box.
    virtual void GetContentInset(int* dw, int* dh) = 0;
    // Flashing: the window colour, and the paragraphs' own backgrounds
    // (paragraph and span colours), each shown or hidden.
    virtual void SetWindowVisible(bool visible) = 0;
    virtual void SetBackgroundVisible(bool visible) = 0;
    // Start and end of its paragraphs' text alignment mean right and left.
    virtual void SetRightToLeft(bool rtl) = 0;
};

}  // namespace TTML

#endif
