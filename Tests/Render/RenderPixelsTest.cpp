// Pixels of real documents on the headless canvas: where the text lands and
// in which colours, backgrounds, window, opacity, padding, overflow,
// outlines and edges, hidden text, an image region, and flashing over
// successive drawings.

#include "RenderFixture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <sstream>

using namespace TTML;

namespace {

// Opaque colours as the canvas holds them (0xAARRGGBB, premultiplied).
const unsigned int kWhite = 0xFFFFFFFF;
const unsigned int kYellow = 0xFFFFFF00;
const unsigned int kRed = 0xFFFF0000;
const unsigned int kGreen = 0xFF00FF00;
const unsigned int kBlue = 0xFF0000FF;

const std::string kBottom = "tts:origin=\"10% 75%\" tts:extent=\"80% 20%\" ";

std::string Imsc(const std::string& regionAttrs, const std::string& spanAttrs, const std::string& text = "Subtitle text")
{
    return WalkTest::Doc("<div region=\"r\"><p begin=\"1s\" end=\"2s\" tts:fontSize=\"1c\"><span " + spanAttrs + ">" +
                             text + "</span></p></div>",
                         "", "<region xml:id=\"r\" " + regionAttrs + "/>",
                         "ttp:cellResolution=\"32 15\" ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/text\" "
                         "xml:lang=\"en\"");
}

std::string Bottom(const std::string& style, const std::string& regionStyle = "")
{
    return EbuOne("<style xml:id=\"s\" tts:fontSize=\"100%\" tts:textAlign=\"center\" " + style + "/>",
                  kBottom + "tts:displayAlign=\"after\" " + regionStyle, "><span style=\"s\">Subtitle text</span>");
}

// Caption settings while captions are on (status 1) or off.
struct Menu {
    int status = 0, fontOpacity = 0, edgeType = 0, edgeColor = 0, bgOpacity = 0, windowOpacity = 0;
};

void SetMenu(const Menu& m)
{
    TTMLMenuOption* pMenu = CTTMLMenu::GetInstance()->GetTTMLMenuData();
    pMenu->status = m.status;
    pMenu->fontOpacity = m.fontOpacity;
    pMenu->edgeType = m.edgeType;
    pMenu->edgeColor = m.edgeColor;
    pMenu->bgOpacity = m.bgOpacity;
    pMenu->windowOpacity = m.windowOpacity;
}

struct Region {
    int x, y, w, h;
};

Region RegionOf(const CRenderer* pRenderer)
{
    const std::vector<int> r = RenderTest::RegionRect(pRenderer);
    return Region{r[0], r[1], r[2], r[3]};
}

bool Inside(const RenderTest::Box& b, const Region& r)
{
    return !b.Empty() && b.x0 >= r.x && b.y0 >= r.y && b.x1 < r.x + r.w && b.y1 < r.y + r.h;
}

struct PixelCase {
    const char* name;
    std::string xml;
    Menu menu;
    // Given the drawn region; fails the test itself.
    std::function<void(RenderTest&, const Region&)> check;
};

class Pixels : public RenderTest, public ::testing::WithParamInterface<PixelCase> {};

TEST_P(Pixels, AreWhereTheDocumentAndSettingsPutThem)
{
    const PixelCase& c = GetParam();
    SetMenu(c.menu);
    CRenderer* pRenderer = Draw(Parse(c.xml), 1000);
    ASSERT_NE(nullptr, pRenderer);
    c.check(*this, RegionOf(pRenderer));
    Destroy(pRenderer);
    EXPECT_TRUE(Find([](unsigned int p) { return p != 0; }).Empty()) << "nothing left on the canvas";
}

// The text's box against the box of the edge colour: edges offset up-left
// (dx, dy < 0) or down-right (> 0) show on that side only.
void EdgeSide(RenderTest& t, const Region& r, int side)
{
    RenderTest::Box text = t.FindColour(kWhite);
    RenderTest::Box edge = t.FindColour(kBlue);
    ASSERT_TRUE(Inside(edge, r));
    EXPECT_EQ(side, edge.x0 < text.x0 ? -1 : 1);
    EXPECT_EQ(side, edge.y0 < text.y0 ? -1 : 1);
    EXPECT_EQ(side, edge.x1 < text.x1 ? -1 : 1);
}

INSTANTIATE_TEST_SUITE_P(
    Render, Pixels,
    ::testing::Values(
        PixelCase{"WhiteTextInsideTheBottomRegion", Bottom("tts:color=\"#FFFFFF\""), {},
                  [](RenderTest& t, const Region& r) {
                      EXPECT_EQ(810, r.y);
                      RenderTest::Box text = t.FindColour(kWhite);
                      EXPECT_GT(text.count, 200);
                      EXPECT_TRUE(Inside(text, r));
                      EXPECT_GT(text.y0, r.y + r.h / 2) << "display align after: in the lower half";
                      EXPECT_NEAR(r.x + r.w / 2, text.CentreX(), 4) << "text align center";
                  }},
        PixelCase{"TextColour", Bottom("tts:color=\"#FFFF00\""), {},
                  [](RenderTest& t, const Region& r) {
                      EXPECT_TRUE(Inside(t.FindColour(kYellow), r));
                      EXPECT_TRUE(t.FindColour(kWhite).Empty());
                  }},
        PixelCase{"SpanBackgroundBehindTheText", Bottom("tts:color=\"#FFFFFF\" tts:backgroundColor=\"#FF0000\""), {},
                  [](RenderTest& t, const Region& r) {
                      RenderTest::Box text = t.FindColour(kWhite);
                      RenderTest::Box back = t.FindColour(kRed);
                      EXPECT_TRUE(Inside(back, r));
                      EXPECT_LE(back.x0, text.x0);
                      EXPECT_GE(back.x1, text.x1);
                      EXPECT_LT(back.x1 - back.x0, r.w / 2) << "a span background, not the whole line";
                  }},
        PixelCase{"WindowColourFillsTheRegion", Bottom("tts:color=\"#FFFFFF\"", "tts:backgroundColor=\"#00FF00\""),
                  {},
                  [](RenderTest& t, const Region& r) {
                      RenderTest::Box window = t.FindColour(kGreen);
                      EXPECT_EQ((std::vector<int>{r.x, r.y, r.x + r.w - 1, r.y + r.h - 1}),
                                (std::vector<int>{window.x0, window.y0, window.x1, window.y1}));
                  }},
        PixelCase{"RegionOpacityAppliesToTheWindow",
                  Imsc(kBottom + "tts:backgroundColor=\"#00FF00\" tts:opacity=\"0.5\"", "tts:color=\"#FFFFFF\""), {},
                  [](RenderTest& t, const Region& r) {
                      const unsigned int corner = t.m_canvas.GetPixel(r.x + r.w - 2, r.y + r.h - 2);
                      EXPECT_NEAR(128, static_cast<int>(corner >> 24), 2);
                      EXPECT_NEAR(128, static_cast<int>((corner >> 8) & 0xFF), 2);
                      EXPECT_TRUE(t.FindColour(kGreen).Empty());
                  }},
        PixelCase{"PaddingMovesTheTextIn",
                  Imsc(kBottom + "tts:padding=\"0px 0px 0px 300px\"", "tts:color=\"#FFFFFF\""), {},
                  [](RenderTest& t, const Region& r) {
                      RenderTest::Box text = t.FindColour(kWhite);
                      EXPECT_GE(text.x0, r.x + 300);
                      EXPECT_LT(text.x0, r.x + 320);
                  }},
        PixelCase{"LongTextIsClippedToTheRegion",
                  Imsc("tts:origin=\"10% 10%\" tts:extent=\"30% 8%\"", "tts:color=\"#FFFFFF\"",
                       "one two three four five six seven eight nine ten"), {},
                  [](RenderTest& t, const Region& r) { EXPECT_TRUE(Inside(t.FindColour(kWhite), r)); }},
        PixelCase{"OverflowVisibleLetsItOut",
                  Imsc("tts:origin=\"10% 10%\" tts:extent=\"30% 8%\" tts:overflow=\"visible\"",
                       "tts:color=\"#FFFFFF\"", "one two three four five six seven eight nine ten"), {},
                  [](RenderTest& t, const Region& r) {
                      RenderTest::Box text = t.FindColour(kWhite);
                      EXPECT_GE(text.y1, r.y + r.h);
                      EXPECT_GE(text.x0, r.x) << "wrapped in the region's width";
                      EXPECT_LT(text.x1, r.x + r.w);
                  }},
        PixelCase{"MenuEdgeInItsColour", Bottom("tts:color=\"#FFFFFF\""), {1, 0, 3, 5},
                  [](RenderTest& t, const Region& r) {
                      RenderTest::Box text = t.FindColour(kWhite);
                      RenderTest::Box edge = t.FindColour(kBlue);
                      EXPECT_TRUE(Inside(edge, r));
                      EXPECT_LE(edge.x0, text.x0);
                      EXPECT_GE(edge.x1, text.x1);
                  }},
        PixelCase{"MenuRaisedEdgeUpLeft", Bottom("tts:color=\"#FFFFFF\""), {1, 0, 1, 5},
                  [](RenderTest& t, const Region& r) { EdgeSide(t, r, -1); }},
        PixelCase{"MenuRightDropShadowDownRight", Bottom("tts:color=\"#FFFFFF\""), {1, 0, 5, 5},
                  [](RenderTest& t, const Region& r) { EdgeSide(t, r, 1); }},
        PixelCase{"MenuFontOpacityHalf", Bottom("tts:color=\"#FFFFFF\""), {1, 2, 0, 0},
                  [](RenderTest& t, const Region& r) {
                      EXPECT_TRUE(t.FindColour(kWhite).Empty());
                      EXPECT_TRUE(Inside(t.FindColour(0x7F7F7F7F), r));
                  }},
        PixelCase{"MenuFontOpacityNone", Bottom("tts:color=\"#FFFFFF\""), {1, 3, 0, 0},
                  [](RenderTest& t, const Region&) { EXPECT_TRUE(t.FindColour(kWhite).Empty()); }},
        PixelCase{"DocumentOutline", Imsc(kBottom, "tts:color=\"#FFFFFF\" tts:textOutline=\"#FF0000 4px\""), {},
                  [](RenderTest& t, const Region& r) {
                      EXPECT_TRUE(Inside(t.FindColour(kRed), r));
                      EXPECT_GT(t.FindColour(kWhite).count, 100);
                  }},
        PixelCase{"HiddenSpanDrawsNothing",
                  Imsc(kBottom + "tts:showBackground=\"whenActive\"",
                       "tts:visibility=\"hidden\" tts:color=\"#FFFFFF\" tts:backgroundColor=\"#FF0000\""),
                  {},
                  [](RenderTest& t, const Region&) {
                      EXPECT_TRUE(t.Find([](unsigned int p) { return p != 0; }).Empty());
                  }}),
    TTMLTest::RowName());

// Each drawing flips the blinking part; the rest stays. Window and
// background blink in opposite phases.
struct FlashCase {
    const char* name;
    Menu menu;
    unsigned int blinking, steady;
    std::vector<bool> shown;  // the blinking colour over four drawings
};

class Flashing : public RenderTest, public ::testing::WithParamInterface<FlashCase> {};

TEST_P(Flashing, AlternatesOverDrawings)
{
    const FlashCase& c = GetParam();
    SetMenu(c.menu);
    CRenderer* pRenderer = Draw(Parse(Bottom("tts:color=\"#FFFFFF\" tts:backgroundColor=\"#FF0000\"",
                                             "tts:backgroundColor=\"#00FF00\"")),
                                1000);
    ASSERT_NE(nullptr, pRenderer);
    EXPECT_TRUE(m_pEngine->IsFlashingEnabled(pRenderer));
    std::vector<bool> shown;
    for (int draw = 0; draw < 4; ++draw) {
        if (draw)
            m_pEngine->RenderText(pRenderer);
        shown.push_back(!FindColour(c.blinking).Empty());
        EXPECT_FALSE(FindColour(c.steady).Empty()) << "drawing " << draw;
    }
    EXPECT_EQ(c.shown, shown);
}

INSTANTIATE_TEST_SUITE_P(Render, Flashing,
                         ::testing::Values(FlashCase{"Text", {1, 1}, kWhite, kRed, {false, true, false, true}},
                                           FlashCase{"Window", {1, 0, 0, 0, 0, 1}, kGreen, kWhite,
                                                     {false, true, false, true}},
                                           FlashCase{"Background", {1, 0, 0, 0, 1, 0}, kRed, kWhite,
                                                     {true, false, true, false}}),
                         TTMLTest::RowName());

TEST_F(RenderTest, ImageRegionShowsItsPicture)
{
    const std::string dir = std::string(INTERTITLE_TESTDATA) + "/imsc1/ttml/altText/";
    std::ifstream in(dir + "altText1.ttml");
    if (!in)
        GTEST_SKIP() << "no IMSC 1 test data at " << dir;
    std::ostringstream xml;
    xml << in.rdbuf();
    CRenderer* pRenderer = Draw(Parse(xml.str(), 1, {dir + "altText1-img.png"}), 2000);
    ASSERT_NE(nullptr, pRenderer);
    const Region r = RegionOf(pRenderer);
    // 160x120 at (80, 60): lengths in px are screen pixels, from the corner of
    // the root container letterboxed to 4:3 (1440x1080 at x = 240).
    EXPECT_EQ((std::vector<int>{240 + 80, 60, 160, 120}), RegionRect(pRenderer));
    auto anyInk = [](unsigned int p) { return (p >> 24) != 0; };
    RenderTest::Box picture = Find(anyInk);
    EXPECT_TRUE(Inside(picture, r));
    EXPECT_GT(picture.count, r.w * r.h / 4);
    Destroy(pRenderer);
    EXPECT_TRUE(Find(anyInk).Empty()) << "the picture is taken off again";
}

}  // namespace
