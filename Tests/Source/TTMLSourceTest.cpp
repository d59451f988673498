#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <functional>
#include <limits>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "CSourceFeed.h"
#include "CSubSampleImageUtil.h"
#include "CTTMLSource.h"
#include "LogCapture.h"
#include "SeekNotifyData.h"
#include "StartNotifyData.h"
#include "SubRawData.h"

using namespace TTML;

namespace {

const std::string kData = INTERTITLE_SOURCE_DIR "/Tests/Source/data";

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
    EXPECT_EQ(kData + "/doc1.ttml", doc.url);
    EXPECT_EQ(&rec, doc.pCore);
    // The images= files arrive packed, image 1 first.
    std::string subSamples = doc.subSampleData;
    CSubSampleImageUtil images(subSamples);
    ASSERT_EQ(2u, images.GetCount());
    EXPECT_EQ("img1.png", images.GetName(1));
    EXPECT_EQ("img2.png", images.GetName(2));
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
// its beginning, and Stop ends the playback.
TEST(TTMLSourceTest, ShowHideStartAgainAndStopReachASleepingSource)
{
    CTTMLSource source;
    CSourceFeed feed;
    feed.SetMode(64);
    feed.Add(Item(0, TTML_SOURCE_MSG_START));
    feed.Add(Item(std::numeric_limits<long long>::max(), TTML_SOURCE_MSG_PAUSE));
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
    EXPECT_FALSE(source.SetFeed(feed)) << "the feed cannot change while playing";

    source.Stop();
    EXPECT_FALSE(source.IsPlaying());
    EXPECT_FALSE(source.HideCaption());
    long long t = 0;
    EXPECT_NE(0, source.GetMediaTime(&t));
    EXPECT_EQ((std::vector<std::string>{"1", "11", "12", "1"}), rec.Texts());
    EXPECT_NE(std::this_thread::get_id(), rec.Messages()[1].thread);
    EXPECT_TRUE(source.SetFeed(feed));
}

TEST(TTMLSourceTest, WithoutAFeedNothingStarts)
{
    LogCapture log;
    CTTMLSource source;
    ASSERT_TRUE(source.LoadFeed(kData + "/all.feed"));
    ASSERT_TRUE(source.Start());
    source.Deinitialize();  // forgets the feed, not the mode
    EXPECT_FALSE(source.IsPlaying());
    EXPECT_FALSE(source.HasFeed());
    EXPECT_EQ(9, source.GetSubtitleMode());

    EXPECT_FALSE(source.LoadFeed(kData + "/broken.feed"));
    EXPECT_FALSE(source.HasFeed());
    Recorder rec(&source);
    EXPECT_FALSE(source.Start());
    EXPECT_TRUE(log.Has("No feed to play", DLOG_WARN)) << log.Dump();
    long long t = 0;
    EXPECT_NE(0, source.GetMediaTime(&t));
    EXPECT_NE(0, source.GetMediaTime(nullptr));
    source.Stop();
    EXPECT_EQ(0u, rec.Count());
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

}  // namespace
