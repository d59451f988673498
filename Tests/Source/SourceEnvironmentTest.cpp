#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
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
    const char* dvb;  // feed file per variable, null: unset
    const char* atsc;
    const char* broadband;
    const char* common;
    int mode;  // expected subtitle mode; -1: no feed
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
    std::unique_ptr<CTTMLSource> owned;
    if (c.kind != BROADBAND)
        owned.reset(c.kind == DVB ? static_cast<CTTMLSource*>(new CDVBSource) : new CATSCSource);
    ITTMLSource* source = owned ? owned.get() : CSourceHolder::GetSource();
    if (c.kind == BROADBAND && c.mode < 0) {
        EXPECT_EQ(nullptr, source);
        return;
    }
    ASSERT_NE(nullptr, source);
    // The gadget reaches the control faces from the core's interface.
    ASSERT_NE(nullptr, dynamic_cast<ITTMLSourceControl*>(source));
    auto* pSource = dynamic_cast<CTTMLSource*>(source);
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
    {"DvbFallsBackToCommon", DVB, nullptr, nullptr, nullptr, "common.feed", 4},
    {"DvbOwnWinsOverCommon", DVB, "dvb.feed", nullptr, nullptr, "common.feed", 1},
    {"DvbIgnoresOtherVariables", DVB, nullptr, "atsc.feed", "dvb.feed", nullptr, -1},
    {"AtscFallsBackToCommon", ATSC, nullptr, nullptr, nullptr, "common.feed", 4},
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
