// Paragraphs on the canvas: stacking by display alignment, colours,
// backgrounds, outlines and edges, flashing, caption-menu rewrites.
#include "DrawingFixture.h"

using namespace TTML;

namespace {

struct AlignCase {
    const char* align;
};

void PrintTo(const AlignCase& c, std::ostream* os)
{
    *os << c.align;
}

class DisplayAlign : public DrawingTest, public ::testing::WithParamInterface<AlignCase> {};

const int kRegionY = 100, kRegionH = 600;

}  // namespace

// Guards: three paragraphs stack top-down in order and the block sits at the
// top, middle or bottom of the region; the pen ends back at the top.
TEST_P(DisplayAlign, ThreeParagraphsLandWhereExpected)
{
    std::string align = GetParam().align;
    ITextSurface* pSurface = MakeSurface(300, kRegionY, 1200, kRegionH);
    pSurface->SetDisplayAlign(align);
    pSurface->SetBackgroundColor(0, 0, 0, 32767);
    const char* colours[] = {"#ff0000", "#00ff00", "#0000ff"};
    std::vector<ITextContext*> contexts;
    TTMLColor grey;
    grey.alpha = 65535;
    grey.red = grey.green = grey.blue = 0x4040;
    for (const char* pColour : colours) {
        ITextContext* pContext = MakeContext(1200, 60);
        pContext->SetParaBackgroundColor(grey);
        pContext->SetText(AddRun(pContext, Run("Subtitle line", pColour, "60px")));
        contexts.push_back(pContext);
    }
    int h = 0;
    contexts[0]->GetSize(nullptr, &h);
    ASSERT_GT(h, 40);
    Stack(pSurface, contexts);
    pSurface->Attach(Root());
    pSurface->Show();

    Box red = Find(Opaque(255, 0, 0)), green = Find(Opaque(0, 255, 0)), blue = Find(Opaque(0, 0, 255));
    ASSERT_FALSE(red.Empty() || green.Empty() || blue.Empty());
    // In order, one paragraph height apart.
    EXPECT_NEAR(h, green.y0 - red.y0, 2);
    EXPECT_NEAR(h, blue.y0 - green.y0, 2);
    // The paragraph backgrounds span exactly the block.
    Box block = Find(Opaque(0x40, 0x40, 0x40, 8));
    ASSERT_FALSE(block.Empty());
    EXPECT_NEAR(3 * h, block.y1 - block.y0 + 1, 2);
    if (align == "before")
        EXPECT_EQ(kRegionY, block.y0);
    else if (align == "after")
        EXPECT_EQ(kRegionY + kRegionH - 1, block.y1);
    else
        EXPECT_NEAR(kRegionY + kRegionH / 2, (block.y0 + block.y1) / 2, 2);
    // Pen back at the top: another paragraph rendered now lands there.
    ITextContext* pProbe = MakeContext(1200, 60);
    pProbe->SetText(AddRun(pProbe, Run("x", "#ff00ff", "60px")));
    pProbe->RenderOn(pSurface);
    Box probe = Find(Opaque(255, 0, 255));
    ASSERT_FALSE(probe.Empty());
    EXPECT_LT(probe.y0, kRegionY + h);
    SaveGallery("display-align-" + align);
}

INSTANTIATE_TEST_SUITE_P(Cases, DisplayAlign,
                         ::testing::Values(AlignCase{"before"}, AlignCase{"center"}, AlignCase{"after"}),
                         [](const ::testing::TestParamInfo<AlignCase>& info) {
                             return std::string(info.param.align);
                         });

TEST_F(DrawingTest, TextColourAndSpanBackgroundAppearOnlyAroundTheText)
{
    ITextSurface* pSurface = MakeSurface(0, 800, 1920, 200);
    ITextContext* pContext = MakeContext(1920, 64);
    auto attrs = Run("Yellow on black", "#ffff00", "64px");
    attrs[ATTR_BACKGROUNDCOLOR] = "#000000ff";
    pContext->SetText(AddRun(pContext, attrs));
    pContext->RenderOn(pSurface);
    pSurface->Attach(Root());
    pSurface->Show();
    Box text = Find(Opaque(255, 255, 0));
    Box backing = Find(Near(255, 0, 0, 0, 4));
    ASSERT_FALSE(text.Empty());
    ASSERT_FALSE(backing.Empty());
    // The run background wraps the text, centred, not the whole line.
    EXPECT_LE(backing.x0, text.x0);
    EXPECT_GE(backing.x1, text.x1);
    EXPECT_LT(backing.x1 - backing.x0, 1000);
    EXPECT_NEAR(960, (backing.x0 + backing.x1) / 2, 4);
    SaveGallery("text-yellow-on-black");
}

