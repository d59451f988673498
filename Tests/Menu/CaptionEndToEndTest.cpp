// The viewer's settings, changed in the key store by another process, in the
// next drawing of the real renderer on the headless canvas.
#include "MenuFixture.h"

#include "CGraphicsEngine.h"
#include "CParser.h"
#include "CRenderer.h"
#include "CSubtitleInfo.h"
#include "CTextSurface.h"
#include "ITextContext.h"
#include "ShellRun.h"
#include "SubRawData.h"

#include <gtest/gtest.h>

#include <memory>
#include <set>

using namespace TTML;

namespace {

const std::string kTool = INTERTITLE_VCONFTOOL;

// One paragraph in a region at the bottom of the screen: (192, 864, 1536, 108).
const char* const kDocument = R"(<?xml version="1.0" encoding="UTF-8"?>
<tt xmlns="http://www.w3.org/ns/ttml" xmlns:tts="http://www.w3.org/ns/ttml#styling"
    xmlns:ttp="http://www.w3.org/ns/ttml#parameter" xmlns:ebuttm="urn:ebu:tt:metadata"
    ttp:timeBase="media" ttp:cellResolution="50 30" xml:lang="en">
  <head>
    <metadata><ebuttm:documentMetadata>
      <ebuttm:conformsToStandard>urn:ebu:tt:distribution:2014-01</ebuttm:conformsToStandard>
    </ebuttm:documentMetadata></metadata>
    <styling><style xml:id="s" tts:color="#FFFFFF" tts:backgroundColor="#000000C0"/></styling>
    <layout><region xml:id="bottom" tts:origin="10% 80%" tts:extent="80% 10%"/></layout>
  </head>
  <body><div><p region="bottom" style="s" begin="00:00:01.000" end="00:00:05.000">Mind the gap.</p></div></body>
</tt>)";

void OnParsed_Cb(int msgId, void* data)
{
    if (msgId != 0 || !data)
        return;
    auto* pData = static_cast<ParserCallbackData*>(data);
    static_cast<std::unique_ptr<CSubtitleInfo>*>(pData->pUserData)->reset(pData->pSubtitleInfo);
}

struct Drawn {
    int x = 0, y = 0, w = 0, h = 0;  // the region on the screen
    std::string markup;
    bool flashing = false;
};

class CaptionEndToEnd : public MenuTest {
public:
    void SetUp() override
    {
        MenuTest::SetUp();
        ASSERT_TRUE(m_parser.Initialize(1, &OnParsed_Cb, &m_pInfo));
        auto* pRecord = new SubRawData();
        pRecord->profile = -1;
        pRecord->xmlData = kDocument;
        int profile = -1;
        ASSERT_EQ(0, m_parser.ProcessRecord(pRecord, &profile));
        ASSERT_NE(nullptr, m_pInfo);
        m_pEngine.reset(new CGraphicsEngine(m_pGraphics));
        m_pEngine->CreateRootSurface(m_pInfo->GetCellResolution(), m_pInfo->GetTTExtent(), m_pInfo->GetAspectRatio());
        ASSERT_TRUE(Menu()->RegisterVconfKeysForCaption());
        Menu()->ReadMenuData();
    }

    void TearDown() override
    {
        Menu()->UnregisterVconfKeysForCaption();
        m_pEngine.reset();
        m_parser.Destroy();
        MenuTest::TearDown();
    }

    // Another process changes the keys; the menu's callbacks run on the main
    // loop, the last key's being the one waited for.
    bool Change(const std::string& settings, const char* lastKey)
    {
        m_log.Clear();
        Shell(settings);
        return RunUntil([&] { return m_log.HasContaining(std::string("name:[") + lastKey + "]"); });
    }

