// The stand-in subtitle source: its media clock, its feed scripts, delivery
// to the registered callback, and the sources the gadget picks from the
// environment.
#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "CATSCSource.h"
#include "CDVBSource.h"
#include "CMediaClock.h"
#include "CSourceFeed.h"
#include "CSourceHolder.h"
#include "CSubSampleImageUtil.h"
#include "CTTMLSource.h"
#include "LogCapture.h"
#include "RowPrinter.h"
#include "SeekNotifyData.h"
#include "StartNotifyData.h"
#include "SubRawData.h"

using namespace TTML;

namespace {

const std::string kData = INTERTITLE_SOURCE_DIR "/Tests/Source/data";

// ---- Media clock ----

enum Op { NONE, START, STOP, PAUSE, RESUME, SEEK };

struct Step {
    long long advance;  // fake ms passed before the operation
    Op op;
    long long arg;      // seek position
    bool result;        // expected result of PAUSE/RESUME/SEEK
    long long expect;   // expected position afterwards; -1: no media time (stopped)
};

struct ClockCase {
    const char* name;
    std::vector<Step> steps;
};

class MediaClockTest : public ::testing::TestWithParam<ClockCase> {};

TEST_P(MediaClockTest, FollowsTheFakeTime)
{
    long long fakeNow = 1000000;  // any origin: only differences matter
    TTML::CMediaClock clock([&fakeNow] { return fakeNow; });
    int index = 0;
    for (const Step& step : GetParam().steps) {
        SCOPED_TRACE("step " + std::to_string(index++));
        fakeNow += step.advance;
        switch (step.op) {
        case NONE: break;
        case START: clock.Start(); break;
        case STOP: clock.Stop(); break;
        case PAUSE: EXPECT_EQ(step.result, clock.Pause()); break;
        case RESUME: EXPECT_EQ(step.result, clock.Resume()); break;
        case SEEK: EXPECT_EQ(step.result, clock.Seek(step.arg)); break;
        }
        long long now = -12345;
        bool hasTime = clock.Now(now);
        if (step.expect < 0) {
            EXPECT_FALSE(hasTime);
            EXPECT_TRUE(clock.IsStopped());
        } else {
            ASSERT_TRUE(hasTime);
            EXPECT_EQ(step.expect, now);
        }
    }
}

const ClockCase kClockCases[] = {
    {"StoppedUntilStart", {{0, NONE, 0, true, -1}, {100, START, 0, true, 0}, {250, NONE, 0, true, 250}}},
    {"PauseFreezes",
     {{0, START, 0, true, 0}, {100, PAUSE, 0, true, 100}, {500, NONE, 0, true, 100}, {0, PAUSE, 0, false, 100}}},
    {"ResumeContinuesFromThePausedPosition",
     {{0, START, 0, true, 0}, {100, PAUSE, 0, true, 100}, {1000, RESUME, 0, true, 100}, {50, NONE, 0, true, 150},
      {0, RESUME, 0, false, 150}}},
    {"SeekWhileRunningJumpsKeepsRunningAndRefusesANegativePosition",
     {{0, START, 0, true, 0}, {100, SEEK, 5000, true, 5000}, {20, NONE, 0, true, 5020}, {0, SEEK, 0, true, 0},
      {5, NONE, 0, true, 5}, {40, SEEK, -1, false, 45}}},
    {"SeekWhilePausedStaysPaused",
     {{0, START, 0, true, 0}, {100, PAUSE, 0, true, 100}, {0, SEEK, 7000, true, 7000}, {300, NONE, 0, true, 7000},
      {0, RESUME, 0, true, 7000}, {5, NONE, 0, true, 7005}}},
    {"StoppedRefusesEverythingButStart",
     {{0, START, 0, true, 0}, {100, STOP, 0, true, -1}, {0, SEEK, 10, false, -1}, {0, PAUSE, 0, false, -1},
      {0, RESUME, 0, false, -1}, {40, START, 0, true, 0}}},
    {"StartFromPausedRestartsRunning",
     {{0, START, 0, true, 0}, {100, PAUSE, 0, true, 100}, {0, START, 0, true, 0}, {10, NONE, 0, true, 10}}},
};

INSTANTIATE_TEST_SUITE_P(Scenarios, MediaClockTest, ::testing::ValuesIn(kClockCases),
                         TTMLTest::RowName());

// ---- Feed scripts ----

// A document plays as a start then the document; a folder as a start then
// its documents in name order. Both without band mode, profile or mode.
TEST(SourceFeedTest, DocumentAndFolderPlayAsAStartThenTheDocuments)
{
    CSourceFeed feed;
    auto played = [&feed] {
        std::string out;
        for (const auto& item : feed.Items())
            out += std::to_string(item.msgId) + (item.bandMode ? " band" : "") + " " +
                   std::to_string(item.profile) + " " + item.url + ";";
        return out;
    };
    ASSERT_TRUE(feed.Load(kData + "/doc2.ttml"));
    EXPECT_EQ("1 -1 ;0 -1 " + kData + "/doc2.ttml;", played());
    EXPECT_EQ(0, feed.GetMode());
    ASSERT_TRUE(feed.Load(kData + "/docs"));
    EXPECT_EQ("1 -1 ;0 -1 " + kData + "/docs/a.ttml;0 -1 " + kData + "/docs/b.xml;", played());
    // a.ttml starts with a byte-order mark and blank lines; it is still a document.
    std::string text;
    ASSERT_TRUE(CSourceFeed::ReadFile(kData + "/docs/a.ttml", text));
    EXPECT_EQ(text, feed.Items()[1].xmlData);
}

TEST(SourceFeedTest, RefusedPathsAreNamedAndLeaveTheFeedEmpty)
{
    LogCapture log;
    CSourceFeed feed;
    ASSERT_TRUE(feed.Load(kData + "/doc2.ttml"));
    EXPECT_FALSE(feed.Load(kData + "/broken.feed"));
    EXPECT_TRUE(log.Has("Feed " + kData + "/broken.feed:3: unknown command \"jump\"", DLOG_ERROR)) << log.Dump();
    EXPECT_TRUE(feed.IsEmpty());
    EXPECT_EQ(0, feed.GetMode());
    EXPECT_FALSE(feed.Load(kData + "/absent.feed"));
    EXPECT_TRUE(log.Has("Feed " + kData + "/absent.feed: cannot read", DLOG_ERROR)) << log.Dump();
    EXPECT_FALSE(feed.LoadScript("# only a comment\n\n", "empty.feed", kData));
    EXPECT_TRUE(log.Has("Feed empty.feed: no messages", DLOG_ERROR)) << log.Dump();
}

struct BadLine {
    const char* name;
    const char* line;     // becomes line 3, after a mode and a start at 5 ms
    std::string message;  // expected after "Feed bad.feed:3: "
};

class SourceFeedBadLineTest : public ::testing::TestWithParam<BadLine> {};

TEST_P(SourceFeedBadLineTest, IsRefusedWithFileAndLine)
{
    LogCapture log;
    CSourceFeed feed;
    std::string script = std::string("mode 3\nat 5 start\n") + GetParam().line + "\nat 9 stop\n";
    EXPECT_FALSE(feed.LoadScript(script, "bad.feed", kData));
    EXPECT_TRUE(feed.IsEmpty());
    EXPECT_TRUE(log.Has("Feed bad.feed:3: " + GetParam().message, DLOG_ERROR)) << log.Dump();
}

const BadLine kBadLines[] = {
    {"TimeNotANumber", "at 6s pause", "bad number \"6s\""},
    {"TimeOverflow", "at 99999999999999999999 pause", "bad number \"99999999999999999999\""},
    {"TimeGoesBackwards", "at 4 pause", "time 4 is before 5"},
    {"AtWithoutTime", "at", "missing argument for at"},
    {"AtWithoutCommand", "at 6", "missing command after \"at 6\""},
    {"ModeTwice", "mode 2", "mode given twice"},
    {"MissingDocument", "at 6 document nowhere.ttml", "cannot read \"" + kData + "/nowhere.ttml\""},
    {"ProfileOutOfRange", "at 6 document doc1.ttml profile=3", "bad profile \"3\""},
    {"TimestampNotANumber", "at 6 document doc1.ttml timestamp=1.5", "bad number \"1.5\""},
    {"SegmentReversed", "at 6 document doc1.ttml segment=200,100", "bad segment \"200,100\""},
    {"MissingImage", "at 6 document doc1.ttml images=img1.png,img9.png", "cannot read \"" + kData + "/img9.png\""},
    {"UnknownDocumentOption", "at 6 document doc1.ttml lang=en", "unknown option \"lang=en\""},
    {"BandNotAFlag", "at 6 start band=yes", "bad band \"yes\""},
    {"SeekNegative", "at 6 seek -100", "bad number \"-100\""},
    {"PauseWithArgument", "at 6 pause 3", "unexpected argument \"3\""},
    {"FontsWithEmptyName", "at 6 fonts-failed a.ttf,,b.ttf", "empty font name in \"a.ttf,,b.ttf\""},
};

INSTANTIATE_TEST_SUITE_P(Lines, SourceFeedBadLineTest, ::testing::ValuesIn(kBadLines),
                         TTMLTest::RowName());

// ---- Delivery ----

// Registered as a source's callback with itself as user data; copies what
// each message carries, and what the source reports, at delivery time.
class Recorder {
public:
    struct Message {
        int msgId = -1;
        std::string text;  // the id and what the payload carries
        std::thread::id thread;
        bool hasTime = false;
        long long mediaTime = 0;
        SubRawData raw;
    };
    using OnMessage = std::function<void(Recorder&)>;

