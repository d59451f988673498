// The parser task: delivery on the "Parser" thread, Reset and Destroy with
// queued documents, ownership of records and documents, the profile cache,
// and documents that fail on the way.

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
    d.body = "<div region=\"r1\"><p begin=\"" + WalkTest::ClockTime(1000 * second) + "\" end=\"" +
             WalkTest::ClockTime(1000 * second + 500) + "\"><span>Doc " + std::to_string(second) + "</span></p></div>";
    return MakeDoc(d);
}

// A slow receiver makes a Reset that does not wait for the queue visible.
// Each record's timestamp and segment start reach its document.
TEST(ParserTask, ResetReturnsAfterDeliveringTheQueueInOrderOnTheParserThread)
{
    Deliveries delivered;
    auto slow = [](int id, void* data) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        Deliveries::Callback(id, data);
    };
    CParser parser;
    ASSERT_TRUE(parser.Initialize(1, slow, &delivered));
    for (int i = 1; i <= 5; ++i) {
        TTML::SubRawData* record = MakeRecord(DocAt(i), -1, 100 * i - 300);
        record->segmentBegin = i == 1 ? 1200 : 0;  // raises the first begin
        parser.AddToParserQueue(record);
    }
    LogCapture log;
    parser.Reset();
    EXPECT_TRUE(log.Has("Reset is done"));

    ASSERT_EQ(delivered.docs.size(), 5u);
    for (int i = 1; i <= 5; ++i) {
        const auto& doc = *delivered.docs[i - 1];
        EXPECT_EQ(delivered.threads[i - 1], "Parser");
        EXPECT_EQ(doc.GetTimeStamp(), 100 * i - 300);
        const unsigned long long begin = i == 1 ? 1200 : 1000ULL * i, end = 1000ULL * i + 500;
        EXPECT_EQ(Intervals(doc), (IntervalList{{begin, end}}));
        EXPECT_EQ(ValuesIn(doc, {begin, end}), "Doc " + std::to_string(i));
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

TEST(ParserTask, LifecycleMisuseAndAMissingCallbackAreRefused)
{
    LogCapture log;
    Deliveries delivered;
    {
        CParser parser;
        parser.Destroy();
        ASSERT_TRUE(parser.Initialize(1, nullptr, nullptr));
        EXPECT_EQ(parser.ProcessRecord(MakeRecord(MakeDoc())), TTML::ERR_NULL_POINTER);
        EXPECT_FALSE(parser.Initialize(1, nullptr, nullptr));
        parser.Destroy();
        ASSERT_TRUE(parser.Initialize(1, &Deliveries::Callback, &delivered));
        parser.AddToParserQueue(MakeRecord(MakeDoc()));
        parser.Reset();
        EXPECT_EQ(delivered.Count(), 1u);
    }
    for (const char* warning : {"CParser is already destroyed!!!", "m_pUserCbFn is null!",
                                "CParser is already initialized, returning false.",
                                "Parser object deleted without calling Destroy! Fix this."})
        EXPECT_TRUE(log.Has(warning, DLOG_WARN)) << warning;
    for (const char* info : {"Construction done", "Initialize is done", "Destroy is done", "Destruction done"})
        EXPECT_TRUE(log.Has(info)) << info;
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

// ---- Documents that fail on the way ----------------------------------------
// Bytes that never become a DOM and a walk that refuses the document never
// reach the callback, and the reader is ready for the next one. Which
// documents each profile refuses is the profile tests' business.

TEST(DocumentRefusal, IsDroppedWithItsWarnings)
{
    const std::string domFailed = "Unable to create XML DOM!!!";
    const std::pair<std::string, std::vector<std::string>> inputs[] = {
        // No region, so the EBU-TT-D walk refuses it.
        {MakeDoc(DocParts{"", "", "", "", DocParts().body}), {"Error in processing XML DOM. Error code = 5"}},
        {MakeDoc().substr(0, MakeDoc().size() / 2), {"ReadMemory failed", domFailed}},
        {"", {"NULL pointer found or invalid data", domFailed}},  // never handed to the reader
    };
    for (const auto& in : inputs) {
        SyncParser p(1);
        LogCapture log;
        int resolved = -2;
        EXPECT_EQ(p.Run(in.first, 2, &resolved), TTML::ERR_INVALID) << log.Dump();
        EXPECT_EQ(p.delivered.Count(), 0u);
        for (const auto& line : in.second)
            EXPECT_TRUE(log.Has(line, DLOG_WARN)) << "missing: " << line << "\n" << log.Dump();
        // A document that never became a DOM is not resolved at all.
        EXPECT_EQ(resolved, in.second.back() == domFailed ? -1 : 2);
        // Whatever happened, the reader is empty again for the next document.
        EXPECT_EQ(p.Run(MakeDoc(), 2), TTML::ERR_NONE);
    }
}

// A document whose text is "Café", in UTF-16 with a byte-order mark.
TEST(DocumentContent, Utf16TextArrivesAsUtf8)
{
    DocParts d;
    d.body = "<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\"><span>Caf\xE9</span></p></div>";
    std::string xml = MakeDoc(d);
    xml.replace(xml.find("UTF-8"), 5, "UTF-16");
    for (bool bigEndian : {false, true}) {
        std::string utf16 = bigEndian ? "\xFE\xFF" : "\xFF\xFE";
        for (char c : xml)  // Latin-1: every byte is its own code point
            utf16 += bigEndian ? std::string{'\0', c} : std::string{c, '\0'};
        SyncParser p(1);
        ASSERT_EQ(p.Run(utf16, 2), TTML::ERR_NONE);
        EXPECT_EQ(ValuesIn(*p.Last(), {1000, 2000}), "Caf\xC3\xA9") << "big endian: " << bigEndian;
    }
}

}  // namespace