    // The paragraph drawn at 2 s.
    Drawn Draw()
    {
        std::set<CSubtitleInfo::TimeInterval> intervals;
        m_pInfo->GetUniqueKeys(intervals);
        std::list<CElementSPTR> elements;
        m_pInfo->GetElementListForInterval(*intervals.begin(), elements);
        CRenderer* pRenderer = m_pEngine->CreateRenderer(&elements, false);
        Drawn d;
        if (!pRenderer)
            return d;
        EXPECT_EQ(1, m_pEngine->RenderText(pRenderer));
        std::list<CRenderer::RegionView> regions;
        pRenderer->GetRegions(regions);
        if (regions.size() == 1 && regions.front().contexts.size() == 1) {
            dynamic_cast<CTextSurface*>(regions.front().pSurface)->GetScreenRect(&d.x, &d.y, &d.w, &d.h);
            auto* pContext = static_cast<ITextContext*>(regions.front().contexts.front());
            d.markup = pContext->GetText();
        }
        d.flashing = pRenderer->IsFlashingEnabled();
        m_pEngine->DestroyRenderer(pRenderer);
        return d;
    }

    CParser m_parser;
    std::unique_ptr<CSubtitleInfo> m_pInfo;
    std::unique_ptr<CGraphicsEngine> m_pEngine;
};

TEST_F(CaptionEndToEnd, StyleKeysShowInTheNextDrawing)
{
    const Drawn before = Draw();
    EXPECT_EQ(std::string::npos, before.markup.find("font_size=52")) << before.markup;
    EXPECT_EQ(std::string::npos, before.markup.find("color=#ffff00ff")) << before.markup;

    ASSERT_TRUE(Change(kTool + " set -t int db/menu/caption/caption 1 && " + kTool +
                           " set -t int db/menu/caption/digitalcaptionoptions/size 3 && " + kTool +
                           " set -t int db/menu/caption/digitalcaptionoptions/fontcolor 6",
                       "db/menu/caption/digitalcaptionoptions/fontcolor"));
    const Drawn after = Draw();
    EXPECT_NE(std::string::npos, after.markup.find("font_size=52 ")) << after.markup;
    EXPECT_NE(std::string::npos, after.markup.find("color=#ffff00ff")) << after.markup;
    EXPECT_FALSE(after.flashing);

    ASSERT_TRUE(Change(kTool + " set -t int db/menu/caption/digitalcaptionoptions/fontopacity 1",
                       "db/menu/caption/digitalcaptionoptions/fontopacity"));
    EXPECT_TRUE(Draw().flashing) << "the text blinks";
}

TEST_F(CaptionEndToEnd, DivisionShrinksTheVideoAndMovesTheCaptionsIntoTheBand)
{
    Menu()->SetCaptionDivisionMode(false);  // shown, by a source that allows division
    ASSERT_TRUE(Change(kTool + " set -t int db/menu/caption/caption 1 && " + kTool +
                           " set -t bool memory/tv-viewer/infobanner/ttml 1 && " + kTool +
                           " set -t int db/menu/caption/captiondivisionmode 1",
                       "db/menu/caption/captiondivisionmode"));
    const TTMLRect<int> video = CTVService::GetInstance().GetVideoRect();
    EXPECT_EQ("0,0,1920,739", std::to_string(video.x) + "," + std::to_string(video.y) + "," +
                                  std::to_string(video.w) + "," + std::to_string(video.h));
    EXPECT_EQ(1, m_notified);
    const Drawn divided = Draw();
    EXPECT_EQ(767, divided.y);
    EXPECT_EQ(192, divided.x);
    EXPECT_EQ(0u, m_canvas.GetPixel(100, 1000)) << "no picture in the band";

    Menu()->SetCaptionDivisionMode(true);  // captions hidden
    EXPECT_EQ(1080, CTVService::GetInstance().GetVideoRect().h);
    EXPECT_NE(0u, m_canvas.GetPixel(100, 1000)) << "the full picture is back";
    EXPECT_EQ(864, Draw().y);
}

}  // namespace
