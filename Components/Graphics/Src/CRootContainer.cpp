#include "CRootContainer.h"

#include "TTMLLog.h"

#include <Ecore.h>

#include <cmath>
#include <mutex>
#include <new>

namespace TTML {

struct CRootContainer::State {
    std::mutex lock;
    CRootContainer* pOwner = nullptr;  // null once the container is gone
    bool bApplyPosted = false;
    bool bVisible = true;
    // Base layout geometry, refreshed on the main loop.
    int parentX = 0, parentY = 0, parentW = 0, parentH = 0;
    int extentW = -1, extentH = -1, aspectW = 1, aspectH = 1;
};

namespace {

// Largest rectangle of ratio num:den centred in the parent; num or den <= 0
// fills the parent.
void FitRatio(int px, int py, int pw, int ph, long long num, long long den, int* x, int* y, int* w,
              int* h)
{
    int fw = pw, fh = ph;
    if (num > 0 && den > 0 && pw > 0 && ph > 0) {
        if ((long long)pw * den > (long long)ph * num)
            fw = (int)std::lround((double)ph * num / den);  // parent wider: bars left and right
        else
            fh = (int)std::lround((double)pw * den / num);  // parent taller: bars top and bottom
    }
    *x = px + (pw - fw) / 2;
    *y = py + (ph - fh) / 2;
    *w = fw;
    *h = fh;
}

void ComputeGeometry(int px, int py, int pw, int ph, int extentW, int extentH, int aspectW, int aspectH,
                     int* x, int* y, int* w, int* h)
{
    long long num = 0, den = 0;
    // 1:1 is the caller's stand-in for "no aspect ratio": a document that
    // gives none is meant to fill the screen, not to become a square.
    bool aspectGiven = aspectW > 0 && aspectH > 0 && !(aspectW == 1 && aspectH == 1);
    if (aspectGiven) {
        num = aspectW;
        den = aspectH;
    } else if (extentW > 0 && extentH > 0) {
        num = extentW;
        den = extentH;
    }
    FitRatio(px, py, pw, ph, num, den, x, y, w, h);
}

// Smart class: a group whose clipper covers exactly the object, so that
// regions cannot spill into the bars. Written out rather than derived from
// Evas' clipped base, which loses its private data on delete.
struct RootSmartData {
    Evas_Object* clipper;
};

RootSmartData* SmartData(const Evas_Object* obj)
{
    return static_cast<RootSmartData*>(evas_object_smart_data_get(obj));
}

void SmartAdd(Evas_Object* obj)
{
    RootSmartData* pData = new (std::nothrow) RootSmartData();
    TTML_ASSERT(pData);
    pData->clipper = evas_object_rectangle_add(evas_object_evas_get(obj));
    evas_object_color_set(pData->clipper, 255, 255, 255, 255);  // white: leaves colours as they are
    evas_object_move(pData->clipper, 0, 0);
    evas_object_resize(pData->clipper, 0, 0);
    evas_object_smart_data_set(obj, pData);
    evas_object_smart_member_add(pData->clipper, obj);
}

void SmartDel(Evas_Object* obj)
{
    RootSmartData* pData = SmartData(obj);
    // Regions still attached go with the container.
    Eina_List* pMembers = evas_object_smart_members_get(obj);
    void* pMember;
    EINA_LIST_FREE(pMembers, pMember)
    {
        if (pMember != pData->clipper)
            evas_object_del(static_cast<Evas_Object*>(pMember));
    }
    evas_object_del(pData->clipper);
    evas_object_smart_data_set(obj, nullptr);
    delete pData;
}

void SmartMove(Evas_Object* obj, Evas_Coord x, Evas_Coord y)
{
    Evas_Coord oldX, oldY;
    evas_object_geometry_get(obj, &oldX, &oldY, nullptr, nullptr);
    evas_object_smart_move_children_relative(obj, x - oldX, y - oldY);
}

void SmartResize(Evas_Object* obj, Evas_Coord w, Evas_Coord h)
{
    Evas_Coord x, y;
    evas_object_geometry_get(obj, &x, &y, nullptr, nullptr);
    RootSmartData* pData = SmartData(obj);
    evas_object_move(pData->clipper, x, y);
    evas_object_resize(pData->clipper, w, h);
}

void SmartShow(Evas_Object* obj)
{
    RootSmartData* pData = SmartData(obj);
    // A clipper without clipees would be drawn as a white rectangle.
    if (evas_object_clipees_has(pData->clipper))
        evas_object_show(pData->clipper);
}

void SmartHide(Evas_Object* obj)
{
    evas_object_hide(SmartData(obj)->clipper);
}

void SmartColorSet(Evas_Object* obj, int r, int g, int b, int a)
{
    evas_object_color_set(SmartData(obj)->clipper, r, g, b, a);
}

void SmartClipSet(Evas_Object* obj, Evas_Object* clip)
{
    evas_object_clip_set(SmartData(obj)->clipper, clip);
}

void SmartClipUnset(Evas_Object* obj)
{
    evas_object_clip_unset(SmartData(obj)->clipper);
}

void SmartMemberAdd(Evas_Object* obj, Evas_Object* member)
{
    RootSmartData* pData = SmartData(obj);
    if (!pData || member == pData->clipper)
        return;
    evas_object_clip_set(member, pData->clipper);
    if (evas_object_visible_get(obj))
        evas_object_show(pData->clipper);
}

void SmartMemberDel(Evas_Object* obj, Evas_Object* member)
{
    RootSmartData* pData = SmartData(obj);
    if (!pData || member == pData->clipper)
        return;
    evas_object_clip_unset(member);
    if (!evas_object_clipees_has(pData->clipper))
        evas_object_hide(pData->clipper);
}

Evas_Smart_Class s_class;
Evas_Smart* s_pSmart = nullptr;

Evas_Smart* RootSmart()
{
    if (!s_pSmart) {
        s_class.name = "TTMLRootContainer";
        s_class.version = EVAS_SMART_CLASS_VERSION;
        s_class.add = SmartAdd;
        s_class.del = SmartDel;
        s_class.move = SmartMove;
        s_class.resize = SmartResize;
        s_class.show = SmartShow;
        s_class.hide = SmartHide;
        s_class.color_set = SmartColorSet;
        s_class.clip_set = SmartClipSet;
        s_class.clip_unset = SmartClipUnset;
        s_class.member_add = SmartMemberAdd;
        s_class.member_del = SmartMemberDel;
        // Lives for the process: Evas keeps a pointer to the class.
        s_pSmart = evas_smart_class_new(&s_class);
    }
    return s_pSmart;
}

}  // namespace

CRootContainer::CRootContainer() : m_pState(std::make_shared<State>())
{
    m_pState->pOwner = this;
}

CRootContainer* CRootContainer::Create(Evas_Object* parent)
{
    if (!parent) {
        TTML_WARN("pParent is null");
        return nullptr;
    }
    CRootContainer* pRoot = new (std::nothrow) CRootContainer();
    TTML_ASSERT(pRoot);
    if (!pRoot->m_Build(parent)) {
        delete pRoot;
        return nullptr;
    }
    return pRoot;
}

bool CRootContainer::m_Build(Evas_Object* parent)
{
    Evas* pEvas = evas_object_evas_get(parent);
    Evas_Smart* pSmart = pEvas ? RootSmart() : nullptr;
    if (pSmart)
        m_pObject = evas_object_smart_add(pEvas, pSmart);
    if (!m_pObject) {
        TTML_WARN("Unable to create the root container object");
        return false;
    }
    m_pParent = parent;
    evas_object_event_callback_add(m_pObject, EVAS_CALLBACK_DEL, m_OnObjectDel_Cb, this);
    evas_object_event_callback_add(parent, EVAS_CALLBACK_MOVE, m_OnParentGeometry_Cb, this);
    evas_object_event_callback_add(parent, EVAS_CALLBACK_RESIZE, m_OnParentGeometry_Cb, this);
    evas_object_event_callback_add(parent, EVAS_CALLBACK_DEL, m_OnParentDel_Cb, this);
    // Same layer as the layout and just above it, as if it were its content.
    evas_object_layer_set(m_pObject, evas_object_layer_get(parent));
    evas_object_stack_above(m_pObject, parent);
    m_ReadParentGeometry();
    m_Apply();
    return true;
}

CRootContainer::~CRootContainer()
{
    {
        std::lock_guard<std::mutex> guard(m_pState->lock);
        m_pState->pOwner = nullptr;
    }
    if (m_pParent) {
        evas_object_event_callback_del_full(m_pParent, EVAS_CALLBACK_MOVE, m_OnParentGeometry_Cb, this);
        evas_object_event_callback_del_full(m_pParent, EVAS_CALLBACK_RESIZE, m_OnParentGeometry_Cb, this);
        evas_object_event_callback_del_full(m_pParent, EVAS_CALLBACK_DEL, m_OnParentDel_Cb, this);
    }
    if (m_pObject) {
        evas_object_event_callback_del_full(m_pObject, EVAS_CALLBACK_DEL, m_OnObjectDel_Cb, this);
        evas_object_del(m_pObject);
    }
}

void CRootContainer::Show()
{
    {
        std::lock_guard<std::mutex> guard(m_pState->lock);
        m_pState->bVisible = true;
    }
    m_RequestApply();
}

void CRootContainer::Hide()
{
    {
        std::lock_guard<std::mutex> guard(m_pState->lock);
        m_pState->bVisible = false;
    }
    m_RequestApply();
}

bool CRootContainer::IsVisible() const
{
    std::lock_guard<std::mutex> guard(m_pState->lock);
    return m_pState->bVisible;
}

void CRootContainer::SetRootInfo(int extentW, int extentH, int aspectW, int aspectH)
{
    TTML_INFO("extent=[%d %d] aspect=[%d %d]", extentW, extentH, aspectW, aspectH);
    {
        std::lock_guard<std::mutex> guard(m_pState->lock);
        m_pState->extentW = extentW;
        m_pState->extentH = extentH;
        m_pState->aspectW = aspectW;
        m_pState->aspectH = aspectH;
    }
    m_RequestApply();
}

void CRootContainer::GetGeometry(int* x, int* y, int* w, int* h)
{
    int gx, gy, gw, gh;
    {
        std::lock_guard<std::mutex> guard(m_pState->lock);
        const State& s = *m_pState;
        ComputeGeometry(s.parentX, s.parentY, s.parentW, s.parentH, s.extentW, s.extentH, s.aspectW,
                        s.aspectH, &gx, &gy, &gw, &gh);
    }
    if (x)
        *x = gx;
    if (y)
        *y = gy;
    if (w)
        *w = gw;
    if (h)
        *h = gh;
}

void CRootContainer::m_ReadParentGeometry()
{
    if (!m_pParent)
        return;
    Evas_Coord x, y, w, h;
    evas_object_geometry_get(m_pParent, &x, &y, &w, &h);
    std::lock_guard<std::mutex> guard(m_pState->lock);
    m_pState->parentX = x;
    m_pState->parentY = y;
    m_pState->parentW = w;
    m_pState->parentH = h;
}

void CRootContainer::m_RequestApply()
{
    if (eina_main_loop_is()) {
        m_Apply();
        return;
    }
    {
        std::lock_guard<std::mutex> guard(m_pState->lock);
        if (m_pState->bApplyPosted)
            return;  // the posted update reads the latest state anyway
        m_pState->bApplyPosted = true;
    }
    // Not through CMainThreadUtils: its stop state must not swallow geometry.
    std::shared_ptr<State>* pTicket = new (std::nothrow) std::shared_ptr<State>(m_pState);
    TTML_ASSERT(pTicket);
    ecore_main_loop_thread_safe_call_async(m_Apply_Cb, pTicket);
}

void CRootContainer::m_Apply_Cb(void* ticket)
{
    std::shared_ptr<State>* pTicket = static_cast<std::shared_ptr<State>*>(ticket);
    CRootContainer* pOwner;
    {
        std::lock_guard<std::mutex> guard((*pTicket)->lock);
        (*pTicket)->bApplyPosted = false;
        pOwner = (*pTicket)->pOwner;
    }
    // Owner and callback both live on the main loop: it cannot go away here.
    if (pOwner)
        pOwner->m_Apply();
    delete pTicket;
}

void CRootContainer::m_Apply()
{
    if (!m_pObject)
        return;
    int x, y, w, h;
    GetGeometry(&x, &y, &w, &h);
    bool visible = IsVisible();
    evas_object_move(m_pObject, x, y);
    evas_object_resize(m_pObject, w, h);
    if (visible)
        evas_object_show(m_pObject);
    else
        evas_object_hide(m_pObject);
}

void CRootContainer::m_OnParentGeometry_Cb(void* data, Evas* /*e*/, Evas_Object* /*obj*/, void* /*info*/)
{
    CRootContainer* pThis = static_cast<CRootContainer*>(data);
    pThis->m_ReadParentGeometry();
    pThis->m_Apply();
}

void CRootContainer::m_OnParentDel_Cb(void* data, Evas* /*e*/, Evas_Object* /*obj*/, void* /*info*/)
{
    // Keep the last geometry: the layout usually goes only after the core.
    static_cast<CRootContainer*>(data)->m_pParent = nullptr;
}

void CRootContainer::m_OnObjectDel_Cb(void* data, Evas* /*e*/, Evas_Object* /*obj*/, void* /*info*/)
{
    // The canvas went first (its objects are deleted with it).
    static_cast<CRootContainer*>(data)->m_pObject = nullptr;
}

}  // namespace TTML