    // `onMessage` runs inside the callback after the message is recorded.
    explicit Recorder(ITTMLSource* source, OnMessage onMessage = nullptr)
        : m_source(source), m_onMessage(std::move(onMessage))
    {
        {
            std::lock_guard<std::mutex> lock(s_liveLock);
            s_live.insert(this);
        }
        source->RegisterCallback(&Recorder::OnMessage_Cb, this);
    }
    ~Recorder()
    {
        std::lock_guard<std::mutex> lock(s_liveLock);
        s_live.erase(this);
    }

    static void OnMessage_Cb(int msgId, void* data)
    {
        Message m;
        m.msgId = msgId;
        m.text = std::to_string(msgId);
        void* core = data;
        if (msgId == TTML_SOURCE_MSG_XML_DATA) {
            auto* raw = static_cast<SubRawData*>(data);
            m.raw = *raw;
            m.text += " " + raw->url.substr(raw->url.rfind('/') + 1) + " profile " + std::to_string(raw->profile) +
                      " at " + std::to_string(raw->timeStamp) + " segment " + std::to_string(raw->segmentBegin) +
                      "-" + std::to_string(raw->segmentEnd);
            core = raw->pCore;
            delete raw;  // the receiver owns it
        } else if (msgId == TTML_SOURCE_MSG_START) {
            m.text += static_cast<StartNotifyData*>(data)->bandMode ? " band" : "";
            core = static_cast<StartNotifyData*>(data)->pCore;
        } else if (msgId == TTML_SOURCE_MSG_SEEK_START) {
            m.text += " to " + std::to_string(static_cast<SeekNotifyData*>(data)->position);
            core = static_cast<SeekNotifyData*>(data)->pCore;
        }
        // The payload's core must be a recorder still alive; anything else
        // is counted, never dereferenced. The lock keeps it alive while recording.
        std::lock_guard<std::mutex> lock(s_liveLock);
        auto* self = static_cast<Recorder*>(core);
        if (!s_live.count(self)) {
            ++s_strays;
            return;
        }
        self->m_Record(m);
    }