TEST_F(DrawingTest, TextVisibleFalseHidesTextButNotBackgrounds)
{
    ITextSurface* pSurface = MakeSurface(0, 800, 1920, 200);
    ITextContext* pContext = MakeContext(1920, 64);
    TTMLColor blue;
    blue.alpha = blue.blue = 65535;
    pContext->SetParaBackgroundColor(blue);
    auto attrs = Run("Flashing", "#ffffff", "64px");
    attrs[ATTR_BACKGROUNDCOLOR] = "#ff0000";
    pContext->SetText(AddRun(pContext, attrs));
    pContext->RenderOn(pSurface);
    pSurface->Attach(Root());
    pSurface->Show();
    ASSERT_FALSE(Find(Opaque(255, 255, 255)).Empty());
    pContext->SetTextVisible(false);
    EXPECT_TRUE(Find(Opaque(255, 255, 255, 60)).Empty());
    EXPECT_FALSE(Find(Opaque(255, 0, 0, 4)).Empty()) << "span background kept";
    EXPECT_FALSE(Find(Opaque(0, 0, 255, 4)).Empty()) << "paragraph background kept";
    // Background flashing is the surface's: it hides both, the text comes back.
    pContext->SetTextVisible(true);
    pSurface->SetBackgroundVisible(false);
    EXPECT_FALSE(Find(Opaque(255, 255, 255)).Empty());
    EXPECT_TRUE(Find(Opaque(255, 0, 0, 4)).Empty());
    EXPECT_TRUE(Find(Opaque(0, 0, 255, 4)).Empty());
}

TEST_F(DrawingTest, ReplaceAttributeChangesEveryRunsColour)
{
    ITextSurface* pSurface = MakeSurface(0, 800, 1920, 200);
    ITextContext* pContext = MakeContext(1920, 64);
    std::string markup = AddRun(pContext, Run("Red ", "#ff0000", "64px")) +
                         AddRun(pContext, Run("Green ", "#00ff00", "64px")) +
                         AddRun(pContext, Run("Blue", "#0000ff", "64px"));
    pContext->SetText(markup);
    // As the caption settings do: read, rewrite, store.
    std::string text = pContext->GetText();
    pContext->ReplaceAttribute(text, ATTR_COLOR, "#ffff00");
    pContext->SetText(text);
    pContext->RenderOn(pSurface);
    pSurface->Attach(Root());
    pSurface->Show();
    EXPECT_TRUE(Find(Opaque(255, 0, 0)).Empty());
    EXPECT_TRUE(Find(Opaque(0, 255, 0)).Empty());
    EXPECT_TRUE(Find(Opaque(0, 0, 255)).Empty());
    Box yellow = Find(Opaque(255, 255, 0));
    ASSERT_FALSE(yellow.Empty());
    EXPECT_GT(yellow.x1 - yellow.x0, 300) << "all three runs drawn";
}

TEST_F(DrawingTest, MenuOpacityFromTextStyleReachesTheText)
{
    ITextSurface* pSurface = MakeSurface(0, 800, 1920, 200);
    ITextContext* pContext = MakeContext(1920, 64);
    std::string markup = pContext->FormatText(Run("Half", "#ffffff", "64px"));
    ITextContext::Colours colours;
    colours.second.alpha = 32767;
    colours.second.defaultOpacity = false;
    pContext->SetTextStyle("Half", false, &colours, nullptr);
    pContext->SetText(markup);
    pContext->RenderOn(pSurface);
    pSurface->Attach(Root());
    pSurface->Show();
    EXPECT_TRUE(Find(Opaque(255, 255, 255, 30)).Empty());
    EXPECT_FALSE(Find(Near(127, 127, 127, 127, 4)).Empty());
}

namespace {

struct EdgeCase {
    const char* name;
    int type;
    double offset;     // pixels, both axes
    double thickness;  // pixels
    int dx, dy;        // expected sign of the edge box's shift from the text box
    bool uniform;      // edge box encloses the text box on all sides
};

void PrintTo(const EdgeCase& c, std::ostream* os)
{
    *os << c.name;
}

class Edges : public DrawingTest, public ::testing::WithParamInterface<EdgeCase> {};

}  // namespace

