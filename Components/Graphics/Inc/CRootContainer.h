#ifndef TTML_GRAPHICS_CROOTCONTAINER_H
#define TTML_GRAPHICS_CROOTCONTAINER_H

#include "IRootContainer.h"

#include <Evas.h>

#include <memory>

namespace TTML {

// The root container over Evas: a clipped smart object on the base layout's
// layer, stacked above it, that follows the layout's geometry and letterboxes
// the document into it. Regions join it as smart members
// (evas_object_smart_member_add) and are clipped to it, moved with it and
// hidden with it.
//
// The geometry and visibility live here under a lock so that the operations
// can be called from any thread; the Evas object is updated on the main loop.
class CRootContainer final : public IRootContainer {
public:
    // Main loop. parent: the base layout, not owned; it may be deleted first.
    // Null (with a warning) when parent is null or the object cannot be made.
    static CRootContainer* Create(Evas_Object* parent);

    // Main loop. Deletes the Evas object (and its members).
    ~CRootContainer();

    CRootContainer(const CRootContainer&) = delete;
    CRootContainer& operator=(const CRootContainer&) = delete;

    void Show() override;
    void Hide() override;
    void SetRootInfo(int extentW, int extentH, int aspectW, int aspectH) override;
    void GetGeometry(int* x, int* y, int* w, int* h) override;

    // Main loop. The smart object regions are added to; null once the canvas
    // deleted it.
    Evas_Object* GetEvasObject() const { return m_pObject; }

    // Visibility as last requested (any thread).
    bool IsVisible() const;

private:
    struct State;

    CRootContainer();
    bool m_Build(Evas_Object* parent);
    void m_ReadParentGeometry();
    // Canvas <- state, on the main loop; posted when called from elsewhere.
    void m_RequestApply();
    void m_Apply();

    static void m_Apply_Cb(void* ticket);
    static void m_OnParentGeometry_Cb(void* data, Evas* e, Evas_Object* obj, void* info);
    static void m_OnParentDel_Cb(void* data, Evas* e, Evas_Object* obj, void* info);
    static void m_OnObjectDel_Cb(void* data, Evas* e, Evas_Object* obj, void* info);

    Evas_Object* m_pParent = nullptr;
    Evas_Object* m_pObject = nullptr;
    // Shared with posted updates so that one arriving after destruction is harmless.
    std::shared_ptr<State> m_pState;
};

}  // namespace TTML

#endif