    // Waits (bounded, so a fault fails instead of hanging) until `count` messages arrived.
    bool WaitFor(size_t count)
    {
        std::unique_lock<std::mutex> lock(m_lock);
        return m_arrived.wait_for(lock, std::chrono::seconds(20), [&] { return m_messages.size() >= count; });
    }
    std::vector<Message> Messages()
    {
        std::lock_guard<std::mutex> lock(m_lock);
        return m_messages;
    }
    std::vector<std::string> Texts()
    {
        std::vector<std::string> texts;
        for (const auto& m : Messages())
            texts.push_back(m.text);
        return texts;
    }
    size_t Count() { return Messages().size(); }

    static inline std::atomic<int> s_strays{0};  // messages whose core was not a live recorder
    std::atomic<bool> closed{false};             // a message arriving while set is late
    std::atomic<int> late{0};

private:
    void m_Record(Message& m)
    {
        late += closed.load();
        m.thread = std::this_thread::get_id();
        m.hasTime = m_source->GetMediaTime(&m.mediaTime) == 0;
        if (m.msgId == TTML_SOURCE_MSG_FONT_ERROR) {
            for (const std::string& font : m_source->GetFontErrorList())
                m.text += " " + font;
        }
        {
            std::lock_guard<std::mutex> lock(m_lock);
            m_messages.push_back(m);
        }
        if (m_onMessage)
            m_onMessage(*this);
        m_arrived.notify_all();
    }

