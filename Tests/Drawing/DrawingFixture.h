#ifndef INTERTITLE_TESTS_DRAWING_DRAWINGFIXTURE_H
#define INTERTITLE_TESTS_DRAWING_DRAWINGFIXTURE_H

#include "../Graphics/MainLoopFixture.h"

#include "IRootContainer.h"
#include "ITextContext.h"
#include "ITextSurface.h"
#include "PixelBox.h"
#include "TTMLAttr.h"

#include <map>
#include <string>
#include <vector>

// Surfaces and paragraphs of the graphics object on the 1920x1080 headless
// canvas, given back after the test; the test thread is the main loop
// thread. Pixels are premultiplied 0xAARRGGBB.
class DrawingTest : public MainLoopTest {
public:
    typedef PixelBox Box;

    void TearDown() override
    {
        for (auto* pContext : m_contexts) {
            pContext->Deinitialize();
            m_pGraphics->DestroyObject(pContext);
        }
        for (auto* pSurface : m_surfaces) {
            pSurface->Deinitialize();
            m_pGraphics->DestroyObject(pSurface);
        }
        MainLoopTest::TearDown();
    }

    TTML::IRootContainer* Root() { return m_pGraphics->GetRootContainer(); }

    TTML::ITextSurface* MakeSurface(int x, int y, int w, int h)
    {
        auto* pSurface = static_cast<TTML::ITextSurface*>(m_pGraphics->CreateObject(0));
        EXPECT_NE(nullptr, pSurface);
        if (!pSurface)
            return nullptr;
        m_surfaces.push_back(pSurface);
        EXPECT_TRUE(pSurface->Initialize(w, h, "lrtb"));
        pSurface->SetPosition(x, y);
        return pSurface;
    }

    // A paragraph 800 pixels wide with a 30-pixel font.
    TTML::ITextContext* MakeContext()
    {
        auto* pContext = static_cast<TTML::ITextContext*>(m_pGraphics->CreateObject(1));
        EXPECT_NE(nullptr, pContext);
        if (!pContext)
            return nullptr;
        m_contexts.push_back(pContext);
        EXPECT_TRUE(pContext->Initialize());
        pContext->SetWidth(800);
        pContext->SetFontSize(30);
        return pContext;
    }

    // Bounding box of the canvas pixels that match.
    template <typename F>
    Box Find(F match)
    {
        return PixelBox::Find(m_canvas.RenderPixels(), match, 0, 0, 1920, 1080);
    }

    static bool AnyInk(unsigned int p) { return (p >> 24) != 0; }

    std::vector<TTML::ITextSurface*> m_surfaces;
    std::vector<TTML::ITextContext*> m_contexts;
};

#endif
