// Pixels of real documents on the headless canvas: where the text lands and
// in which colours, backgrounds, window, outline, hidden text, an image
// region, and text flashing over successive drawings.

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

std::string Imsc(const std::string& regionAttrs, const std::string& spanAttrs)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
           " xmlns:tts=\"http://www.w3.org/ns/ttml#styling\" ttp:cellResolution=\"32 15\""
           " ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/text\" xml:lang=\"en\"><head><layout>"
           "<region xml:id=\"r\" tts:origin=\"10% 75%\" tts:extent=\"80% 20%\" " + regionAttrs +
           "/></layout></head><body><div region=\"r\"><p begin=\"1s\" end=\"2s\" tts:fontSize=\"1c\">"
           "<span " + spanAttrs + ">Subtitle text</span></p></div></body></tt>";
}

std::string Bottom(const std::string& style, const std::string& regionStyle = "")
{
    return EbuOne("<style xml:id=\"s\" tts:fontSize=\"100%\" tts:textAlign=\"center\" " + style + "/>",
                  "tts:origin=\"10% 75%\" tts:extent=\"80% 20%\" tts:displayAlign=\"after\" " + regionStyle,
                  "><span style=\"s\">Subtitle text</span>");
}

struct Menu {
    int status = 0, fontOpacity = 0, edgeType = 0, edgeColor = 0;
};

struct Region {
    int x, y, w, h;
};

Region RegionOf(const CRenderer* pRenderer)
{
    const std::vector<int> r = RenderTest::RegionRect(pRenderer);
    return Region{r[0], r[1], r[2], r[3]};
}

struct PixelCase {
    const char* name;
    std::string xml;
    Menu menu;
    // Given the drawn region; fails the test itself.
    std::function<void(RenderTest&, const Region&)> check;
};

bool Inside(const RenderTest::Box& b, const Region& r)
{
    return !b.Empty() && b.x0 >= r.x && b.y0 >= r.y && b.x1 < r.x + r.w && b.y1 < r.y + r.h;
}

class Pixels : public RenderTest, public ::testing::WithParamInterface<PixelCase> {};

TEST_P(Pixels, AreWhereTheDocumentAndSettingsPutThem)
{
    const PixelCase& c = GetParam();
    TTMLMenuOption* pMenu = CTTMLMenu::GetInstance()->GetTTMLMenuData();
    pMenu->status = c.menu.status;
    pMenu->fontOpacity = c.menu.fontOpacity;
    pMenu->edgeType = c.menu.edgeType;
    pMenu->edgeColor = c.menu.edgeColor;
    CRenderer* pRenderer = Draw(Parse(c.xml), 1000);
    ASSERT_NE(nullptr, pRenderer);
    c.check(*this, RegionOf(pRenderer));
    Destroy(pRenderer);
    EXPECT_TRUE(Find([](unsigned int p) { return p != 0; }).Empty()) << "nothing left on the canvas";
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
                      EXPECT_EQ(r.x, window.x0);
                      EXPECT_EQ(r.y, window.y0);
                      EXPECT_EQ(r.x + r.w - 1, window.x1);
                      EXPECT_EQ(r.y + r.h - 1, window.y1);
                  }},
        PixelCase{"MenuEdgeInItsColour", Bottom("tts:color=\"#FFFFFF\""), {1, 0, 3, 5},
                  [](RenderTest& t, const Region& r) {
                      RenderTest::Box text = t.FindColour(kWhite);
                      RenderTest::Box edge = t.FindColour(kBlue);
                      EXPECT_TRUE(Inside(edge, r));
                      EXPECT_LE(edge.x0, text.x0);
                      EXPECT_GE(edge.x1, text.x1);
                  }},
        PixelCase{"MenuFontOpacityNone", Bottom("tts:color=\"#FFFFFF\""), {1, 3, 0, 0},
                  [](RenderTest& t, const Region&) { EXPECT_TRUE(t.FindColour(kWhite).Empty()); }},
        PixelCase{"DocumentOutline", Imsc("", "tts:color=\"#FFFFFF\" tts:textOutline=\"#FF0000 4px\""), {},
                  [](RenderTest& t, const Region& r) {
                      EXPECT_TRUE(Inside(t.FindColour(kRed), r));
                      EXPECT_GT(t.FindColour(kWhite).count, 100);
                  }},
        PixelCase{"HiddenSpanDrawsNothing",
                  Imsc("tts:showBackground=\"whenActive\"",
                       "tts:visibility=\"hidden\" tts:color=\"#FFFFFF\" tts:backgroundColor=\"#FF0000\""),
                  {},
                  [](RenderTest& t, const Region&) {
                      EXPECT_TRUE(t.Find([](unsigned int p) { return p != 0; }).Empty());
                  }}),
    TTMLTest::RowName());

TEST_F(RenderTest, FlashingTextAlternatesOverDrawings)
{
    TTMLMenuOption* pMenu = CTTMLMenu::GetInstance()->GetTTMLMenuData();
    pMenu->status = 1;
    pMenu->fontOpacity = 1;
    CRenderer* pRenderer = Draw(Parse(Bottom("tts:color=\"#FFFFFF\"")), 1000);
    ASSERT_NE(nullptr, pRenderer);
    EXPECT_TRUE(m_pEngine->IsFlashingEnabled(pRenderer));
    std::vector<bool> shown;
    for (int draw = 0; draw < 4; ++draw) {
        if (draw)
            m_pEngine->RenderText(pRenderer);
        shown.push_back(!FindColour(kWhite).Empty());
    }
    EXPECT_EQ((std::vector<bool>{false, true, false, true}), shown);
}

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
    RenderTest::Box picture = Find([](unsigned int p) { return (p >> 24) != 0; });
    EXPECT_TRUE(Inside(picture, r));
    EXPECT_GT(picture.count, r.w * r.h / 4);
}

}  // namespace
