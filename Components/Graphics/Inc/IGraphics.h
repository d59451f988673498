#ifndef TTML_GRAPHICS_IGRAPHICS_H
#define TTML_GRAPHICS_IGRAPHICS_H

namespace TTML {

class IRootContainer;

// The graphics component as the system sees it: one object per core, drawing
// inside the gadget's base layout on the UI main loop.
//
// Thread: Create, Initialize, Destroy and the creation and destruction of
// timers run on the UI main loop. GetRootContainer may be called from any
// thread; the root container's own operations are thread-safe.
class IGraphics {
public:
    // Object kinds for CreateObject.
    enum ObjectKind {
        OBJECT_TEXT_SURFACE = 0,  // ITextSurface
        OBJECT_TEXT_CONTEXT = 1,  // ITextContext
        OBJECT_TIMER = 2          // ITimer
    };

    // A new, uninitialised graphics object, or null when allocation fails.
    // Owned by the caller until it calls Destroy().
    static IGraphics* Create();

    // Releases everything the object made (objects not yet given back are freed
    // with a warning), and deletes the object: the pointer is invalid after.
    virtual void Destroy() = 0;

    // parent: the Evas_Object* of the gadget's base layout box, not owned; the
    // root container is placed over it and follows its geometry. False (with a
    // log line) when parent is null, not an Evas object, or on a second call.
    virtual bool Initialize(void* parent) = 0;

    // A new object of the given kind (see ObjectKind), owned by the caller and
    // given back with DestroyObject; the pointer converts to the kind's
    // interface with static_cast. Null (with a warning) before Initialize, for
    // an unknown kind, or for a kind this build cannot make yet.
    virtual void* CreateObject(int kind) = 0;

    // Frees an object made by CreateObject. Null or foreign pointers are
    // refused with a warning. A timer is destroyed on the main loop; destroying
    // it from inside its own callback is allowed.
    virtual void DestroyObject(void* object) = 0;

    // The root container all drawing goes into; owned by this object. Null
    // before Initialize.
    virtual IRootContainer* GetRootContainer() = 0;

protected:
    // Destroy() deletes; never delete through the interface.
    ~IGraphics() = default;
};

}  // namespace TTML

#endif
