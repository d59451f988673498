// Our drawing of the public suites' documents against their reference
// renderings (made by other renderers, so only placement is compared): at
// each time a reference shows, the box of what we draw must overlap the
// reference's inked area (pixels away from its backdrop colour, one-pixel
// lines such as the illustration borders some references draw left out).
// Prints how many samples agree.

#include "RenderFixture.h"
#include "CSourceFeed.h"

#include <unistd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>

using namespace TTML;

namespace {

struct Rect {
    double x0 = 0, y0 = 0, x1 = -1, y1 = -1;
    bool Empty() const { return x1 < x0; }
    void Add(double ax0, double ay0, double ax1, double ay1)
    {
        *this = Empty() ? Rect{ax0, ay0, ax1, ay1}
                        : Rect{std::min(x0, ax0), std::min(y0, ay0), std::max(x1, ax1), std::max(y1, ay1)};
    }
    bool Overlaps(const Rect& o) const
    {
        return !Empty() && !o.Empty() && x0 <= o.x1 && o.x0 <= x1 && y0 <= o.y1 && o.y0 <= y1;
    }
};

// Names in a folder, sorted, hidden ones left out.
std::vector<std::string> List(const std::string& dir)
{
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(dir, error))
        if (entry.path().filename().string()[0] != '.')
            names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

bool EndsWith(const std::string& s, const std::string& end)
{
    return s.size() > end.size() && s.compare(s.size() - end.size(), end.size(), end) == 0;
}

struct Sample {
    std::string name;
    std::string document;  // path
    unsigned long long timeMs;
    std::string reference;  // PNG path
};

class ReferenceOverlap : public RenderTest {
public:
    // The reference's inked area in its own pixels, and its width.
    Rect Inked(const std::string& png, int& w)
    {
        int h = 0;
        Evas_Object* pImage = evas_object_image_add(m_canvas.GetEvas());
        evas_object_image_file_set(pImage, png.c_str(), nullptr);
        evas_object_image_size_get(pImage, &w, &h);
        const unsigned int* p = static_cast<const unsigned int*>(evas_object_image_data_get(pImage, EINA_FALSE));
        Rect ink;
        if (p && w > 2 && h > 2) {
            std::map<unsigned int, int> counts;
            for (int i = 0; i < w * h; i += 7)
                ++counts[p[i] & 0xFFFFFF];
            const unsigned int backdrop = std::max_element(counts.begin(), counts.end(), [](auto& a, auto& b) {
                                              return a.second < b.second;
                                          })->first;
            auto inked = [&](int x, int y) {
                const unsigned int v = p[y * w + x];
                int d = 0;
                for (int s = 0; s < 24; s += 8)
                    d += std::abs(static_cast<int>((v >> s) & 0xFF) - static_cast<int>((backdrop >> s) & 0xFF));
                return d > 96;
            };
            // Inked with an inked neighbour on either axis, but not a line one pixel thick.
            for (int y = 1; y + 1 < h; ++y)
                for (int x = 1; x + 1 < w; ++x) {
                    const bool across = inked(x - 1, y) && inked(x + 1, y);
                    const bool down = inked(x, y - 1) && inked(x, y + 1);
                    const bool horizontalLine = across && !inked(x, y - 1) && !inked(x, y + 1);
                    const bool verticalLine = down && !inked(x - 1, y) && !inked(x + 1, y);
                    if (inked(x, y) && (across || down) && !horizontalLine && !verticalLine)
                        ink.Add(x, y, x, y);
                }
        }
        evas_object_del(pImage);
        return ink;
    }

    // What we draw at the sample's time, in canvas pixels: the paragraphs'
    // text, or an image region.
    Rect Ours(const Sample& s, bool& refused)
    {
        std::string xml;
        refused = !CSourceFeed::ReadFile(s.document, xml);
        std::vector<std::string> files;
        const std::string dir = s.document.substr(0, s.document.rfind('/') + 1);
        for (const std::string& name : List(dir))
            if (EndsWith(name, ".png"))
                files.push_back(dir + name);
        const bool image = xml.find("profile/imsc1/image") != std::string::npos;
        CSubtitleInfo* pInfo = refused ? nullptr : Parse(xml, image ? 1 : -1, files, false);
        refused = refused || !pInfo;
        Rect ours;
        CRenderer* pRenderer = pInfo ? Draw(pInfo, s.timeMs) : nullptr;
        if (!pRenderer)
            return ours;
        for (const CRenderer::RegionView& region : Regions(pRenderer)) {
            int x, y, w, h;
            if (region.contexts.size() == 1 && !region.contexts.front()) {
                static_cast<CTextSurface*>(region.pSurface)->GetScreenRect(&x, &y, &w, &h);
                ours.Add(x, y, x + w - 1, y + h - 1);
                continue;
            }
            for (std::size_t i = 0; i < region.contexts.size(); ++i)
                if (CTextContext* pContext = Paragraph(region, i))
                    if (pContext->GetTextRect(&x, &y, &w, &h) && w > 0 && h > 0 && !pContext->GetPlainText().empty())
                        ours.Add(x, y, x + w - 1, y + h - 1);
        }
        Destroy(pRenderer);
        return ours;
    }

