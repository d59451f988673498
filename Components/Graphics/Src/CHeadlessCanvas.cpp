#include "CHeadlessCanvas.h"

#include "TTMLLog.h"

#include <cstdlib>


namespace TTML {

namespace {

// Layer the gadget puts its base layout on.
const int kBaseLayoutLayer = 6;

void OnLayoutDel_Cb(void* data, Evas* /*e*/, Evas_Object* /*obj*/, void* /*info*/)
{
    *static_cast<Evas_Object**>(data) = nullptr;
}

// Evas paints only where objects changed; a zeroed buffer keeps the rest
// transparent instead of showing whatever the memory held before.
void* AllocPixels_Cb(void* /*data*/, int size)
{
    return calloc(1, size);
}

void FreePixels_Cb(void* /*data*/, void* pixels)
{
    free(pixels);
}

}  // namespace

CHeadlessCanvas::~CHeadlessCanvas()
{
    Destroy();
}

bool CHeadlessCanvas::Initialize(int width, int height)
{
    if (m_pEcoreEvas) {
        TTML_WARN("Canvas already initialized");
        return false;
    }
    if (width <= 0 || height <= 0) {
        TTML_WARN("Invalid canvas size %dx%d", width, height);
        return false;
    }
    ecore_evas_init();
    m_pEcoreEvas = ecore_evas_buffer_allocfunc_new(width, height, AllocPixels_Cb, FreePixels_Cb, nullptr);
    if (!m_pEcoreEvas) {
        TTML_WARN("Cannot make a %dx%d buffer canvas", width, height);
        ecore_evas_shutdown();
        return false;
    }
    m_width = width;
    m_height = height;
    // With alpha Evas clears what it redraws, so a hidden object leaves
    // transparency behind instead of its last pixels.
    ecore_evas_alpha_set(m_pEcoreEvas, EINA_TRUE);
    ecore_evas_show(m_pEcoreEvas);
    Evas* pEvas = ecore_evas_get(m_pEcoreEvas);
    m_pBaseLayout = evas_object_box_add(pEvas);
    evas_object_event_callback_add(m_pBaseLayout, EVAS_CALLBACK_DEL, OnLayoutDel_Cb, &m_pBaseLayout);
    evas_object_move(m_pBaseLayout, 0, 0);
    evas_object_resize(m_pBaseLayout, width, height);
    evas_object_show(m_pBaseLayout);
    evas_object_layer_set(m_pBaseLayout, kBaseLayoutLayer);
    return true;
}

void CHeadlessCanvas::DeleteBaseLayout()
{
    if (m_pBaseLayout)
        evas_object_del(m_pBaseLayout);  // the del callback clears the pointer
}

void CHeadlessCanvas::Destroy()
{
    if (!m_pEcoreEvas)
        return;
    m_window.Close();
    DeleteBaseLayout();
    ecore_evas_free(m_pEcoreEvas);
    m_pEcoreEvas = nullptr;
    m_width = m_height = 0;
    ecore_evas_shutdown();
}

bool CHeadlessCanvas::ShowWindow()
{
    if (!m_pEcoreEvas) {
        TTML_WARN("No canvas to show");
        return false;
    }
    return m_window.Open(m_pEcoreEvas);
}

Evas* CHeadlessCanvas::GetEvas() const
{
    return m_pEcoreEvas ? ecore_evas_get(m_pEcoreEvas) : nullptr;
}

const unsigned int* CHeadlessCanvas::m_Render()
{
    if (!m_pEcoreEvas)
        return nullptr;
    ecore_evas_manual_render(m_pEcoreEvas);
    return static_cast<const unsigned int*>(ecore_evas_buffer_pixels_get(m_pEcoreEvas));
}

unsigned int CHeadlessCanvas::GetPixel(int x, int y)
{
    if (x < 0 || y < 0 || x >= m_width || y >= m_height)
        return 0;
    const unsigned int* pPixels = m_Render();
    return pPixels ? pPixels[(size_t)y * m_width + x] : 0;
}

bool CHeadlessCanvas::SavePng(const std::string& path)
{
    const unsigned int* pPixels = m_Render();
    if (!pPixels) {
        TTML_WARN("No canvas to save");
        return false;
    }
    // A hidden image holding a copy of the frame; Evas' own saver writes it
    // (and turns premultiplied alpha back into straight alpha).
    Evas_Object* pImage = evas_object_image_add(GetEvas());
    if (!pImage) {
        TTML_WARN("Cannot make an image to save %s", path.c_str());
        return false;
    }
    evas_object_image_colorspace_set(pImage, EVAS_COLORSPACE_ARGB8888);
    evas_object_image_alpha_set(pImage, EINA_TRUE);
    evas_object_image_size_set(pImage, m_width, m_height);
    evas_object_image_data_copy_set(pImage, const_cast<unsigned int*>(pPixels));
    // Light compression: these pictures are looked at, not archived.
    bool saved = evas_object_image_save(pImage, path.c_str(), nullptr, "compress=2");
    evas_object_del(pImage);
    if (!saved)
        TTML_WARN("Cannot write %s", path.c_str());
    return saved;
}

}  // namespace TTML
