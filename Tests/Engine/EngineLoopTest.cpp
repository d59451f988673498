// The presentation engine on a real Ecore main loop against a media clock
// running in real time: what is drawn and removed, and when, through the
// regions the graphics component shows and paragraphs it gives back.
#include "DocumentLedger.h"
#include "../Graphics/MainLoopFixture.h"

#include "CEngine.h"
#include "DrawRecorder.h"
#include "CMainThreadUtils.h"
#include "CMediaClock.h"
#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "CaptionDivisionDriver.h"
#include "LogCapture.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace TTML;

namespace {

// Also stamps each draw and removal with the media time it happened at.
class MediaRecorder : public DrawRecorder {
public:
    explicit MediaRecorder(const CMediaClock* pClock) : m_pClock(pClock) {}

    void OnDrawEvent(Kind kind, const void* object, const std::string& text) override
    {
        long long now = -1;
        m_pClock->Now(now);
        {
            std::lock_guard<std::mutex> guard(m_lock);
            if (kind == REGION_SHOWN || kind == PARAGRAPH_GONE)
                m_timed.emplace_back((kind == REGION_SHOWN ? "D" : "R") + text, now);
        }
        DrawRecorder::OnDrawEvent(kind, object, text);
    }

    // Trace() with the media time of each entry.
    std::vector<std::pair<std::string, long long>> Timed() const
    {
        std::lock_guard<std::mutex> guard(m_lock);
        return m_timed;
    }

private:
    const CMediaClock* m_pClock;
    mutable std::mutex m_lock;
    std::vector<std::pair<std::string, long long>> m_timed;
};

// Tests that judge media times run with the resynchronising mode: a timer may
// expire a little before its media time (Ecore counts from the start of the
// loop iteration that armed it), and that mode re-arms any expiry more than
// this many ms early.
const int kResyncMode = 64;
const long long kEarlyMs = 10;

class EngineLoop : public MainLoopTest {
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
            m_pEngine = nullptr;
        }
        CTTMLMenu::Destroy();
        MainLoopTest::TearDown();
    }

    void Init(int mode = 0, bool bandMode = false)
    {
        ASSERT_TRUE(m_pEngine->Initialize(mode));
        ASSERT_TRUE(m_pEngine->Start(bandMode));
    }

    // Runs the loop until done() holds (polled on the loop every 5 ms). The
    // media clock starts at the first poll, so that a slow start of the loop
    // on a busy machine does not eat into the documents' intervals.
    bool RunUntil(std::function<bool()> done, double softLimitSeconds = 5.0)
    {
        m_done = std::move(done);
        Ecore_Timer* pPoll = ecore_timer_add(0.005, Poll_Cb, this);
        bool quit = RunLoop(softLimitSeconds);
        if (!quit)
            ecore_timer_del(pPoll);
        return quit;
    }

    // Runs fn on the loop once the media clock reaches atMs.
    void At(long long atMs, std::function<void()> fn) { m_scheduled.push_back({atMs, std::move(fn), false}); }

    long long MediaNow()
    {
        long long now = 0;
        m_clock.Now(now);
        return now;
    }

    // "D<begin>" drawn, "R<begin>" removed (renderer destroyed), in order.
    std::vector<std::string> Trace() { return m_drawn.Trace(); }

    // Media times of the trace entries starting with `kind` ('D' or 'R').
    std::vector<long long> MediaTimes(char kind)
    {
        std::vector<long long> times;
        for (const auto& entry : m_drawn.Timed())
            if (entry.first[0] == kind)
                times.push_back(entry.second);
        return times;
    }

    CEngine* m_pEngine = nullptr;
    CMediaClock m_clock;
    DocumentLedger m_ledger;
    MediaRecorder m_drawn{&m_clock};

