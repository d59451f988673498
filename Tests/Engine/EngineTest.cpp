// The presentation engine on a real Ecore main loop: what is drawn and
// removed, and at which media time, against a media clock that either runs
// in real time or is held at a scripted position.
#include "DocumentLedger.h"
#include "../Graphics/MainLoopFixture.h"

#include "CEngine.h"
#include "CMainThreadUtils.h"
#include "CMediaClock.h"
#include "CTTMLMenu.h"
#include "CaptionDivisionDriver.h"
#include "DrawRecorder.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <future>
#include <thread>

using namespace TTML;

namespace {

// Each drawing ("D<begin>") and removal ("R<begin>") with the media time it
// happened at and the number of documents freed by then.
struct Stamp {
    std::string what;
    long long at;
    int freed;
};

class MediaRecorder : public DrawRecorder {
public:
    MediaRecorder(const CMediaClock* pClock, DocumentLedger* pLedger) : m_pClock(pClock), m_pLedger(pLedger) {}

    void OnDrawEvent(Kind kind, const void* object, const std::string& text) override
    {
        if (kind == REGION_SHOWN || kind == PARAGRAPH_GONE) {
            long long now = -1;
            m_pClock->Now(now);
            int freed = 0;
            for (int n : m_pLedger->Counts())
                freed += n;
            std::lock_guard<std::mutex> guard(m_lock);
            m_stamps.push_back({(kind == REGION_SHOWN ? "D" : "R") + text, now, freed});
        }
        DrawRecorder::OnDrawEvent(kind, object, text);
    }

    std::vector<Stamp> Stamps() const
    {
        std::lock_guard<std::mutex> guard(m_lock);
        return m_stamps;
    }

private:
    const CMediaClock* m_pClock;
    DocumentLedger* m_pLedger;
    mutable std::mutex m_lock;
    std::vector<Stamp> m_stamps;
};

// Tests that judge media times run with the resynchronising mode: a timer may
// expire a little before its media time (Ecore counts from the start of the
// loop iteration that armed it), and that mode re-arms any expiry more than
// this many ms early.
const int kResyncMode = 64;
const long long kEarlyMs = 10;

class EngineTest : public MainLoopTest {
public:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        m_pEngine = new CEngine(m_pGraphics, [this](long long* pTime) { return m_clock.Now(*pTime); });
    }

    void TearDown() override
    {
        if (m_pEngine) {
            m_pEngine->Destroy();
            delete m_pEngine;
        }
        CTTMLMenu::Destroy();
        MainLoopTest::TearDown();
    }

    void Init(int mode = 0, bool bandMode = false)
    {
        ASSERT_TRUE(m_pEngine->Initialize(mode));
        ASSERT_TRUE(m_pEngine->Start(bandMode));
    }

    // Holds the media clock at ms from now on; the loop no longer starts it.
    void Hold(long long ms)
    {
        m_autoStart = false;
        if (m_clock.IsStopped()) {
            m_clock.Start();
            m_clock.Pause();
        }
        m_clock.Seek(ms);
    }

    // Runs the loop until done() holds. A clock not held starts at the first
    // poll, so that a slow start of the loop on a busy machine does not eat
    // into the documents' intervals.
    bool RunUntil(std::function<bool()> done)
    {
        return MainLoopTest::RunUntil([this, done] {
            if (m_autoStart && m_clock.IsStopped())
                m_clock.Start();
            long long now = 0;
            m_clock.Now(now);
            for (Scheduled& s : m_scheduled) {
                if (!s.done && now >= s.atMs) {
                    s.done = true;
                    s.fn();
                }
            }
            return done();
        }, 10.0);
    }

    // Runs fn on the loop once the media clock reaches atMs.
    void At(long long atMs, std::function<void()> fn) { m_scheduled.push_back({atMs, std::move(fn), false}); }

    void Queue(std::vector<Span> spans, long long timeStamp = 0)
    {
        ASSERT_TRUE(m_pEngine->AddToQueue(MakeDocument(m_ledger, spans, timeStamp)));
    }

