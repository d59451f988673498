#include "CGraphics.h"
#include "CHeadlessCanvas.h"
#include "CMainThreadUtils.h"
#include "CRootContainer.h"
#include "IRootContainer.h"
#include "ITimer.h"
#include "LogCapture.h"
#include "MainLoopFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

using namespace TTML;

namespace {

// --- Creation and initialisation --------------------------------------------

class GraphicsInit : public ::testing::Test {
public:
    void SetUp() override { ASSERT_TRUE(m_canvas.Initialize(1920, 1080)); }
    void TearDown() override { m_canvas.Destroy(); }
    CHeadlessCanvas m_canvas;
};

TEST_F(GraphicsInit, NullParentIsRefusedAndNothingIsHandedOut)
{
    LogCapture log;
    IGraphics* pGraphics = IGraphics::Create();
    ASSERT_NE(nullptr, pGraphics);
    EXPECT_FALSE(pGraphics->Initialize(nullptr));
    EXPECT_TRUE(log.Has("pParent is null", DLOG_WARN)) << log.Dump();
    EXPECT_EQ(nullptr, pGraphics->GetRootContainer());
    EXPECT_EQ(nullptr, pGraphics->CreateObject(IGraphics::OBJECT_TIMER));
    EXPECT_EQ(nullptr, CMainThreadUtils::GetInstance());
    pGraphics->Destroy();
}

TEST_F(GraphicsInit, SecondInitializeIsRefusedAndKeepsTheFirst)
{
    LogCapture log;
    IGraphics* pGraphics = IGraphics::Create();
    ASSERT_TRUE(pGraphics->Initialize(m_canvas.GetBaseLayout()));
    IRootContainer* pRoot = pGraphics->GetRootContainer();
    ASSERT_NE(nullptr, pRoot);
    EXPECT_FALSE(pGraphics->Initialize(m_canvas.GetBaseLayout()));
    EXPECT_TRUE(log.Has("Already initialized", DLOG_WARN));
    EXPECT_EQ(pRoot, pGraphics->GetRootContainer());
    pGraphics->Destroy();
}

TEST_F(GraphicsInit, MainThreadUtilsLivesFromInitializeToDestroy)
{
    IGraphics* pGraphics = IGraphics::Create();
    EXPECT_EQ(nullptr, CMainThreadUtils::GetInstance());
    ASSERT_TRUE(pGraphics->Initialize(m_canvas.GetBaseLayout()));
    CMainThreadUtils* pUtils = CMainThreadUtils::GetInstance();
    ASSERT_NE(nullptr, pUtils);
    EXPECT_FALSE(pUtils->IsStopped());
    pGraphics->Destroy();
    EXPECT_EQ(nullptr, CMainThreadUtils::GetInstance());
}

struct KindCase {
    int kind;
    bool made;
    const char* warning;  // part of the warning when refused
    const char* name;
};

void PrintTo(const KindCase& c, std::ostream* os)
{
    *os << c.name;
}

class GraphicsCreateObject : public MainLoopTest, public ::testing::WithParamInterface<KindCase> {};

TEST_P(GraphicsCreateObject, MakesKnownKindsAndRefusesTheRest)
{
    const KindCase& c = GetParam();
    LogCapture log;
    void* pObject = m_pGraphics->CreateObject(c.kind);
    if (c.made) {
        ASSERT_NE(nullptr, pObject);
        EXPECT_EQ(1u, static_cast<CGraphics*>(m_pGraphics)->GetObjectCount());
        m_pGraphics->DestroyObject(pObject);
        EXPECT_EQ(0u, static_cast<CGraphics*>(m_pGraphics)->GetObjectCount());
    } else {
        EXPECT_EQ(nullptr, pObject);
        EXPECT_TRUE(log.HasContaining(c.warning, DLOG_WARN)) << log.Dump();
        EXPECT_EQ(0u, static_cast<CGraphics*>(m_pGraphics)->GetObjectCount());
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, GraphicsCreateObject,
                         ::testing::Values(KindCase{0, true, "", "TextSurface"},
                                           KindCase{1, true, "", "TextContext"},
                                           KindCase{2, true, "", "Timer"},
                                           KindCase{3, false, "invalid kind 3", "UnknownKind"},
                                           KindCase{-1, false, "invalid kind -1", "NegativeKind"}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(MainLoopTest, DestroyObjectRefusesNullAndForeignPointers)
{
    LogCapture log;
    int foreign = 0;
    m_pGraphics->DestroyObject(nullptr);
    m_pGraphics->DestroyObject(&foreign);
    EXPECT_TRUE(log.Has("pObject is null", DLOG_WARN));
    EXPECT_TRUE(log.HasContaining("unknown object", DLOG_WARN));
    // A timer given back twice is refused the second time, not freed twice.
    void* pTimer = m_pGraphics->CreateObject(IGraphics::OBJECT_TIMER);
    m_pGraphics->DestroyObject(pTimer);
    log.Clear();
    m_pGraphics->DestroyObject(pTimer);
    EXPECT_TRUE(log.HasContaining("unknown object", DLOG_WARN));
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
    // The armed timers are gone with the graphics object.
    auto quit = [] { Quit(); };
    After(0.05, &quit);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(0, fired);
}

// --- Root container ------------------------------------------------------------

struct FitCase {
    int extentW, extentH, aspectW, aspectH;
    int x, y, w, h;
    const char* name;
};

void PrintTo(const FitCase& c, std::ostream* os)
{
    *os << c.name;
}

class RootContainerProbe : public MainLoopTest {
public:
    // A red rectangle over the whole canvas inside the root container: what
    // shows of it is exactly the container's clip.
    void AddProbe()
    {
        CRootContainer* pRoot = static_cast<CRootContainer*>(m_pGraphics->GetRootContainer());
        Evas_Object* pProbe = evas_object_rectangle_add(m_canvas.GetEvas());
        evas_object_color_set(pProbe, 255, 0, 0, 255);
        evas_object_smart_member_add(pProbe, pRoot->GetEvasObject());
        evas_object_move(pProbe, 0, 0);
        evas_object_resize(pProbe, 1920, 1080);
        evas_object_show(pProbe);
    }
    bool IsRed(int x, int y) { return m_canvas.GetPixel(x, y) == 0xffff0000u; }
};

class RootContainerFit : public RootContainerProbe, public ::testing::WithParamInterface<FitCase> {};

TEST_P(RootContainerFit, LetterboxesTheDocumentIntoTheLayout)
{
    const FitCase& c = GetParam();
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    ASSERT_NE(nullptr, pRoot);
    AddProbe();
    pRoot->SetRootInfo(c.extentW, c.extentH, c.aspectW, c.aspectH);

    int x = -1, y = -1, w = -1, h = -1;
    pRoot->GetGeometry(&x, &y, &w, &h);
    EXPECT_EQ(c.x, x);
    EXPECT_EQ(c.y, y);
    EXPECT_EQ(c.w, w);
    EXPECT_EQ(c.h, h);

    // The canvas object follows, and it clips what is drawn into the bars.
    Evas_Coord ex, ey, ew, eh;
    evas_object_geometry_get(static_cast<CRootContainer*>(pRoot)->GetEvasObject(), &ex, &ey, &ew, &eh);
    EXPECT_EQ(c.x, ex);
    EXPECT_EQ(c.y, ey);
    EXPECT_EQ(c.w, ew);
    EXPECT_EQ(c.h, eh);
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
}

INSTANTIATE_TEST_SUITE_P(
    Documents, RootContainerFit,
    ::testing::Values(
        FitCase{-1, -1, 16, 9, 0, 0, 1920, 1080, "Aspect16x9FillsTheLayout"},
        FitCase{-1, -1, 4, 3, 240, 0, 1440, 1080, "Aspect4x3IsPillarboxed"},
        FitCase{-1, -1, 21, 9, 0, 128, 1920, 823, "Aspect21x9IsLetterboxed"},
        FitCase{-1, -1, 9, 16, 656, 0, 608, 1080, "PortraitAspectIsCentred"},
        FitCase{-1, -1, 1, 1, 0, 0, 1920, 1080, "NoExtentAndDefaultAspectFill"},
        FitCase{-1, -1, 0, 0, 0, 0, 1920, 1080, "ZeroAspectFills"},
        FitCase{-1, -1, 4, 0, 0, 0, 1920, 1080, "HalfAspectFills"},
        FitCase{640, 480, 1, 1, 240, 0, 1440, 1080, "PixelExtent640x480GivesTheRatio"},
        FitCase{1280, 720, -1, -1, 0, 0, 1920, 1080, "PixelExtent1280x720Fills"},
        FitCase{3840, 1080, 1, 1, 0, 270, 1920, 540, "WideExtentLargerThanScreenIsScaled"},
        FitCase{1920, 1080, 4, 3, 240, 0, 1440, 1080, "AspectWinsOverExtent"},
        FitCase{0, 1080, 1, 1, 0, 0, 1920, 1080, "ZeroExtentFills"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(MainLoopTest, RootContainerStartsOverTheWholeLayoutAboveIt)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    int x = -1, y = -1, w = -1, h = -1;
    pRoot->GetGeometry(&x, &y, &w, &h);
    EXPECT_EQ(0, x);
    EXPECT_EQ(0, y);
    EXPECT_EQ(1920, w);
    EXPECT_EQ(1080, h);
    Evas_Object* pObject = static_cast<CRootContainer*>(pRoot)->GetEvasObject();
    EXPECT_EQ(6, evas_object_layer_get(pObject));
    EXPECT_EQ(m_canvas.GetBaseLayout(), evas_object_below_get(pObject));
    EXPECT_TRUE(evas_object_visible_get(pObject));
}

TEST_F(MainLoopTest, RootContainerGeometryAcceptsNullPointers)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    pRoot->SetRootInfo(-1, -1, 4, 3);
    int y = -1, h = -1;
    pRoot->GetGeometry(nullptr, &y, nullptr, &h);
    EXPECT_EQ(0, y);
    EXPECT_EQ(1080, h);
    int x = -1, w = -1;
    pRoot->GetGeometry(&x, nullptr, &w, nullptr);
    EXPECT_EQ(240, x);
    EXPECT_EQ(1440, w);
    pRoot->GetGeometry(nullptr, nullptr, nullptr, nullptr);
}

TEST_F(MainLoopTest, RootContainerFollowsTheLayoutWhenItMovesOrResizes)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    pRoot->SetRootInfo(-1, -1, 4, 3);
    evas_object_move(m_canvas.GetBaseLayout(), 100, 50);
    evas_object_resize(m_canvas.GetBaseLayout(), 1280, 720);
    int x, y, w, h;
    pRoot->GetGeometry(&x, &y, &w, &h);
    EXPECT_EQ(100 + 160, x);
    EXPECT_EQ(50, y);
    EXPECT_EQ(960, w);
    EXPECT_EQ(720, h);
    Evas_Coord ex, ey, ew, eh;
    evas_object_geometry_get(static_cast<CRootContainer*>(pRoot)->GetEvasObject(), &ex, &ey, &ew, &eh);
    EXPECT_EQ(x, ex);
    EXPECT_EQ(y, ey);
    EXPECT_EQ(w, ew);
    EXPECT_EQ(h, eh);
}

TEST_F(RootContainerProbe, HideHidesWhatIsDrawnAndShowBringsItBack)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    AddProbe();
    pRoot->SetRootInfo(-1, -1, 4, 3);
    pRoot->Hide();
    EXPECT_FALSE(evas_object_visible_get(static_cast<CRootContainer*>(pRoot)->GetEvasObject()));
    EXPECT_FALSE(IsRed(960, 540));
    pRoot->Show();
    EXPECT_TRUE(IsRed(960, 540));
}

TEST_F(MainLoopTest, RootContainerCanBeDrivenFromAnotherThread)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    Evas_Object* pObject = static_cast<CRootContainer*>(pRoot)->GetEvasObject();
    int seenW = -1;
    std::thread worker([&] {
        pRoot->SetRootInfo(-1, -1, 4, 3);
        pRoot->Hide();
        // The state changes at once for the caller...
        pRoot->GetGeometry(nullptr, nullptr, &seenW, nullptr);
        QuitFromAnyThread();
    });
    EXPECT_TRUE(RunLoop());
    worker.join();
    EXPECT_EQ(1440, seenW);
    // ...and the canvas follows on the main loop (posted before the quit).
    Evas_Coord ew;
    evas_object_geometry_get(pObject, nullptr, nullptr, &ew, nullptr);
    EXPECT_EQ(1440, ew);
    EXPECT_FALSE(evas_object_visible_get(pObject));
}

TEST_F(MainLoopTest, UpdatePostedFromAnotherThreadOutlivesTheGraphicsObject)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    std::thread worker([&] { pRoot->SetRootInfo(-1, -1, 4, 3); });
    worker.join();
    DestroyGraphics();  // the posted canvas update is still queued
    auto quit = [] { Quit(); };
    After(0.05, &quit);
    EXPECT_TRUE(RunLoop());  // and must find nothing to update
}

TEST_F(MainLoopTest, LayoutDeletedBeforeTheGraphicsObjectIsHarmless)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    pRoot->SetRootInfo(-1, -1, 4, 3);
    m_canvas.DeleteBaseLayout();
    int w = -1;
    pRoot->GetGeometry(nullptr, nullptr, &w, nullptr);
    EXPECT_EQ(1440, w);  // the last known layout is kept
    DestroyGraphics();
}

