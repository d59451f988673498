#ifndef TTML_GRAPHICS_IROOTCONTAINER_H
#define TTML_GRAPHICS_IROOTCONTAINER_H

namespace TTML {

// The area of the screen a document is drawn in: the gadget's base layout,
// letterboxed to the document's aspect ratio. Owned by the graphics object.
//
// Thread: every operation may be called from any thread. The state changes at
// once (GetGeometry reflects a SetRootInfo immediately); the canvas follows on
// the UI main loop, at once when called there.
class IRootContainer {
public:
    // Shown at creation; Hide() hides it and everything drawn inside it.
    virtual void Show() = 0;
    virtual void Hide() = 0;

    // Fits the document into the base layout: the document's aspect ratio
    // (aspectW:aspectH, or else the ratio of its pixel extent) is scaled as
    // large as the layout allows and centred, leaving bars on two sides.
    // A value of zero or less means "not given"; 1:1 is what a caller passes
    // when the document gives no aspect ratio, so it counts as not given too.
    // Without any ratio the container fills the layout.
    virtual void SetRootInfo(int extentW, int extentH, int aspectW, int aspectH) = 0;

    // Screen pixels of the container on the canvas; any pointer may be null.
    virtual void GetGeometry(int* x, int* y, int* w, int* h) = 0;

protected:
    // Owned and deleted by the graphics object only.
    ~IRootContainer() = default;
};

}  // namespace TTML

#endif
