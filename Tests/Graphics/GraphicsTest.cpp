#include "CGraphics.h"
#include "CMainThreadUtils.h"
#include "CRootContainer.h"
#include "ITimer.h"
#include "LogCapture.h"
#include "MainLoopFixture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

using namespace TTML;

namespace {

std::vector<int> Geometry(IRootContainer* pRoot)
{
    int x = -1, y = -1, w = -1, h = -1;
    pRoot->GetGeometry(&x, &y, &w, &h);
    return {x, y, w, h};
}

Evas_Object* EvasOf(IRootContainer* pRoot)
{
    return static_cast<CRootContainer*>(pRoot)->GetEvasObject();
}

std::vector<int> EvasGeometry(IRootContainer* pRoot)
{
    Evas_Coord x, y, w, h;
    evas_object_geometry_get(EvasOf(pRoot), &x, &y, &w, &h);
    return {x, y, w, h};
}

TEST(GraphicsInit, RefusesANullParentAndASecondInitialize)
{
    CHeadlessCanvas canvas;
    ASSERT_TRUE(canvas.Initialize(1920, 1080));
    LogCapture log;
    IGraphics* pGraphics = IGraphics::Create();
    ASSERT_NE(nullptr, pGraphics);
    EXPECT_FALSE(pGraphics->Initialize(nullptr));
    EXPECT_TRUE(log.Has("pParent is null", DLOG_WARN)) << log.Dump();
    EXPECT_EQ(nullptr, pGraphics->GetRootContainer());
    EXPECT_EQ(nullptr, pGraphics->CreateObject(IGraphics::OBJECT_TIMER));
    EXPECT_EQ(nullptr, CMainThreadUtils::GetInstance());
    // The main-loop call service lives from Initialize to Destroy.
    ASSERT_TRUE(pGraphics->Initialize(canvas.GetBaseLayout()));
    IRootContainer* pRoot = pGraphics->GetRootContainer();
    ASSERT_NE(nullptr, pRoot);
    ASSERT_NE(nullptr, CMainThreadUtils::GetInstance());
    EXPECT_FALSE(CMainThreadUtils::GetInstance()->IsStopped());
    EXPECT_FALSE(pGraphics->Initialize(canvas.GetBaseLayout()));
    EXPECT_TRUE(log.Has("Already initialized", DLOG_WARN));
    EXPECT_EQ(pRoot, pGraphics->GetRootContainer());
    pGraphics->Destroy();
    EXPECT_EQ(nullptr, CMainThreadUtils::GetInstance());
    canvas.Destroy();
}

TEST_F(MainLoopTest, ObjectsAreMadeByKindAndGivenBackOnce)
{
    LogCapture log;
    CGraphics* pGraphics = static_cast<CGraphics*>(m_pGraphics);
    for (int kind : {0, 1, 2}) {
        void* pObject = m_pGraphics->CreateObject(kind);
        ASSERT_NE(nullptr, pObject) << kind;
        EXPECT_EQ(1u, pGraphics->GetObjectCount());
        m_pGraphics->DestroyObject(pObject);
        EXPECT_EQ(0u, pGraphics->GetObjectCount());
    }
    EXPECT_EQ(nullptr, m_pGraphics->CreateObject(3));
    EXPECT_EQ(nullptr, m_pGraphics->CreateObject(-1));
    EXPECT_TRUE(log.HasContaining("invalid kind 3", DLOG_WARN)) << log.Dump();
    EXPECT_TRUE(log.HasContaining("invalid kind -1", DLOG_WARN));
    EXPECT_EQ(0u, pGraphics->GetObjectCount());

    int foreign = 0;
    m_pGraphics->DestroyObject(nullptr);
    EXPECT_TRUE(log.Has("pObject is null", DLOG_WARN));
    m_pGraphics->DestroyObject(&foreign);
    EXPECT_EQ(1, log.CountContaining("unknown object", DLOG_WARN));
    // A timer given back twice is refused the second time, not freed twice.
    void* pTimer = m_pGraphics->CreateObject(IGraphics::OBJECT_TIMER);
    m_pGraphics->DestroyObject(pTimer);
    m_pGraphics->DestroyObject(pTimer);
    EXPECT_EQ(2, log.CountContaining("unknown object", DLOG_WARN));
}

TEST_F(MainLoopTest, DestroyFreesObjectsNotGivenBackAndDisarmsThem)
{
    LogCapture log;
    static int fired = 0;
    fired = 0;
    for (int i = 0; i < 2; ++i) {
        ITimer* pTimer = static_cast<ITimer*>(m_pGraphics->CreateObject(IGraphics::OBJECT_TIMER));
        pTimer->Start([](void*) { ++fired; return 1; }, 0.0, nullptr);
    }
    DestroyGraphics();
    EXPECT_TRUE(log.Has("2 objects were not given back; freeing them", DLOG_WARN)) << log.Dump();
    auto quit = [] { Quit(); };
    After(0.05, &quit);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(0, fired);
}

// --- Root container ------------------------------------------------------------

struct FitCase {
    const char* name;
    int extentW, extentH, aspectW, aspectH;
    int x, y, w, h;
};

class RootContainerFit : public MainLoopTest, public ::testing::WithParamInterface<FitCase> {
public:
    // A red rectangle over the whole canvas inside the root container: what
    // shows of it is exactly the container's clip.
    void AddProbe()
    {
        Evas_Object* pProbe = evas_object_rectangle_add(m_canvas.GetEvas());
        evas_object_color_set(pProbe, 255, 0, 0, 255);
        evas_object_smart_member_add(pProbe, EvasOf(m_pGraphics->GetRootContainer()));
        evas_object_move(pProbe, 0, 0);
        evas_object_resize(pProbe, 1920, 1080);
        evas_object_show(pProbe);
    }
    bool IsRed(int x, int y) { return m_canvas.GetPixel(x, y) == 0xffff0000u; }
};

TEST_P(RootContainerFit, LetterboxesTheDocumentIntoTheLayout)
{
    const FitCase& c = GetParam();
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    AddProbe();
    pRoot->SetRootInfo(c.extentW, c.extentH, c.aspectW, c.aspectH);
    const std::vector<int> expected{c.x, c.y, c.w, c.h};
    EXPECT_EQ(expected, Geometry(pRoot));
    // The canvas object follows, and it clips what is drawn into the bars.
    EXPECT_EQ(expected, EvasGeometry(pRoot));
    EXPECT_TRUE(IsRed(c.x, c.y));
    EXPECT_TRUE(IsRed(c.x + c.w - 1, c.y + c.h - 1));
    if (c.x > 0) {
        EXPECT_FALSE(IsRed(c.x - 1, c.y));
        EXPECT_FALSE(IsRed(c.x + c.w, c.y));
    }
    if (c.y > 0) {
        EXPECT_FALSE(IsRed(c.x, c.y - 1));
        EXPECT_FALSE(IsRed(c.x, c.y + c.h));
    }
    // Hide hides what is drawn, Show brings it back.
    pRoot->Hide();
    EXPECT_FALSE(evas_object_visible_get(EvasOf(pRoot)));
    EXPECT_FALSE(IsRed(c.x, c.y));
    pRoot->Show();
    EXPECT_TRUE(IsRed(c.x, c.y));
}

INSTANTIATE_TEST_SUITE_P(
    Documents, RootContainerFit,
    ::testing::Values(FitCase{"Aspect16x9FillsTheLayout", -1, -1, 16, 9, 0, 0, 1920, 1080},
                      FitCase{"Aspect4x3IsPillarboxed", -1, -1, 4, 3, 240, 0, 1440, 1080},
                      FitCase{"Aspect21x9IsLetterboxed", -1, -1, 21, 9, 0, 128, 1920, 823},
                      FitCase{"PortraitAspectIsCentred", -1, -1, 9, 16, 656, 0, 608, 1080},
                      FitCase{"NoExtentAndDefaultAspectFill", -1, -1, 1, 1, 0, 0, 1920, 1080},
                      FitCase{"ZeroAspectFills", -1, -1, 0, 0, 0, 0, 1920, 1080},
                      FitCase{"PixelExtent640x480GivesTheRatio", 640, 480, 1, 1, 240, 0, 1440, 1080},
                      FitCase{"WideExtentLargerThanScreenIsScaled", 3840, 1080, 1, 1, 0, 270, 1920, 540},
                      FitCase{"AspectWinsOverExtent", 1920, 1080, 4, 3, 240, 0, 1440, 1080},
                      FitCase{"ZeroExtentFills", 0, 1080, 1, 1, 0, 0, 1920, 1080}),
    TTMLTest::RowName());

TEST_F(MainLoopTest, RootContainerStartsOverTheLayoutAndFollowsIt)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    EXPECT_EQ((std::vector<int>{0, 0, 1920, 1080}), Geometry(pRoot));
    EXPECT_EQ(6, evas_object_layer_get(EvasOf(pRoot)));
    EXPECT_EQ(m_canvas.GetBaseLayout(), evas_object_below_get(EvasOf(pRoot)));
    EXPECT_TRUE(evas_object_visible_get(EvasOf(pRoot)));
    // Null pointers are allowed.
    pRoot->SetRootInfo(-1, -1, 4, 3);
    int x = -1, h = -1;
    pRoot->GetGeometry(&x, nullptr, nullptr, &h);
    EXPECT_EQ(240, x);
    EXPECT_EQ(1080, h);
    pRoot->GetGeometry(nullptr, nullptr, nullptr, nullptr);