    static inline std::mutex s_liveLock;
    static inline std::set<Recorder*> s_live;
    ITTMLSource* m_source;
    OnMessage m_onMessage;
    std::mutex m_lock;
    std::condition_variable m_arrived;
    std::vector<Message> m_messages;
};

std::string Read(const std::string& path)
{
    std::string text;
    EXPECT_TRUE(CSourceFeed::ReadFile(path, text)) << path;
    return text;
}

SourceFeedItem Item(long long at, int msgId)
{
    SourceFeedItem item;
    item.at = at;
    item.msgId = msgId;
    return item;
}

// Every item due at once, so the thread delivers as fast as it can.
CSourceFeed FastFeed(int count)
{
    CSourceFeed feed;
    feed.Add(Item(0, TTML_SOURCE_MSG_START));
    const int kinds[] = {TTML_SOURCE_MSG_XML_DATA, TTML_SOURCE_MSG_SEEK_START, TTML_SOURCE_MSG_SHOW};
    for (int i = 0; i < count; ++i) {
        SourceFeedItem item = Item(0, kinds[i % 3]);
        item.xmlData = "<tt/>";
        item.position = i;
        feed.Add(item);
    }
    return feed;
}

TEST(TTMLSourceTest, FeedScriptReachesTheCallbackInOrderWithItsPayloads)
{
    CTTMLSource source;
    ASSERT_TRUE(source.LoadFeed(kData + "/all.feed"));
    EXPECT_EQ(9, source.GetSubtitleMode());
    long long t = 0;
    EXPECT_NE(0, source.GetMediaTime(&t)) << "no media time before Start";

    Recorder rec(&source);
    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(rec.WaitFor(15));
    source.Stop();

    std::vector<Recorder::Message> got = rec.Messages();
    ASSERT_EQ((std::vector<std::string>{"1 band", "0 doc1.ttml profile 2 at -500 segment 1000-2000", "3",
                                        "6 to 5000", "7", "4", "13 a.ttf b.ttf", "8", "9", "10", "11", "12",
                                        "0 doc2.ttml profile -1 at 0 segment 0-0", "5", "2"}),
              rec.Texts());
    for (const auto& m : got)
        EXPECT_EQ(got[0].thread, m.thread) << "message " << m.text;
    EXPECT_NE(std::this_thread::get_id(), got[0].thread);
    EXPECT_TRUE(got[0].hasTime) << "the clock runs from Start";

    const SubRawData& doc = got[1].raw;
    EXPECT_EQ(Read(kData + "/doc1.ttml"), doc.xmlData);
    EXPECT_EQ(&rec, doc.pCore);
    // The images= files arrive packed, image 1 first.
    std::string subSamples = doc.subSampleData;
    CSubSampleImageUtil images(subSamples);
    EXPECT_EQ("2 img1.png img2.png",
              std::to_string(images.GetCount()) + " " + images.GetName(1) + " " + images.GetName(2));
    EXPECT_EQ(Read(kData + "/doc2.ttml"), got[12].raw.xmlData);
    EXPECT_TRUE(got[12].raw.subSampleData.empty());

    // Seek while paused: the clock is exactly at the position when the
    // seek start arrives, and stays there until the resume.
    ASSERT_TRUE(got[3].hasTime);
    EXPECT_EQ(5000, got[3].mediaTime);
    EXPECT_EQ(5000, got[4].mediaTime);
    EXPECT_GE(got[5].mediaTime, 5000);
    EXPECT_FALSE(got[14].hasTime) << "stop stops the media clock";
    EXPECT_NE(0, source.GetMediaTime(&t));
}

// The thread sleeps until an item due at the end of time. Show and hide
// come from it only while playing; a second Start plays the feed again from
// its beginning, Stop ends the playback, and without a feed nothing starts.
TEST(TTMLSourceTest, ShowHideStartAgainAndStopReachASleepingSource)
{
    CTTMLSource source;
    CSourceFeed feed;
    feed.SetMode(64);
    feed.Add(Item(0, TTML_SOURCE_MSG_START));
    feed.Add(Item(std::numeric_limits<long long>::max(), TTML_SOURCE_MSG_PAUSE));
    EXPECT_FALSE(feed.Add(Item(0, TTML_SOURCE_MSG_HIDE))) << "time may not go backwards";
    ASSERT_TRUE(source.SetFeed(feed));
    EXPECT_EQ(64, source.GetSubtitleMode());
    Recorder rec(&source);
    LogCapture log;
    EXPECT_FALSE(source.ShowCaption());
    EXPECT_TRUE(log.Has("Source not started; show dropped")) << log.Dump();

    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(rec.WaitFor(1));
    EXPECT_TRUE(source.ShowCaption());
    EXPECT_TRUE(source.HideCaption());
    ASSERT_TRUE(rec.WaitFor(3));
    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(rec.WaitFor(4));
    EXPECT_TRUE(source.IsPlaying());
    EXPECT_NE(0, source.GetMediaTime(nullptr));
    EXPECT_FALSE(source.SetFeed(feed)) << "the feed cannot change while playing";

    source.Stop();
    EXPECT_FALSE(source.IsPlaying());
    EXPECT_FALSE(source.HideCaption());
    long long t = 0;
    EXPECT_NE(0, source.GetMediaTime(&t));
    EXPECT_EQ((std::vector<std::string>{"1", "11", "12", "1"}), rec.Texts());
    EXPECT_NE(std::this_thread::get_id(), rec.Messages()[1].thread);
    EXPECT_TRUE(source.SetFeed(feed));

    // Deinitialize stops playing and forgets the feed, not the mode.
    ASSERT_TRUE(source.Start());
    source.Deinitialize();
    EXPECT_FALSE(source.IsPlaying() || source.HasFeed());
    EXPECT_EQ(64, source.GetSubtitleMode());
    EXPECT_FALSE(source.Start());
    EXPECT_TRUE(log.Has("No feed to play", DLOG_WARN)) << log.Dump();
}

TEST(TTMLSourceTest, UnregisterInsideACallbackMakesThatDeliveryTheLast)
{
    CTTMLSource source;
    ASSERT_TRUE(source.SetFeed(FastFeed(200)));
    // As the core does on invalidate: unregister from inside the callback.
    Recorder first(&source, [&source](Recorder& r) {
        if (r.Count() == 5)
            source.UnregisterCallback();
    });
    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(first.WaitFor(5));

    // A second receiver proves the thread went on delivering.
    Recorder second(&source);
    ASSERT_TRUE(source.ShowCaption());
    ASSERT_TRUE(second.WaitFor(1));
    source.Stop();
    EXPECT_EQ(5u, first.Count());
    EXPECT_EQ(0, Recorder::s_strays.load());
}

TEST(TTMLSourceTest, NoMessageAfterUnregisterReturnsWhileAFastFeedPlays)
{
    const int kItems = 300;
    CTTMLSource source;
    ASSERT_TRUE(source.SetFeed(FastFeed(kItems)));
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        // Yielding widens the window in which UnregisterCallback meets a delivery.
        auto* first = new Recorder(&source, [](Recorder&) { std::this_thread::yield(); });
        ASSERT_TRUE(source.Start());
        ASSERT_TRUE(first->WaitFor(static_cast<size_t>((round * 37) % kItems)));
        source.UnregisterCallback();
        first->closed = true;
        EXPECT_EQ(0, first->late.load());
        delete first;  // a delivery to it from now on would be a stray

        Recorder second(&source);
        ASSERT_TRUE(source.ShowCaption());
        ASSERT_TRUE(second.WaitFor(1));
        source.UnregisterCallback();
    }
    source.Stop();
    EXPECT_EQ(0, Recorder::s_strays.load());
}