    // Drawings and removals since the log was last cleared, as the engine reports them.
    int Draws() const
    {
        return m_log.CountContaining("rendering done for pointer") + m_log.Count("m_OnTextRender failed");
    }
    // Armed (or handled at once, when late) for a document time.
    bool Armed(unsigned long long time) const
    {
        return m_log.HasContaining("synched timer for time=[" + std::to_string(time) + "]");
    }
    // Requests waiting for the main loop; idle when none.
    static std::size_t Pending() { return CMainThreadUtils::GetInstance()->GetPendingCount(); }
    static bool Idle() { return Pending() == 0; }

    LogCapture m_log;
    CEngine* m_pEngine = nullptr;
    CMediaClock m_clock;
    DocumentLedger m_ledger;
    MediaRecorder m_drawn{&m_clock, &m_ledger};

private:
    struct Scheduled {
        long long atMs;
        std::function<void()> fn;
        bool done;
    };

    bool m_autoStart = true;
    std::vector<Scheduled> m_scheduled;
};

// --- Schedules played in real time --------------------------------------------------

struct QueuedDocument {
    long long atMs;  // media time at which it is queued
    std::vector<Span> spans;
};

struct PlayCase {
    const char* name;
    std::vector<QueuedDocument> documents;
    // Expected draws and removals in order, each with the media time before
    // which it must not happen ("D100@100": 100 drawn, not before 100 ms).
    std::vector<std::string> trace;
    const char* log;        // a message that must appear, or ""
    long long pauseAt = 0;  // paused there for 400 ms of wall time, then resumed
};

class Play : public EngineTest, public ::testing::WithParamInterface<PlayCase> {};

TEST_P(Play, DrawsAndRemovesInOrder)
{
    const PlayCase& c = GetParam();
    Init(kResyncMode);
    for (const QueuedDocument& d : c.documents)
        At(d.atMs, [this, &d] { Queue(d.spans); });
    std::function<void()> resume = [this] {
        m_clock.Resume();
        m_pEngine->Resume();
    };
    if (c.pauseAt) {
        At(c.pauseAt, [this, &resume] {
            m_clock.Pause();
            m_pEngine->Pause();
            After(0.4, &resume);
        });
    }
    ASSERT_TRUE(RunUntil([&] { return m_drawn.Stamps().size() >= c.trace.size(); }));
    std::vector<Stamp> stamps = m_drawn.Stamps();
    ASSERT_EQ(c.trace.size(), stamps.size()) << m_log.Dump();
    for (std::size_t i = 0; i < stamps.size(); ++i) {
        const std::size_t at = c.trace[i].find('@');
        EXPECT_EQ(c.trace[i].substr(0, at), stamps[i].what) << i;
        EXPECT_GE(stamps[i].at, std::stoll(c.trace[i].substr(at + 1)) - kEarlyMs) << c.trace[i];
    }
    EXPECT_TRUE(!*c.log || m_log.Has(c.log)) << c.log;
    EXPECT_EQ(0, m_drawn.Live());
    EXPECT_EQ(0, m_drawn.Rejected());
}

INSTANTIATE_TEST_SUITE_P(
    Engine, Play,
    ::testing::Values(
        // The later paragraph comes first in the document: the media clock decides.
        PlayCase{"DocumentOrderIsNotTimeOrder", {{0, {{400, 500}, {100, 250}}}},
                 {"D100@100", "R100@250", "D400@400", "R400@500"}, ""},
        // One expiry removes one and draws the next.
        PlayCase{"BackToBack", {{0, {{100, 200}, {200, 300}, {300, 400}}}},
                 {"D100@100", "R100@200", "D200@200", "R200@300", "D300@300", "R300@400"}, ""},
        // The second document starts inside the first: the first ends there.
        PlayCase{"OverlappingDocuments", {{0, {{100, 500}}}, {150, {{250, 350}}}},
                 {"D100@100", "R100@250", "D250@250", "R250@350"},
                 "Restricting previous subtitle endTime(500) till the beginTime(250) of new."},
        // A later document is filed from the engine thread; the armed timer reaches it.
        PlayCase{"LaterDocument", {{0, {{100, 250}}}, {150, {{300, 380}}}},
                 {"D100@100", "R100@250", "D300@300", "R300@380"}, "Data added through worker thread!"},
        // Queued at 200 ms: the first interval is over, the second is shown at once.
        PlayCase{"LateIntervals", {{200, {{20, 80}, {120, 300}, {350, 420}}}},
                 {"R20@200", "D120@200", "R120@300", "D350@350", "R350@420"},
                 "Current time is greater than the end time of subtitle; returning!!!"},
        // Paused while shown, well past the end of the interval: media time
        // runs only outside the pause, so it is not taken off before 250.
        PlayCase{"PauseHoldsWhatIsShown", {{0, {{50, 250}}}}, {"D50@50", "R50@250"}, "", 100}),
    TTMLTest::RowName());

