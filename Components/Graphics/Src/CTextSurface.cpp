#include "CTextSurface.h"

#include "CGraphics.h"
#include "CRootContainer.h"
#include "CTextContext.h"
#include "IDrawObserver.h"
#include "TTMLLog.h"

#include <Ecore.h>

#include <algorithm>
#include <cmath>

namespace TTML {

namespace {

void OnObjectDel_Cb(void* data, Evas* /*e*/, Evas_Object* /*obj*/, void* /*info*/)
{
    *static_cast<Evas_Object**>(data) = nullptr;
}

}  // namespace

void CTextSurface::ShowIf(Evas_Object* pObject, bool visible)
{
    if (!pObject)
        return;
    if (visible)
        evas_object_show(pObject);
    else
        evas_object_hide(pObject);
}

void CTextSurface::TrackObject(Evas_Object** slot)
{
    if (slot && *slot)
        evas_object_event_callback_add(*slot, EVAS_CALLBACK_DEL, OnObjectDel_Cb, slot);
}

void CTextSurface::DeleteObject(Evas_Object** slot)
{
    if (!slot || !*slot)
        return;
    Evas_Object* pObject = *slot;
    evas_object_event_callback_del_full(pObject, EVAS_CALLBACK_DEL, OnObjectDel_Cb, slot);
    *slot = nullptr;
    evas_object_del(pObject);
}

CTextSurface::CTextSurface(CRootContainer* root) : m_pRoot(root) {}

CTextSurface::~CTextSurface()
{
    Deinitialize();
}

bool CTextSurface::Initialize(int w, int h, const std::string& writingMode)
{
    if (w <= 0 || h <= 0 || w > kMaxSide || h > kMaxSide) {
        TTML_WARN("Invalid surface size %dx%d", w, h);
        return false;
    }
    if (!m_pRoot) {
        TTML_WARN("No root container");
        return false;
    }
    m_w = w;
    m_h = h;
    m_writingMode = writingMode;
    m_bInitialized = true;
    return true;
}

void CTextSurface::Deinitialize()
{
    if (!eina_main_loop_is()) {
        // The canvas objects go with the object, which CGraphics frees on the main loop.
        m_bInitialized = false;
        return;
    }
    ClearContent();
    m_ReleaseObjects();
    m_bInitialized = false;
}

void CTextSurface::Show()
{
    m_bShown = true;
    m_Sync();
    if (CGraphics::HasDrawObserver())
        CGraphics::NotifyDraw(IDrawObserver::REGION_SHOWN, static_cast<ITextSurface*>(this), m_ContentText(m_contexts));
}

void CTextSurface::Hide()
{
    m_bShown = false;
    m_Sync();
}

void CTextSurface::SetPosition(int x, int y)
{
    m_x = x;
    m_y = y;
    m_Sync();
}

void CTextSurface::GetPosition(int* x, int* y)
{
    if (x)
        *x = m_x;
    if (y)
        *y = m_y;
}

void CTextSurface::SetBackgroundColor(int r, int g, int b, int a)
{
    int channels[4] = {r, g, b, a};
    for (int i = 0; i < 4; ++i)
        m_bg[i] = std::min(std::max(channels[i], 0), 65535) / 257;
    m_Sync();
}

void CTextSurface::MovePen(int dx, int dy)
{
    m_penX += dx;
    m_penY += dy;
}

void CTextSurface::SetShowBackgroundAlways(bool always)
{
    m_bShowAlways = always;
    m_Sync();
}

void CTextSurface::SetPadding(double top, double bottom, double left, double right)
{
    m_padTop = std::max(top, 0.0);
    m_padBottom = std::max(bottom, 0.0);
    m_padLeft = std::max(left, 0.0);
    m_padRight = std::max(right, 0.0);
}

void CTextSurface::SetDisplayAlign(const std::string& value)
{
    m_displayAlign = value;
}

std::string CTextSurface::GetDisplayAlign()
{
    return m_displayAlign;
}

void CTextSurface::SetOverflowArea(bool visible, int x, int y, int w, int h)
{
    m_bOverflowVisible = visible;
    m_overflow[0] = x;
    m_overflow[1] = y;
    m_overflow[2] = w;
    m_overflow[3] = h;
    m_Sync();
}

void CTextSurface::ClearContent()
{
    std::vector<CTextContext*> contexts;
    contexts.swap(m_contexts);
    if (CGraphics::HasDrawObserver())
        CGraphics::NotifyDraw(IDrawObserver::REGION_CLEARED, static_cast<ITextSurface*>(this),
                              m_ContentText(contexts));
    if (eina_main_loop_is())
        for (CTextContext* pContext : contexts)
            pContext->DetachFromSurface();
    CTextSurface::DeleteObject(&m_pImage);
    m_penX = m_penY = 0;
    m_Sync();
}

void CTextSurface::SetOpacity(double opacity)
{
    if (std::isnan(opacity))
        opacity = 1.0;
    m_opacity = std::min(std::max(opacity, 0.0), 1.0);
    m_Sync();
}

void CTextSurface::Attach(IRootContainer* root)
{
    if (!root) {
        TTML_WARN("pRootContainer is null");
        return;
    }
    if (root != static_cast<IRootContainer*>(m_pRoot)) {
        TTML_WARN("Attach: not this component's root container");
        return;
    }
    if (!eina_main_loop_is()) {
        TTML_WARN("Attach runs on the main loop");
        return;
    }
    if (!m_EnsureObjects())
        return;
    m_Restack();
    m_Sync();
}

bool CTextSurface::AttachImage(IRootContainer* root, const void* buffer, size_t size)
{
    if (!root || root != static_cast<IRootContainer*>(m_pRoot)) {
        TTML_WARN("AttachImage: invalid root container");
        return false;
    }
    if (!buffer || size == 0 || size > kMaxImageBytes) {
        TTML_WARN("AttachImage: refused image buffer of %zu bytes", size);
        return false;
    }
    if (!eina_main_loop_is()) {
        TTML_WARN("AttachImage runs on the main loop");
        return false;
    }
    if (!m_EnsureObjects())
        return false;
    CTextSurface::DeleteObject(&m_pImage);
    Evas_Object* pImage = evas_object_image_filled_add(evas_object_evas_get(m_pClip));
    if (!pImage)
        return false;
    // Evas copies the bytes; the buffer stays the caller's.
    evas_object_image_memfile_set(pImage, const_cast<void*>(buffer), (int)size, nullptr, nullptr);
    int iw = 0, ih = 0;
    evas_object_image_size_get(pImage, &iw, &ih);
    Evas_Load_Error error = evas_object_image_load_error_get(pImage);
    if (error != EVAS_LOAD_ERROR_NONE || iw <= 0 || ih <= 0 || iw > kMaxSide || ih > kMaxSide) {
        TTML_WARN("AttachImage: image not usable (%s, %dx%d)", evas_load_error_str(error), iw, ih);
        evas_object_del(pImage);
        return false;
    }
    evas_object_image_smooth_scale_set(pImage, EINA_TRUE);
    evas_object_pass_events_set(pImage, EINA_TRUE);
    m_pImage = pImage;
    TrackObject(&m_pImage);
    evas_object_smart_member_add(m_pImage, m_pRoot->GetEvasObject());
    evas_object_clip_set(m_pImage, m_pClip);
    m_Restack();
    m_Sync();
    return true;
}

void CTextSurface::GetGeometry(int* x, int* y, int* w, int* h)
{
    if (x)
        *x = m_x;
    if (y)
        *y = m_y;
    if (w)
        *w = std::max(0, m_w - (int)std::lround(m_padLeft + m_padRight));
    if (h)
        *h = std::max(0, m_h - (int)std::lround(m_padTop + m_padBottom));
}

void CTextSurface::GetContentInset(int* dw, int* dh)
{
    if (dw)
        *dw = -(int)std::lround(m_padLeft + m_padRight);
    if (dh)
        *dh = -(int)std::lround(m_padTop + m_padBottom);
}

void CTextSurface::SetWindowVisible(bool visible)
{
    m_bWindowVisible = visible;
    m_Sync();
}

void CTextSurface::SetBackgroundVisible(bool visible)
{
    m_bBackgroundVisible = visible;
    if (eina_main_loop_is())
        for (CTextContext* pContext : m_contexts)
            pContext->ApplyVisibility();
}

void CTextSurface::SetRightToLeft(bool rtl)
{
    m_bRtl = rtl;
}

bool CTextSurface::PlaceContent(CTextContext* ctx, int* x, int* y, Evas_Object** clip)
{
    if (!m_bInitialized || !m_EnsureObjects())
        return false;
    if (std::find(m_contexts.begin(), m_contexts.end(), ctx) == m_contexts.end())
        m_contexts.push_back(ctx);
    int rootX = 0, rootY = 0;
    m_pRoot->GetGeometry(&rootX, &rootY, nullptr, nullptr);
    *x = rootX + m_x + (int)std::lround(m_padLeft) + m_penX;
    *y = rootY + m_y + (int)std::lround(m_padTop) + m_penY;
    *clip = m_pClip;
    m_Sync();
    return true;
}

void CTextSurface::ForgetContent(CTextContext* ctx)
{
    m_contexts.erase(std::remove(m_contexts.begin(), m_contexts.end(), ctx), m_contexts.end());
    m_Sync();
}

bool CTextSurface::m_EnsureObjects()
{
    if (m_pClip && m_pWindow)
        return true;
    Evas_Object* pRootObject = m_pRoot ? m_pRoot->GetEvasObject() : nullptr;
    if (!pRootObject) {
        TTML_WARN("No canvas for the surface");
        return false;
    }
    m_ReleaseObjects();
    Evas* pEvas = evas_object_evas_get(pRootObject);
    m_pClip = evas_object_rectangle_add(pEvas);
    m_pWindow = evas_object_rectangle_add(pEvas);
    if (!m_pClip || !m_pWindow) {
        m_ReleaseObjects();
        return false;
    }
    TrackObject(&m_pClip);
    TrackObject(&m_pWindow);
    // Members first: the root container clips them to itself, and the
    // region's own clipper then stays inside that.
    evas_object_smart_member_add(m_pClip, pRootObject);
    evas_object_smart_member_add(m_pWindow, pRootObject);
    evas_object_clip_set(m_pWindow, m_pClip);
    evas_object_pass_events_set(m_pClip, EINA_TRUE);
    evas_object_pass_events_set(m_pWindow, EINA_TRUE);
    m_Sync();
    return true;
}

void CTextSurface::m_ReleaseObjects()
{
    for (CTextContext* pContext : m_contexts)
        pContext->DetachFromSurface();
    m_contexts.clear();
    DeleteObject(&m_pImage);
    DeleteObject(&m_pWindow);
    DeleteObject(&m_pClip);
}

void CTextSurface::m_Restack()
{
    if (m_pWindow)
        evas_object_raise(m_pWindow);
    if (m_pImage)
        evas_object_raise(m_pImage);
    for (CTextContext* pContext : m_contexts)
        pContext->RaiseLayers();
}

void CTextSurface::m_Sync()
{
    if (!m_pClip || !eina_main_loop_is())
        return;
    int rootX = 0, rootY = 0;
    m_pRoot->GetGeometry(&rootX, &rootY, nullptr, nullptr);
    int x = rootX + m_x, y = rootY + m_y;
    if (m_bOverflowVisible && m_overflow[2] > 0 && m_overflow[3] > 0) {
        evas_object_move(m_pClip, rootX + m_overflow[0], rootY + m_overflow[1]);
        evas_object_resize(m_pClip, m_overflow[2], m_overflow[3]);
    } else {
        evas_object_move(m_pClip, x, y);
        evas_object_resize(m_pClip, m_w, m_h);
    }
    // The clipper multiplies everything in the region: opacity lives here.
    int o = (int)std::lround(m_opacity * 255);
    evas_object_color_set(m_pClip, o, o, o, o);
    ShowIf(m_pClip, m_bShown && m_bInitialized);

    evas_object_move(m_pWindow, x, y);
    evas_object_resize(m_pWindow, m_w, m_h);
    int a = m_bg[3];
    evas_object_color_set(m_pWindow, m_bg[0] * a / 255, m_bg[1] * a / 255, m_bg[2] * a / 255, a);
    bool content = !m_contexts.empty() || m_pImage;
    ShowIf(m_pWindow, m_bWindowVisible && a > 0 && (m_bShowAlways || content));

    if (m_pImage) {
        evas_object_move(m_pImage, x, y);
        evas_object_resize(m_pImage, m_w, m_h);
        evas_object_show(m_pImage);
    }
}

void CTextSurface::GetScreenRect(int* x, int* y, int* w, int* h)
{
    int rootX = 0;
    int rootY = 0;
    m_pRoot->GetGeometry(&rootX, &rootY, nullptr, nullptr);
    *x = rootX + m_x;
    *y = rootY + m_y;
    *w = m_w;
    *h = m_h;
}

std::string CTextSurface::m_ContentText(const std::vector<CTextContext*>& contexts)
{
    std::string text;
    for (const CTextContext* pContext : contexts) {
        if (!text.empty())
            text += "\n";
        text += pContext->GetPlainText();
    }
    return text;
}

}  // namespace TTML
