// The parser task: delivery on the "Parser" thread, Reset and Destroy with
// queued documents, ownership of records and documents, the profile cache.

#include "LogCapture.h"
#include "ParserTestUtil.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

using namespace ParserTest;
using TTML::CParser;

namespace {

std::string DocAt(int second)
{
    DocParts d;
    const std::string s = (second < 10 ? "0" : "") + std::to_string(second);
    d.body = "<div region=\"r1\"><p begin=\"00:00:" + s + ".000\" end=\"00:00:" + s + ".500\"><span>Doc " +
             std::to_string(second) + "</span></p></div>";
    return MakeDoc(d);
}

// A slow receiver makes a Reset that does not wait for the queue visible.
TEST(ParserTask, ResetReturnsAfterDeliveringTheQueueInOrderOnTheParserThread)
{
    Deliveries delivered;
    auto slow = [](int id, void* data) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        Deliveries::Callback(id, data);
    };
    CParser parser;
    ASSERT_TRUE(parser.Initialize(1, slow, &delivered));
    for (int i = 1; i <= 5; ++i)
        parser.AddToParserQueue(MakeRecord(DocAt(i), -1, 100 * i));
    LogCapture log;
    parser.Reset();
    EXPECT_TRUE(log.Has("Reset is done"));

    ASSERT_EQ(delivered.docs.size(), 5u);
    for (int i = 1; i <= 5; ++i) {
        const auto& doc = *delivered.docs[i - 1];
        EXPECT_EQ(delivered.threads[i - 1], "Parser");
        EXPECT_EQ(doc.GetTimeStamp(), 100 * i);
        const unsigned long long begin = 1000ULL * i;
        EXPECT_EQ(Intervals(doc), (IntervalList{{begin, begin + 500}}));
        EXPECT_EQ(TextsIn(doc, {begin, begin + 500}), "Doc " + std::to_string(i));
    }
    // The reader is touched on the parser thread only, the reset's clean-up included.
    for (const auto& line : log.Lines()) {
        if (line.message == "Function is done") {
            EXPECT_NE(line.text.find("Thread:[Parser "), std::string::npos) << line.text;
        }
    }
    parser.Destroy();
}

// The first document blocks in the callback; the ones queued behind it must
// be freed unread once Destroy has marked the queue ignored.
TEST(ParserTask, DestroyFreesQueuedRecordsUnread)
{
    struct Gate {
        std::promise<void> entered, release;
        std::shared_future<void> released = release.get_future().share();
        std::atomic<int> delivered{0};
    } gate;
    auto cb = [](int, void* data) {
        auto* p = static_cast<TTML::ParserCallbackData*>(data);
        auto* g = static_cast<Gate*>(p->pUserData);
        delete p->pSubtitleInfo;
        if (++g->delivered == 1)
            g->entered.set_value();
        g->released.wait();
    };

    LogCapture log;
    CParser parser;
    ASSERT_TRUE(parser.Initialize(1, cb, &gate));
    parser.AddToParserQueue(MakeRecord(DocAt(1)));
    gate.entered.get_future().wait();
    for (int i = 2; i <= 4; ++i)
        parser.AddToParserQueue(MakeRecord(DocAt(i)));
    std::thread destroyer([&] { parser.Destroy(); });
    while (!parser.IsTaskIgnored())
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    gate.release.set_value();
    destroyer.join();

    EXPECT_EQ(gate.delivered.load(), 1);
    EXPECT_EQ(log.Count("CTask::IsTaskIgnored() is true, deleting xml data!", DLOG_WARN), 3) << log.Dump();
    EXPECT_TRUE(log.Has("Marking the current queue to be ignored."));
    EXPECT_TRUE(log.Has("Destroy is done"));
}