// Removing a segment frees the kept segments that ended by then, as long as
// more than two are kept.
TEST_F(EngineTest, BandModeFreesEndedSegmentsBeyondTheLastTwo)
{
    Init(0, true);
    At(0, [this] {
        for (unsigned long long begin : {100ULL, 150ULL, 200ULL, 250ULL})
            Queue({{begin, begin + 50}});
    });
    ASSERT_TRUE(RunUntil([&] { return m_drawn.Count(IDrawObserver::PARAGRAPH_GONE) == 4; }));
    std::vector<int> freedAtRemoval;
    for (const Stamp& s : m_drawn.Stamps())
        if (s.what[0] == 'R')
            freedAtRemoval.push_back(s.freed);
    EXPECT_EQ((std::vector<int>{1, 2, 2, 2}), freedAtRemoval) << "a segment ending at the removal goes with it";
    m_pEngine->Destroy();
    EXPECT_EQ((std::vector<int>{1, 1, 1, 1}), m_ledger.Counts());
}

// --- Seek, pause and documents that arrive at awkward times (held media time) ----------

// Seek positions are media times; a document's intervals are in its own time
// (media time + time stamp). Only the interval holding the position and later
// ones are shown again.
TEST_F(EngineTest, SeekReplaysFromTheIntervalHoldingTheDocumentTime)
{
    Hold(0);
    Init();
    Queue({{50, 200}, {200, 500}, {500, 800}}, -1000);
    ASSERT_TRUE(RunUntil([&] { return Armed(50); }));
    m_log.Clear();
    m_pEngine->SeekStart(1250);
    m_clock.Seek(1250);
    m_pEngine->SeekCompleted();
    // Document time 250 lies in [200, 500]: drawn at once, then 500 is next.
    ASSERT_TRUE(RunUntil([&] { return Armed(500) && Idle(); }));
    EXPECT_TRUE(Armed(200)) << m_log.Dump();
    EXPECT_FALSE(Armed(50));
    EXPECT_EQ(1, Draws());
    EXPECT_EQ(std::vector<int>{0}, m_ledger.Counts()) << "the replayed document is still kept";
}

// Media time 100 when paused; the viewer must see nothing new until resume,
// whichever way the timer is rebuilt meanwhile.
struct PauseCase {
    const char* name;
    std::vector<Span> before;  // scheduled before the pause
    bool seek;                 // seek to 200 while paused
    std::vector<Span> during;  // arrives while paused
};

class PauseHolds : public EngineTest, public ::testing::WithParamInterface<PauseCase> {};

TEST_P(PauseHolds, NothingIsDrawnOrRemovedUntilResume)
{
    const PauseCase& c = GetParam();
    Hold(100);
    Init();
    if (!c.before.empty()) {
        Queue(c.before);
        ASSERT_TRUE(RunUntil([&] { return Armed(c.before.front().first); }));
    }
    m_pEngine->Pause();
    ASSERT_TRUE(RunUntil(Idle));
    m_log.Clear();
    if (c.seek) {
        m_pEngine->SeekStart(200);
        m_clock.Seek(200);
        m_pEngine->SeekCompleted();
    }
    if (!c.during.empty())
        Queue(c.during);
    const unsigned long long next = c.during.empty() ? 150 : c.during.front().first;
    ASSERT_TRUE(RunUntil([&] { return Armed(next) && Idle(); }));
    EXPECT_EQ(0, Draws()) << m_log.Dump();
    EXPECT_EQ(0, m_log.CountContaining("Remove text for pTRenderingInfo"));

    m_pEngine->Resume();
    ASSERT_TRUE(RunUntil([&] { return Draws() > 0; }));
    EXPECT_EQ(1, Draws());
}

