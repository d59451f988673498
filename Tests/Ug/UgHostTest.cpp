// ug-host, the project's main job, end to end: it plays a one-subtitle feed
// through the module and leaves frames and a timeline of what changed, the
// TV service's video window (shared with the module) behind the subtitle.

#include "CHeadlessCanvas.h"
#include "RowPrinter.h"
#include "ShellRun.h"
#include "ToolRefusal.h"

#include <Evas.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

namespace {

struct Entry {
    long long media = -1;
    std::string line;  // the entry as written, one per line
    std::string frame;
};

std::vector<Entry> ReadTimeline(const std::string& path)
{
    std::vector<Entry> entries;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) {
        Entry e;
        if (std::sscanf(line.c_str(), " {\"media\":%lld", &e.media) != 1)
            continue;
        std::string::size_type at = line.find("\"frame\":\"");
        if (at != std::string::npos)
            e.frame = line.substr(at + 9, line.find('"', at + 9) - at - 9);
        e.line = line;
        entries.push_back(e);
    }
    return entries;
}

// A saved 1920x1080 frame's pixels.
std::vector<unsigned int> Pixels(TTML::CHeadlessCanvas& canvas, const std::string& file)
{
    Evas_Object* img = evas_object_image_add(canvas.GetEvas());
    evas_object_image_file_set(img, file.c_str(), nullptr);
    int w = 0, h = 0;
    evas_object_image_size_get(img, &w, &h);
    const unsigned int* px = static_cast<const unsigned int*>(evas_object_image_data_get(img, EINA_FALSE));
    EXPECT_TRUE(px && w == 1920 && h == 1080) << file;
    std::vector<unsigned int> out(1920 * 1080);
    if (px && w == 1920 && h == 1080)
        out.assign(px, px + out.size());
    evas_object_del(img);
    return out;
}

// How many pixels differ from `ref` (the picture without the subtitle) and
// whether all of them lie inside `box` (x0, y0, x1, y1).
std::pair<long, bool> InkOf(const std::vector<unsigned int>& px, const std::vector<unsigned int>& ref, const int box[4])
{
    std::pair<long, bool> ink{0, true};
    for (int y = 0; y < 1080; ++y)
        for (int x = 0; x < 1920; ++x)
            if (px[y * 1920 + x] != ref[y * 1920 + x]) {
                ++ink.first;
                ink.second = ink.second && x >= box[0] && x < box[2] && y >= box[1] && y < box[3];
            }
    return ink;
}

// One subtitle from 1.5 s to 2.3 s (time for a slow parse), its region
// 10%..90% across and 70%..90% down; the probe lies left of it, just under
// where a shrunk video ends.
struct HostCase {
    const char* name;
    const char* feed;
    const char* commands;
    int region[4];
    unsigned int probe;  // the colour bars' first bar, or the backdrop outside the video
};

class UgHost : public ::testing::TestWithParam<HostCase> {};

