#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "CSourceFeed.h"
#include "CSubSampleImageUtil.h"
#include "CTTMLSource.h"
#include "LogCapture.h"
#include "Recorder.h"

using namespace TTML;

namespace {

const std::string kData = INTERTITLE_SOURCE_DIR "/Tests/Source/data";

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
    for (int i = 0; i < count; ++i) {
        SourceFeedItem item = Item(0, i % 3 == 0 ? TTML_SOURCE_MSG_XML_DATA : (i % 3 == 1 ? TTML_SOURCE_MSG_SEEK_START
                                                                                       : TTML_SOURCE_MSG_SHOW));
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
    rec.Register();
    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(rec.WaitFor(15));
    source.Stop();

    std::vector<Recorder::Message> got = rec.Messages();
    ASSERT_EQ((std::vector<int>{1, 0, 3, 6, 7, 4, 13, 8, 9, 10, 11, 12, 0, 5, 2}), rec.Ids());

    for (const auto& m : got)
        EXPECT_EQ(got[0].thread, m.thread) << "message " << m.msgId;
    EXPECT_NE(std::this_thread::get_id(), got[0].thread);

    EXPECT_TRUE(got[0].bandMode);
    EXPECT_TRUE(got[0].hasTime) << "the clock runs from Start";

    const SubRawData& doc = got[1].raw;
    EXPECT_EQ(Read(kData + "/doc1.ttml"), doc.xmlData);
    EXPECT_EQ(kData + "/doc1.ttml", doc.url);
    EXPECT_EQ(2, doc.profile);
    EXPECT_EQ(-500, doc.timeStamp);
    EXPECT_EQ(1000u, doc.segmentBegin);
    EXPECT_EQ(2000u, doc.segmentEnd);
    {
        // The images= files arrive packed, image 1 first, and read back.
        std::string subSamples = doc.subSampleData;
        CSubSampleImageUtil images(subSamples);
        ASSERT_EQ(2u, images.GetCount());
        EXPECT_EQ("img1.png", images.GetName(1));
        auto second = images.GetImage("2");
        ASSERT_TRUE(second);
        unsigned int size = 0;
        const unsigned char* buffer = second->GetBuffer(&size);
        EXPECT_EQ(Read(kData + "/img2.png"), std::string(reinterpret_cast<const char*>(buffer), size));
        EXPECT_TRUE(images.GetImage("img1.png"));
    }
    EXPECT_EQ(&rec, doc.pCore);

    // Seek while paused: the clock is exactly at the position when the
    // seek start arrives, and stays there until the resume.
    EXPECT_EQ(5000, got[3].position);
    ASSERT_TRUE(got[3].hasTime);
    EXPECT_EQ(5000, got[3].mediaTime);
    EXPECT_EQ(5000, got[4].mediaTime);
    EXPECT_GE(got[5].mediaTime, 5000);

    EXPECT_EQ((std::list<std::string>{"a.ttf", "b.ttf"}), got[6].fonts);

    EXPECT_EQ(Read(kData + "/doc2.ttml"), got[12].raw.xmlData);
    EXPECT_TRUE(got[12].raw.subSampleData.empty()) << "no images=, no sub-samples";
    EXPECT_EQ(-1, got[12].raw.profile);
    EXPECT_FALSE(got[14].hasTime) << "stop stops the media clock";
    EXPECT_NE(0, source.GetMediaTime(&t));
}

TEST(TTMLSourceTest, PlainDocumentIsStartedAndDelivered)
{
    CTTMLSource source;
    ASSERT_TRUE(source.LoadFeed(kData + "/doc2.ttml"));
    Recorder rec(&source);
    rec.Register();
    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(rec.WaitFor(2));
    long long t = -1;
    EXPECT_EQ(0, source.GetMediaTime(&t));
    EXPECT_GE(t, 0);
    source.Stop();

    auto got = rec.Messages();
    ASSERT_EQ((std::vector<int>{TTML_SOURCE_MSG_START, TTML_SOURCE_MSG_XML_DATA}), rec.Ids());
    EXPECT_FALSE(got[0].bandMode);
    EXPECT_EQ(Read(kData + "/doc2.ttml"), got[1].raw.xmlData);
    EXPECT_EQ(-1, got[1].raw.profile);
    EXPECT_EQ(0, source.GetSubtitleMode());
}

TEST(TTMLSourceTest, ShowAndHideComeFromTheSourceThreadOnlyWhilePlaying)
{
    CTTMLSource source;
    CSourceFeed feed;
    feed.SetMode(64);
    feed.Add(Item(0, TTML_SOURCE_MSG_START));
    ASSERT_TRUE(source.SetFeed(feed));
    EXPECT_EQ(64, source.GetSubtitleMode());

    Recorder rec(&source);
    rec.Register();
    LogCapture log;
    EXPECT_FALSE(source.ShowCaption());
    EXPECT_TRUE(log.Has("Source not started; show dropped")) << log.Dump();

    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(rec.WaitFor(1));
    EXPECT_TRUE(source.ShowCaption());
    EXPECT_TRUE(source.HideCaption());
    ASSERT_TRUE(rec.WaitFor(3));
    source.Stop();
    EXPECT_FALSE(source.HideCaption());

    EXPECT_EQ((std::vector<int>{TTML_SOURCE_MSG_START, TTML_SOURCE_MSG_SHOW, TTML_SOURCE_MSG_HIDE}), rec.Ids());
    auto got = rec.Messages();
    EXPECT_NE(std::this_thread::get_id(), got[1].thread);
    EXPECT_EQ(0, Recorder::Strays().load());
}

TEST(TTMLSourceTest, StopWakesASleepingSourceAndEndsPlayback)
{
    CTTMLSource source;
    CSourceFeed feed;
    feed.Add(Item(0, TTML_SOURCE_MSG_START));
    feed.Add(Item(std::numeric_limits<long long>::max(), TTML_SOURCE_MSG_PAUSE));
    ASSERT_TRUE(source.SetFeed(feed));
    Recorder rec(&source);
    rec.Register();
    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(rec.WaitFor(1));
    EXPECT_TRUE(source.IsPlaying());
    EXPECT_FALSE(source.SetFeed(feed)) << "the feed cannot change while playing";

    source.Stop();  // would hang if the sleeping thread were not woken
    EXPECT_FALSE(source.IsPlaying());
    long long t = 0;
    EXPECT_NE(0, source.GetMediaTime(&t));
    EXPECT_EQ(1u, rec.Count());
    EXPECT_TRUE(source.SetFeed(feed));
}

TEST(TTMLSourceTest, StartAgainPlaysTheFeedFromItsBeginning)
{
    CTTMLSource source;
    ASSERT_TRUE(source.LoadFeed(kData + "/doc1.ttml"));
    Recorder rec(&source);
    rec.Register();
    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(rec.WaitFor(2));
    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(rec.WaitFor(4));
    source.Stop();
    EXPECT_EQ((std::vector<int>{1, 0, 1, 0}), rec.Ids());
}

TEST(TTMLSourceTest, RefusedFeedLeavesNothingToStart)
{
    LogCapture log;
    CTTMLSource source;
    EXPECT_FALSE(source.LoadFeed(kData + "/broken.feed"));
    EXPECT_FALSE(source.HasFeed());
    EXPECT_EQ(0, source.GetSubtitleMode());
    Recorder rec(&source);
    rec.Register();
    EXPECT_FALSE(source.Start());
    EXPECT_TRUE(log.Has("No feed to play", DLOG_WARN)) << log.Dump();
    EXPECT_FALSE(source.IsPlaying());
    long long t = 0;
    EXPECT_NE(0, source.GetMediaTime(&t));
    EXPECT_NE(0, source.GetMediaTime(nullptr));
    source.Stop();
    EXPECT_EQ(0u, rec.Count());
}

TEST(TTMLSourceTest, DeinitializeForgetsTheFeedButNotTheMode)
{
    CTTMLSource source;
    ASSERT_TRUE(source.LoadFeed(kData + "/all.feed"));
    ASSERT_TRUE(source.Start());
    source.Deinitialize();
    EXPECT_FALSE(source.IsPlaying());
    EXPECT_FALSE(source.HasFeed());
    EXPECT_FALSE(source.Start());
    EXPECT_EQ(9, source.GetSubtitleMode());
}

TEST(TTMLSourceTest, UnregisterInsideACallbackMakesThatDeliveryTheLast)
{
    CTTMLSource source;
    ASSERT_TRUE(source.SetFeed(FastFeed(200)));
    Recorder first(&source);
    // As the core does on invalidate: unregister from inside the callback.
    first.onMessage = [](Recorder& r, const Recorder::Message&) {
        if (r.Count() == 5)
            r.source()->UnregisterCallback();
    };
    first.Register();
    ASSERT_TRUE(source.Start());
    ASSERT_TRUE(first.WaitFor(5));

    // A second receiver proves the thread went on delivering.
    Recorder second(&source);
    second.Register();
    ASSERT_TRUE(source.ShowCaption());
    ASSERT_TRUE(second.WaitFor(1));
    source.Stop();
    EXPECT_EQ(5u, first.Count());
    EXPECT_EQ(0, Recorder::Strays().load());
}

TEST(TTMLSourceTest, NoMessageAfterUnregisterReturnsWhileAFastFeedPlays)
{
    const int kRounds = 30;
    const int kItems = 300;
    CTTMLSource source;
    ASSERT_TRUE(source.SetFeed(FastFeed(kItems)));
    for (int round = 0; round < kRounds; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        auto* first = new Recorder(&source);
        // Widen the window in which UnregisterCallback meets a delivery.
        first->onMessage = [](Recorder&, const Recorder::Message&) { std::this_thread::yield(); };
        first->Register();
        ASSERT_TRUE(source.Start());
        ASSERT_TRUE(first->WaitFor(static_cast<size_t>((round * 37) % kItems)));

        source.UnregisterCallback();
        first->closed = true;
        int late = first->late.load();
        delete first;  // a delivery to it from now on would be a stray
        EXPECT_EQ(0, late);

        Recorder second(&source);
        second.Register();
        ASSERT_TRUE(source.ShowCaption());
        ASSERT_TRUE(second.WaitFor(1));
        source.UnregisterCallback();
    }
    source.Stop();
    EXPECT_EQ(0, Recorder::Strays().load());
}

TEST(TTMLSourceTest, DestroyWhilePlayingEndsDeliveryAndFreesTheSource)
{
    Recorder* rec = nullptr;
    for (int round = 0; round < 10; ++round) {
        auto* source = new CTTMLSource;
        ASSERT_TRUE(source->SetFeed(FastFeed(300)));
        rec = new Recorder(source);
        rec->Register();
        ASSERT_TRUE(source->Start());
        ASSERT_TRUE(rec->WaitFor(static_cast<size_t>(round * 20)));
        source->Destroy();
        size_t seen = rec->Count();
        rec->closed = true;
        EXPECT_EQ(0, rec->late.load());
        EXPECT_EQ(seen, rec->Count());
        delete rec;
    }
    EXPECT_EQ(0, Recorder::Strays().load());
}

}  // namespace