TEST(TTMLSourceTest, DestroyWhilePlayingEndsDeliveryAndFreesTheSource)
{
    for (int round = 0; round < 10; ++round) {
        auto* source = new CTTMLSource;
        ASSERT_TRUE(source->SetFeed(FastFeed(300)));
        Recorder rec(source);
        ASSERT_TRUE(source->Start());
        ASSERT_TRUE(rec.WaitFor(static_cast<size_t>(round * 20)));
        source->Destroy();
        const size_t seen = rec.Count();
        rec.closed = true;
        EXPECT_EQ(0, rec.late.load());
        EXPECT_EQ(seen, rec.Count());
    }
    EXPECT_EQ(0, Recorder::s_strays.load());
}

// ---- Sources from the environment ----

class SourceEnvironment : public ::testing::Test {
protected:
    void SetUp() override { Clean(); }
    void TearDown() override { Clean(); }
    static void Clean()
    {
        for (const char* v :
             {"INTERTITLE_DVB_FEED", "INTERTITLE_ATSC_FEED", "INTERTITLE_BROADBAND_FEED", "INTERTITLE_FEED"})
            unsetenv(v);
        CSourceHolder::Reset();
    }
    static void Set(const char* variable, const char* feed)
    {
        if (feed)
            setenv(variable, (kData + "/" + feed).c_str(), 1);
    }
};

