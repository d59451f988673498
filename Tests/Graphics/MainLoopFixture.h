#ifndef INTERTITLE_TESTS_GRAPHICS_MAINLOOPFIXTURE_H
#define INTERTITLE_TESTS_GRAPHICS_MAINLOOPFIXTURE_H

#include "CHeadlessCanvas.h"
#include "IGraphics.h"

#include <Ecore.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>

// A 1920x1080 headless canvas with its base layout, a graphics object
// initialised over it, and a way to run the Ecore main loop on the test thread
// until a test quits it. Two watchdogs keep a broken test from hanging: an
// Ecore timer that fails the test and quits the loop, and a thread that aborts
// the program when the main loop itself is blocked.
class MainLoopTest : public ::testing::Test {
public:
    void SetUp() override
    {
        ASSERT_TRUE(m_canvas.Initialize(1920, 1080));
        m_pGraphics = TTML::IGraphics::Create();
        ASSERT_NE(nullptr, m_pGraphics);
        ASSERT_TRUE(m_pGraphics->Initialize(m_canvas.GetBaseLayout()));
    }

    void TearDown() override
    {
        DestroyGraphics();
        m_canvas.Destroy();
    }

    void DestroyGraphics()
    {
        if (m_pGraphics)
            m_pGraphics->Destroy();
        m_pGraphics = nullptr;
    }

    // Runs the main loop until Quit/QuitFromAnyThread. False (and a test
    // failure) when the soft limit was reached instead.
    bool RunLoop(double softLimitSeconds = 30.0)
    {
        m_bTimedOut = false;
        Ecore_Timer* pWatchdog = ecore_timer_add(softLimitSeconds, [](void* data) -> Eina_Bool {
            static_cast<MainLoopTest*>(data)->m_bTimedOut = true;
            ADD_FAILURE() << "main loop watchdog: the test did not quit the loop";
            ecore_main_loop_quit();
            return ECORE_CALLBACK_CANCEL;
        }, this);
        std::mutex lock;
        std::condition_variable cond;
        bool done = false;
        std::thread hard([&] {
            std::unique_lock<std::mutex> guard(lock);
            if (!cond.wait_for(guard, std::chrono::duration<double>(softLimitSeconds + 10.0), [&] { return done; })) {
                fprintf(stderr, "watchdog: the main loop is blocked\n");
                std::abort();
            }
        });
        ecore_main_loop_begin();
        {
            std::lock_guard<std::mutex> guard(lock);
            done = true;
        }
        cond.notify_all();
        hard.join();
        if (!m_bTimedOut)
            ecore_timer_del(pWatchdog);
        return !m_bTimedOut;
    }

    // Runs the main loop until done() holds, polled on the loop every 5 ms.
    bool RunUntil(std::function<bool()> done, double softLimitSeconds = 20.0)
    {
        Ecore_Timer* pPoll = ecore_timer_add(0.005, [](void* p) -> Eina_Bool {
            if (!(*static_cast<std::function<bool()>*>(p))())
                return ECORE_CALLBACK_RENEW;
            Quit();
            return ECORE_CALLBACK_CANCEL;
        }, &done);
        const bool quit = RunLoop(softLimitSeconds);
        if (!quit)
            ecore_timer_del(pPoll);
        return quit;
    }

    // Main loop only.
    static void Quit() { ecore_main_loop_quit(); }

    static void QuitFromAnyThread()
    {
        ecore_main_loop_thread_safe_call_async([](void*) { ecore_main_loop_quit(); }, nullptr);
    }

    // Runs fn on the main loop `seconds` after the loop starts (once).
    template <typename F>
    static void After(double seconds, F* fn)
    {
        ecore_timer_add(seconds, [](void* p) -> Eina_Bool {
            (*static_cast<F*>(p))();
            return ECORE_CALLBACK_CANCEL;
        }, fn);
    }

    TTML::CHeadlessCanvas m_canvas;
    TTML::IGraphics* m_pGraphics = nullptr;

private:
    bool m_bTimedOut = false;
};

#endif