TEST_F(MainLoopTest, CanvasFreedBeforeTheGraphicsObjectIsHarmless)
{
    m_canvas.Destroy();
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    EXPECT_EQ(nullptr, static_cast<CRootContainer*>(pRoot)->GetEvasObject());
    pRoot->Hide();
    pRoot->SetRootInfo(-1, -1, 4, 3);
    DestroyGraphics();
}

TEST_F(MainLoopTest, CanvasCanBeSavedAsPng)
{
    IRootContainer* pRoot = m_pGraphics->GetRootContainer();
    pRoot->SetRootInfo(-1, -1, 4, 3);
    Evas_Object* pProbe = evas_object_rectangle_add(m_canvas.GetEvas());
    evas_object_color_set(pProbe, 0, 0, 255, 255);
    evas_object_smart_member_add(pProbe, static_cast<CRootContainer*>(pRoot)->GetEvasObject());
    evas_object_move(pProbe, 0, 0);
    evas_object_resize(pProbe, 1920, 1080);
    evas_object_show(pProbe);
    std::string path = ::testing::TempDir() + "graphics_letterbox.png";
    ASSERT_TRUE(m_canvas.SavePng(path));
    // Read it back: the bars are transparent, the container blue.
    Evas_Object* pImage = evas_object_image_add(m_canvas.GetEvas());
    evas_object_image_file_set(pImage, path.c_str(), nullptr);
    ASSERT_EQ(EVAS_LOAD_ERROR_NONE, evas_object_image_load_error_get(pImage));
    int w = 0, h = 0;
    evas_object_image_size_get(pImage, &w, &h);
    EXPECT_EQ(1920, w);
    EXPECT_EQ(1080, h);
    const unsigned int* pPixels = static_cast<const unsigned int*>(evas_object_image_data_get(pImage, EINA_FALSE));
    ASSERT_NE(nullptr, pPixels);
    EXPECT_EQ(0u, pPixels[540 * 1920 + 239] >> 24);
    EXPECT_EQ(0xff0000ffu, pPixels[540 * 1920 + 240]);
    EXPECT_EQ(0xff0000ffu, pPixels[540 * 1920 + 1679]);
    EXPECT_EQ(0u, pPixels[540 * 1920 + 1680] >> 24);
    evas_object_del(pImage);
    remove(path.c_str());
}

}  // namespace