    evas_object_move(m_canvas.GetBaseLayout(), 100, 50);
    evas_object_resize(m_canvas.GetBaseLayout(), 1280, 720);
    EXPECT_EQ((std::vector<int>{100 + 160, 50, 960, 720}), Geometry(pRoot));
    EXPECT_EQ(Geometry(pRoot), EvasGeometry(pRoot));
}

// The state changes at once for the calling thread; the canvas follows on
// the main loop, and an update still queued when the graphics object goes
// finds nothing to update.
TEST_F(MainLoopTest, RootContainerCanBeDrivenFromAnotherThread)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    int seenW = -1;
    std::thread([&] {
        pRoot->SetRootInfo(-1, -1, 4, 3);
        pRoot->Hide();
        pRoot->GetGeometry(nullptr, nullptr, &seenW, nullptr);
        QuitFromAnyThread();
    }).join();
    EXPECT_EQ(1440, seenW);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(1440, EvasGeometry(pRoot)[2]);
    EXPECT_FALSE(evas_object_visible_get(EvasOf(pRoot)));

    std::thread([&] { pRoot->SetRootInfo(-1, -1, 16, 9); }).join();
    DestroyGraphics();
    auto quit = [] { Quit(); };
    After(0.05, &quit);
    EXPECT_TRUE(RunLoop());
}

}  // namespace