TEST_P(UgHost, FramesShowTheSubtitleFromItsBeginAndNothingAfterItsEnd)
{
    const HostCase& c = GetParam();
    char tmpl[] = "/tmp/ug-host-test-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(tmpl));
    const std::string dir = tmpl;
    const std::string feed = std::string(INTERTITLE_SOURCE_DIR) + "/Tests/Ug/data/" + c.feed;
    // A fixed end rather than "quiet for a while": a loaded machine may remove late.
    // The module's leaks are checked in process (the lifecycle storm); the
    // leak checker's own tracer has crashed at this process's exit while
    // EFL's threads wind down, so the child's exit is not leak-checked.
    const char* asan = std::getenv("ASAN_OPTIONS");
    const std::string asanOptions = std::string("ASAN_OPTIONS=") + (asan ? asan : "") + ":detect_leaks=0 ";
    ShellRun r = Shell(asanOptions + "INTERTITLE_LOG=none " + INTERTITLE_UG_HOST + " --until 4000 --feed " + feed +
                       " --frames " + dir + " " + c.commands + " 2>&1");
    ASSERT_EQ(0, r.status) << r.out;

    std::vector<Entry> timeline = ReadTimeline(dir + "/timeline.json");
    const std::string text = "\"End to end\"";
    size_t drawn = timeline.size(), removed = timeline.size();
    for (size_t i = 0; i < timeline.size(); ++i) {
        const std::string& l = timeline[i].line;
        if (drawn == timeline.size() && l.find("\"drawn\":[" + text) != std::string::npos)
            drawn = i;
        if (drawn < i && l.find("\"removed\":[" + text) != std::string::npos)
            removed = i;
    }
    ASSERT_LT(drawn, timeline.size()) << r.out;
    ASSERT_LT(removed, timeline.size()) << r.out;
    // Not before its time, less the 10 ms a timer may fire early by (the
    // engine's own tolerance when it checks an expiry against the media time).
    const long long kEarlyMs = 10;
    EXPECT_GE(timeline[drawn].media, 1500 - kEarlyMs);
    EXPECT_GE(timeline[removed].media, 2300 - kEarlyMs);

    TTML::CHeadlessCanvas canvas;
    ASSERT_TRUE(canvas.Initialize(64, 64));
    ASSERT_GT(drawn, 0u);
    // The picture after the end is the reference: on a slow machine the
    // video's resize and the subtitle can land in one change.
    const std::vector<unsigned int> before = Pixels(canvas, dir + "/" + timeline[drawn - 1].frame);
    const std::vector<unsigned int> after = Pixels(canvas, dir + "/" + timeline[removed].frame);
    const std::vector<unsigned int> shown = Pixels(canvas, dir + "/" + timeline[drawn].frame);
    const std::size_t probe = 760 * 1920 + 10;
    const std::pair<long, bool> ink = InkOf(shown, after, c.region);
    EXPECT_GT(ink.first, 1000);
    EXPECT_TRUE(ink.second);
    EXPECT_EQ(c.probe, shown[probe] & 0xffffff);
    // Nothing left after the end: the same picture as before the subtitle,
    // when the video had settled by then.
    if ((before[probe] & 0xffffff) == c.probe) {
        EXPECT_EQ(0, InkOf(after, before, c.region).first);
    }
    canvas.Destroy();
    std::ifstream sheet(dir + "/contact-sheet.png");
    EXPECT_TRUE(sheet.good());
    Shell("rm -rf " + dir);
}

// Caption division (a source whose mode allows it, captions on, the banner
// flag, mode 1, then shown by the source once the menu has registered): the video ends at
// y 739 and the region moves to 767.
INSTANTIATE_TEST_SUITE_P(
    Frames, UgHost,
    ::testing::Values(HostCase{"FullPicture", "short.ttml", "", {192, 756, 1728, 972}, 0xbfbfbf},
                      HostCase{"CaptionDivision", "division.feed",
                               "0:set:db/menu/caption/caption=1 0:set:memory/tv-viewer/infobanner/ttml=1 "
                               "0:set:db/menu/caption/captiondivisionmode=1",
                               {192, 767, 1728, 983}, 0x282828}),
    TTMLTest::RowName());

const std::string kHost = std::string("INTERTITLE_LOG=none ") + INTERTITLE_UG_HOST + " ";

INSTANTIATE_TEST_SUITE_P(
    UgHost, ToolRefusal,
    ::testing::Values(ToolCase{"Help", kHost + "--help", 0, ""},
                      ToolCase{"ScriptIsAFolder", kHost + "--script /tmp", 2, "cannot read /tmp: is a folder"},
                      ToolCase{"MissingFeed", kHost + "--feed /nonexistent.feed", 1, "/nonexistent.feed: No such"},
                      ToolCase{"UntilNotATime", kHost + "--until soon", 2, "--until takes a time in ms"},
                      ToolCase{"NotACommand", kHost + "100:explode", 2, "not a command: 100:explode"}),
    ToolCaseName);

}  // namespace
