// Regions on the canvas: window colour, visibility rules, clipping, images,
// refused requests. Checked on pixels.
#include "DrawingFixture.h"
#include "CTextSurface.h"
#include "LogCapture.h"

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

void PrintTo(const WindowCase& c, std::ostream* os)
{
    *os << c.name;
}

class WindowColour : public DrawingTest, public ::testing::WithParamInterface<WindowCase> {};

}  // namespace

// Guards: the window is drawn where the region is and nowhere else, only
// when the show-background rule allows, and at the region's opacity.
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
    pSurface->Attach(Root());
    pSurface->Show();

    const unsigned int* pPixels = Pixels();
    unsigned int inside = pPixels[(600 + 190) * 1920 + 210];  // bottom-left corner, no text there
    EXPECT_NEAR(c.expectedAlpha, (int)(inside >> 24), 2);
    if (c.expectedAlpha) {
        EXPECT_NEAR(c.expectedAlpha, (int)(inside & 0xff), 2) << std::hex << inside;  // premultiplied blue
    }
    // Nothing just outside any edge.
    for (auto xy : {std::make_pair(199, 700), std::make_pair(1000, 700), std::make_pair(500, 599),
                    std::make_pair(500, 800)})
        EXPECT_EQ(0u, pPixels[xy.second * 1920 + xy.first]) << xy.first << "," << xy.second;
    if (std::string(c.name) == "AlwaysOpaque")
        SaveGallery("window-colour");
}

INSTANTIATE_TEST_SUITE_P(
    Cases, WindowColour,
    ::testing::Values(WindowCase{"AlwaysOpaque", true, false, true, 1.0, 255},
                      WindowCase{"AlwaysHalfOpacity", true, false, true, 0.5, 128},
                      WindowCase{"WhenActiveWithoutContent", false, false, true, 1.0, 0},
                      WindowCase{"WhenActiveWithContent", false, true, true, 1.0, 255},
                      WindowCase{"FlashedOff", true, true, false, 1.0, 0}),
    [](const ::testing::TestParamInfo<WindowCase>& info) { return std::string(info.param.name); });

TEST_F(DrawingTest, HiddenSurfaceDrawsNothingAndShowsAgain)
{
    ITextSurface* pSurface = MakeSurface(100, 100, 300, 100);
    pSurface->SetBackgroundColor(65535, 0, 0, 65535);
    pSurface->SetShowBackgroundAlways(true);
    pSurface->Attach(Root());
    pSurface->Show();
    EXPECT_FALSE(Find(Opaque(255, 0, 0)).Empty());
    pSurface->Hide();
    EXPECT_TRUE(Find(AnyInk()).Empty());
    pSurface->Show();
    EXPECT_EQ(300 * 100, Find(Opaque(255, 0, 0)).count);
}

namespace {

struct OverflowCase {
    const char* name;
    bool visible;
};

void PrintTo(const OverflowCase& c, std::ostream* os)
{
    *os << c.name;
}

class Overflow : public DrawingTest, public ::testing::WithParamInterface<OverflowCase> {};

}  // namespace

// Guards: a paragraph longer than its region is cut at the region's edge
// unless overflow is visible.
TEST_P(Overflow, LongParagraphIsClippedOnlyWhenHidden)
{
    ITextSurface* pSurface = MakeSurface(400, 300, 600, 120);
    pSurface->SetBackgroundColor(0, 0, 0, 65535);
    if (GetParam().visible)
        pSurface->SetOverflowArea(true, 400, 300, 1920, 1080);
    ITextContext* pContext = MakeContext(600);
    pContext->SetText(AddRun(pContext, Run("one two three four five six seven eight nine ten eleven twelve",
                                           "#ffffff")));
    int h = 0;
    pContext->GetSize(nullptr, &h);
    ASSERT_GT(h, 120) << "the paragraph must be taller than the region";
    pContext->RenderOn(pSurface);
    pSurface->Attach(Root());
    pSurface->Show();

    Box inside = Find(Opaque(255, 255, 255), 400, 300, 600, 120);
    Box below = Find(Opaque(255, 255, 255), 0, 420, 1920, 660);
    EXPECT_FALSE(inside.Empty());
    if (GetParam().visible)
        EXPECT_FALSE(below.Empty());
    else
        EXPECT_TRUE(below.Empty()) << below.count << " text pixels below the region";
    // Text never spills sideways: the paragraph wraps in the region's width.
    EXPECT_TRUE(Find(Opaque(255, 255, 255), 0, 0, 400, 1080).Empty());
    SaveGallery(std::string("overflow-") + GetParam().name);
}

INSTANTIATE_TEST_SUITE_P(Cases, Overflow,
                         ::testing::Values(OverflowCase{"hidden", false}, OverflowCase{"visible", true}),
                         [](const ::testing::TestParamInfo<OverflowCase>& info) {
                             return std::string(info.param.name);
                         });

namespace {

struct SizeCase {
    const char* name;
    int w, h;
    bool ok;
};

void PrintTo(const SizeCase& c, std::ostream* os)
{
    *os << c.name;
}

class SurfaceSize : public DrawingTest, public ::testing::WithParamInterface<SizeCase> {};

}  // namespace

TEST_P(SurfaceSize, ZeroAndOversizedAreRefused)
{
    const SizeCase& c = GetParam();
    LogCapture log;
    auto* pSurface = static_cast<ITextSurface*>(m_pGraphics->CreateObject(0));
    ASSERT_NE(nullptr, pSurface);
    m_surfaces.push_back(pSurface);
    EXPECT_EQ(c.ok, pSurface->Initialize(c.w, c.h, "lrtb"));
    EXPECT_EQ(!c.ok, log.HasContaining("Invalid surface size", DLOG_WARN));
    if (!c.ok) {
        // A refused surface draws nothing, even when asked to.
        pSurface->SetBackgroundColor(65535, 0, 0, 65535);
        pSurface->SetShowBackgroundAlways(true);
        pSurface->Attach(Root());
        pSurface->Show();
        EXPECT_TRUE(Find(AnyInk()).Empty());
    }
}