private:
    struct Scheduled {
        long long atMs;
        std::function<void()> fn;
        bool done;
    };

    static Eina_Bool Poll_Cb(void* data)
    {
        EngineLoop* pSelf = static_cast<EngineLoop*>(data);
        if (pSelf->m_clock.IsStopped())
            pSelf->m_clock.Start();
        const long long now = pSelf->MediaNow();
        for (Scheduled& s : pSelf->m_scheduled) {
            if (!s.done && now >= s.atMs) {
                s.done = true;
                s.fn();
            }
        }
        if (pSelf->m_done && pSelf->m_done()) {
            Quit();
            return ECORE_CALLBACK_CANCEL;
        }
        return ECORE_CALLBACK_RENEW;
    }

    std::function<bool()> m_done;
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
    std::vector<const char*> logs;     // messages that must appear
};

void PrintTo(const PlayCase& c, std::ostream* os)
{
    *os << c.name;
}

class Play : public EngineLoop, public ::testing::WithParamInterface<PlayCase> {};

TEST_P(Play, DrawsAndRemovesInOrder)
{
    const PlayCase& c = GetParam();
    LogCapture log;
    Init(kResyncMode);
    for (const QueuedDocument& d : c.documents) {
        At(d.atMs, [this, &d] { ASSERT_TRUE(m_pEngine->AddToQueue(MakeDocument(m_ledger, d.spans))); });
    }
    ASSERT_TRUE(RunUntil([&] { return Trace().size() >= c.trace.size(); }));
    std::vector<std::pair<std::string, long long>> timed = m_drawn.Timed();
    ASSERT_EQ(c.trace.size(), timed.size()) << log.Dump();
    for (std::size_t i = 0; i < timed.size(); ++i) {
        const std::string& expected = c.trace[i];
        const std::size_t at = expected.find('@');
        EXPECT_EQ(expected.substr(0, at), timed[i].first) << i;
        EXPECT_GE(timed[i].second, std::stoll(expected.substr(at + 1)) - kEarlyMs) << expected;
    }
    for (const char* message : c.logs)
        EXPECT_TRUE(log.Has(message)) << message;
    EXPECT_EQ(0, m_drawn.Live());
    EXPECT_EQ(0, m_drawn.Rejected());
}

INSTANTIATE_TEST_SUITE_P(
    Engine, Play,
    ::testing::Values(
        // The later paragraph comes first in the document: the media clock decides.
        PlayCase{"DocumentOrderIsNotTimeOrder",
                 {{0, {{400, 500}, {100, 250}}}},
                 {"D100@100", "R100@250", "D400@400", "R400@500"},
                 {}},
        // One expiry removes one and draws the next.
        PlayCase{"BackToBack",
                 {{0, {{100, 200}, {200, 300}, {300, 400}}}},
                 {"D100@100", "R100@200", "D200@200", "R200@300", "D300@300", "R300@400"},
                 {}},
        // The second document starts inside the first: the first ends there.
        PlayCase{"OverlappingDocuments",
                 {{0, {{100, 500}}}, {150, {{250, 350}}}},
                 {"D100@100", "R100@250", "D250@250", "R250@350"},
                 {"Restricting previous subtitle endTime(500) till the beginTime(250) of new."}},
        // A later document is filed from the engine thread; the armed timer reaches it.
        PlayCase{"LaterDocument",
                 {{0, {{100, 250}}}, {150, {{300, 380}}}},
                 {"D100@100", "R100@250", "D300@300", "R300@380"},
                 {"Data added through worker thread!"}},
        // Queued at 200 ms: the first interval is over, the second is shown at once.
        PlayCase{"LateIntervals",
                 {{200, {{20, 80}, {120, 300}, {350, 420}}}},
                 {"R20@200", "D120@200", "R120@300", "D350@350", "R350@420"},
                 {"Current time is greater than the end time of subtitle; returning!!!"}}),
    [](const ::testing::TestParamInfo<PlayCase>& info) { return std::string(info.param.name); });

// --- Pause and seek ---------------------------------------------------------------

