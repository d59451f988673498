// The renderer's numbers: cell sizes, font size and line gap by family and
// flag, caption menu overrides; the shared region surfaces; paragraph
// stacking by display alignment. Edge types are judged on pixels.

#include "RenderFixture.h"

#include "CGraphics.h"
#include "LogCapture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <tuple>

using namespace TTML;

namespace {

const char* const kRegion = "tts:origin=\"10% 70%\" tts:extent=\"80% 20%\"";

TEST_F(RenderTest, CellSizeIsRootOverColumnsAndRowsInWholePixels)
{
    const std::vector<std::tuple<const char*, double, double>> resolutions{
        {"32 15", 60, 72}, {"40 24", 48, 45}, {"", 1920, 1080}, {"0 15", 0, 72}, {"1920px 1080px", 1, 1}};
    for (const auto& r : resolutions) {
        CGraphicsEngine engine(m_pGraphics);
        engine.CreateRootSurface(std::get<0>(r), "", "");
        EXPECT_DOUBLE_EQ(std::get<1>(r), engine.GetCellSize().first) << std::get<0>(r);
        EXPECT_DOUBLE_EQ(std::get<2>(r), engine.GetCellSize().second) << std::get<0>(r);
    }
    LogCapture log;
    CGraphicsEngine engine(nullptr);  // no root container known
    engine.CreateRootSurface("32 15", "", "");
    EXPECT_EQ(std::make_pair(0.0, 0.0), engine.GetCellSize());
    EXPECT_TRUE(log.Has("RootContainer is NULL", DLOG_WARN));
}

struct SizeCase {
    const char* name;
    const char* style;
    bool flag;
    double px, gap;
};

class FontSize : public RenderTest, public ::testing::WithParamInterface<SizeCase> {};

TEST_P(FontSize, IsScaledOnceAndSetsTheLineGap)
{
    const SizeCase& c = GetParam();
    const std::list<CElementSPTR> elements =
        At(Parse(EbuOne("<style xml:id=\"s\" " + std::string(c.style) + "/>", kRegion, " style=\"s\">Words")), 1000);
    // The second renderer stands for the rebuild after a caption division change.
    for (int build = 0; build < 2; ++build) {
        CTextContext* pContext = Paragraph(Regions(Make(elements, c.flag)).front(), 0);
        ASSERT_NE(nullptr, pContext);
        EXPECT_NEAR(c.px, pContext->GetFontSize(), 1e-4) << "build " << build;
        EXPECT_NEAR(c.gap, pContext->GetLineGap(), 1e-4) << "build " << build;
    }
}

#define ONE_CELL "tts:fontSize=\"100%\" "
INSTANTIATE_TEST_SUITE_P(
    Render, FontSize,
    ::testing::Values(SizeCase{"OneCellNormal", ONE_CELL, false, 65.52, 8.28},
                      SizeCase{"OneCellScaleFlag", ONE_CELL, true, 64.8, 0.77 * 90 - 64.8},
                      SizeCase{"HalfCell", "tts:fontSize=\"50%\"", false, 32.76, 0.82 * 45 - 32.76},
                      // A negative gap is clamped without the flag only.
                      SizeCase{"TightLineHeight", ONE_CELL "tts:lineHeight=\"100%\"", false, 65.52, 0.0},
                      SizeCase{"TightWithFlagStaysNegative", ONE_CELL "tts:lineHeight=\"100%\"", true, 64.8,
                               0.77 * 72 - 64.8},
                      // Monospaced families by exact name only.
                      SizeCase{"Monospace", ONE_CELL "tts:fontFamily=\"monospace\"", false, 0.83 * 72,
                               0.8 * 90 - 0.83 * 72},
                      SizeCase{"MonoWithFlag", ONE_CELL "tts:fontFamily=\"Noto Sans Mono\"", true, 0.8 * 72,
                               0.7 * 90 - 0.8 * 72},
                      SizeCase{"CapitalisedIsNotMono", ONE_CELL "tts:fontFamily=\"Monospace\"", false, 65.52, 8.28}),
    TTMLTest::RowName());
#undef ONE_CELL

// Menu settings while captions are on; the markup is read after drawing,
// the window colour from the canvas.
struct MenuCase {
    const char* name;
    int status, size, fontStyle, style, windowColor;
    const char* present;  // in the paragraph markup after drawing
    const char* absent;
    unsigned int window;  // the region's colour on the canvas
};

class MenuOverride : public RenderTest, public ::testing::WithParamInterface<MenuCase> {};

TEST_P(MenuOverride, AppliesWhileCaptionsAreOn)
{
    const MenuCase& c = GetParam();
    TTMLMenuOption* pMenu = CTTMLMenu::GetInstance()->GetTTMLMenuData();
    pMenu->status = c.status;
    pMenu->size = c.size;
    pMenu->fontStyle = c.fontStyle;
    pMenu->Style = c.style;
    pMenu->windowColor = c.windowColor;
    CRenderer* pRenderer = Draw(Parse(EbuOne("<style xml:id=\"s\" tts:fontSize=\"200%\"/>",
                                             "tts:origin=\"10% 60%\" tts:extent=\"80% 30%\" "
                                             "tts:backgroundColor=\"#FF0000\" tts:showBackground=\"always\"",
                                             " style=\"s\">Words")),
                                1000);
    ASSERT_NE(nullptr, pRenderer);
    const std::string markup = Paragraph(Regions(pRenderer).front(), 0)->GetText();
    EXPECT_NE(std::string::npos, markup.find(c.present)) << markup;
    if (*c.absent) {
        EXPECT_EQ(std::string::npos, markup.find(c.absent)) << markup;
    }
    const std::vector<int> r = RegionRect(pRenderer);
    EXPECT_EQ(c.window, m_canvas.GetPixel(r[0] + r[2] - 3, r[1] + r[3] - 3));
}

INSTANTIATE_TEST_SUITE_P(
    Render, MenuOverride,
    ::testing::Values(MenuCase{"Off", 0, 3, 1, 1, 1, "font_size=131", "font_weight", 0xFFFF0000},  // 2c: 72 x 0.91 x 2
                      MenuCase{"Size3", 1, 3, 0, 0, 0, "font_size=52", "", 0xFFFF0000},
                      MenuCase{"SizeOutOfRange", 1, 5, 0, 0, 0, "font_size=131", "", 0xFFFF0000},
                      MenuCase{"MenuFont", 1, 0, 1, 0, 0, "Mono'", "", 0xFFFF0000},
                      MenuCase{"Bold", 1, 0, 0, 1, 0, "font_weight=bold", "", 0xFFFF0000},
                      MenuCase{"Italic", 1, 0, 0, 2, 0, "font_style=italic", "font_weight=bold", 0xFFFF0000},
                      MenuCase{"WindowColourFirst", 1, 0, 0, 0, 1, "font_size=131", "", 0xFFFFFFFF},
                      MenuCase{"WindowColourLast", 1, 0, 0, 0, 8, "font_size=131", "", 0xFF00FFFF}),
    TTMLTest::RowName());

TEST_F(RenderTest, RenderersShareRegionSurfacesUntilTheLastIsDestroyed)
{
    CSubtitleInfo* pInfo = Parse(Ebu("", "<region xml:id=\"r\" " + std::string(kRegion) + "/>",
                                     "<div region=\"r\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">One</p>"
                                     "<p begin=\"00:00:02.000\" end=\"00:00:03.000\">Two</p></div>"));
    CGraphics* pGraphics = static_cast<CGraphics*>(m_pGraphics);
    const std::size_t before = pGraphics->GetObjectCount();
    CRenderer* pFirst = Draw(pInfo, 1000);
    CRenderer* pSecond = Draw(pInfo, 2000);
    ASSERT_TRUE(pFirst && pSecond);
    EXPECT_EQ(Regions(pFirst).front().pSurface, Regions(pSecond).front().pSurface) << "one surface per region id";
    EXPECT_EQ(before + 3, pGraphics->GetObjectCount()) << "a surface and two paragraphs";
    Destroy(pFirst);
    EXPECT_EQ(before + 2, pGraphics->GetObjectCount()) << "the surface stays for the second";
    CRenderer* pThird = Draw(pInfo, 1000);
    EXPECT_EQ(Regions(pSecond).front().pSurface, Regions(pThird).front().pSurface);
    Destroy(pSecond);
    Destroy(pThird);
    EXPECT_EQ(before, pGraphics->GetObjectCount()) << "the last renderer gives the surface back";
}

class DisplayAlign : public RenderTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(DisplayAlign, StacksParagraphsInOrderAndLeavesThePenAtTheTop)
{
    const std::string align = GetParam();
    const std::string p = "<p begin=\"00:00:01.000\" end=\"00:00:02.000\">";
    CSubtitleInfo* pInfo = Parse(Ebu("<style xml:id=\"s\" tts:fontSize=\"100%\"/>",
                                     "<region xml:id=\"r\" tts:origin=\"10% 40%\" tts:extent=\"80% 50%\""
                                     " tts:displayAlign=\"" + align + "\"/>",
                                     "<div region=\"r\" style=\"s\">" + p + "First</p>" + p + "Second</p>" + p +
                                         "Third</p></div>"));
    CRenderer* pRenderer = Draw(pInfo, 1000);
    ASSERT_NE(nullptr, pRenderer);
    const CRenderer::RegionView region = Regions(pRenderer).front();
    const std::vector<int> r = RegionRect(pRenderer);
    std::vector<std::vector<int>> first;
    // A redraw (a flashing tick) must place them again exactly there.
    for (int draw = 0; draw < 2; ++draw) {
        std::vector<std::vector<int>> rects;
        for (std::size_t i = 0; i < 3; ++i) {
            int x, y, w, h;
            ASSERT_TRUE(Paragraph(region, i)->GetTextRect(&x, &y, &w, &h));
            rects.push_back({x, y, w, h});
        }
        for (std::size_t i = 1; i < 3; ++i)
            EXPECT_EQ(rects[i - 1][1] + rects[i - 1][3], rects[i][1]) << "paragraph " << i << " follows";
        const int top = rects[0][1] - r[1];
        const int bottom = r[1] + r[3] - (rects[2][1] + rects[2][3]);
        if (align == "before")
            EXPECT_EQ(0, top);
        else if (align == "after")
            EXPECT_EQ(0, bottom);
        else
            EXPECT_LE(std::abs(top - bottom), 1);
        if (draw == 0)
            first = rects;
        else
            EXPECT_EQ(first, rects);
        m_pEngine->RenderText(pRenderer);
    }
}

INSTANTIATE_TEST_SUITE_P(Render, DisplayAlign, ::testing::Values("before", "center", "after"));

}  // namespace