INSTANTIATE_TEST_SUITE_P(Cases, SurfaceSize,
                         ::testing::Values(SizeCase{"FullScreen", 1920, 1080, true},
                                           SizeCase{"LargestSide", 8192, 10, true},
                                           SizeCase{"ZeroWidth", 0, 100, false},
                                           SizeCase{"ZeroHeight", 100, 0, false},
                                           SizeCase{"Negative", -5, 10, false},
                                           SizeCase{"TooWide", 8193, 100, false},
                                           SizeCase{"TooTall", 100, 100000, false}),
                         [](const ::testing::TestParamInfo<SizeCase>& info) { return std::string(info.param.name); });

TEST_F(DrawingTest, PaddingShrinksTheContentBoxAndMovesThePen)
{
    ITextSurface* pSurface = MakeSurface(100, 100, 400, 300);
    pSurface->SetPadding(20, 30, 40, 10);  // top, bottom, left, right
    int dw = 0, dh = 0, w = 0, h = 0;
    pSurface->GetContentInset(&dw, &dh);
    pSurface->GetGeometry(nullptr, nullptr, &w, &h);
    EXPECT_EQ(-50, dw);
    EXPECT_EQ(-50, dh);
    EXPECT_EQ(350, w);
    EXPECT_EQ(250, h);
    // A paragraph with a background shows where the content box starts.
    ITextContext* pContext = MakeContext(400 + dw);
    TTMLColor green;
    green.alpha = green.green = 65535;
    pContext->SetParaBackgroundColor(green);
    pContext->SetText(AddRun(pContext, Run("Pad", "#ffffff")));
    pContext->RenderOn(pSurface);
    pSurface->Attach(Root());
    pSurface->Show();
    Box box = Find(Opaque(0, 255, 0, 10));
    ASSERT_FALSE(box.Empty());
    EXPECT_EQ(140, box.x0);
    EXPECT_EQ(120, box.y0);
    EXPECT_EQ(489, box.x1);
}

namespace {

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
    int fd = mkstemps(path, 4);
    close(fd);
    bool saved = evas_object_image_save(pImage, path, nullptr, nullptr);
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

TEST_F(DrawingTest, ImageAppearsAtTheRegionScaledToIt)
{
    std::vector<unsigned char> png = MakePng(m_canvas.GetEvas(), 50, 25, 0xff00ff00);
    ASSERT_GT(png.size(), 8u);
    ITextSurface* pSurface = MakeSurface(600, 700, 400, 200);
    ASSERT_TRUE(pSurface->AttachImage(Root(), png.data(), png.size()));
    png.assign(png.size(), 0);  // the surface keeps its own copy
    pSurface->Show();
    Box box = Find(Opaque(0, 255, 0, 10));
    EXPECT_EQ(600, box.x0);
    EXPECT_EQ(700, box.y0);
    EXPECT_EQ(999, box.x1);
    EXPECT_EQ(899, box.y1);
    EXPECT_EQ(400 * 200, box.count);
    SaveGallery("image-region");
    // ClearContent takes it off again.
    pSurface->ClearContent();
    EXPECT_TRUE(Find(AnyInk()).Empty());
}

namespace {

struct ImageCase {
    const char* name;
    enum { NullBuffer, Empty, Garbage, Truncated, Huge } kind;
};

void PrintTo(const ImageCase& c, std::ostream* os)
{
    *os << c.name;
}

class BadImage : public DrawingTest, public ::testing::WithParamInterface<ImageCase> {};

}  // namespace

TEST_P(BadImage, IsRefusedAndNothingIsDrawn)
{
    std::vector<unsigned char> png = MakePng(m_canvas.GetEvas(), 20, 20, 0xffff0000);
    ASSERT_GT(png.size(), 40u);
    const void* pBuffer = png.data();
    size_t size = png.size();
    std::vector<unsigned char> garbage(300, 0x5a);
    switch (GetParam().kind) {
    case ImageCase::NullBuffer: pBuffer = nullptr; break;
    case ImageCase::Empty: size = 0; break;
    case ImageCase::Garbage: pBuffer = garbage.data(); size = garbage.size(); break;
    case ImageCase::Truncated: size = 30; break;
    case ImageCase::Huge: size = CTextSurface::kMaxImageBytes + 1; break;
    }
    LogCapture log;
    ITextSurface* pSurface = MakeSurface(100, 100, 200, 200);
    EXPECT_FALSE(pSurface->AttachImage(Root(), pBuffer, size));
    EXPECT_TRUE(log.HasContaining("AttachImage", DLOG_WARN)) << log.Dump();
    pSurface->Show();
    EXPECT_TRUE(Find(AnyInk()).Empty());
}

INSTANTIATE_TEST_SUITE_P(Cases, BadImage,
                         ::testing::Values(ImageCase{"NullBuffer", ImageCase::NullBuffer},
                                           ImageCase{"ZeroSize", ImageCase::Empty},
                                           ImageCase{"NotAnImage", ImageCase::Garbage},
                                           ImageCase{"TruncatedPng", ImageCase::Truncated},
                                           ImageCase{"OverSizeLimit", ImageCase::Huge}),
                         [](const ::testing::TestParamInfo<ImageCase>& info) { return std::string(info.param.name); });