TEST_F(EngineLoop, PauseHoldsWhatIsShownUntilResume)
{
    Init(kResyncMode);
    At(0, [this] { m_pEngine->AddToQueue(MakeDocument(m_ledger, {{50, 250}})); });
    // Paused at 100 ms for 400 ms of wall time, well past the end of the interval.
    bool resumed = false;
    std::function<void()> resume = [&] {
        resumed = true;
        m_clock.Resume();
        m_pEngine->Resume();
    };
    At(100, [this, &resume] {
        m_clock.Pause();
        m_pEngine->Pause();
        After(0.4, &resume);
    });
    std::size_t beforeResume = 0;
    ASSERT_TRUE(RunUntil([&] {
        if (!resumed)
            beforeResume = Trace().size();
        return Trace().size() >= 2;
    }));
    EXPECT_EQ((std::vector<std::string>{"D50", "R50"}), Trace());
    EXPECT_LE(beforeResume, 1u) << "taken off while paused";
    std::vector<long long> removed = MediaTimes('R');
    ASSERT_EQ(1u, removed.size());
    EXPECT_GE(removed[0], 250 - kEarlyMs) << "media time runs only between start and pause and after resume";
}

TEST_F(EngineLoop, SeekOutOfBandReplaysFromTheIntervalHoldingThePosition)
{
    LogCapture log;
    Init();
    At(0, [this] {
        m_pEngine->AddToQueue(
            MakeDocument(m_ledger, {{50, 150}, {150, 250}, {250, 350}, {350, 450}, {450, 550}, {550, 650}}));
    });
    At(100, [this] {
        m_clock.Seek(390);
        m_pEngine->SeekStart(390);
        m_pEngine->SeekCompleted();
    });
    ASSERT_TRUE(RunUntil([&] { return MediaNow() >= 700; }));
    std::vector<std::string> drawn;
    for (const std::string& t : Trace())
        if (t[0] == 'D')
            drawn.push_back(t);
    EXPECT_EQ((std::vector<std::string>{"D50", "D350", "D450", "D550"}), drawn) << log.Dump();
    EXPECT_EQ(0, m_drawn.Live());
    EXPECT_EQ(std::vector<int>{0}, m_ledger.Counts()) << "the replayed document is still kept";
}

TEST_F(EngineLoop, BandModeFreesEndedSegmentsBeyondTheLastTwo)
{
    Init(0, true);
    At(0, [this] {
        for (unsigned long long begin : {100ULL, 150ULL, 200ULL, 250ULL})
            m_pEngine->AddToQueue(MakeDocument(m_ledger, {{begin, begin + 50}}));
    });
    ASSERT_TRUE(RunUntil([&] { return m_drawn.Count(IDrawObserver::PARAGRAPH_GONE) == 4; }));
    // Removing the first two records found more than two segments kept.
    EXPECT_EQ((std::vector<int>{1, 1, 0, 0}), m_ledger.Counts());
    m_pEngine->Destroy();
    EXPECT_EQ((std::vector<int>{1, 1, 1, 1}), m_ledger.Counts());
}

// --- Reset and destroy against a blocked engine thread ---------------------------------

enum class Interrupt { ResetFromAnotherThread, DestroyOnTheMainLoop };

struct BlockedCase {
    const char* name;
    Interrupt interrupt;
    std::size_t pendingCalls;  // requests waiting on the main loop before it goes on
};

void PrintTo(const BlockedCase& c, std::ostream* os)
{
    *os << c.name;
}

class Blocked : public EngineLoop, public ::testing::WithParamInterface<BlockedCase> {};

