// What a test or tool sees of the graphics engine's drawing through the
// graphics component's draw observer: paragraphs made and given back,
// regions shown and cleared, stamped in call order, until it is removed.

#include "../Graphics/MainLoopFixture.h"

#include "CElement.h"
#include "CGraphicsEngine.h"
#include "DrawRecorder.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <gtest/gtest.h>

#include <list>
#include <memory>
#include <string>
#include <vector>

using namespace TTML;

namespace {

std::list<CElementSPTR> Paragraph(const std::string& text)
{
    CElementSPTR p = std::make_shared<CElement>(ELEM_P);
    p->AddAttrValue(ATTR_TEXT, text);
    return {p};
}

class GraphicsEngineObserver : public MainLoopTest {};

TEST_F(GraphicsEngineObserver, SeesEveryEventStampedInCallOrderUntilRemoved)
{
    CGraphicsEngine graphics(m_pGraphics);
    graphics.CreateRootSurface("", "", "");
    const std::list<CElementSPTR> one = Paragraph("one");
    const std::list<CElementSPTR> two = Paragraph("two");
    std::vector<DrawRecorder::Event> seen;
    CRenderer* pSecond = nullptr;
    const long long before = DrawRecorder::SteadyNs();
    {
        DrawRecorder recorder;
        CRenderer* pFirst = graphics.CreateRenderer(&one, false);
        pSecond = graphics.CreateRenderer(&two, false);
        EXPECT_EQ(1, graphics.RenderText(pFirst));
        graphics.DestroyRenderer(pFirst);
        seen = recorder.Events();
    }
    const long long after = DrawRecorder::SteadyNs();
    graphics.DestroyRenderer(pSecond);  // no observer any more

    const IDrawObserver::Kind kinds[] = {IDrawObserver::PARAGRAPH_MADE, IDrawObserver::PARAGRAPH_MADE,
                                         IDrawObserver::REGION_SHOWN, IDrawObserver::REGION_CLEARED,
                                         IDrawObserver::PARAGRAPH_GONE};
    const char* texts[] = {"", "", "one", "one", "one"};
    ASSERT_EQ(5u, seen.size());
    long long last = before;
    for (std::size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(kinds[i], seen[i].kind) << i;
        EXPECT_EQ(texts[i], seen[i].text) << i;
        EXPECT_LE(last, seen[i].steadyNs) << i;
        last = seen[i].steadyNs;
    }
    EXPECT_GE(after, last);
    EXPECT_EQ(seen[0].object, seen[4].object) << "the first renderer's paragraph is the one given back";
}

}  // namespace
