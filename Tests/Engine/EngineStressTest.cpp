// The engine under load, through the controller that owns it: documents from
// two threads (built directly, so that their freeing can be counted) and
// EBU-TT-D text through the parser from a third; pause, resume, seek and
// stop from two more; caption division changes from another thread and from
// the main loop; all against a media clock running in real time on a real
// Ecore main loop. Then the core is
// destroyed and everything must have been given back exactly once.
//
// Randomised and seeded: the seed is printed; INTERTITLE_STRESS_SEED repeats
// a run (thread interleaving still differs).

#include "DocumentLedger.h"
#include "../Graphics/MainLoopFixture.h"

#include "CController.h"
#include "CElement.h"
#include "DrawRecorder.h"
#include "CMediaClock.h"
#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "CaptionDivisionDriver.h"
#include "ITTMLSource.h"
#include "LogCapture.h"
#include "SeekNotifyData.h"
#include "StartNotifyData.h"
#include "SubRawData.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace TTML;

namespace {

// A source whose media clock runs from the start of the test; the test
// threads deliver its messages themselves, as several source threads would.
class ClockSource : public ITTMLSource {
public:
    bool RegisterCallback(TTMLSourceCallback callback, void* userData) override
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_callback = callback;
        m_userData = userData;
        return callback != nullptr;
    }
    void UnregisterCallback() override
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_callback = nullptr;
    }
    int GetMediaTime(long long* pTime) override
    {
        long long now = 0;
        if (!pTime || !clock.Now(now))
            return -1;
        *pTime = now;
        return 0;
    }
    std::list<std::string> GetFontErrorList() override { return {}; }
    int GetSubtitleMode() override { return 0; }

    void Send(int msgId, void* data)
    {
        TTMLSourceCallback callback;
        {
            std::lock_guard<std::mutex> guard(m_lock);
            callback = m_callback;
        }
        if (callback)
            callback(msgId, data);
    }
    void* UserData()
    {
        std::lock_guard<std::mutex> guard(m_lock);
        return m_userData;
    }

    CMediaClock clock;

private:
    std::mutex m_lock;
    TTMLSourceCallback m_callback = nullptr;
    void* m_userData = nullptr;
};

DocumentLedger g_ledger;

CElementSPTR Span(unsigned long long begin, unsigned long long end)
{
    CElementSPTR span = std::make_shared<CElement>(ELEM_SPAN);
    span->AddAttrValue(ATTR_BEGIN, std::to_string(begin));
    span->AddAttrValue(ATTR_END, std::to_string(end));
    span->AddAttrValue(ATTR_TEXT, "text");
    return span;
}

// A small document around the media time: 1 to 4 paragraphs, some late,
// some overlapping, some with the timings of the one before (merged by the
// schedule), some back to back.
CSubtitleInfo* MakeDocument(std::mt19937& rng, long long mediaTime)
{
    CSubtitleInfo* pInfo = new CSubtitleInfo();
    std::string timeBase = "media";
    pInfo->SetTimeBase(timeBase);
    CElementSPTR sentinel = std::make_shared<DocumentSentinel>(&g_ledger, g_ledger.Open());
    pInfo->AddElement(0, 0, sentinel);

    long long timeStamp = (rng() % 4 == 0) ? static_cast<long long>(rng() % 3) * 500 - 500 : 0;
    pInfo->SetTimeStamp(timeStamp);
    long long begin = std::max(1LL, mediaTime + timeStamp - 300 + static_cast<long long>(rng() % 1500));
    const int paragraphs = 1 + static_cast<int>(rng() % 4);
    for (int i = 0; i < paragraphs; ++i) {
        const long long end = begin + 40 + static_cast<long long>(rng() % 500);
        CElementSPTR span = Span(static_cast<unsigned long long>(begin), static_cast<unsigned long long>(end));
        pInfo->AddElement(static_cast<unsigned long long>(begin), static_cast<unsigned long long>(end), span);
        switch (rng() % 4) {
        case 0:
            break;  // same timings again
        case 1:
            begin = end;  // back to back
            break;
        case 2:
            begin = begin + static_cast<long long>(rng() % static_cast<unsigned>(end - begin));  // overlap
            break;
        default:
            begin = end + static_cast<long long>(rng() % 300);
        }
    }
    pInfo->SplitSubtitleInfoData();
    return pInfo;
}

std::string Clock(long long ms)
{
    char buf[32];
    std::snprintf(buf, sizeof(buf), "%02lld:%02lld:%02lld.%03lld", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60,
                  ms % 1000);
    return buf;
}

