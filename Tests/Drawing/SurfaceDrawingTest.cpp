// Regions on their own: refused sizes and images, padding, images scaled to
// the region. What the renderer draws into them is judged in test_render.
#include "../Image/PngMaker.h"
#include "DrawingFixture.h"
#include "CTextSurface.h"
#include "LogCapture.h"

using namespace TTML;

TEST_F(DrawingTest, ZeroAndOversizedSurfacesAreRefusedAndDrawNothing)
{
    LogCapture log;
    const std::vector<std::vector<int>> sizes{{8192, 10, 1}, {0, 100, 0}, {-5, 10, 0}, {8193, 100, 0}, {100, 100000, 0}};
    for (const std::vector<int>& s : sizes) {
        auto* pSurface = static_cast<ITextSurface*>(m_pGraphics->CreateObject(0));
        ASSERT_NE(nullptr, pSurface);
        m_surfaces.push_back(pSurface);
        EXPECT_EQ(s[2] == 1, pSurface->Initialize(s[0], s[1], "lrtb")) << s[0] << "x" << s[1];
        if (!s[2]) {
            // Even when asked to.
            pSurface->SetBackgroundColor(65535, 0, 0, 65535);
            pSurface->SetShowBackgroundAlways(true);
            pSurface->Attach(Root());
            pSurface->Show();
        }
    }
    EXPECT_EQ(4, log.CountContaining("Invalid surface size", DLOG_WARN));
    EXPECT_TRUE(Find(AnyInk).Empty());
}

// Guards: padding shrinks the content box (the renderer sizes paragraphs
// by it); an image fills the region and ClearContent takes it off.
TEST_F(DrawingTest, PaddingAndImageFillTheRegionAsAsked)
{
    ITextSurface* pSurface = MakeSurface(100, 100, 400, 300);
    pSurface->SetPadding(20, 30, 40, 10);  // top, bottom, left, right
    int dw = 0, dh = 0, w = 0, h = 0;
    pSurface->GetContentInset(&dw, &dh);
    pSurface->GetGeometry(nullptr, nullptr, &w, &h);
    EXPECT_EQ((std::vector<int>{-50, -50, 350, 250}), (std::vector<int>{dw, dh, w, h}));

    std::string png = MakePng(50, 25, 0xff00ff00);
    ASSERT_GT(png.size(), 8u);
    pSurface = MakeSurface(600, 700, 400, 200);
    ASSERT_TRUE(pSurface->AttachImage(Root(), png.data(), png.size()));
    png.assign(png.size(), 0);  // the surface keeps its own copy
    pSurface->Show();
    Box box = Find([](unsigned int p) { return p == 0xff00ff00; });
    EXPECT_EQ((std::vector<int>{600, 700, 999, 899}), (std::vector<int>{box.x0, box.y0, box.x1, box.y1}));
    EXPECT_EQ(400 * 200, box.count);
    pSurface->ClearContent();
    EXPECT_TRUE(Find(AnyInk).Empty());
}

TEST_F(DrawingTest, BadImagesAreRefusedAndNothingIsDrawn)
{
    const std::string png = MakePng(20, 20, 0xffff0000);
    ASSERT_GT(png.size(), 40u);
    const std::vector<unsigned char> garbage(300, 0x5a);
    const std::vector<std::pair<const void*, size_t>> buffers{
        {nullptr, png.size()},           {png.data(), 0}, {garbage.data(), garbage.size()},
        {png.data(), 30} /* truncated */, {png.data(), CTextSurface::kMaxImageBytes + 1}};
    LogCapture log;
    for (const auto& b : buffers) {
        ITextSurface* pSurface = MakeSurface(100, 100, 200, 200);
        EXPECT_FALSE(pSurface->AttachImage(Root(), b.first, b.second)) << b.second;
        pSurface->Show();
    }
    EXPECT_EQ(5, log.CountContaining("AttachImage", DLOG_WARN)) << log.Dump();
    EXPECT_TRUE(Find(AnyInk).Empty());
}
