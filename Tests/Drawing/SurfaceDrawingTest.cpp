// Regions on the canvas: window colour, visibility rules, clipping, padding,
// images, refused requests. Checked on pixels.
#include "DrawingFixture.h"
#include "CTextSurface.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <Evas.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>

using namespace TTML;

namespace {

struct WindowCase {
    const char* name;
    bool showAlways;
    bool withParagraph;
    bool windowVisible;
    double opacity;
    int expectedAlpha;  // at a spot of the region without text; 0: no window
};

class WindowColour : public DrawingTest, public ::testing::WithParamInterface<WindowCase> {};

class Overflow : public DrawingTest, public ::testing::WithParamInterface<bool> {};

// A w x h PNG of one colour, as bytes.
std::vector<unsigned char> MakePng(Evas* pEvas, int w, int h, unsigned int argb)
{
    Evas_Object* pImage = evas_object_image_add(pEvas);
    evas_object_image_colorspace_set(pImage, EVAS_COLORSPACE_ARGB8888);
    evas_object_image_alpha_set(pImage, EINA_TRUE);
    evas_object_image_size_set(pImage, w, h);
    std::vector<unsigned int> pixels((size_t)w * h, argb);
    evas_object_image_data_copy_set(pImage, pixels.data());
    char path[] = "/tmp/drawing-test-XXXXXX.png";
    close(mkstemps(path, 4));
    const bool saved = evas_object_image_save(pImage, path, nullptr, nullptr);
    evas_object_del(pImage);
    std::vector<unsigned char> bytes;
    if (saved) {
        std::ifstream in(path, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }
    unlink(path);
    return bytes;
}

}  // namespace

// Guards: the window is drawn where the region is and nowhere else, only
// when the show-background rule allows, at the region's opacity, and not
// while the surface is hidden.
TEST_P(WindowColour, DrawnOnlyInsideTheRegionWhenItShould)
{
    const WindowCase& c = GetParam();
    ITextSurface* pSurface = MakeSurface(200, 600, 800, 200);
    ASSERT_NE(nullptr, pSurface);
    pSurface->SetBackgroundColor(0, 0, 65535, 65535);  // blue
    pSurface->SetShowBackgroundAlways(c.showAlways);
    pSurface->SetOpacity(c.opacity);
    pSurface->SetWindowVisible(c.windowVisible);
    if (c.withParagraph) {
        ITextContext* pContext = MakeContext(800);
        pContext->SetText(AddRun(pContext, Run("Hi", "#ffffff")));
        pContext->RenderOn(pSurface);
    }
    Show(pSurface);

    const unsigned int* pPixels = Pixels();
    const unsigned int inside = pPixels[(600 + 190) * 1920 + 210];  // bottom-left corner, no text there
    EXPECT_NEAR(c.expectedAlpha, (int)(inside >> 24), 2);
    if (c.expectedAlpha) {
        EXPECT_NEAR(c.expectedAlpha, (int)(inside & 0xff), 2) << std::hex << inside;  // premultiplied blue
    }
    // Nothing just outside any edge.
    for (auto xy : {std::make_pair(199, 700), std::make_pair(1000, 700), std::make_pair(500, 599),
                    std::make_pair(500, 800)})
        EXPECT_EQ(0u, pPixels[xy.second * 1920 + xy.first]) << xy.first << "," << xy.second;
    pSurface->Hide();
    EXPECT_TRUE(Find(AnyInk()).Empty());
    pSurface->Show();
    EXPECT_EQ(inside, Pixels()[(600 + 190) * 1920 + 210]);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, WindowColour,
    ::testing::Values(WindowCase{"AlwaysOpaque", true, false, true, 1.0, 255},
                      WindowCase{"AlwaysHalfOpacity", true, false, true, 0.5, 128},
                      WindowCase{"WhenActiveWithoutContent", false, false, true, 1.0, 0},
                      WindowCase{"WhenActiveWithContent", false, true, true, 1.0, 255},
                      WindowCase{"FlashedOff", true, true, false, 1.0, 0}),
    TTMLTest::RowName());

// Guards: a paragraph longer than its region is cut at the region's edge
// unless overflow is visible.
TEST_P(Overflow, LongParagraphIsClippedOnlyWhenHidden)
{
    const bool visible = GetParam();
    ITextSurface* pSurface = MakeSurface(400, 300, 600, 120);
    pSurface->SetBackgroundColor(0, 0, 0, 65535);
    if (visible)
        pSurface->SetOverflowArea(true, 400, 300, 1920, 1080);
    ITextContext* pContext = MakeContext(600);
    pContext->SetText(AddRun(pContext, Run("one two three four five six seven eight nine ten eleven twelve",
                                           "#ffffff")));
    int h = 0;
    pContext->GetSize(nullptr, &h);
    ASSERT_GT(h, 120) << "the paragraph must be taller than the region";
    Show(pSurface, pContext);
    EXPECT_FALSE(Find(Opaque(255, 255, 255), 400, 300, 600, 120).Empty());
    Box below = Find(Opaque(255, 255, 255), 0, 420, 1920, 660);
    EXPECT_EQ(visible, !below.Empty()) << below.count << " text pixels below the region";
    // Text never spills sideways: the paragraph wraps in the region's width.
    EXPECT_TRUE(Find(Opaque(255, 255, 255), 0, 0, 400, 1080).Empty());
}

INSTANTIATE_TEST_SUITE_P(Cases, Overflow, ::testing::Bool(),
                         [](const ::testing::TestParamInfo<bool>& info) { return info.param ? "visible" : "hidden"; });

TEST_F(DrawingTest, ZeroAndOversizedSurfacesAreRefusedAndDrawNothing)
{
    LogCapture log;
    const std::vector<std::vector<int>> sizes{{8192, 10, 1}, {0, 100, 0}, {-5, 10, 0}, {8193, 100, 0}, {100, 100000, 0}};
    for (const std::vector<int>& s : sizes) {
        auto* pSurface = static_cast<ITextSurface*>(m_pGraphics->CreateObject(0));
        ASSERT_NE(nullptr, pSurface);
        m_surfaces.push_back(pSurface);
        EXPECT_EQ(s[2] == 1, pSurface->Initialize(s[0], s[1], "lrtb")) << s[0] << "x" << s[1];
        if (!s[2]) {
            // Even when asked to.
            pSurface->SetBackgroundColor(65535, 0, 0, 65535);
            pSurface->SetShowBackgroundAlways(true);
            Show(pSurface);
        }
    }
    EXPECT_EQ(4, log.CountContaining("Invalid surface size", DLOG_WARN));
    EXPECT_TRUE(Find(AnyInk()).Empty());
}

TEST_F(DrawingTest, PaddingShrinksTheContentBoxAndMovesThePen)
{
    ITextSurface* pSurface = MakeSurface(100, 100, 400, 300);
    pSurface->SetPadding(20, 30, 40, 10);  // top, bottom, left, right
    int dw = 0, dh = 0, w = 0, h = 0;
    pSurface->GetContentInset(&dw, &dh);
    pSurface->GetGeometry(nullptr, nullptr, &w, &h);
    EXPECT_EQ((std::vector<int>{-50, -50, 350, 250}), (std::vector<int>{dw, dh, w, h}));
    // A paragraph with a background shows where the content box starts.
    ITextContext* pContext = MakeContext(400 + dw);
    TTMLColor green;
    green.alpha = green.green = 65535;
    pContext->SetParaBackgroundColor(green);
    pContext->SetText(AddRun(pContext, Run("Pad", "#ffffff")));
    Show(pSurface, pContext);
    Box box = Find(Opaque(0, 255, 0, 10));
    EXPECT_EQ((std::vector<int>{140, 120, 489}), (std::vector<int>{box.x0, box.y0, box.x1}));
}

TEST_F(DrawingTest, ImageAppearsAtTheRegionScaledToIt)
{
    std::vector<unsigned char> png = MakePng(m_canvas.GetEvas(), 50, 25, 0xff00ff00);
    ASSERT_GT(png.size(), 8u);
    ITextSurface* pSurface = MakeSurface(600, 700, 400, 200);
    ASSERT_TRUE(pSurface->AttachImage(Root(), png.data(), png.size()));
    png.assign(png.size(), 0);  // the surface keeps its own copy
    pSurface->Show();
    Box box = Find(Opaque(0, 255, 0, 10));
    EXPECT_EQ((std::vector<int>{600, 700, 999, 899}), (std::vector<int>{box.x0, box.y0, box.x1, box.y1}));
    EXPECT_EQ(400 * 200, box.count);
    // ClearContent takes it off again.
    pSurface->ClearContent();
    EXPECT_TRUE(Find(AnyInk()).Empty());
}

TEST_F(DrawingTest, BadImagesAreRefusedAndNothingIsDrawn)
{
    std::vector<unsigned char> png = MakePng(m_canvas.GetEvas(), 20, 20, 0xffff0000);
    ASSERT_GT(png.size(), 40u);
    const std::vector<unsigned char> garbage(300, 0x5a);
    const std::vector<std::pair<const void*, size_t>> buffers{
        {nullptr, png.size()},           {png.data(), 0}, {garbage.data(), garbage.size()},
        {png.data(), 30} /* truncated */, {png.data(), CTextSurface::kMaxImageBytes + 1}};
    LogCapture log;
    for (const auto& b : buffers) {
        ITextSurface* pSurface = MakeSurface(100, 100, 200, 200);
        EXPECT_FALSE(pSurface->AttachImage(Root(), b.first, b.second)) << b.second;
        pSurface->Show();
    }
    EXPECT_EQ(5, log.CountContaining("AttachImage", DLOG_WARN)) << log.Dump();
    EXPECT_TRUE(Find(AnyInk()).Empty());
}
