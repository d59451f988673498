#ifndef TTML_CONTROLLER_ICORE_H
#define TTML_CONTROLLER_ICORE_H

namespace TTML {

class ITTMLSource;

// The subtitle core as the gadget shell sees it: one per process.
class ICore {
public:
    // The single core, made on first use (a fresh one after Destroy). Takes no
    // lock: the gadget's main loop makes it; later callers find it made.
    static ICore* GetInstance();

    // Main loop. pSource: not owned, must outlive the core or send message 5
    // first. pParent: the gadget's base layout (Evas_Object*), not owned.
    // Creates graphics, engine and parser, then listens to the source. False
    // when any of them fails; whatever was made is undone.
    virtual bool Initialize(ITTMLSource* pSource, void* pParent) = 0;

    // Main loop. Hides, stops listening to the source, tears everything down
    // and deletes the core: the pointer is invalid afterwards. Always true.
    virtual bool Destroy() = 0;

    // Only logged: the root container follows the base layout by itself.
    virtual void ResizeCaption(int width, int height) = 0;

    virtual ~ICore() {}
};

}  // namespace TTML

#endif
