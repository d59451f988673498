#ifndef TTML_GRAPHICS_CCANVASWINDOW_H
#define TTML_GRAPHICS_CCANVASWINDOW_H

#include <Ecore.h>
#include <Ecore_Evas.h>

namespace TTML {

// An X11 window that shows what an off-screen buffer canvas draws, for a
// person watching a tool run. The buffer stays the canvas everything is
// drawn on (and read back from), so pixels and PNGs are the same with or
// without the window; after each render of the buffer the frame is copied
// into the window, over a dark grey backdrop so white text stays visible.
//
// Needs an X11 display (DISPLAY) and EFL's software X11 engine; without
// them Open says so and the canvas simply stays off-screen.
// Main loop thread only. Holds an Ecore-Evas reference while open.
class CCanvasWindow {
public:
    CCanvasWindow() = default;
    ~CCanvasWindow();  // calls Close
    CCanvasWindow(const CCanvasWindow&) = delete;
    CCanvasWindow& operator=(const CCanvasWindow&) = delete;

    // pSource: a buffer canvas (not owned) that must outlive the window or
    // be closed after it. False, with a log line, when there is no display,
    // no X11 engine, or the window cannot be made.
    bool Open(Ecore_Evas* pSource);
    void Close();
    bool IsOpen() const { return m_pWindow != nullptr; }

    // Copies the source's current frame into the window now.
    void Refresh();

    // One pixel of the copied frame as 0xAARRGGBB (premultiplied); 0 when
    // closed or outside. For tests.
    unsigned int GetShownPixel(int x, int y);

    Ecore_Evas* GetWindow() const { return m_pWindow; }

private:
    static void m_OnSourceRendered_Cb(Ecore_Evas* pSource);
    static void m_Refresh_Cb(void* pData);

    Ecore_Evas* m_pSource = nullptr;  // not owned
    Ecore_Evas* m_pWindow = nullptr;
    Evas_Object* m_pFrame = nullptr;  // image holding the copied frame
    Ecore_Job* m_pRefreshJob = nullptr;
    bool m_bCopying = false;
    int m_width = 0;
    int m_height = 0;
};

}  // namespace TTML

#endif
