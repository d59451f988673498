#ifndef TTML_TVSERVICE_CVIDEOWINDOW_H
#define TTML_TVSERVICE_CVIDEOWINDOW_H

#include <Evas.h>

#include <memory>

namespace TTML {

// The picture of the TV service's video window, drawn on a canvas: a test
// card of colour bars (or a picture the caller gives) in the window's
// rectangle (screen pixels mapped onto the canvas), on a layer below the subtitles' (the gadget's layer 6). It
// follows every resize, so caption division can be seen.
//
// Main loop: Initialize and Destroy. Resizes may come from any thread; the
// canvas follows on the main loop.
class CVideoWindow {
public:
    CVideoWindow() = default;
    ~CVideoWindow();  // calls Destroy
    CVideoWindow(const CVideoWindow&) = delete;
    CVideoWindow& operator=(const CVideoWindow&) = delete;

    static const int LAYER = 1;

    // canvasW x canvasH: the canvas size the 1920x1080 screen maps onto.
    // pPicture: an object of the caller's (a backdrop) shown as the picture
    // instead of the test card; it is moved to the window's layer and follows
    // its rectangle, and is not deleted here. Null: the colour bars.
    // False with a warning for a null canvas or a second Initialize.
    bool Initialize(Evas* pCanvas, int canvasW = 1920, int canvasH = 1080, Evas_Object* pPicture = nullptr);
    void Destroy();

private:
    struct State;
    static void m_Apply_Cb(void* pTicket);

    std::shared_ptr<State> m_pState;
    int m_observer = 0;
};

}  // namespace TTML

#endif
