// The presentation engine against a scripted media clock: playback
// notifications and listeners that arrive from other threads.
#include "DocumentLedger.h"
#include "../Graphics/MainLoopFixture.h"

#include "CEngine.h"
#include "CMainThreadUtils.h"
#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "CaptionDivisionDriver.h"
#include "LogCapture.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace TTML;

namespace {

class EnginePlayback : public MainLoopTest {
public:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        m_pEngine = new CEngine(m_pGraphics, [this](long long* pTime) {
            *pTime = m_mediaTime;
            return m_haveTime.load();
        });
        ASSERT_TRUE(m_pEngine->Initialize(0));
        ASSERT_TRUE(m_pEngine->Start(false));
    }

    void TearDown() override
    {
        m_pEngine->Destroy();
        delete m_pEngine;
        CTTMLMenu::Destroy();
        MainLoopTest::TearDown();
    }

    // Drawings and removals so far, as the engine reports them.
    int Draws() const
    {
        return m_log.CountContaining("rendering done for pointer") + m_log.Count("m_OnTextRender failed");
    }
    int Removals() const { return m_log.CountContaining("Remove text for pTRenderingInfo"); }
    // Armed (or handled at once, when late) for a document time.
    bool Armed(unsigned long long time) const
    {
        return m_log.HasContaining("synched timer for time=[" + std::to_string(time) + "]");
    }
    // Every main-loop request has run.
    static bool Idle() { return CMainThreadUtils::GetInstance()->GetPendingCount() == 0; }

    // Runs the main loop until done() holds, polling it on the loop.
    template <typename F>
    bool RunUntil(F done)
    {
        m_poll = [done] { return done(); };
        Ecore_Timer* pPoll = ecore_timer_add(0.005, Poll_Cb, this);
        bool quit = RunLoop();
        if (!quit)
            ecore_timer_del(pPoll);
        return quit;
    }

    LogCapture m_log;
    CEngine* m_pEngine = nullptr;
    std::atomic<long long> m_mediaTime{0};
    std::atomic<bool> m_haveTime{true};
    DocumentLedger m_ledger;

private:
    static Eina_Bool Poll_Cb(void* data)
    {
        if (!static_cast<EnginePlayback*>(data)->m_poll())
            return ECORE_CALLBACK_RENEW;
        Quit();
        return ECORE_CALLBACK_CANCEL;
    }

    std::function<bool()> m_poll;
};

// A caption division change notified on the source's thread while the main
// loop waits for that thread (a source being stopped joins it): the engine
// must not wait for the main loop there, and still redraws on the loop later.
TEST_F(EnginePlayback, MenuChangeOffTheMainLoopDoesNotWaitForIt)
{
    LogCapture log;
    m_pEngine->AddToQueue(MakeDocument(m_ledger, {{60000, 70000}}));
    ASSERT_TRUE(RunUntil([&] { return log.HasContaining("synched timer for time=[60000]"); }));

    bool joined = false;
    auto step = [&] {
        AllowCaptionDivision();
        // As the controller's show does: the division changes on the source's thread.
        std::packaged_task<void()> notify([] { ToggleCaptionDivision(); });
        std::future<void> done = notify.get_future();
        std::thread source(std::move(notify));
        // A deadlock guard, not a time limit: a waiting listener never returns.
        joined = done.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
        if (joined)
            source.join();
        else
            source.detach();  // released once the loop runs again
    };
    After(0.0, &step);
    ASSERT_TRUE(RunUntil([&] { return log.Has("It seems no subtitle on screen!"); }));
    EXPECT_TRUE(joined) << "the listener waited for the main loop";
}

// Media time 100 when paused; the viewer must see nothing new until resume,
// whichever way the timer is rebuilt meanwhile.
struct PauseCase {
    const char* name;
    std::vector<Span> before;  // scheduled before the pause
    bool seek;                 // seek to 200 while paused
    std::vector<Span> during;  // arrives while paused
};

void PrintTo(const PauseCase& c, std::ostream* os)
{
    *os << c.name;
}

class PauseHolds : public EnginePlayback, public ::testing::WithParamInterface<PauseCase> {};

