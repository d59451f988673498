// The engine under load, through the controller that owns it: documents from
// two threads (built directly, so that their freeing can be counted) and
// EBU-TT-D text through the parser from a third; pause, resume, seek and
// stop from two more; caption division changes from another thread and from
// the main loop; all against a media clock running in real time on a real
// Ecore main loop. Then the core is destroyed and everything must have been
// given back exactly once.
//
// Randomised and seeded: the seed is printed; INTERTITLE_STRESS_SEED repeats
// a run (thread interleaving still differs).

#include "DocumentLedger.h"
#include "../Controller/ControllerFixture.h"

#include "CMediaClock.h"
#include "CaptionDivisionDriver.h"
#include "DrawRecorder.h"
#include "LogCapture.h"
#include "RowPrinter.h"
#include "SeekNotifyData.h"
#include "SubRawData.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <thread>

using namespace TTML;
using WalkTest::ClockTime;

namespace {

// A source whose media clock runs in real time; the test threads deliver its
// messages themselves, as several source threads would.
class ClockSource : public ScriptedSource {
public:
    int GetMediaTime(long long* pTime) override { return pTime && clock.Now(*pTime) ? 0 : -1; }
    long long Now()
    {
        long long now = 0;
        clock.Now(now);
        return now;
    }

    CMediaClock clock;
};

DocumentLedger g_ledger;

// 1 to 4 paragraphs around the document time, some late.
std::vector<Span> RandomSpans(std::mt19937& rng, long long documentTime)
{
    std::vector<Span> spans;
    long long begin = std::max(1LL, documentTime - 300 + static_cast<long long>(rng() % 1500));
    for (unsigned i = 0, n = 1 + rng() % 4; i < n; ++i) {
        const long long end = begin + 40 + static_cast<long long>(rng() % 500);
        spans.emplace_back(begin, end);
        // The next has the same timings (merged by the schedule), follows back
        // to back, overlaps, or follows after a gap.
        const unsigned next = rng() % 4;
        if (next == 1)
            begin = end;
        else if (next == 2)
            begin += static_cast<long long>(rng() % static_cast<unsigned>(end - begin));
        else if (next == 3)
            begin = end + static_cast<long long>(rng() % 300);
    }
    return spans;
}

// The controller tests' EBU-TT-D document with its paragraph moved, for the parser's way in.
SubRawData* MakeXmlDocument(const Span& span, void* pCore)
{
    const std::string times = "begin=\"00:00:01.000\" end=\"00:00:03.000\"";
    SubRawData* pRaw = new SubRawData();
    pRaw->profile = 2;
    pRaw->xmlData = kEbuDocument;
    pRaw->xmlData.replace(pRaw->xmlData.find(times), times.size(),
                          "begin=\"" + ClockTime(span.first) + "\" end=\"" + ClockTime(span.second) + "\"");
    pRaw->pCore = pCore;
    return pRaw;
}

struct StressCase {
    const char* name;
    bool bandMode;
};

class EngineStress : public ControllerTest, public ::testing::WithParamInterface<StressCase> {
public:
    void SetUp() override
    {
        ControllerTest::SetUp();
        CTTMLMenu::Destroy();
        AllowCaptionDivision();
    }