// The same kind of document as EBU-TT-D text, for the parser's way in.
SubRawData* MakeXmlDocument(std::mt19937& rng, long long mediaTime, void* pCore)
{
    std::string xml =
        "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\" "
        "xmlns:tts=\"http://www.w3.org/ns/ttml#styling\" xmlns:ebuttm=\"urn:ebu:tt:metadata\" "
        "ttp:timeBase=\"media\" xml:lang=\"en\"><head><metadata><ebuttm:documentMetadata>"
        "<ebuttm:conformsToStandard>urn:ebu:tt:distribution:2018-04</ebuttm:conformsToStandard>"
        "</ebuttm:documentMetadata></metadata>"
        "<layout><region xml:id=\"r\" tts:origin=\"10% 70%\" tts:extent=\"80% 20%\"/></layout></head>"
        "<body><div region=\"r\">";
    long long begin = std::max(0LL, mediaTime - 300 + static_cast<long long>(rng() % 1500));
    const int paragraphs = 1 + static_cast<int>(rng() % 3);
    for (int i = 0; i < paragraphs; ++i) {
        const long long end = begin + 40 + static_cast<long long>(rng() % 500);
        xml += "<p begin=\"" + Clock(begin) + "\" end=\"" + Clock(end) + "\"><span>Line</span></p>";
        begin = (rng() % 2) ? end : begin + static_cast<long long>(rng() % static_cast<unsigned>(end - begin));
    }
    xml += "</div></body></tt>";
    SubRawData* pRaw = new SubRawData();
    pRaw->profile = 2;
    pRaw->xmlData = xml;
    pRaw->pCore = pCore;
    return pRaw;
}

struct StressCase {
    const char* name;
    bool bandMode;
};

void PrintTo(const StressCase& c, std::ostream* os)
{
    *os << c.name;
}

unsigned SeedFromEnvironment()
{
    const char* text = std::getenv("INTERTITLE_STRESS_SEED");
    if (text && *text)
        return static_cast<unsigned>(std::strtoul(text, nullptr, 10));
    return static_cast<unsigned>(std::random_device()());
}

class EngineStress : public MainLoopTest, public ::testing::WithParamInterface<StressCase> {
public:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        // The controller makes its own graphics object.
        DestroyGraphics();
        CTTMLMenu::Destroy();
        AllowCaptionDivision();
    }

    static Eina_Bool MenuTick_Cb(void*)
    {
        ToggleCaptionDivision();
        return ECORE_CALLBACK_RENEW;
    }

    // Paragraphs made and given back, regions shown, with their threads.
    DrawRecorder m_drawn;
    ClockSource m_source;
};

constexpr auto kWorkload = std::chrono::milliseconds(5000);