TEST_P(Blocked, ReleasesTheEngineThreadWithoutDeadlock)
{
    const BlockedCase& c = GetParam();
    LogCapture log;
    Init();
    CMainThreadUtils* pUtils = CMainThreadUtils::GetInstance();
    ASSERT_NE(nullptr, pUtils);

    // Holds the main loop until the engine thread waits in its synchronous
    // call (and, for the reset, behind the reset request).
    bool reached = false;
    std::function<void()> block = [&] {
        std::thread source([&] {
            if (c.interrupt == Interrupt::ResetFromAnotherThread)
                m_pEngine->Reset();
            m_pEngine->AddToQueue(MakeDocument(m_ledger, {{0, 5000}, {5000, 6000}}));
        });
        source.join();
        const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(3);
        while (pUtils->GetPendingCount() < c.pendingCalls && std::chrono::steady_clock::now() < limit)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        reached = pUtils->GetPendingCount() >= c.pendingCalls && log.HasContaining("Sending to main loop.");
        if (c.interrupt == Interrupt::DestroyOnTheMainLoop)
            m_pEngine->Destroy();
    };
    After(0.01, &block);

    if (c.interrupt == Interrupt::ResetFromAnotherThread) {
        ASSERT_TRUE(RunUntil([&] { return log.Has("Engine reset done"); }));
        ASSERT_TRUE(reached) << log.Dump();
        EXPECT_EQ(std::vector<int>{1}, m_ledger.Counts());
        EXPECT_EQ(0, m_drawn.Live());
        EXPECT_EQ(0, m_drawn.Count(IDrawObserver::REGION_SHOWN));
        // Still in service: the next document is shown.
        ASSERT_TRUE(m_pEngine->AddToQueue(MakeDocument(m_ledger, {{0, 5000}})));
        ASSERT_TRUE(RunUntil([&] { return m_drawn.Count(IDrawObserver::REGION_SHOWN) == 1; }));
    } else {
        ASSERT_TRUE(RunUntil([&] { return reached; }));
        ASSERT_TRUE(reached) << log.Dump();
        EXPECT_EQ(std::vector<int>{1}, m_ledger.Counts());
        EXPECT_EQ(0, m_drawn.Live());
    }
}

INSTANTIATE_TEST_SUITE_P(Engine, Blocked,
                         ::testing::Values(BlockedCase{"ResetFromAnotherThread", Interrupt::ResetFromAnotherThread, 2},
                                           BlockedCase{"DestroyOnTheMainLoop", Interrupt::DestroyOnTheMainLoop, 1}),
                         [](const ::testing::TestParamInfo<BlockedCase>& info) {
                             return std::string(info.param.name);
                         });

// --- Every document freed once -----------------------------------------------------------

struct DestroyCase {
    const char* name;
    bool bandMode;
    int documents;
    long long playMs;  // how long the loop runs before the destroy; 0: not at all
};

void PrintTo(const DestroyCase& c, std::ostream* os)
{
    *os << c.name;
}

class DestroyQueued : public EngineLoop, public ::testing::WithParamInterface<DestroyCase> {};

TEST_P(DestroyQueued, FreesEveryDocumentExactlyOnce)
{
    const DestroyCase& c = GetParam();
    Init(0, c.bandMode);
    auto queue = [this, &c] {
        for (int i = 0; i < c.documents; ++i) {
            const unsigned long long begin = 20 + 40 * static_cast<unsigned long long>(i);
            m_pEngine->AddToQueue(MakeDocument(m_ledger, {{begin, begin + 30}, {begin + 30, 2000}}));
        }
    };
    if (c.playMs) {
        At(0, queue);
        ASSERT_TRUE(RunUntil([&] { return MediaNow() >= c.playMs; }));
        EXPECT_GT(m_drawn.Count(IDrawObserver::REGION_SHOWN), 0);
    } else {
        queue();
    }
    m_pEngine->Destroy();
    EXPECT_EQ(0, m_drawn.Live());
    delete m_pEngine;
    m_pEngine = nullptr;
    EXPECT_EQ(std::vector<int>(static_cast<std::size_t>(c.documents), 1), m_ledger.Counts());
}

INSTANTIATE_TEST_SUITE_P(Engine, DestroyQueued,
                         ::testing::Values(DestroyCase{"BeforeTheLoopRuns", false, 6, 0},
                                           DestroyCase{"WhilePlayingOutOfBand", false, 6, 150},
                                           DestroyCase{"WhilePlayingInBand", true, 6, 150}),
                         [](const ::testing::TestParamInfo<DestroyCase>& info) {
                             return std::string(info.param.name);
                         });

// --- Lifecycle and requests ----------------------------------------------------------------