TEST(ParserTask, LifecycleMisuseIsRefusedAndDestroyAllowsANewStart)
{
    LogCapture log;
    Deliveries delivered;
    {
        CParser parser;
        EXPECT_TRUE(log.Has("Construction done"));
        parser.Destroy();
        EXPECT_TRUE(log.Has("CParser is already destroyed!!!", DLOG_WARN));
        ASSERT_TRUE(parser.Initialize(1, nullptr, nullptr));
        EXPECT_TRUE(log.Has("Initialize is done"));
        EXPECT_FALSE(parser.Initialize(1, nullptr, nullptr));
        EXPECT_TRUE(log.Has("CParser is already initialized, returning false.", DLOG_WARN));
        parser.Destroy();
        ASSERT_TRUE(parser.Initialize(1, &Deliveries::Callback, &delivered));
        parser.AddToParserQueue(MakeRecord(MakeDoc()));
        parser.Reset();
        EXPECT_EQ(delivered.Count(), 1u);
    }
    EXPECT_TRUE(log.Has("Parser object deleted without calling Destroy! Fix this.", DLOG_WARN));
    EXPECT_TRUE(log.Has("Destroy is done"));
    EXPECT_TRUE(log.Has("Destruction done"));
}

// A null record must not be posted: the task takes null as its stop marker.
TEST(ParserTask, NullRecordIsRefusedAndTheTaskKeepsRunning)
{
    LogCapture log;
    SyncParser p;
    p.parser.AddToParserQueue(nullptr);
    EXPECT_TRUE(log.Has("pSubRawData is NULL", DLOG_WARN));
    p.parser.AddToParserQueue(MakeRecord(MakeDoc()));
    p.parser.Reset();
    EXPECT_EQ(p.delivered.Count(), 1u);
    EXPECT_EQ(p.parser.ProcessRecord(nullptr), TTML::ERR_NULL_POINTER);
}

TEST(ParserTask, WithoutCallbackTheDocumentIsDropped)
{
    LogCapture log;
    CParser parser;
    ASSERT_TRUE(parser.Initialize(1, nullptr, nullptr));
    EXPECT_EQ(parser.ProcessRecord(MakeRecord(MakeDoc())), TTML::ERR_NULL_POINTER);
    EXPECT_TRUE(log.Has("m_pUserCbFn is null!", DLOG_WARN));
    parser.Destroy();
}

TEST(ParserTask, RecordTimingsReachTheDocument)
{
    SyncParser p;
    auto* record = MakeRecord(DocAt(1), -1, -250);
    record->segmentBegin = 1200;
    record->segmentEnd = 5000;
    ASSERT_EQ(p.parser.ProcessRecord(record), TTML::ERR_NONE);
    ASSERT_NE(p.Last(), nullptr);
    EXPECT_EQ(p.Last()->GetTimeStamp(), -250);
    // Begins below the segment start are raised to it.
    EXPECT_EQ(Intervals(*p.Last()), (IntervalList{{1200, 1500}}));
}

// The failed-font list lives in the cached profile, so a second document
// sees what was reported after the first: proof that both share one object.
TEST(ParserTask, DocumentsOfOneProfileShareTheCachedProfile)
{
    DocParts fonts;
    fonts.styling = "<style xml:id=\"s\" tts:fontFamily=\"BrokenWebFont, default\"/>";
    fonts.body = "<div region=\"r1\" style=\"s\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">"
                 "<span>Hi</span></p></div>";
    const std::string doc = MakeDoc(fonts);

    SyncParser p;
    // No profile exists yet: nothing keeps the list.
    p.parser.OnErrorDownloadableFonts({"BrokenWebFont"});
    ASSERT_EQ(p.Run(doc), TTML::ERR_NONE);

    p.parser.OnErrorDownloadableFonts({"BrokenWebFont"});
    LogCapture log;
    EXPECT_EQ(p.Run(doc), TTML::ERR_INVALID);
    EXPECT_TRUE(log.Has("Error in processing XML DOM. Error code = 5", DLOG_WARN));
    // The cached profile was reset after the refusal and parses the next one.
    EXPECT_EQ(p.Run(MakeDoc()), TTML::ERR_NONE);
    EXPECT_EQ(p.delivered.Count(), 2u);
}

// Fonts reported from another thread while documents are parsed.
TEST(ParserTask, FontErrorsMayArriveWhileTheParserWorks)
{
    SyncParser p;
    std::atomic<bool> stop{false};
    std::thread reporter([&] {
        while (!stop)
            p.parser.OnErrorDownloadableFonts({"SomeOtherFont"});
    });
    for (int i = 1; i <= 20; ++i)
        p.parser.AddToParserQueue(MakeRecord(DocAt(i)));
    p.parser.Reset();
    stop = true;
    reporter.join();
    EXPECT_EQ(p.delivered.Count(), 20u);
}

}  // namespace