enum Kind { DVB, ATSC, BROADBAND };

struct EnvCase {
    const char* name;
    Kind kind;
    const char* dvb;  // feed file per variable, null: unset
    const char* atsc;
    const char* broadband;
    const char* common;
    int mode;  // expected subtitle mode; -1: no feed
};

class SourceEnvironmentLookup : public SourceEnvironment, public ::testing::WithParamInterface<EnvCase> {};

// dvb.feed has mode 1, atsc.feed mode 2, common.feed mode 4. The broadcast
// sources falling back to INTERTITLE_FEED is what the gadget tests use.
TEST_P(SourceEnvironmentLookup, FindsTheFeedOfItsOwnVariableElseTheCommonOne)
{
    const EnvCase& c = GetParam();
    Set("INTERTITLE_DVB_FEED", c.dvb);
    Set("INTERTITLE_ATSC_FEED", c.atsc);
    Set("INTERTITLE_BROADBAND_FEED", c.broadband);
    Set("INTERTITLE_FEED", c.common);
    LogCapture log;
    std::unique_ptr<CTTMLSource> owned;
    if (c.kind != BROADBAND)
        owned.reset(c.kind == DVB ? static_cast<CTTMLSource*>(new CDVBSource) : new CATSCSource);
    ITTMLSource* source = owned ? owned.get() : CSourceHolder::GetSource();
    if (c.kind == BROADBAND && c.mode < 0) {
        EXPECT_EQ(nullptr, source);
        return;
    }
    ASSERT_NE(nullptr, source);
    auto* pSource = dynamic_cast<CTTMLSource*>(source);  // as the gadget reaches the control face
    ASSERT_NE(nullptr, pSource);
    EXPECT_EQ(c.mode >= 0, pSource->HasFeed());
    if (c.mode >= 0) {
        EXPECT_EQ(c.mode, source->GetSubtitleMode());
    } else {
        EXPECT_FALSE(pSource->Start());
        const std::string kind = c.kind == DVB ? "DVB" : "ATSC";
        EXPECT_TRUE(log.Has("No feed for the " + kind + " source: set INTERTITLE_" + kind + "_FEED or INTERTITLE_FEED",
                            DLOG_WARN)) << log.Dump();
    }
    if (owned)
        owned.release()->Destroy();
    else
        EXPECT_EQ(source, CSourceHolder::GetSource()) << "made once";
}

