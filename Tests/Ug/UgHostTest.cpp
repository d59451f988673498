// ug-host, the project's main job, end to end: it plays a one-subtitle feed
// through the module and leaves frames and a timeline of what changed.

#include "CHeadlessCanvas.h"
#include "ShellRun.h"

#include <Evas.h>
#include <gtest/gtest.h>
#include <stdlib.h>

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

// Pixels of a frame that differ from its top-left corner (the backdrop), and
// whether all of them lie inside `box` (x0, y0, x1, y1).
struct Ink {
    long count = 0;
    bool inside = true;
};

Ink InkOf(TTML::CHeadlessCanvas& canvas, const std::string& file, const int box[4])
{
    Ink ink;
    Evas_Object* img = evas_object_image_add(canvas.GetEvas());
    evas_object_image_file_set(img, file.c_str(), nullptr);
    int w = 0, h = 0;
    evas_object_image_size_get(img, &w, &h);
    const unsigned int* px = static_cast<const unsigned int*>(evas_object_image_data_get(img, EINA_FALSE));
    EXPECT_TRUE(px && w == 1920 && h == 1080) << file;
    for (int y = 0; px && y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (px[y * w + x] != px[0]) {
                ++ink.count;
                ink.inside = ink.inside && x >= box[0] && x < box[2] && y >= box[1] && y < box[3];
            }
    evas_object_del(img);
    return ink;
}

TEST(UgHost, FramesShowTheSubtitleFromItsBeginAndNothingAfterItsEnd)
{
    char tmpl[] = "/tmp/ug-host-test-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(tmpl));
    const std::string dir = tmpl;
    const std::string feed = std::string(INTERTITLE_SOURCE_DIR) + "/Tests/Ug/data/short.ttml";
    ShellRun r = Shell(std::string("INTERTITLE_LOG=none ") + INTERTITLE_UG_HOST + " --feed " + feed + " --frames " +
                       dir + " 2>&1");
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
    EXPECT_GE(timeline[drawn].media, 600);
    EXPECT_GE(timeline[removed].media, 1400);

    // The region spans 10%..90% across and 70%..90% down the 1920x1080 canvas.
    const int region[4] = {192, 756, 1728, 972};
    TTML::CHeadlessCanvas canvas;
    ASSERT_TRUE(canvas.Initialize(64, 64));
    Ink shown = InkOf(canvas, dir + "/" + timeline[drawn].frame, region);
    EXPECT_GT(shown.count, 1000);
    EXPECT_TRUE(shown.inside);
    EXPECT_EQ(0, InkOf(canvas, dir + "/" + timeline[removed].frame, region).count);
    canvas.Destroy();
    std::ifstream sheet(dir + "/contact-sheet.png");
    EXPECT_TRUE(sheet.good());
    Shell("rm -rf " + dir);
}

}  // namespace