// Guards: outline and shadow pixels appear in the edge colour on the side
// the offsets say, and a uniform edge surrounds the text on every side.
TEST_P(Edges, EdgePixelsAppearWhereTheOffsetsSay)
{
    const EdgeCase& c = GetParam();
    ITextSurface* pSurface = MakeSurface(0, 700, 1920, 300);
    ITextContext* pContext = MakeContext(1920, 80);
    TextOutline outline;
    outline.type = c.type;
    outline.offsetX = outline.offsetY = c.offset;
    outline.thickness = c.thickness;
    outline.color.alpha = outline.color.red = 65535;  // red edges
    std::string markup = AddRun(pContext, Run("Edge Test", "#ffffff", "80px"), &outline);
    pContext->SetText(markup);
    pContext->RenderOn(pSurface);
    pSurface->Attach(Root());
    pSurface->Show();
    Box text = Find(Opaque(255, 255, 255, 20));
    Box edge = Find(Opaque(255, 0, 0, 20));
    ASSERT_FALSE(text.Empty());
    ASSERT_FALSE(edge.Empty());
    auto sign = [](int v) { return v > 0 ? 1 : v < 0 ? -1 : 0; };
    EXPECT_EQ(c.dx, sign(edge.x0 - text.x0)) << "left edges " << edge.x0 << " " << text.x0;
    EXPECT_EQ(c.dy, sign(edge.y0 - text.y0)) << "top edges " << edge.y0 << " " << text.y0;
    if (c.uniform) {
        // Uniform: the edge box encloses the text box by about the thickness.
        EXPECT_NEAR(c.thickness, text.x0 - edge.x0, 2);
        EXPECT_NEAR(c.thickness, edge.x1 - text.x1, 2);
        EXPECT_NEAR(c.thickness, edge.y1 - text.y1, 2);
    } else {
        EXPECT_NEAR(c.offset, edge.x1 - text.x1, 2);
    }
    SaveGallery(std::string("edge-") + c.name);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Edges,
    ::testing::Values(EdgeCase{"Raised", 1, -2.4, 0, -1, -1, false},
                      EdgeCase{"Depressed", 2, 2.4, 0, 1, 1, false},
                      EdgeCase{"Uniform", 3, 0, 8, -1, -1, true},
                      EdgeCase{"LeftDropShadow", 4, -4, 0, -1, -1, false},
                      EdgeCase{"RightDropShadow", 5, 4, 0, 1, 1, false},
                      EdgeCase{"DocumentOutline", 6, 0, 3, -1, -1, true}),
    [](const ::testing::TestParamInfo<EdgeCase>& info) { return std::string(info.param.name); });

TEST_F(DrawingTest, BroadcastLookGallery)
{
    // White text with a black outline over a picture-like background, the
    // way most broadcasts look; kept for a person to judge.
    Evas_Object* pPicture = evas_object_rectangle_add(m_canvas.GetEvas());
    evas_object_color_set(pPicture, 90, 120, 150, 255);
    evas_object_resize(pPicture, 1920, 1080);
    evas_object_show(pPicture);
    ITextSurface* pSurface = MakeSurface(192, 810, 1536, 216);
    pSurface->SetDisplayAlign("after");
    TextOutline outline;
    outline.type = 6;
    outline.thickness = 4;
    outline.color.alpha = 65535;
    std::vector<ITextContext*> lines;
    for (const char* pText : {"I never said that the plan", "would work the first time."}) {
        ITextContext* pContext = MakeContext(1536, 58);
        auto attrs = Run(pText, "#ffffff", "58px");
        attrs[ATTR_FONTFAMILY] = "Arial, proportionalSansSerif";
        pContext->SetText(AddRun(pContext, attrs, &outline));
        lines.push_back(pContext);
    }
    Stack(pSurface, lines);
    pSurface->Attach(Root());
    pSurface->Show();
    EXPECT_FALSE(Find(Opaque(0, 0, 0, 10), 192, 810, 1536, 216).Empty());
    EXPECT_FALSE(Find(Opaque(255, 255, 255, 10), 192, 810, 1536, 216).Empty());
    SaveGallery("broadcast-look");
    evas_object_del(pPicture);
}
