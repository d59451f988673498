// ttml-render as a user runs it: the bundled sample's pictures, sheet and
// JSON, and one clear line and the right exit status for bad input.

#include "ShellRun.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <string>

namespace {

#ifdef INTERTITLE_TTML_RENDER

const std::string kTool = INTERTITLE_TTML_RENDER;
const std::string kSample = std::string(INTERTITLE_SOURCE_DIR) + "/samples/ebu-tt-d-sample.xml";

std::string OutDir()
{
    return ::testing::TempDir() + "ttml-render-" + std::to_string(getpid());
}

bool Exists(const std::string& path)
{
    return access(path.c_str(), R_OK) == 0;
}

TEST(RenderTool, DrawsEveryIntervalOfTheSampleWithSheetAndJson)
{
    const std::string out = OutDir();
    ShellRun r = Shell("'" + kTool + "' --sheet --json --out '" + out + "' '" + kSample + "' 2>&1");
    ASSERT_EQ(0, r.status) << r.out;
    for (const char* name : {"1000.png", "4000.png", "6000.png", "7500.png", "sheet.png"})
        EXPECT_TRUE(Exists(out + "/" + name)) << name;
    // The first interval: two lines at the bottom, inside the bottom region.
    EXPECT_NE(std::string::npos,
              r.out.find("{\"time\":1000,\"regions\":[{\"id\":\"bottom\",\"x\":192,\"y\":756,\"w\":1536,\"h\":216,"
                         "\"paragraphs\":[{\"text\":\"Bonjour à tous,\\net bienvenue à Noël !\""))
        << r.out;
    EXPECT_NE(std::string::npos, r.out.find("{\"time\":6000,\"regions\":[{\"id\":\"bottom\"")) << r.out;
    EXPECT_NE(std::string::npos, r.out.find("{\"id\":\"top\",\"x\":192,\"y\":86,")) << r.out;
    Shell("rm -rf '" + out + "'");
}

struct BadCase {
    const char* name;
    std::string arguments;
    int status;
    const char* line;  // on standard error
};

void PrintTo(const BadCase& c, std::ostream* os) { *os << c.name; }

class RenderToolRefuses : public ::testing::TestWithParam<BadCase> {};

TEST_P(RenderToolRefuses, WithOneClearLine)
{
    const std::string out = OutDir() + "-bad";
    ShellRun r = Shell("'" + kTool + "' --out '" + out + "' " + GetParam().arguments + " 2>&1 >/dev/null");
    EXPECT_EQ(GetParam().status, r.status) << r.out;
    EXPECT_NE(std::string::npos, r.out.find(GetParam().line)) << r.out;
    EXPECT_EQ(std::string::npos, r.out.find("ERR<")) << "EFL noise:\n" << r.out;
    Shell("rm -rf '" + out + "'");
}

INSTANTIATE_TEST_SUITE_P(
    Render, RenderToolRefuses,
    ::testing::Values(BadCase{"TimeNotANumber", "--at 1000,soon '" + kSample + "'", 2, "not a time in ms: \"soon\""},
                      BadCase{"BadSize", "--size 0x10 '" + kSample + "'", 2, "--size takes WxH"},
                      BadCase{"BadColour", "--background '#12' '" + kSample + "'", 2, "#rrggbb"},
                      BadCase{"NoFile", "", 2, "no FILE"},
                      BadCase{"Unreadable", "/nonexistent.xml", 1, "cannot read /nonexistent.xml"},
                      BadCase{"RefusedDocument", "'" + std::string(INTERTITLE_SOURCE_DIR) + "/README.md'", 1,
                              "refused"},
                      BadCase{"MissingBackdrop", "--background /nonexistent.png '" + kSample + "'", 1,
                              "cannot load the background picture"}),
    [](const ::testing::TestParamInfo<BadCase>& info) { return info.param.name; });

#endif

}  // namespace
