#include "CVideoWindow.h"

#include "CTVService.h"
#include "TTMLLog.h"

#include <Ecore.h>

#include <mutex>
#include <new>
#include <vector>

namespace TTML {

namespace {

// A test card: the classic 75% colour bars, left to right.
const unsigned char kBars[][3] = {
    {191, 191, 191}, {191, 191, 0}, {0, 191, 191}, {0, 191, 0}, {191, 0, 191}, {191, 0, 0}, {0, 0, 191},
};
const int kBarCount = sizeof kBars / sizeof kBars[0];

}  // namespace

struct CVideoWindow::State {
    std::mutex lock;
    bool alive = true;
    double scaleX = 1.0;
    double scaleY = 1.0;
    std::vector<Evas_Object*> bars;  // main loop only
    Evas_Object* pPicture = nullptr;  // the caller's, instead of the bars

    // Main loop: the bars follow the service's video rectangle.
    void Apply()
    {
        const TTMLRect<int> r = CTVService::GetInstance().GetVideoRect();
        const int x = static_cast<int>(r.x * scaleX);
        const int y = static_cast<int>(r.y * scaleY);
        const int w = static_cast<int>(r.w * scaleX);
        const int h = static_cast<int>(r.h * scaleY);
        if (pPicture) {
            evas_object_geometry_set(pPicture, x, y, w, h);
            return;
        }
        for (int i = 0; i < kBarCount; ++i) {
            const int left = x + w * i / kBarCount;
            const int right = x + w * (i + 1) / kBarCount;
            evas_object_geometry_set(bars[i], left, y, right - left, h);
        }
    }
};

CVideoWindow::~CVideoWindow()
{
    Destroy();
}

bool CVideoWindow::Initialize(Evas* pCanvas, int canvasW, int canvasH, Evas_Object* pPicture)
{
    if (!pCanvas || m_pState || canvasW <= 0 || canvasH <= 0) {
        TTML_WARN("Invalid canvas or video window already made");
        return false;
    }
    m_pState = std::make_shared<State>();
    m_pState->scaleX = canvasW / 1920.0;
    m_pState->scaleY = canvasH / 1080.0;
    m_pState->pPicture = pPicture;
    if (pPicture)
        evas_object_layer_set(pPicture, LAYER);
    for (int i = 0; !pPicture && i < kBarCount; ++i) {
        Evas_Object* pBar = evas_object_rectangle_add(pCanvas);
        evas_object_color_set(pBar, kBars[i][0], kBars[i][1], kBars[i][2], 255);
        evas_object_layer_set(pBar, LAYER);
        evas_object_pass_events_set(pBar, EINA_TRUE);
        evas_object_show(pBar);
        m_pState->bars.push_back(pBar);
    }
    m_pState->Apply();
    std::weak_ptr<State> weak = m_pState;
    m_observer = CTVService::GetInstance().AddVideoObserver([weak] {
        std::shared_ptr<State> pState = weak.lock();
        if (!pState)
            return;
        if (eina_main_loop_is()) {
            pState->Apply();
            return;
        }
        auto* pTicket = new (std::nothrow) std::shared_ptr<State>(pState);
        TTML_ASSERT(pTicket);
        ecore_main_loop_thread_safe_call_async(m_Apply_Cb, pTicket);
    });
    return true;
}

void CVideoWindow::m_Apply_Cb(void* pTicket)
{
    std::shared_ptr<State>* pState = static_cast<std::shared_ptr<State>*>(pTicket);
    {
        std::lock_guard<std::mutex> guard((*pState)->lock);
        if ((*pState)->alive)
            (*pState)->Apply();
    }
    delete pState;
}

void CVideoWindow::Destroy()
{
    if (!m_pState)
        return;
    CTVService::GetInstance().RemoveVideoObserver(m_observer);
    {
        std::lock_guard<std::mutex> guard(m_pState->lock);
        m_pState->alive = false;
        for (Evas_Object* pBar : m_pState->bars)
            evas_object_del(pBar);
        m_pState->bars.clear();
        m_pState->pPicture = nullptr;
    }
    m_pState.reset();
}

}  // namespace TTML
