#ifndef TTML_GRAPHICS_CHEADLESSCANVAS_H
#define TTML_GRAPHICS_CHEADLESSCANVAS_H

#include "CCanvasWindow.h"

#include <Ecore_Evas.h>

#include <string>

namespace TTML {

// An off-screen canvas for tools and tests: an Ecore-Evas buffer with a base
// layout box on layer 6 covering it, as the gadget makes it on the TV.
// Holds an Ecore-Evas reference from Initialize to Destroy. Main loop thread.
// A window showing the canvas can be opened when an X11 display is there.
class CHeadlessCanvas {
public:
    CHeadlessCanvas() = default;
    ~CHeadlessCanvas();  // calls Destroy
    CHeadlessCanvas(const CHeadlessCanvas&) = delete;
    CHeadlessCanvas& operator=(const CHeadlessCanvas&) = delete;

    // False (with a warning) when the buffer engine is unavailable or the
    // size is not positive.
    bool Initialize(int width = 1920, int height = 1080);
    void Destroy();

    // Shows the canvas in an X11 window as well (see CCanvasWindow); false,
    // with a log line, when there is no display. Drawing is unchanged.
    bool ShowWindow();
    CCanvasWindow& GetWindow() { return m_window; }

    Ecore_Evas* GetEcoreEvas() const { return m_pEcoreEvas; }
    Evas* GetEvas() const;
    // The base layout box (owned; give it to IGraphics::Initialize).
    Evas_Object* GetBaseLayout() const { return m_pBaseLayout; }
    // Deletes the box early, as the gadget does on its destroy callback.
    void DeleteBaseLayout();

    int GetWidth() const { return m_width; }
    int GetHeight() const { return m_height; }

    // Renders now and returns one pixel as 0xAARRGGBB (premultiplied alpha);
    // 0 outside the canvas.
    unsigned int GetPixel(int x, int y);

    // Renders now and returns the whole frame, width x height 0xAARRGGBB
    // (premultiplied), rows top to bottom; valid until the next render.
    const unsigned int* RenderPixels() { return m_Render(); }

    // Renders now and writes the canvas as an RGBA PNG (the format follows the
    // file name's extension). False on failure.
    bool SavePng(const std::string& path);

private:
    const unsigned int* m_Render();

    Ecore_Evas* m_pEcoreEvas = nullptr;
    CCanvasWindow m_window;
    Evas_Object* m_pBaseLayout = nullptr;
    int m_width = 0;
    int m_height = 0;
};

}  // namespace TTML

#endif