    DrawRecorder m_drawn;
    ClockSource m_source;
};

constexpr auto kWorkload = std::chrono::milliseconds(5000);

TEST_P(EngineStress, EverythingIsGivenBackOnceAfterConcurrentPlaybackChanges)
{
    const char* seedText = std::getenv("INTERTITLE_STRESS_SEED");
    const unsigned seed = seedText && *seedText ? static_cast<unsigned>(std::strtoul(seedText, nullptr, 10))
                                                : static_cast<unsigned>(std::random_device()());
    std::printf("EngineStress seed=%u (INTERTITLE_STRESS_SEED=%u repeats it)\n", seed, seed);
    SCOPED_TRACE("seed " + std::to_string(seed));
    LogCapture log;
    const std::thread::id mainLoop = std::this_thread::get_id();

    CController* pCore = Core();
    ASSERT_TRUE(pCore->Initialize(&m_source, Parent()));
    m_source.clock.Start();
    SendStart(m_source, GetParam().bandMode);

    const std::size_t firstDocument = g_ledger.Counts().size();
    std::atomic<int> queued{0}, parsed{0}, playbackCalls{0};
    const auto until = std::chrono::steady_clock::now() + kWorkload;

    // Each worker repeats its step, sleeping for as many ms as the step returns.
    auto worker = [&](unsigned stream, std::function<unsigned(std::mt19937&)> step) {
        return std::thread([&, stream, step] {
            std::mt19937 rng(seed + stream);
            while (std::chrono::steady_clock::now() < until)
                std::this_thread::sleep_for(std::chrono::milliseconds(step(rng)));
        });
    };
    auto feeder = [&](std::mt19937& rng) {
        const long long timeStamp = (rng() % 4 == 0) ? static_cast<long long>(rng() % 3) * 500 - 500 : 0;
        CSubtitleInfo* pInfo = MakeDocument(g_ledger, RandomSpans(rng, m_source.Now() + timeStamp), timeStamp);
        if (pCore->AddSubtitleInfo(pInfo))
            ++queued;
        else
            delete pInfo;  // refused: still ours
        return 5 + rng() % 60;
    };
    auto xmlFeeder = [&](std::mt19937& rng) {
        m_source.Send(TTML_SOURCE_MSG_XML_DATA, MakeXmlDocument(RandomSpans(rng, m_source.Now())[0], pCore));
        ++parsed;
        return 20 + rng() % 100;
    };
    auto playback = [&](std::mt19937& rng) {
        const unsigned pick = rng() % 10;
        if (pick < 6) {
            const bool pause = pick < 3;
            pause ? m_source.clock.Pause() : m_source.clock.Resume();
            m_source.Send(pause ? TTML_SOURCE_MSG_PAUSE : TTML_SOURCE_MSG_RESUME, pCore);
        } else if (pick < 9) {
            SeekNotifyData seek;
            seek.position = std::max(0LL, m_source.Now() - 1000 + static_cast<long long>(rng() % 2500));
            seek.pCore = pCore;
            m_source.clock.Seek(seek.position);
            m_source.Send(TTML_SOURCE_MSG_SEEK_START, &seek);
            std::this_thread::sleep_for(std::chrono::milliseconds(rng() % 30));
            m_source.Send(TTML_SOURCE_MSG_SEEK_COMPLETED, pCore);
        } else {
            m_source.Send(TTML_SOURCE_MSG_STOP, pCore);  // resets parser and engine
        }
        ++playbackCalls;
        return 20 + rng() % 150;
    };
    auto menu = [&](std::mt19937& rng) {
        ToggleCaptionDivision();
        return 10 + rng() % 50;
    };

    // Starts the workers, waits for them, lets playback run to a quiet end,
    // then quits the main loop.
    std::thread director([&] {
        std::thread workers[] = {worker(1, feeder),   worker(2, feeder),   worker(6, xmlFeeder),
                                 worker(3, playback), worker(4, playback), worker(5, menu)};
        for (std::thread& w : workers)
            w.join();
        m_source.clock.Resume();
        m_source.Send(TTML_SOURCE_MSG_RESUME, pCore);
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        QuitFromAnyThread();
    });
    Ecore_Timer* pMenuTick = ecore_timer_add(0.037, [](void*) -> Eina_Bool {
        ToggleCaptionDivision();
        return ECORE_CALLBACK_RENEW;
    }, nullptr);
    const bool quit = RunLoop(kWorkload.count() / 1000.0 + 20.0);
    ecore_timer_del(pMenuTick);
    if (!quit) {
        // The workers still use the core: nothing can be torn down safely.
        std::fprintf(stderr, "EngineStress: the main loop did not quit (seed %u)\n", seed);
        std::abort();
    }
    director.join();

    // Destroy with records possibly still scheduled and a document possibly
    // on the engine's queue.
    DestroyCore();
    CTTMLMenu::Destroy();
    std::printf("EngineStress: %d documents built, %d parsed, %d playback changes, %d redraws, %d draws\n",
                queued.load(), parsed.load(), playbackCalls.load(),
                log.Count("Subtitles on screen update after menu change!"), m_drawn.Count(IDrawObserver::REGION_SHOWN));

    const std::vector<int> freed = g_ledger.Counts();
    EXPECT_EQ(std::vector<int>(freed.size() - firstDocument, 1),
              std::vector<int>(freed.begin() + static_cast<long>(firstDocument), freed.end()))
        << "documents not freed exactly once";
    EXPECT_GT(queued.load(), 0);
    EXPECT_GT(m_drawn.Count(IDrawObserver::REGION_SHOWN), 0) << "nothing was ever shown";
    EXPECT_EQ(0, m_drawn.Live()) << "paragraphs of renderers never destroyed";
    EXPECT_EQ(0, m_drawn.Rejected()) << "paragraphs given back more than once";
    int offMainLoop = 0;
    for (const DrawRecorder::Event& e : m_drawn.Events())
        offMainLoop += e.kind != IDrawObserver::PARAGRAPH_MADE && e.thread != mainLoop;
    EXPECT_EQ(0, offMainLoop) << "drawing or removal off the main loop";
    EXPECT_FALSE(log.HasContaining("DestroyObject: unknown object")) << "an object was given back twice";
    EXPECT_FALSE(log.HasContaining("renderers were not destroyed")) << "the graphics engine had leftovers";
    EXPECT_FALSE(log.Has("Potential memory leak! Need to check.")) << "the schedule was not emptied";
}

INSTANTIATE_TEST_SUITE_P(Engine, EngineStress,
                         ::testing::Values(StressCase{"OutOfBand", false}, StressCase{"InBand", true}),
                         TTMLTest::RowName());

}  // namespace
