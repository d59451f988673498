#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <ostream>
#include <string>

#include "CATSCSource.h"
#include "CDVBSource.h"
#include "CSourceHolder.h"
#include "CTTMLSource.h"
#include "LogCapture.h"
#include "RowPrinter.h"

using namespace TTML;

namespace {

const std::string kData = INTERTITLE_SOURCE_DIR "/Tests/Source/data";
const char* const kVariables[] = {"INTERTITLE_DVB_FEED", "INTERTITLE_ATSC_FEED", "INTERTITLE_BROADBAND_FEED",
                                  "INTERTITLE_FEED"};

class SourceEnvironment : public ::testing::Test {
protected:
    void SetUp() override { Clean(); }
    void TearDown() override { Clean(); }
    static void Clean()
    {
        for (const char* v : kVariables)
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
    const char* dvb;        // feed file per variable, null: unset
    const char* atsc;
    const char* broadband;
    const char* common;
    int mode;               // expected subtitle mode; -1: no feed
};

class SourceEnvironmentLookup : public SourceEnvironment, public ::testing::WithParamInterface<EnvCase> {};

// dvb.feed has mode 1, atsc.feed mode 2, common.feed mode 4.
TEST_P(SourceEnvironmentLookup, FindsTheFeedOfItsOwnVariableElseTheCommonOne)
{
    const EnvCase& c = GetParam();
    Set("INTERTITLE_DVB_FEED", c.dvb);
    Set("INTERTITLE_ATSC_FEED", c.atsc);
    Set("INTERTITLE_BROADBAND_FEED", c.broadband);
    Set("INTERTITLE_FEED", c.common);
    LogCapture log;

    if (c.kind == BROADBAND) {
        ITTMLSource* source = CSourceHolder::GetSource();
        if (c.mode < 0) {
            EXPECT_EQ(nullptr, source);
            return;
        }
        ASSERT_NE(nullptr, source);
        EXPECT_EQ(c.mode, source->GetSubtitleMode());
        EXPECT_EQ(source, CSourceHolder::GetSource()) << "made once";
        return;
    }

    std::unique_ptr<CTTMLSource> owned(c.kind == DVB ? static_cast<CTTMLSource*>(new CDVBSource)
                                                     : static_cast<CTTMLSource*>(new CATSCSource));
    // The gadget reaches the control face from the core's interface.
    ITTMLSource* source = owned.get();
    ASSERT_NE(nullptr, dynamic_cast<ITTMLSourceControl*>(source));
    ASSERT_NE(nullptr, dynamic_cast<CTTMLSource*>(source));
    if (c.mode < 0) {
        EXPECT_FALSE(owned->HasFeed());
        EXPECT_FALSE(owned->Start());
        const char* expected = c.kind == DVB ? "No feed for the DVB source: set INTERTITLE_DVB_FEED or INTERTITLE_FEED"
                                             : "No feed for the ATSC source: set INTERTITLE_ATSC_FEED or INTERTITLE_FEED";
        EXPECT_TRUE(log.Has(expected, DLOG_WARN)) << log.Dump();
    } else {
        EXPECT_TRUE(owned->HasFeed());
        EXPECT_EQ(c.mode, source->GetSubtitleMode());
    }
    owned.release()->Destroy();
}

const EnvCase kEnvCases[] = {
    {"DvbOwnVariable", DVB, "dvb.feed", nullptr, nullptr, nullptr, 1},
    {"DvbFallsBackToCommon", DVB, nullptr, nullptr, nullptr, "common.feed", 4},
    {"DvbOwnWinsOverCommon", DVB, "dvb.feed", nullptr, nullptr, "common.feed", 1},
    {"DvbIgnoresOtherVariables", DVB, nullptr, "atsc.feed", "dvb.feed", nullptr, -1},
    {"AtscOwnVariable", ATSC, nullptr, "atsc.feed", nullptr, nullptr, 2},
    {"AtscFallsBackToCommon", ATSC, nullptr, nullptr, nullptr, "common.feed", 4},
    {"AtscOwnWinsOverCommon", ATSC, nullptr, "atsc.feed", nullptr, "common.feed", 2},
    {"AtscIgnoresOtherVariables", ATSC, "dvb.feed", nullptr, "dvb.feed", nullptr, -1},
    {"BroadbandOwnVariable", BROADBAND, nullptr, nullptr, "atsc.feed", nullptr, 2},
    {"BroadbandFallsBackToCommon", BROADBAND, nullptr, nullptr, nullptr, "common.feed", 4},
    {"BroadbandOwnWinsOverCommon", BROADBAND, nullptr, nullptr, "atsc.feed", "common.feed", 2},
    {"BroadbandIgnoresBroadcastVariables", BROADBAND, "dvb.feed", "atsc.feed", nullptr, nullptr, -1},
};

INSTANTIATE_TEST_SUITE_P(Variables, SourceEnvironmentLookup, ::testing::ValuesIn(kEnvCases),
                         TTMLTest::RowName());

TEST_F(SourceEnvironment, InstalledSourceWinsOverTheEnvironmentAndStaysTheCallers)
{
    Set("INTERTITLE_FEED", "common.feed");
    auto* mine = new CTTMLSource;
    CSourceHolder::SetSource(mine);
    EXPECT_EQ(mine, CSourceHolder::GetSource());

    CSourceHolder::SetSource(nullptr);
    ITTMLSource* made = CSourceHolder::GetSource();
    ASSERT_NE(nullptr, made);
    EXPECT_NE(mine, made);
    EXPECT_EQ(4, made->GetSubtitleMode());

    // Installing over a source the holder made destroys that one, never the caller's.
    CSourceHolder::SetSource(mine);
    EXPECT_EQ(mine, CSourceHolder::GetSource());
    CSourceHolder::Reset();
    unsetenv("INTERTITLE_FEED");
    EXPECT_EQ(nullptr, CSourceHolder::GetSource());
    EXPECT_TRUE(mine->LoadFeed(kData + "/dvb.feed"));
    mine->Destroy();
}

TEST_F(SourceEnvironment, HolderMadeSourcePlaysAndResetDestroysIt)
{
    Set("INTERTITLE_BROADBAND_FEED", "doc1.ttml");
    ITTMLSource* source = CSourceHolder::GetSource();
    ASSERT_NE(nullptr, source);
    auto* control = dynamic_cast<ITTMLSourceControl*>(source);
    ASSERT_NE(nullptr, control);
    EXPECT_TRUE(control->Start());
    CSourceHolder::Reset();  // stops and frees it while it may be playing (the leak check sees a miss)
    unsetenv("INTERTITLE_BROADBAND_FEED");
    EXPECT_EQ(nullptr, CSourceHolder::GetSource());
}

}  // namespace
