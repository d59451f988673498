#ifndef INTERTITLE_TESTS_CONTROLLER_CONTROLLERFIXTURE_H
#define INTERTITLE_TESTS_CONTROLLER_CONTROLLERFIXTURE_H

#include "../Graphics/MainLoopFixture.h"

#include "CController.h"
#include "CEngine.h"
#include "CMainThreadUtils.h"
#include "CTTMLMenu.h"
#include "CTVService.h"
#include "ITTMLSource.h"
#include "ProfileWalk.h"
#include "StartNotifyData.h"
#include "TTMLLog.h"

#include <Evas.h>

#include <cstring>
#include <list>
#include <string>

// A source the test drives by hand: messages are delivered on the calling
// thread, and every query is answered from fields the test sets.
class ScriptedSource : public TTML::ITTMLSource {
public:
    bool RegisterCallback(TTML::TTMLSourceCallback callback, void* userData) override
    {
        m_callback = callback;
        m_lastCallback = callback;
        m_userData = userData;
        ++registrations;
        return callback != nullptr;
    }

    // Logged so that tests can place it among the core's own log lines.
    void UnregisterCallback() override
    {
        m_callback = nullptr;
        ++unregistrations;
        TTML_INFO("source unregistered");
    }

    int GetMediaTime(long long* pTime) override
    {
        if (!pTime)
            return -1;
        *pTime = mediaTime;
        return 0;
    }
    std::list<std::string> GetFontErrorList() override { ++fontListReads; return fonts; }
    int GetSubtitleMode() override { ++modeReads; return mode; }

    // Delivers one message as the source thread would; false when nobody listens.
    bool Send(int msgId, void* data)
    {
        if (!m_callback)
            return false;
        m_callback(msgId, data);
        return true;
    }

    // Delivers through the last registered callback even after
    // UnregisterCallback, as a late message would arrive.
    void SendLate(int msgId, void* data)
    {
        if (m_lastCallback)
            m_lastCallback(msgId, data);
    }

    void* UserData() const { return m_userData; }

    int mode = 0;
    long long mediaTime = 0;
    std::list<std::string> fonts;
    int registrations = 0;
    int unregistrations = 0;
    int modeReads = 0;
    int fontListReads = 0;

private:
    TTML::TTMLSourceCallback m_callback = nullptr;
    TTML::TTMLSourceCallback m_lastCallback = nullptr;
    void* m_userData = nullptr;
};

// A valid EBU-TT-D document: one paragraph, [1000, 3000] ms.
const std::string kEbuDocument = WalkTest::Doc(
    "<div region=\"r\"><p begin=\"00:00:01.000\" end=\"00:00:03.000\">The kettle is on.</p></div>", "",
    "<region xml:id=\"r\" tts:origin=\"10% 70%\" tts:extent=\"80% 20%\"/>", "ttp:timeBase=\"media\" xml:lang=\"en\"",
    WalkTest::kEbu2018);

// A headless canvas with the main loop available; the controller makes its
// own graphics object, so the fixture's is given back at once.
class ControllerTest : public MainLoopTest {
public:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        DestroyGraphics();
        TTML::CTVService::GetInstance().Reset();
    }

    void TearDown() override
    {
        if (m_pCore)
            m_pCore->Destroy();
        m_pCore = nullptr;
        TTML::CTTMLMenu::Destroy();
        MainLoopTest::TearDown();
    }

    TTML::CController* Core()
    {
        if (!m_pCore)
            m_pCore = static_cast<TTML::CController*>(TTML::ICore::GetInstance());
        return m_pCore;
    }

    // Destroys the core the fixture holds (it is gone afterwards).
    void DestroyCore()
    {
        ASSERT_NE(nullptr, m_pCore);
        EXPECT_TRUE(m_pCore->Destroy());
        m_pCore = nullptr;
    }

    void* Parent() { return m_canvas.GetBaseLayout(); }

    // A start message from the source.
    void SendStart(ScriptedSource& source, bool bandMode)
    {
        TTML::StartNotifyData start;
        start.bandMode = bandMode;
        start.pCore = Core();
        ASSERT_TRUE(source.Send(TTML::TTML_SOURCE_MSG_START, &start));
    }

    // Runs the main loop until every request queued for it has run.
    void RunUntilIdle()
    {
        RunUntil([] {
            TTML::CMainThreadUtils* pUtils = TTML::CMainThreadUtils::GetInstance();
            return !pUtils || pUtils->GetPendingCount() == 0;
        });
    }

    // The root container's Evas object on the canvas, or null when none exists.
    Evas_Object* RootObject()
    {
        Evas_Object* pAbove = evas_object_above_get(m_canvas.GetBaseLayout());
        const char* type = pAbove ? evas_object_type_get(pAbove) : nullptr;
        return (type && std::strcmp(type, "TTMLRootContainer") == 0) ? pAbove : nullptr;
    }

    bool RootVisible()
    {
        Evas_Object* pRoot = RootObject();
        return pRoot && evas_object_visible_get(pRoot);
    }

    TTML::CController* m_pCore = nullptr;
};

#endif