TEST_P(PauseHolds, NothingIsDrawnOrRemovedUntilResume)
{
    const PauseCase& c = GetParam();
    m_mediaTime = 100;
    if (!c.before.empty()) {
        m_pEngine->AddToQueue(MakeDocument(m_ledger, c.before));
        ASSERT_TRUE(RunUntil([&] { return Armed(c.before.front().first); }));
    }
    m_pEngine->Pause();
    ASSERT_TRUE(RunUntil(Idle));
    m_log.Clear();
    if (c.seek) {
        m_pEngine->SeekStart(200);
        m_mediaTime = 200;
        m_pEngine->SeekCompleted();
    }
    if (!c.during.empty())
        m_pEngine->AddToQueue(MakeDocument(m_ledger, c.during));
    const unsigned long long next = c.during.empty() ? 150 : c.during.front().first;
    ASSERT_TRUE(RunUntil([&] { return Armed(next) && Idle(); }));
    EXPECT_EQ(0, Draws()) << m_log.Dump();
    EXPECT_EQ(0, Removals());

    m_pEngine->Resume();
    ASSERT_TRUE(RunUntil([&] { return Draws() > 0; }));
    EXPECT_EQ(1, Draws());
}

INSTANTIATE_TEST_SUITE_P(Engine, PauseHolds,
                         ::testing::Values(PauseCase{"LateDocument", {}, false, {{60, 300}}},
                                           PauseCase{"CuttingDocument", {{5000, 6000}}, false, {{60, 300}}},
                                           PauseCase{"Seek", {{150, 600}}, true, {}}),
                         [](const ::testing::TestParamInfo<PauseCase>& info) {
                             return std::string(info.param.name);
                         });

// Seek positions are media times; a document's intervals are in its own time
// (media time + time stamp).
TEST_F(EnginePlayback, SeekLandsInTheIntervalOfTheDocumentTime)
{
    m_pEngine->AddToQueue(MakeDocument(m_ledger, {{200, 500}, {500, 800}}, -1000));
    ASSERT_TRUE(RunUntil([&] { return Armed(200); }));
    m_log.Clear();
    m_pEngine->SeekStart(1250);
    m_mediaTime = 1250;
    m_pEngine->SeekCompleted();
    // Document time 250 lies in [200, 500]: drawn at once, then 500 is next.
    ASSERT_TRUE(RunUntil([&] { return Armed(500) && Idle(); }));
    EXPECT_TRUE(Armed(200)) << m_log.Dump();
    EXPECT_EQ(1, Draws());
}

// Out of band a document may arrive before playback starts; it waits for the
// media time instead of being dropped.
TEST_F(EnginePlayback, DocumentBeforeTheMediaTimeIsArmedOnceItExists)
{
    m_haveTime = false;
    m_pEngine->AddToQueue(MakeDocument(m_ledger, {{100, 500}, {600, 900}}));
    ASSERT_TRUE(RunUntil([&] { return m_log.Has("No media time yet; schedule kept") && Idle(); }));
    EXPECT_EQ(0, Draws());
    EXPECT_FALSE(m_log.HasContaining("Updating for next subtitle failed"));

    m_mediaTime = 200;
    m_haveTime = true;
    m_pEngine->Start(false);
    ASSERT_TRUE(RunUntil([&] { return Armed(600); }));
    EXPECT_TRUE(Armed(100));
    EXPECT_EQ(1, Draws()) << "[100, 500] is drawn at 200";
}

// A seek completes while a newer document is still being filed: the newer one
// must survive and the older one go, not the other way round.
TEST_F(EnginePlayback, NewestDocumentWinsASeek)
{
    // Document 0: ahead of the clock, so its records wait in the schedule.
    m_pEngine->AddToQueue(MakeDocument(m_ledger, {{1000, 2000}, {3000, 4000}}));
    ASSERT_TRUE(RunUntil([&] { return m_log.Has("Data added through worker thread!") && Idle(); }));
    auto step = [&] {
        // Document 1 overlaps; without a media time no timer is armed, so
        // each of its records waits for this loop: it is still being filed
        // when the seek completes.
        m_haveTime = false;
        m_pEngine->AddToQueue(MakeDocument(m_ledger, {{500, 600}, {700, 800}, {900, 950}}));
        while (Idle())
            std::this_thread::yield();
        m_pEngine->SeekStart(0);
        m_pEngine->SeekCompleted();
    };
    After(0.0, &step);
    ASSERT_TRUE(RunUntil([&] {
        std::vector<int> freed = m_ledger.Counts();
        return freed[0] + freed[1] > 0 && Idle();
    }));
    EXPECT_EQ((std::vector<int>{1, 0}), m_ledger.Counts());
}

}  // namespace