TEST_P(EngineStress, EverythingIsGivenBackOnceAfterConcurrentPlaybackChanges)
{
    const unsigned seed = SeedFromEnvironment();
    std::printf("EngineStress seed=%u (INTERTITLE_STRESS_SEED=%u repeats it)\n", seed, seed);
    RecordProperty("seed", std::to_string(seed));
    SCOPED_TRACE("seed " + std::to_string(seed));
    LogCapture log;
    const std::thread::id mainLoop = std::this_thread::get_id();

    CController* pCore = static_cast<CController*>(ICore::GetInstance());
    ASSERT_TRUE(pCore->Initialize(&m_source, m_canvas.GetBaseLayout()));
    m_source.clock.Start();
    StartNotifyData start;
    start.bandMode = GetParam().bandMode;
    start.pCore = m_source.UserData();
    m_source.Send(TTML_SOURCE_MSG_START, &start);

    const std::size_t firstDocument = g_ledger.Counts().size();
    std::atomic<int> queued{0};
    std::atomic<int> parsed{0};
    std::atomic<int> playbackCalls{0};
    std::atomic<int> menuCalls{0};
    const auto until = std::chrono::steady_clock::now() + kWorkload;

    auto feeder = [&](unsigned stream) {
        std::mt19937 rng(seed + stream);
        while (std::chrono::steady_clock::now() < until) {
            long long now = 0;
            m_source.GetMediaTime(&now);
            CSubtitleInfo* pInfo = MakeDocument(rng, now);
            if (pCore->AddSubtitleInfo(pInfo))
                ++queued;
            else
                delete pInfo;  // refused: still ours
            std::this_thread::sleep_for(std::chrono::milliseconds(5 + rng() % 60));
        }
    };
    auto xmlFeeder = [&](unsigned stream) {
        std::mt19937 rng(seed + stream);
        while (std::chrono::steady_clock::now() < until) {
            long long now = 0;
            m_source.GetMediaTime(&now);
            m_source.Send(TTML_SOURCE_MSG_XML_DATA, MakeXmlDocument(rng, now, m_source.UserData()));
            ++parsed;
            std::this_thread::sleep_for(std::chrono::milliseconds(20 + rng() % 100));
        }
    };
    auto playback = [&](unsigned stream) {
        std::mt19937 rng(seed + stream);
        while (std::chrono::steady_clock::now() < until) {
            std::this_thread::sleep_for(std::chrono::milliseconds(20 + rng() % 150));
            void* pUser = m_source.UserData();
            const unsigned pick = rng() % 10;
            if (pick < 3) {
                m_source.clock.Pause();
                m_source.Send(TTML_SOURCE_MSG_PAUSE, pUser);
            } else if (pick < 6) {
                m_source.clock.Resume();
                m_source.Send(TTML_SOURCE_MSG_RESUME, pUser);
            } else if (pick < 9) {
                long long now = 0;
                m_source.GetMediaTime(&now);
                SeekNotifyData seek;
                seek.position = std::max(0LL, now - 1000 + static_cast<long long>(rng() % 2500));
                seek.pCore = pUser;
                m_source.clock.Seek(seek.position);
                m_source.Send(TTML_SOURCE_MSG_SEEK_START, &seek);
                std::this_thread::sleep_for(std::chrono::milliseconds(rng() % 30));
                m_source.Send(TTML_SOURCE_MSG_SEEK_COMPLETED, pUser);
            } else {
                m_source.Send(TTML_SOURCE_MSG_STOP, pUser);  // resets parser and engine
            }
            ++playbackCalls;
        }
    };
    auto menu = [&](unsigned stream) {
        std::mt19937 rng(seed + stream);
        while (std::chrono::steady_clock::now() < until) {
            ToggleCaptionDivision();
            ++menuCalls;
            std::this_thread::sleep_for(std::chrono::milliseconds(10 + rng() % 50));
        }
    };

    // Starts the workers, waits for them, lets playback run to a quiet end,
    // then quits the main loop.
    std::thread director([&] {
        std::vector<std::thread> workers;
        workers.emplace_back(feeder, 1u);
        workers.emplace_back(feeder, 2u);
        workers.emplace_back(xmlFeeder, 6u);
        workers.emplace_back(playback, 3u);
        workers.emplace_back(playback, 4u);
        workers.emplace_back(menu, 5u);
        for (std::thread& worker : workers)
            worker.join();
        m_source.clock.Resume();
        m_source.Send(TTML_SOURCE_MSG_RESUME, m_source.UserData());
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        QuitFromAnyThread();
    });
    Ecore_Timer* pMenuTick = ecore_timer_add(0.037, MenuTick_Cb, nullptr);
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
    EXPECT_TRUE(pCore->Destroy());
    CTTMLMenu::Destroy();
    std::printf("EngineStress: %d documents built, %d parsed, %d playback changes, %d menu notifications "
                "(%d redraws), %d draws\n",
                queued.load(), parsed.load(), playbackCalls.load(), menuCalls.load(),
                log.Count("Subtitles on screen update after menu change!"), m_drawn.Count(IDrawObserver::REGION_SHOWN));

    const std::vector<int> freed = g_ledger.Counts();
    int notOnce = 0;
    for (std::size_t id = firstDocument; id < freed.size(); ++id) {
        if (freed[id] != 1)
            ++notOnce;
    }
    EXPECT_EQ(0, notOnce) << "documents not freed exactly once";
    EXPECT_GT(queued.load(), 0);

    EXPECT_GT(m_drawn.Count(IDrawObserver::REGION_SHOWN), 0) << "nothing was ever shown";
    EXPECT_EQ(0, m_drawn.Live()) << "paragraphs of renderers never destroyed";
    EXPECT_EQ(0, m_drawn.Rejected()) << "paragraphs given back more than once";
    int offMainLoop = 0;
    for (const DrawRecorder::Event& e : m_drawn.Events()) {
        const bool drawing = e.kind != IDrawObserver::PARAGRAPH_MADE;
        if (drawing && e.thread != mainLoop)
            ++offMainLoop;
    }
    EXPECT_EQ(0, offMainLoop) << "drawing or removal off the main loop";
    EXPECT_FALSE(log.HasContaining("DestroyObject: unknown object")) << "an object was given back twice";
    EXPECT_FALSE(log.HasContaining("renderers were not destroyed")) << "the graphics engine had leftovers";
    EXPECT_FALSE(log.Has("Potential memory leak! Need to check.")) << "the schedule was not emptied";
}

INSTANTIATE_TEST_SUITE_P(Engine, EngineStress,
                         ::testing::Values(StressCase{"OutOfBand", false}, StressCase{"InBand", true}),
                         [](const ::testing::TestParamInfo<StressCase>& info) { return info.param.name; });

}  // namespace
