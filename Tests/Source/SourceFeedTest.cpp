#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "CSourceFeed.h"
#include "ITTMLSource.h"
#include "LogCapture.h"
#include "RowPrinter.h"

using namespace TTML;

namespace {

const std::string kData = INTERTITLE_SOURCE_DIR "/Tests/Source/data";

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

TEST(SourceFeedTest, AddRefusesTimeGoingBackwards)
{
    CSourceFeed feed;
    SourceFeedItem item;
    for (long long at : {10, 10, 9}) {
        item.at = at;
        EXPECT_EQ(at == 10, feed.Add(item)) << at;
    }
    EXPECT_EQ(2u, feed.Items().size());
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
    {"UnknownCommand", "at 6 jump", "unknown command \"jump\""},
    {"TimeNotANumber", "at 6s pause", "bad number \"6s\""},
    {"NegativeTime", "at -1 pause", "bad number \"-1\""},
    {"TimeOverflow", "at 99999999999999999999 pause", "bad number \"99999999999999999999\""},
    {"TimeGoesBackwards", "at 4 pause", "time 4 is before 5"},
    {"AtWithoutTime", "at", "missing argument for at"},
    {"AtWithoutCommand", "at 6", "missing command after \"at 6\""},
    {"ModeNotANumber", "mode nine", "bad number \"nine\""},
    {"ModeTwice", "mode 2", "mode given twice"},
    {"MissingDocument", "at 6 document nowhere.ttml", "cannot read \"" + kData + "/nowhere.ttml\""},
    {"ProfileOutOfRange", "at 6 document doc1.ttml profile=3", "bad profile \"3\""},
    {"TimestampNotANumber", "at 6 document doc1.ttml timestamp=1.5", "bad number \"1.5\""},
    {"SegmentReversed", "at 6 document doc1.ttml segment=200,100", "bad segment \"200,100\""},
    {"MissingImage", "at 6 document doc1.ttml images=img1.png,img9.png", "cannot read \"" + kData + "/img9.png\""},
    {"UnknownDocumentOption", "at 6 document doc1.ttml lang=en", "unknown option \"lang=en\""},
    {"BandNotAFlag", "at 6 start band=yes", "bad band \"yes\""},
    {"SeekWithoutPosition", "at 6 seek", "missing argument for seek"},
    {"SeekNegative", "at 6 seek -100", "bad number \"-100\""},
    {"PauseWithArgument", "at 6 pause 3", "unexpected argument \"3\""},
    {"FontsWithEmptyName", "at 6 fonts-failed a.ttf,,b.ttf", "empty font name in \"a.ttf,,b.ttf\""},
};

INSTANTIATE_TEST_SUITE_P(Lines, SourceFeedBadLineTest, ::testing::ValuesIn(kBadLines),
                         TTMLTest::RowName());

}  // namespace
