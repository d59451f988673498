// Paragraphs on the canvas: flashing, caption-menu opacity, outlines and
// edges. Colours and span backgrounds are judged end to end in test_render.
#include "DrawingFixture.h"
#include "RowPrinter.h"

using namespace TTML;

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
    Show(pSurface, pContext);
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
    Show(pSurface, pContext);
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
    pContext->SetText(AddRun(pContext, Run("Edge Test", "#ffffff", "80px"), &outline));
    Show(pSurface, pContext);
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
}

INSTANTIATE_TEST_SUITE_P(Cases, Edges,
                         ::testing::Values(EdgeCase{"Raised", 1, -2.4, 0, -1, -1, false},
                                           EdgeCase{"Depressed", 2, 2.4, 0, 1, 1, false},
                                           EdgeCase{"Uniform", 3, 0, 8, -1, -1, true},
                                           EdgeCase{"LeftDropShadow", 4, -4, 0, -1, -1, false},
                                           EdgeCase{"RightDropShadow", 5, 4, 0, 1, 1, false},
                                           EdgeCase{"DocumentOutline", 6, 0, 3, -1, -1, true}),
                         TTMLTest::RowName());
