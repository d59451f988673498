#ifndef INTERTITLE_TESTS_RENDER_RENDERFIXTURE_H
#define INTERTITLE_TESTS_RENDER_RENDERFIXTURE_H

#include "../Graphics/MainLoopFixture.h"

#include "CGraphicsEngine.h"
#include "CParser.h"
#include "CRenderer.h"
#include "CSubSampleBuilder.h"
#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "CTextContext.h"
#include "CTextSurface.h"
#include "PixelBox.h"
#include "ProfileWalk.h"
#include "SubRawData.h"

#include <list>
#include <memory>
#include <set>
#include <string>
#include <vector>

// Documents parsed through the parser's own path and drawn through a
// graphics engine on the 1920x1080 headless canvas, as the engine draws an
// interval; the caption menu record is reset after each test.
class RenderTest : public MainLoopTest {
public:
    typedef PixelBox Box;

    void SetUp() override
    {
        MainLoopTest::SetUp();
        m_pEngine.reset(new TTML::CGraphicsEngine(m_pGraphics));
    }

    void TearDown() override
    {
        for (TTML::CRenderer* pRenderer : m_renderers)
            m_pEngine->DestroyRenderer(pRenderer);
        m_renderers.clear();
        m_pEngine.reset();
        m_documents.clear();
        TTML::CTTMLMenu::Destroy();
        MainLoopTest::TearDown();
    }

    // Null (and a test failure unless mustAccept is false) when refused.
    // files: images packed as a source sends them; profile as the transport
    // says (-1: from the document).
    TTML::CSubtitleInfo* Parse(const std::string& xml, int profile = -1, const std::vector<std::string>& files = {},
                               bool mustAccept = true)
    {
        TTML::CSubtitleInfo* pInfo = nullptr;
        TTML::CParser parser;
        parser.Initialize(1, [](int msgId, void* data) {
            auto* pData = static_cast<TTML::ParserCallbackData*>(data);
            if (msgId == 0 && pData)
                *static_cast<TTML::CSubtitleInfo**>(pData->pUserData) = pData->pSubtitleInfo;
        }, &pInfo);
        auto* pRecord = new TTML::SubRawData();
        pRecord->profile = profile;
        pRecord->xmlData = xml;
        if (!files.empty())
            TTML::CSubSampleBuilder::BuildFromFiles(files, pRecord->subSampleData);
        parser.ProcessRecord(pRecord, nullptr);
        parser.Destroy();
        EXPECT_TRUE(pInfo || !mustAccept) << "refused:\n" << xml;
        if (pInfo) {
            m_documents.emplace_back(pInfo);
            m_pEngine->CreateRootSurface(pInfo->GetCellResolution(), pInfo->GetTTExtent(), pInfo->GetAspectRatio());
        }
        return pInfo;
    }

    // Elements of the interval holding timeMs (empty when none does).
    static std::list<TTML::CElementSPTR> At(const TTML::CSubtitleInfo* pInfo, unsigned long long timeMs)
    {
        std::list<TTML::CElementSPTR> elements;
        std::set<TTML::CSubtitleInfo::TimeInterval> keys;
        if (pInfo)
            pInfo->GetUniqueKeys(keys);
        for (const auto& key : keys)
            if (key.first <= timeMs && timeMs < key.second) {
                pInfo->GetElementListForInterval(key, elements);
                break;
            }
        return elements;
    }

    // A renderer for the elements, destroyed at the end of the test.
    TTML::CRenderer* Make(const std::list<TTML::CElementSPTR>& elements, bool fontScale = false)
    {
        m_lists.push_back(elements);
        m_renderers.push_back(m_pEngine->CreateRenderer(&m_lists.back(), fontScale));
        return m_renderers.back();
    }

    // Renders the document at timeMs; null when nothing is shown then.
    TTML::CRenderer* Draw(const TTML::CSubtitleInfo* pInfo, unsigned long long timeMs)
    {
        std::list<TTML::CElementSPTR> elements = At(pInfo, timeMs);
        if (elements.empty())
            return nullptr;
        TTML::CRenderer* pRenderer = Make(elements);
        EXPECT_EQ(1, m_pEngine->RenderText(pRenderer));
        return pRenderer;
    }

    void Destroy(TTML::CRenderer* pRenderer)
    {
        m_renderers.remove(pRenderer);
        m_pEngine->DestroyRenderer(pRenderer);
    }

    static std::list<TTML::CRenderer::RegionView> Regions(const TTML::CRenderer* pRenderer)
    {
        std::list<TTML::CRenderer::RegionView> regions;
        pRenderer->GetRegions(regions);
        return regions;
    }

    // The first region's surface on the screen: x, y, w, h.
    static std::vector<int> RegionRect(const TTML::CRenderer* pRenderer)
    {
        std::vector<int> r(4);
        static_cast<TTML::CTextSurface*>(Regions(pRenderer).front().pSurface)->GetScreenRect(&r[0], &r[1], &r[2], &r[3]);
        return r;
    }

    static TTML::CTextContext* Paragraph(const TTML::CRenderer::RegionView& region, std::size_t index)
    {
        auto it = region.contexts.begin();
        std::advance(it, std::min(index, region.contexts.size()));
        return it == region.contexts.end()
                   ? nullptr
                   : dynamic_cast<TTML::CTextContext*>(static_cast<TTML::ITextContext*>(*it));
    }

    // Pixels of the canvas for which match(argb) holds.
    template <typename F>
    Box Find(F match)
    {
        return PixelBox::Find(m_canvas.RenderPixels(), match, 0, 0, 1920, 1080);
    }

    Box FindColour(unsigned int argb)
    {
        return Find([argb](unsigned int p) { return p == argb; });
    }

    std::unique_ptr<TTML::CGraphicsEngine> m_pEngine;

private:
    std::list<std::unique_ptr<TTML::CSubtitleInfo>> m_documents;
    std::list<std::list<TTML::CElementSPTR>> m_lists;
    std::list<TTML::CRenderer*> m_renderers;
};

// An EBU-TT-D document: cellResolution "32 15" (a 72-pixel cell on the
// canvas), styles and regions in the head, body content as given.
inline std::string Ebu(const std::string& styles, const std::string& regions, const std::string& body)
{
    return WalkTest::Doc(body, styles, regions, "ttp:timeBase=\"media\" ttp:cellResolution=\"32 15\" xml:lang=\"en\"",
                         WalkTest::kEbu2018);
}

// One paragraph from 1 s to 2 s in region r of the given geometry.
inline std::string EbuOne(const std::string& styles, const std::string& region, const std::string& paragraph)
{
    return Ebu(styles, "<region xml:id=\"r\" " + region + "/>",
               "<div region=\"r\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\"" + paragraph + "</p></div>");
}

#endif
