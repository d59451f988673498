// The renderer's numbers, each a table: cell sizes, font size and line gap
// by family and flag, edge types, menu font sizes and styles; the shared
// region surfaces; paragraph stacking by display alignment.

#include "RenderFixture.h"

#include "CGraphics.h"
#include "LogCapture.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <gtest/gtest.h>

using namespace TTML;

namespace {

// ---- Cell size from the cell resolution on a 1920x1080 root ----------------

struct CellCase {
    const char* name;
    const char* resolution;
    bool graphics;  // false: no root container known
    double w, h;
};

void PrintTo(const CellCase& c, std::ostream* os) { *os << c.name; }

class CellSize : public RenderTest, public ::testing::WithParamInterface<CellCase> {};

TEST_P(CellSize, IsRootOverColumnsAndRowsInWholePixels)
{
    const CellCase& c = GetParam();
    LogCapture log;
    CGraphicsEngine engine(c.graphics ? m_pGraphics : nullptr);
    engine.CreateRootSurface(c.resolution, "", "");
    EXPECT_DOUBLE_EQ(c.w, engine.GetCellSize().first);
    EXPECT_DOUBLE_EQ(c.h, engine.GetCellSize().second);
    EXPECT_EQ(!c.graphics, log.Has("RootContainer is NULL"));
}

INSTANTIATE_TEST_SUITE_P(Render, CellSize,
                         ::testing::Values(CellCase{"ThirtyTwoByFifteen", "32 15", true, 60, 72},
                                           CellCase{"FortyByTwentyFour", "40 24", true, 48, 45},
                                           CellCase{"EmptyIsOneCell", "", true, 1920, 1080},
                                           CellCase{"ZeroColumns", "0 15", true, 0, 72},
                                           CellCase{"PixelsReadAsNumbers", "1920px 1080px", true, 1, 1},
                                           CellCase{"NoRootContainer", "32 15", false, 0, 0}),
                         [](const ::testing::TestParamInfo<CellCase>& info) { return info.param.name; });

// ---- Font size and line gap, scaled once -----------------------------------

struct SizeCase {
    const char* name;
    const char* fontSize;
    const char* lineHeight;
    bool flag;
    double px, gap;
    const char* family = "";
};

void PrintTo(const SizeCase& c, std::ostream* os) { *os << c.name; }

class FontSize : public RenderTest, public ::testing::WithParamInterface<SizeCase> {};

TEST_P(FontSize, IsScaledOnceAndSetsTheLineGap)
{
    const SizeCase& c = GetParam();
    CSubtitleInfo* pInfo = Parse(Ebu("<style xml:id=\"s\" tts:fontSize=\"" + std::string(c.fontSize) +
                                         "\" tts:lineHeight=\"" + c.lineHeight + "\"" +
                                         (*c.family ? std::string(" tts:fontFamily=\"") + c.family + "\"" : "") +
                                         "/>",
                                     "<region xml:id=\"r\" tts:origin=\"10% 70%\" tts:extent=\"80% 20%\"/>",
                                     "<div region=\"r\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\" style=\"s\">Words</p></div>"));
    const std::list<CElementSPTR> elements = At(pInfo, 1000);
    // The second renderer stands for the rebuild after a caption division change.
    for (int build = 0; build < 2; ++build) {
        CRenderer* pRenderer = Make(elements, c.flag);
        CTextContext* pContext = Paragraph(Regions(pRenderer).front(), 0);
        ASSERT_NE(nullptr, pContext);
        EXPECT_NEAR(c.px, pContext->GetFontSize(), 1e-4) << "build " << build;
        EXPECT_NEAR(c.gap, pContext->GetLineGap(), 1e-4) << "build " << build;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Render, FontSize,
    ::testing::Values(SizeCase{"OneCellNormal", "100%", "normal", false, 65.52, 8.28},
                      SizeCase{"OneCellScaleFlag", "100%", "normal", true, 64.8, 0.77 * 90 - 64.8},
                      SizeCase{"HalfCell", "50%", "normal", false, 32.76, 0.82 * 45 - 32.76},
                      SizeCase{"TightLineHeight", "100%", "100%", false, 65.52, 0.0},  // negative gap clamped
                      SizeCase{"TightWithFlagStaysNegative", "100%", "100%", true, 64.8, 0.77 * 72 - 64.8},
                      // Monospaced families by exact name only.
                      SizeCase{"Monospace", "100%", "normal", false, 0.83 * 72, 0.8 * 90 - 0.83 * 72, "monospace"},
                      SizeCase{"MonoWithFlag", "100%", "normal", true, 0.8 * 72, 0.7 * 90 - 0.8 * 72, "Noto Sans Mono"},
                      SizeCase{"LettrGoth", "100%", "normal", false, 0.83 * 72, 0.8 * 90 - 0.83 * 72, "LettrGoth12 BT"},
                      SizeCase{"CapitalisedIsNotMono", "100%", "normal", false, 65.52, 8.28, "Monospace"}),
    [](const ::testing::TestParamInfo<SizeCase>& info) { return info.param.name; });

// ---- Edge types --------------------------------------------------------------

struct EdgeCase {
    int type;
    int typeAfter;
    double offset, thickness;  // a 60-pixel font, thickness 2 before
};

class EdgeType : public ::testing::TestWithParam<EdgeCase> {};

TEST_P(EdgeType, OffsetsArePercentOfTheFont)
{
    TextOutline outline;
    outline.type = GetParam().type;
    outline.thickness = 2;
    CRenderer::ApplyEdgeType(60, outline);
    EXPECT_EQ(GetParam().typeAfter, outline.type);
    EXPECT_DOUBLE_EQ(GetParam().offset, outline.offsetX);
    EXPECT_DOUBLE_EQ(GetParam().offset, outline.offsetY);
    EXPECT_DOUBLE_EQ(GetParam().thickness, outline.thickness);
}

INSTANTIATE_TEST_SUITE_P(Render, EdgeType,
                         ::testing::Values(EdgeCase{1, 1, -1.8, 2}, EdgeCase{2, 2, 1.8, 2}, EdgeCase{3, 3, 0, 6},
                                           EdgeCase{4, 4, -3, 2}, EdgeCase{5, 5, 3, 2}, EdgeCase{6, 0, 0, 2}));

// ---- Menu font sizes and styles in the drawn markup --------------------------

struct MenuCase {
    const char* name;
    int status, size, fontStyle, style;
    const char* present;  // in the paragraph markup after drawing
    const char* absent;
};

void PrintTo(const MenuCase& c, std::ostream* os) { *os << c.name; }

class MenuMarkup : public RenderTest, public ::testing::WithParamInterface<MenuCase> {};

TEST_P(MenuMarkup, OverridesTheDocumentWhileCaptionsAreOn)
{
    const MenuCase& c = GetParam();
    TTMLMenuOption* pMenu = CTTMLMenu::GetInstance()->GetTTMLMenuData();
    pMenu->status = c.status;
    pMenu->size = c.size;
    pMenu->fontStyle = c.fontStyle;
    pMenu->Style = c.style;
    CSubtitleInfo* pInfo = Parse(Ebu("<style xml:id=\"s\" tts:fontSize=\"200%\"/>",
                                     "<region xml:id=\"r\" tts:origin=\"10% 60%\" tts:extent=\"80% 30%\"/>",
                                     "<div region=\"r\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\" style=\"s\">Words</p></div>"));
    CRenderer* pRenderer = Draw(pInfo, 1000);
    ASSERT_NE(nullptr, pRenderer);
    const std::string markup = Paragraph(Regions(pRenderer).front(), 0)->GetText();
    EXPECT_NE(std::string::npos, markup.find(c.present)) << markup;
    if (*c.absent) {
        EXPECT_EQ(std::string::npos, markup.find(c.absent)) << markup;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Render, MenuMarkup,
    ::testing::Values(MenuCase{"Off", 0, 3, 1, 1, "font_size=131", "font_weight"},  // 2c of 72 px x 0.91
                      MenuCase{"Size1", 1, 1, 0, 0, "font_size=32", ""},
                      MenuCase{"Size2", 1, 2, 0, 0, "font_size=40", ""},
                      MenuCase{"Size3", 1, 3, 0, 0, "font_size=52", ""},
                      MenuCase{"Size4", 1, 4, 0, 0, "font_size=54", ""},
                      MenuCase{"SizeOutOfRange", 1, 5, 0, 0, "font_size=131", ""},
                      MenuCase{"MenuFont", 1, 0, 1, 0, "Mono'", ""},
                      MenuCase{"Bold", 1, 0, 0, 1, "font_weight=bold", ""},
                      MenuCase{"Italic", 1, 0, 0, 2, "font_style=italic", "font_weight=bold"}),
    [](const ::testing::TestParamInfo<MenuCase>& info) { return info.param.name; });

// ---- Shared region surfaces --------------------------------------------------

TEST_F(RenderTest, RenderersShareRegionSurfacesUntilTheLastIsDestroyed)
{
    CSubtitleInfo* pInfo = Parse(Ebu("", "<region xml:id=\"r\" tts:origin=\"10% 70%\" tts:extent=\"80% 20%\"/>",
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

// ---- Paragraph stacking by display alignment ---------------------------------

class DisplayAlign : public RenderTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(DisplayAlign, StacksParagraphsInOrderAndLeavesThePenAtTheTop)
{
    const std::string align = GetParam();
    CSubtitleInfo* pInfo = Parse(Ebu("<style xml:id=\"s\" tts:fontSize=\"100%\"/>",
                                     "<region xml:id=\"r\" tts:origin=\"10% 40%\" tts:extent=\"80% 50%\""
                                     " tts:displayAlign=\"" + align + "\"/>",
                                     "<div region=\"r\" style=\"s\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">First</p>"
                                     "<p begin=\"00:00:01.000\" end=\"00:00:02.000\">Second</p><p begin=\"00:00:01.000\" end=\"00:00:02.000\">Third</p></div>"));
    CRenderer* pRenderer = Draw(pInfo, 1000);
    ASSERT_NE(nullptr, pRenderer);
    const CRenderer::RegionView region = Regions(pRenderer).front();
    int rx, ry, rw, rh;
    static_cast<CTextSurface*>(region.pSurface)->GetScreenRect(&rx, &ry, &rw, &rh);
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
        const int top = rects[0][1] - ry;
        const int bottom = ry + rh - (rects[2][1] + rects[2][3]);
        if (align == "before")
            EXPECT_EQ(0, top);
        else if (align == "after")
            EXPECT_EQ(0, bottom);
        else
            EXPECT_LE(std::abs(top - bottom), 1);
        if (draw == 0) {
            first = rects;
        } else {
            EXPECT_EQ(first, rects);
        }
        m_pEngine->RenderText(pRenderer);
    }
}

INSTANTIATE_TEST_SUITE_P(Render, DisplayAlign, ::testing::Values("before", "center", "after"));

}  // namespace
