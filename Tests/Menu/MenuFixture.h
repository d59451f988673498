#ifndef INTERTITLE_TESTS_MENU_MENUFIXTURE_H
#define INTERTITLE_TESTS_MENU_MENUFIXTURE_H

#include "../Graphics/MainLoopFixture.h"

#include "CTTMLMenu.h"
#include "CTVService.h"
#include "CVideoWindow.h"
#include "LogCapture.h"

#include <Ecore.h>
#include <vconf.h>

#include <functional>
#include <string>

// A fresh caption menu and TV service, the video window drawn on the headless
// canvas, a log capture, and a listener that counts menu change notifications.
class MenuTest : public MainLoopTest {
public:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        TTML::CTVService::GetInstance().Reset();
        TTML::CTTMLMenu::Destroy();
        ASSERT_TRUE(m_video.Initialize(m_canvas.GetEvas()));
        Menu()->RegisterMenuChangeNotify(Count_Cb, &m_notified);
    }

    void TearDown() override
    {
        TTML::CTTMLMenu::Destroy();
        m_video.Destroy();
        MainLoopTest::TearDown();
    }

    static TTML::CTTMLMenu* Menu() { return TTML::CTTMLMenu::GetInstance(); }

    // Captions on, banner up and the viewer's division mode, read by the menu;
    // then division allowed.
    static void SetDivision(int mode)
    {
        ASSERT_EQ(0, vconf_set_int("db/menu/caption/caption", 1));
        ASSERT_EQ(0, vconf_set_bool("memory/tv-viewer/infobanner/ttml", 1));
        ASSERT_EQ(0, vconf_set_int("db/menu/caption/captiondivisionmode", mode));
        Menu()->ReadMenuData();
        Menu()->SetCaptionDivisionMode(false);
    }

    // Runs the main loop until done() holds (polled on the loop).
    bool RunUntil(std::function<bool()> done)
    {
        m_done = std::move(done);
        Ecore_Timer* pPoll = ecore_timer_add(0.005, [](void* p) -> Eina_Bool {
            if (!static_cast<MenuTest*>(p)->m_done())
                return ECORE_CALLBACK_RENEW;
            ecore_main_loop_quit();
            return ECORE_CALLBACK_CANCEL;
        }, this);
        const bool quit = RunLoop(20.0);
        if (!quit)
            ecore_timer_del(pPoll);
        return quit;
    }

    static void Count_Cb(void* data) { ++*static_cast<int*>(data); }

    TTML::CVideoWindow m_video;
    LogCapture m_log;
    int m_notified = 0;
    std::function<bool()> m_done;
};

#endif
