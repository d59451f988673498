// ttml-render as a user runs it: the bundled sample's pictures, sheet and
// JSON, and one clear line and the right exit status for bad input.

#include "ToolRefusal.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <string>

namespace {

#ifdef INTERTITLE_TTML_RENDER

const std::string kTool = INTERTITLE_TTML_RENDER;
const std::string kSample = std::string(INTERTITLE_SOURCE_DIR) + "/samples/ebu-tt-d-sample.xml";


TEST(RenderTool, DrawsEveryIntervalOfTheSampleWithSheetAndJson)
{
    const std::string out = ::testing::TempDir() + "ttml-render-" + std::to_string(getpid());
    ShellRun r = Shell("'" + kTool + "' --sheet --json --out '" + out + "' '" + kSample + "' 2>&1");
    ASSERT_EQ(0, r.status) << r.out;
    for (const char* name : {"1000.png", "4000.png", "6000.png", "7500.png", "sheet.png"})
        EXPECT_EQ(0, access((out + "/" + name).c_str(), R_OK)) << name;
    // The first interval: two lines at the bottom, inside the bottom region.
    EXPECT_NE(std::string::npos,
              r.out.find("{\"time\":1000,\"regions\":[{\"id\":\"bottom\",\"x\":192,\"y\":756,\"w\":1536,\"h\":216,"
                         "\"paragraphs\":[{\"text\":\"Bonjour à tous,\\net bienvenue à Noël !\""))
        << r.out;
    EXPECT_NE(std::string::npos, r.out.find("{\"time\":6000,\"regions\":[{\"id\":\"bottom\"")) << r.out;
    EXPECT_NE(std::string::npos, r.out.find("{\"id\":\"top\",\"x\":192,\"y\":86,")) << r.out;
    Shell("rm -rf '" + out + "'");
}

// Every case fails before a picture is written: the folder is never made.
const std::string kRun = "'" + kTool + "' --out /nonexistent/out ";

INSTANTIATE_TEST_SUITE_P(
    Render, ToolRefusal,
    ::testing::Values(ToolCase{"Help", kRun + "--help", 0, ""},
                      ToolCase{"TimeNotANumber", kRun + "--at 1000,soon '" + kSample + "'", 2, "not a time in ms: \"soon\""},
                      ToolCase{"BadColour", kRun + "--background '#12' '" + kSample + "'", 2, "#rrggbb"},
                      ToolCase{"ModeOutOfRange", kRun + "--mode 2147483648 '" + kSample + "'", 2, "--mode takes"},
                      ToolCase{"NoFile", kRun, 2, "no FILE"},
                      ToolCase{"Unreadable", kRun + "/nonexistent.xml", 1, "cannot read /nonexistent.xml: No such"},
                      ToolCase{"RefusedDocument", kRun + "'" + INTERTITLE_SOURCE_DIR + "/README.md'", 1, "refused"},
                      ToolCase{"MissingBackdrop", kRun + "--background /nonexistent.png '" + kSample + "'", 1,
                               "cannot load the background picture"}),
    ToolCaseName);

#endif

}  // namespace
