#include "CCanvasWindow.h"

#include "TTMLLog.h"

#include <Ecore_Input_Evas.h>

#include <cstdlib>
#include <map>

namespace TTML {

namespace {

// Which window shows which canvas: the render callback of an Ecore-Evas
// carries no user data. Main loop only.
std::map<Ecore_Evas*, CCanvasWindow*>& Windows()
{
    static std::map<Ecore_Evas*, CCanvasWindow*> windows;
    return windows;
}

const int kBackdropGrey = 0x30;

}  // namespace

CCanvasWindow::~CCanvasWindow()
{
    Close();
}

bool CCanvasWindow::Open(Ecore_Evas* pSource)
{
    if (m_pWindow) {
        TTML_WARN("Canvas window already open");
        return false;
    }
    if (!pSource) {
        TTML_WARN("No canvas to show");
        return false;
    }
    const char* display = getenv("DISPLAY");
    if (!display || !*display) {
        TTML_INFO("No X11 display; the canvas stays off-screen");
        return false;
    }
    if (!ecore_evas_engine_type_supported_get(ECORE_EVAS_ENGINE_SOFTWARE_XLIB)) {
        TTML_WARN("EFL has no software X11 engine; the canvas stays off-screen");
        return false;
    }
    ecore_evas_init();
    // The X11 engine registers its window for input events; the buffer
    // canvas does not need that, so nothing else has started it.
    ecore_event_evas_init();
    int width = 0, height = 0;
    ecore_evas_geometry_get(pSource, nullptr, nullptr, &width, &height);
    m_pWindow = ecore_evas_software_x11_new(nullptr, 0, 0, 0, width, height);
    if (!m_pWindow) {
        TTML_WARN("Cannot open a %dx%d window on display %s", width, height, display);
        ecore_event_evas_shutdown();
        ecore_evas_shutdown();
        return false;
    }
    m_pSource = pSource;
    m_width = width;
    m_height = height;
    ecore_evas_title_set(m_pWindow, "Intertitle");

    Evas* pEvas = ecore_evas_get(m_pWindow);
    Evas_Object* pBackdrop = evas_object_rectangle_add(pEvas);
    evas_object_color_set(pBackdrop, kBackdropGrey, kBackdropGrey, kBackdropGrey, 255);
    evas_object_resize(pBackdrop, width, height);
    evas_object_show(pBackdrop);

    m_pFrame = evas_object_image_filled_add(pEvas);
    evas_object_image_colorspace_set(m_pFrame, EVAS_COLORSPACE_ARGB8888);
    evas_object_image_alpha_set(m_pFrame, EINA_TRUE);
    evas_object_image_size_set(m_pFrame, width, height);
    evas_object_resize(m_pFrame, width, height);
    evas_object_show(m_pFrame);

    Windows()[pSource] = this;
    ecore_evas_callback_post_render_set(pSource, m_OnSourceRendered_Cb);
    ecore_evas_show(m_pWindow);
    Refresh();
    TTML_INFO("Canvas window %dx%d open on display %s", width, height, display);
    return true;
}

void CCanvasWindow::Close()
{
    if (!m_pWindow)
        return;
    if (m_pRefreshJob) {
        ecore_job_del(m_pRefreshJob);
        m_pRefreshJob = nullptr;
    }
    ecore_evas_callback_post_render_set(m_pSource, nullptr);
    Windows().erase(m_pSource);
    ecore_evas_free(m_pWindow);  // frees the objects on it
    m_pWindow = nullptr;
    m_pFrame = nullptr;
    m_pSource = nullptr;
    ecore_event_evas_shutdown();
    ecore_evas_shutdown();
}

void CCanvasWindow::Refresh()
{
    if (!m_pWindow)
        return;
    // Reading the buffer renders it, which fires the render callback again.
    m_bCopying = true;
    const void* pPixels = ecore_evas_buffer_pixels_get(m_pSource);
    m_bCopying = false;
    if (!pPixels)
        return;
    evas_object_image_data_copy_set(m_pFrame, const_cast<void*>(pPixels));
    evas_object_image_data_update_add(m_pFrame, 0, 0, m_width, m_height);
}

unsigned int CCanvasWindow::GetShownPixel(int x, int y)
{
    if (!m_pFrame || x < 0 || y < 0 || x >= m_width || y >= m_height)
        return 0;
    const unsigned int* pPixels = static_cast<const unsigned int*>(evas_object_image_data_get(m_pFrame, EINA_FALSE));
    if (!pPixels)
        return 0;
    int stride = evas_object_image_stride_get(m_pFrame) / 4;
    unsigned int pixel = pPixels[(size_t)y * stride + x];
    // Hands the pixels back; Evas counts every get.
    evas_object_image_data_set(m_pFrame, const_cast<unsigned int*>(pPixels));
    return pixel;
}

void CCanvasWindow::m_OnSourceRendered_Cb(Ecore_Evas* pSource)
{
    auto found = Windows().find(pSource);
    if (found == Windows().end())
        return;
    CCanvasWindow* pSelf = found->second;
    if (pSelf->m_bCopying || pSelf->m_pRefreshJob)
        return;
    // Copy once the render has finished, not from inside it.
    pSelf->m_pRefreshJob = ecore_job_add(m_Refresh_Cb, pSelf);
}

void CCanvasWindow::m_Refresh_Cb(void* pData)
{
    CCanvasWindow* pSelf = static_cast<CCanvasWindow*>(pData);
    pSelf->m_pRefreshJob = nullptr;
    pSelf->Refresh();
}

}  // namespace TTML
