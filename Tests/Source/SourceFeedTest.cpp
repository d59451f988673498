#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "CSourceFeed.h"
#include "CSubSampleImageUtil.h"
#include "ITTMLSource.h"
#include "LogCapture.h"
#include "RowPrinter.h"

using namespace TTML;

namespace {

const std::string kData = INTERTITLE_SOURCE_DIR "/Tests/Source/data";

std::string Read(const std::string& path)
{
    std::string text;
    EXPECT_TRUE(CSourceFeed::ReadFile(path, text)) << path;
    return text;
}

std::vector<int> Ids(const CSourceFeed& feed)
{
    std::vector<int> ids;
    for (const auto& item : feed.Items())
        ids.push_back(item.msgId);
    return ids;
}

TEST(SourceFeedTest, ScriptCarriesEveryCommandWithItsArguments)
{
    CSourceFeed feed;
    ASSERT_TRUE(feed.Load(kData + "/all.feed"));
    EXPECT_EQ(9, feed.GetMode());
    EXPECT_EQ(kData + "/all.feed", feed.GetName());
    EXPECT_EQ((std::vector<int>{1, 0, 3, 6, 7, 4, 13, 8, 9, 10, 11, 12, 0, 5, 2}), Ids(feed));

    const auto& items = feed.Items();
    // A line without "at" takes the time of the line before.
    std::vector<long long> times;
    for (const auto& item : items)
        times.push_back(item.at);
    EXPECT_EQ((std::vector<long long>{0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 2, 2, 2}), times);
    EXPECT_EQ(3, items[0].line);

    EXPECT_TRUE(items[0].bandMode);
    const SourceFeedItem& doc = items[1];
    EXPECT_EQ(kData + "/doc1.ttml", doc.url);
    EXPECT_EQ(Read(kData + "/doc1.ttml"), doc.xmlData);
    EXPECT_EQ(2, doc.profile);
    EXPECT_EQ(-500, doc.timeStamp);
    EXPECT_EQ(1000u, doc.segmentBegin);
    EXPECT_EQ(2000u, doc.segmentEnd);
    EXPECT_EQ((std::vector<std::string>{kData + "/img1.png", kData + "/img2.png"}), doc.images);

    EXPECT_EQ(5000, items[3].position);
    EXPECT_EQ((std::list<std::string>{"a.ttf", "b.ttf"}), items[6].fonts);

    // Defaults where the script says nothing.
    const SourceFeedItem& second = items[12];
    EXPECT_EQ(-1, second.profile);
    EXPECT_EQ(0, second.timeStamp);
    EXPECT_EQ(0u, second.segmentEnd);
    EXPECT_TRUE(second.images.empty());
}

TEST(SourceFeedTest, PlainDocumentIsStartThenDocument)
{
    CSourceFeed feed;
    ASSERT_TRUE(feed.Load(kData + "/doc1.ttml"));
    EXPECT_EQ(0, feed.GetMode());
    ASSERT_EQ((std::vector<int>{TTML_SOURCE_MSG_START, TTML_SOURCE_MSG_XML_DATA}), Ids(feed));
    EXPECT_FALSE(feed.Items()[0].bandMode);
    EXPECT_EQ(0, feed.Items()[1].at);
    EXPECT_EQ(-1, feed.Items()[1].profile);
    EXPECT_EQ(Read(kData + "/doc1.ttml"), feed.Items()[1].xmlData);
}

TEST(SourceFeedTest, FolderPlaysItsDocumentsInNameOrder)
{
    CSourceFeed feed;
    ASSERT_TRUE(feed.Load(kData + "/docs"));
    ASSERT_EQ((std::vector<int>{1, 0, 0}), Ids(feed));
    EXPECT_EQ(kData + "/docs/a.ttml", feed.Items()[1].url);
    EXPECT_EQ(kData + "/docs/b.xml", feed.Items()[2].url);
    // a.ttml starts with a byte-order mark and blank lines; it is still a document.
    EXPECT_EQ(Read(kData + "/docs/a.ttml"), feed.Items()[1].xmlData);
}

TEST(SourceFeedTest, AddRefusesTimeGoingBackwards)
{
    CSourceFeed feed;
    SourceFeedItem item;
    item.at = 10;
    EXPECT_TRUE(feed.Add(item));
    item.at = 10;
    EXPECT_TRUE(feed.Add(item));
    item.at = 9;
    EXPECT_FALSE(feed.Add(item));
    EXPECT_EQ(2u, feed.Items().size());
}

// The feed packs what it is given; judging the image is the receiver's job,
// so a file that is not a PNG still plays and is refused by the reader.
TEST(SourceFeedTest, ImagesArePackedEvenWhenTheReceiverWillRefuseThem)
{
    CSourceFeed feed;
    ASSERT_TRUE(feed.LoadScript("at 0 document doc1.ttml profile=1 images=doc2.ttml,img1.png", "inline", kData));
    ASSERT_EQ(1u, feed.Items().size());
    std::string subSamples = feed.Items()[0].subSampleData;
    CSubSampleImageUtil images(subSamples);
    ASSERT_EQ(2u, images.GetCount());
    LogCapture log;
    EXPECT_FALSE(images.GetImage("1"));
    EXPECT_TRUE(log.Has("Image \"1\" refused: not a PNG file", DLOG_WARN)) << log.Dump();
    EXPECT_TRUE(images.GetImage("img1.png"));
}

TEST(SourceFeedTest, RefusedFileNamesFileAndLineAndLeavesFeedEmpty)
{
    LogCapture log;
    CSourceFeed feed;
    ASSERT_TRUE(feed.Load(kData + "/doc2.ttml"));
    EXPECT_FALSE(feed.Load(kData + "/broken.feed"));
    EXPECT_TRUE(log.Has("Feed " + kData + "/broken.feed:3: unknown command \"jump\"", DLOG_ERROR)) << log.Dump();
    EXPECT_TRUE(feed.IsEmpty());
    EXPECT_EQ(0, feed.GetMode());
}

TEST(SourceFeedTest, MissingPathsAreRefused)
{
    LogCapture log;
    CSourceFeed feed;
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
    {"UnknownCommand", "at 6 jump", "unknown command \"jump\""},
    {"UnknownCommandWithoutAt", "rewind", "unknown command \"rewind\""},
    {"TimeNotANumber", "at 6s pause", "bad number \"6s\""},
    {"NegativeTime", "at -1 pause", "bad number \"-1\""},
    {"TimeOverflow", "at 99999999999999999999 pause", "bad number \"99999999999999999999\""},
    {"TimeGoesBackwards", "at 4 pause", "time 4 is before 5"},
    {"AtWithoutTime", "at", "missing argument for at"},
    {"AtWithoutCommand", "at 6", "missing command after \"at 6\""},
    {"ModeNotANumber", "mode nine", "bad number \"nine\""},
    {"ModeTwice", "mode 2", "mode given twice"},
    {"MissingDocument", "at 6 document nowhere.ttml", "cannot read \"" + kData + "/nowhere.ttml\""},
    {"DocumentWithoutFile", "at 6 document", "missing argument for document"},
    {"DocumentIsAFolder", "at 6 document docs", "cannot read \"" + kData + "/docs\""},
    {"ProfileOutOfRange", "at 6 document doc1.ttml profile=3", "bad profile \"3\""},
    {"ProfileNotANumber", "at 6 document doc1.ttml profile=ebu", "bad profile \"ebu\""},
    {"TimestampNotANumber", "at 6 document doc1.ttml timestamp=1.5", "bad number \"1.5\""},
    {"SegmentOneBound", "at 6 document doc1.ttml segment=100", "bad segment \"100\""},
    {"SegmentReversed", "at 6 document doc1.ttml segment=200,100", "bad segment \"200,100\""},
    {"MissingImage", "at 6 document doc1.ttml images=img1.png,img9.png", "cannot read \"" + kData + "/img9.png\""},
    {"UnknownDocumentOption", "at 6 document doc1.ttml lang=en", "unknown option \"lang=en\""},
    {"BandNotAFlag", "at 6 start band=yes", "bad band \"yes\""},
    {"StartWithStray", "at 6 start now", "unknown option \"now\""},
    {"SeekWithoutPosition", "at 6 seek", "missing argument for seek"},
    {"SeekNegative", "at 6 seek -100", "bad number \"-100\""},
    {"PauseWithArgument", "at 6 pause 3", "unexpected argument \"3\""},
    {"FontsWithoutNames", "at 6 fonts-failed", "missing argument for fonts-failed"},
    {"FontsWithEmptyName", "at 6 fonts-failed a.ttf,,b.ttf", "empty font name in \"a.ttf,,b.ttf\""},
};

INSTANTIATE_TEST_SUITE_P(Lines, SourceFeedBadLineTest, ::testing::ValuesIn(kBadLines),
                         TTMLTest::RowName());

}  // namespace