INSTANTIATE_TEST_SUITE_P(Engine, PauseHolds,
                         ::testing::Values(PauseCase{"LateDocument", {}, false, {{60, 300}}},
                                           PauseCase{"CuttingDocument", {{5000, 6000}}, false, {{60, 300}}},
                                           PauseCase{"Seek", {{150, 600}}, true, {}}),
                         TTMLTest::RowName());

// Out of band a document may arrive before playback starts; it waits for the
// media time instead of being dropped.
TEST_F(EngineTest, DocumentBeforeTheMediaTimeIsArmedOnceItExists)
{
    Init();
    Hold(0);
    m_clock.Stop();
    Queue({{100, 500}, {600, 900}});
    ASSERT_TRUE(RunUntil([&] { return m_log.Has("No media time yet; schedule kept") && Idle(); }));
    EXPECT_EQ(0, Draws());
    EXPECT_FALSE(m_log.HasContaining("Updating for next subtitle failed"));

    Hold(200);
    m_pEngine->Start(false);
    ASSERT_TRUE(RunUntil([&] { return Armed(600); }));
    EXPECT_TRUE(Armed(100));
    EXPECT_EQ(1, Draws()) << "[100, 500] is drawn at 200";
}

// A seek completes while a newer document is still being filed: the newer one
// must survive and the older one go, not the other way round.
TEST_F(EngineTest, NewestDocumentWinsASeek)
{
    Hold(0);
    Init();
    // Document 0: ahead of the clock, so its records wait in the schedule.
    Queue({{1000, 2000}, {3000, 4000}});
    ASSERT_TRUE(RunUntil([&] { return m_log.Has("Data added through worker thread!") && Idle(); }));
    auto step = [&] {
        // Document 1 overlaps; without a media time no timer is armed, so
        // each of its records waits for this loop: it is still being filed
        // when the seek completes.
        m_clock.Stop();
        Queue({{500, 600}, {700, 800}, {900, 950}});
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

// --- Reset and destroy against a blocked engine thread ---------------------------------

struct BlockedCase {
    const char* name;
    bool reset;                // reset from another thread; otherwise destroy on the main loop
    std::size_t pendingCalls;  // requests waiting on the main loop before it goes on
};

class Blocked : public EngineTest, public ::testing::WithParamInterface<BlockedCase> {};

TEST_P(Blocked, ReleasesTheEngineThreadWithoutDeadlock)
{
    const BlockedCase& c = GetParam();
    Init();
    // Holds the main loop until the engine thread waits in its synchronous
    // call (and, for the reset, behind the reset request).
    bool reached = false;
    std::function<void()> block = [&] {
        std::thread([&] {
            if (c.reset)
                m_pEngine->Reset();
            Queue({{0, 5000}, {5000, 6000}});
            Queue({{6000, 7000}});  // waits on the queue meanwhile
        }).join();
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(3);
        while (!(reached = Pending() >= c.pendingCalls && m_log.HasContaining("Sending to main loop.")) &&
               std::chrono::steady_clock::now() < limit)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        if (!c.reset)
            m_pEngine->Destroy();
    };
    After(0.01, &block);
    ASSERT_TRUE(RunUntil([&] { return c.reset ? m_log.Has("Engine reset done") : reached; }));
    ASSERT_TRUE(reached) << m_log.Dump();
    EXPECT_EQ((std::vector<int>{1, 1}), m_ledger.Counts());
    EXPECT_EQ(0, m_drawn.Live());
    if (c.reset) {
        EXPECT_EQ(0, m_drawn.Count(IDrawObserver::REGION_SHOWN));
        // Still in service: the next document is shown.
        Queue({{0, 5000}});
        ASSERT_TRUE(RunUntil([&] { return m_drawn.Count(IDrawObserver::REGION_SHOWN) == 1; }));
    }
}

INSTANTIATE_TEST_SUITE_P(Engine, Blocked,
                         ::testing::Values(BlockedCase{"ResetFromAnotherThread", true, 2},
                                           BlockedCase{"DestroyOnTheMainLoop", false, 1}),
                         TTMLTest::RowName());

// --- Menu changes and flashing ----------------------------------------------------------

struct MenuCase {
    const char* name;
    std::vector<Span> spans;  // queued at 0; the notification comes at 100 ms, once they are armed
    const char* message;
    int draws;  // drawings at the end, the redraw included
};

class MenuChange : public EngineTest, public ::testing::WithParamInterface<MenuCase> {};

// The division changes on the source's thread while the main loop waits for
// that thread (a source being stopped joins it): the engine must not wait for
// the main loop there, and still redraws what is shown on the loop later.
TEST_P(MenuChange, RedrawsWhatIsShownWithoutWaitingForTheLoop)
{
    const MenuCase& c = GetParam();
    Init();
    if (!c.spans.empty())
        At(0, [this, &c] { Queue(c.spans); });
    bool due = false, notified = false, joined = false;
    At(100, [&due] { due = true; });
    auto notify = [&] {
        AllowCaptionDivision();
        std::packaged_task<void()> toggle([] { ToggleCaptionDivision(); });
        std::future<void> done = toggle.get_future();
        std::thread source(std::move(toggle));
        // A deadlock guard, not a time limit: a waiting listener never returns.
        joined = done.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
        if (joined)
            source.join();
        else
            source.detach();  // released once the loop runs again
    };
    ASSERT_TRUE(RunUntil([&] {
        if (!notified && due && (c.spans.empty() || Armed(c.spans[0].first))) {
            notified = true;
            notify();
        }
        return notified && m_log.Has(c.message) && Idle();
    }));
    EXPECT_TRUE(joined) << "the listener waited for the main loop";
    EXPECT_EQ(c.draws, m_drawn.Count(IDrawObserver::REGION_SHOWN));
    EXPECT_EQ(c.spans.empty() ? 0 : 1, m_drawn.Live()) << "the old renderer is replaced";
}

INSTANTIATE_TEST_SUITE_P(
    Engine, MenuChange,
    ::testing::Values(MenuCase{"NothingArmed", {}, "No subtitle is on screen!", 0},
                      MenuCase{"ArmedNotShown", {{60000, 70000}}, "It seems no subtitle on screen!", 0},
                      MenuCase{"Shown", {{20, 1000}}, "Subtitles on screen update after menu change!", 2}),
    TTMLTest::RowName());

struct FlashCase {
    const char* name;
    long long queuedAt;  // [50, 1000] is late when this is past 50
};

class Flashing : public EngineTest, public ::testing::WithParamInterface<FlashCase> {};

TEST_P(Flashing, RecordIsRedrawnEveryFlashInterval)
{
    // Blinking text from the caption settings (TearDown's menu reset undoes it).
    CTTMLMenu::GetInstance()->GetTTMLMenuData()->status = 1;
    CTTMLMenu::GetInstance()->GetTTMLMenuData()->fontOpacity = 1;
    Init(kResyncMode);
    At(GetParam().queuedAt, [this] { Queue({{50, 1000}}); });
    ASSERT_TRUE(RunUntil([&] { return m_drawn.Count(IDrawObserver::PARAGRAPH_GONE) == 1; }));
    std::vector<long long> drawn, removed;
    for (const Stamp& s : m_drawn.Stamps())
        (s.what[0] == 'D' ? drawn : removed).push_back(s.at);
    // Redrawn every 300 ms while 300 ms remain: at most 50, 350, 650, 950.
    ASSERT_GE(drawn.size(), 1u);
    EXPECT_LE(drawn.size(), 4u);
    EXPECT_GE(drawn[0], 50 - kEarlyMs);
    // Flashing is decided just after the drawing; with a wide margin there
    // is time left to flash.
    if (drawn[0] <= 400) {
        EXPECT_GE(drawn.size(), 2u) << "drawn once with time left to flash";
    }
    // Paced by the flash period, in order; the gap itself depends on how long
    // a drawing took, so it is not judged.
    for (std::size_t i = 1; i < drawn.size(); ++i)
        EXPECT_LT(drawn[i - 1], drawn[i]) << i;
    ASSERT_EQ(1u, removed.size());
    EXPECT_GE(removed[0], 1000 - kEarlyMs);
}

INSTANTIATE_TEST_SUITE_P(Engine, Flashing, ::testing::Values(FlashCase{"OnTime", 0}, FlashCase{"Late", 200}),
                         TTMLTest::RowName());

}  // namespace