const EnvCase kEnvCases[] = {
    {"DvbOwnWinsOverCommon", DVB, "dvb.feed", nullptr, nullptr, "common.feed", 1},
    {"DvbIgnoresOtherVariables", DVB, nullptr, "atsc.feed", "dvb.feed", nullptr, -1},
    {"AtscOwnWinsOverCommon", ATSC, nullptr, "atsc.feed", nullptr, "common.feed", 2},
    {"AtscIgnoresOtherVariables", ATSC, "dvb.feed", nullptr, "dvb.feed", nullptr, -1},
    {"BroadbandFallsBackToCommon", BROADBAND, nullptr, nullptr, nullptr, "common.feed", 4},
    {"BroadbandOwnWinsOverCommon", BROADBAND, nullptr, nullptr, "atsc.feed", "common.feed", 2},
    {"BroadbandIgnoresBroadcastVariables", BROADBAND, "dvb.feed", "atsc.feed", nullptr, nullptr, -1},
};

INSTANTIATE_TEST_SUITE_P(Variables, SourceEnvironmentLookup, ::testing::ValuesIn(kEnvCases), TTMLTest::RowName());

// Installing a source over one the holder made destroys that one (while it
// plays), never the caller's.
TEST_F(SourceEnvironment, InstalledSourceWinsOverTheEnvironmentAndStaysTheCallers)
{
    Set("INTERTITLE_BROADBAND_FEED", "doc1.ttml");
    auto* mine = new CTTMLSource;
    CSourceHolder::SetSource(mine);
    EXPECT_EQ(mine, CSourceHolder::GetSource());

    CSourceHolder::SetSource(nullptr);
    ITTMLSource* made = CSourceHolder::GetSource();
    ASSERT_NE(mine, made);
    ASSERT_TRUE(dynamic_cast<CTTMLSource*>(made) && dynamic_cast<CTTMLSource*>(made)->Start());
    CSourceHolder::SetSource(mine);
    EXPECT_EQ(mine, CSourceHolder::GetSource());
    CSourceHolder::Reset();
    unsetenv("INTERTITLE_BROADBAND_FEED");
    EXPECT_EQ(nullptr, CSourceHolder::GetSource());
    EXPECT_TRUE(mine->LoadFeed(kData + "/dvb.feed"));
    mine->Destroy();
}

}  // namespace