    // Counts agreement over the samples and prints the figure and the others.
    void Run(const char* suite, const std::vector<Sample>& samples, double floor)
    {
        if (samples.empty())
            GTEST_SKIP() << "no " << suite << " test data under " << INTERTITLE_TESTDATA;
        int agree = 0;
        std::string differing;
        for (const Sample& s : samples) {
            int w = 0;
            const Rect ink = Inked(s.reference, w);
            bool refused = false;
            Rect ours = Ours(s, refused);
            const double scale = w / 1920.0;
            if (!ours.Empty())
                ours = Rect{ours.x0 * scale, ours.y0 * scale, ours.x1 * scale, ours.y1 * scale};
            const bool same = ink.Empty() ? ours.Empty() : ours.Overlaps(ink);
            agree += same ? 1 : 0;
            if (!same)
                differing += " " + s.name + (refused ? "(refused)" : "");
            CTTMLMenu::Destroy();  // one sample's menu record at a time
        }
        std::printf("%s reference overlap: %d of %zu samples agree; differing:%s\n", suite, agree, samples.size(),
                    differing.c_str());
        RecordProperty(std::string(suite) + "_agree", agree);
        EXPECT_GE(agree, static_cast<int>(floor * static_cast<double>(samples.size()))) << differing;
    }
};

TEST_F(ReferenceOverlap, IrtEbuTtDSamples)
{
    const std::string root = std::string(INTERTITLE_TESTDATA) + "/ebu-tt-d/";
    std::vector<Sample> samples;
    for (const std::string& png : List(root + "png")) {
        // <doc>-image.png shows the first subtitle; <doc>-N-image.png the N-th change.
        const std::string stem = png.substr(0, png.size() - std::string("-image.png").size());
        std::size_t nth = 0;
        const std::string::size_type dash = stem.rfind('-');
        std::string document = root + "ttml/" + stem + "-ttml.xml";
        if (access(document.c_str(), R_OK) != 0 && dash != std::string::npos) {
            nth = static_cast<std::size_t>(std::atoi(stem.c_str() + dash + 1) - 1);
            document = root + "ttml/" + stem.substr(0, dash) + "-ttml.xml";
        }
        if (access(document.c_str(), R_OK) != 0)
            continue;
        // The N-th distinct begin of the document.
        std::string xml;
        CSourceFeed::ReadFile(document, xml);
        std::set<CSubtitleInfo::TimeInterval> keys;
        if (CSubtitleInfo* pInfo = Parse(xml, -1, {}, false))
            pInfo->GetUniqueKeys(keys);
        std::vector<unsigned long long> begins;
        for (const auto& k : keys)
            if (begins.empty() || begins.back() != k.first)
                begins.push_back(k.first);
        samples.push_back(Sample{"irt-" + stem, document, nth < begins.size() ? begins[nth] : 10000,
                                 root + "png/" + png});
    }
    Run("IRT EBU-TT-D", samples, 0.8);
}

TEST_F(ReferenceOverlap, W3cImsc1Samples)
{
    const std::string root = std::string(INTERTITLE_TESTDATA) + "/imsc1/";
    std::map<std::string, std::string> documents;  // test name -> path
    for (const std::string& feature : List(root + "ttml"))
        for (const std::string& file : List(root + "ttml/" + feature))
            if (EndsWith(file, ".ttml"))
                documents[file.substr(0, file.size() - 5)] = root + "ttml/" + feature + "/" + file;
    std::vector<Sample> samples;
    for (const std::string& test : List(root + "png")) {
        auto it = documents.find(test);
        if (it == documents.end())
            continue;
        // At most four times per test: the suite draws some every second.
        std::vector<std::string> pictures = List(root + "png/" + test);
        if (pictures.size() > 4)
            pictures = {pictures[0], pictures[pictures.size() / 3], pictures[2 * pictures.size() / 3], pictures.back()};
        for (const std::string& png : pictures)
            samples.push_back(Sample{"w3c-" + test + "-" + png.substr(0, png.size() - 4), it->second,
                                     static_cast<unsigned long long>(std::strtod(png.c_str(), nullptr) * 1000 + 0.5),
                                     root + "png/" + test + "/" + png});
    }
    Run("W3C IMSC 1", samples, 0.5);
}

}  // namespace
