#ifndef INTERTITLE_TESTS_DRAWING_DRAWINGFIXTURE_H
#define INTERTITLE_TESTS_DRAWING_DRAWINGFIXTURE_H

#include "../Graphics/MainLoopFixture.h"

#include "IRootContainer.h"
#include "ITextContext.h"
#include "ITextSurface.h"
#include "PixelBox.h"
#include "TTMLAttr.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

// Surfaces and paragraphs of the graphics object on the 1920x1080 headless
// canvas, given back after the test; the test thread is the main loop
// thread. Pixels are read from the rendered buffer (premultiplied 0xAARRGGBB).
class DrawingTest : public MainLoopTest {
public:
    typedef PixelBox Box;
    typedef std::function<bool(unsigned int)> Match;

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

    TTML::ITextContext* MakeContext(int w, double fontPx = 48)
    {
        auto* pContext = static_cast<TTML::ITextContext*>(m_pGraphics->CreateObject(1));
        EXPECT_NE(nullptr, pContext);
        if (!pContext)
            return nullptr;
        m_contexts.push_back(pContext);
        EXPECT_TRUE(pContext->Initialize());
        pContext->SetWidth(w);
        pContext->SetFontSize(fontPx);
        pContext->SetTextAlign("center");
        pContext->SetWrap(true);
        return pContext;
    }

    static std::map<int, std::string> Run(const std::string& text, const std::string& colour,
                                          const std::string& size = "48px")
    {
        return {{TTML::ATTR_TEXT, text}, {TTML::ATTR_COLOR, colour}, {TTML::ATTR_FONTSIZE, size},
                {TTML::ATTR_FONTFAMILY, "proportionalSansSerif"}};
    }

    // Formats and styles one run the way the renderer does (a span
    // background given as #rrggbb[aa]).
    static std::string AddRun(TTML::ITextContext* pContext, const std::map<int, std::string>& attrs,
                              TTML::TextOutline* pOutline = nullptr)
    {
        TTML::ITextContext::Colours colours;
        unsigned r, g, b, a = 255;
        auto it = attrs.find(TTML::ATTR_BACKGROUNDCOLOR);
        if (it != attrs.end() && sscanf(it->second.c_str(), "#%2x%2x%2x%2x", &r, &g, &b, &a) >= 3) {
            colours.first.red = r * 257;
            colours.first.green = g * 257;
            colours.first.blue = b * 257;
            colours.first.alpha = a * 257;
        }
        TTML::TextOutline outline;
        const std::string markup = pContext->FormatText(attrs);
        pContext->SetTextStyle(attrs.at(TTML::ATTR_TEXT), false, &colours, pOutline ? pOutline : &outline);
        return markup;
    }

    // Draws the paragraph (when given) into the surface and shows the
    // surface over the root container.
    void Show(TTML::ITextSurface* pSurface, TTML::ITextContext* pContext = nullptr)
    {
        if (pContext)
            pContext->RenderOn(pSurface);
        pSurface->Attach(Root());
        pSurface->Show();
    }

    const unsigned int* Pixels() { return m_canvas.RenderPixels(); }

    // Bounding box of the pixels in [x, x+w) x [y, y+h) that match.
    Box Find(const Match& match, int x = 0, int y = 0, int w = 1920, int h = 1080)
    {
        return PixelBox::Find(Pixels(), match, x, y, w, h);
    }

    // Channels of a premultiplied pixel, each within tol of the given ones.
    static Match Near(int a, int r, int g, int b, int tol = 12)
    {
        return [=](unsigned int p) {
            int pa = p >> 24, pr = (p >> 16) & 0xff, pg = (p >> 8) & 0xff, pb = p & 0xff;
            return abs(pa - a) <= tol && abs(pr - r) <= tol && abs(pg - g) <= tol && abs(pb - b) <= tol;
        };
    }
    static Match Opaque(int r, int g, int b, int tol = 40) { return Near(255, r, g, b, tol); }
    static Match AnyInk()
    {
        return [](unsigned int p) { return (p >> 24) != 0; };
    }

    std::vector<TTML::ITextSurface*> m_surfaces;
    std::vector<TTML::ITextContext*> m_contexts;
};

#endif