TEST_F(EngineLoop, OnlyOneEngineIsInitialisedAtATime)
{
    Init();
    LogCapture log;
    EXPECT_FALSE(m_pEngine->Initialize(0));
    CEngine second(m_pGraphics);
    EXPECT_FALSE(second.Initialize(0));
    EXPECT_EQ(2, log.Count("Already created", DLOG_ERROR));

    m_pEngine->Destroy();
    EXPECT_TRUE(second.Initialize(0)) << "free again once the first is destroyed";
    second.Destroy();
}

struct MenuCase {
    const char* name;
    std::vector<Span> spans;  // shown at the notification (at 100 ms)
    const char* message;
    int draws;  // drawings at the end, the redraw included
};

void PrintTo(const MenuCase& c, std::ostream* os)
{
    *os << c.name;
}

class MenuChange : public EngineLoop, public ::testing::WithParamInterface<MenuCase> {};

TEST_P(MenuChange, RedrawsWhatIsShown)
{
    const MenuCase& c = GetParam();
    LogCapture log;
    Init();
    if (!c.spans.empty())
        At(0, [this, &c] { m_pEngine->AddToQueue(MakeDocument(m_ledger, c.spans)); });
    At(100, [] {
        AllowCaptionDivision();
        ToggleCaptionDivision();
    });
    ASSERT_TRUE(RunUntil([&] { return MediaNow() >= 150; }));
    EXPECT_TRUE(log.Has(c.message)) << log.Dump();
    EXPECT_EQ(c.draws, m_drawn.Count(IDrawObserver::REGION_SHOWN));
    EXPECT_EQ(c.spans.empty() ? 0 : 1, m_drawn.Live()) << "the old renderer is replaced";
}

INSTANTIATE_TEST_SUITE_P(Engine, MenuChange,
                         ::testing::Values(MenuCase{"NothingOnScreen", {}, "No subtitle is on screen!", 0},
                                           MenuCase{"Shown", {{20, 1000}}, "Subtitles on screen update after menu change!",
                                                    2}),
                         [](const ::testing::TestParamInfo<MenuCase>& info) { return std::string(info.param.name); });

class Flashing : public EngineLoop, public ::testing::WithParamInterface<long long> {};

// Queued at the parameter's media time; [50, 1000] is late when that is past 50.
TEST_P(Flashing, RecordIsRedrawnEveryFlashInterval)
{
    // Blinking text from the caption settings (TearDown's menu reset undoes it).
    CTTMLMenu::GetInstance()->GetTTMLMenuData()->status = 1;
    CTTMLMenu::GetInstance()->GetTTMLMenuData()->fontOpacity = 1;
    Init(kResyncMode);
    At(GetParam(), [this] { m_pEngine->AddToQueue(MakeDocument(m_ledger, {{50, 1000}})); });
    ASSERT_TRUE(RunUntil([&] { return m_drawn.Count(IDrawObserver::PARAGRAPH_GONE) == 1; }));
    std::vector<long long> drawn = MediaTimes('D'), removed = MediaTimes('R');
    // Redrawn every 300 ms while 300 ms remain: at most 50, 350, 650, 950.
    ASSERT_GE(drawn.size(), 1u);
    EXPECT_LE(drawn.size(), 4u);
    EXPECT_GE(drawn[0], 50 - kEarlyMs);
    // Flashing is decided just after the drawing; with a wide margin there
    // is time left to flash.
    if (drawn[0] <= 400) {
        EXPECT_GE(drawn.size(), 2u) << "drawn once with time left to flash";
    }
    // Paced by the flash period (at most four drawings above), in order; the
    // gap itself depends on how long a drawing took, so it is not judged.
    for (std::size_t i = 1; i < drawn.size(); ++i)
        EXPECT_LT(drawn[i - 1], drawn[i]) << i;
    ASSERT_EQ(1u, removed.size());
    EXPECT_GE(removed[0], 1000 - kEarlyMs);
}

INSTANTIATE_TEST_SUITE_P(Engine, Flashing, ::testing::Values(0LL, 200LL),
                         [](const ::testing::TestParamInfo<long long>& info) {
                             return info.param == 0 ? std::string("OnTime") : std::string("Late");
                         });

}  // namespace
