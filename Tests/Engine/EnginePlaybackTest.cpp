// The presentation engine against a scripted media clock: playback
// notifications and listeners that arrive from other threads.
#include "DocumentLedger.h"
#include "../Graphics/MainLoopFixture.h"

#include "CEngine.h"
#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "LogCapture.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace TTML;

namespace {

typedef std::pair<unsigned long long, unsigned long long> Span;

CSubtitleInfo* MakeDocument(DocumentLedger& ledger, const std::vector<Span>& spans, long long timeStamp = 0)
{
    CSubtitleInfo* pInfo = new CSubtitleInfo();
    CElementSPTR sentinel = std::make_shared<DocumentSentinel>(&ledger, ledger.Open());
    pInfo->AddElement(0, 0, sentinel);
    for (const Span& span : spans) {
        CElementSPTR p = std::make_shared<CElement>(ELEM_P);
        p->AddAttrValue(ATTR_BEGIN, std::to_string(span.first));
        p->AddAttrValue(ATTR_END, std::to_string(span.second));
        pInfo->AddElement(span.first, span.second, p);
    }
    pInfo->SetTimeStamp(timeStamp);
    pInfo->SplitSubtitleInfoData();
    return pInfo;
}

class EnginePlayback : public MainLoopTest {
public:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        m_pEngine = new CEngine(m_pGraphics);
        m_pEngine->SetMediaTimeSource(Clock_Cb, this);
        ASSERT_TRUE(m_pEngine->Initialize(0));
        ASSERT_TRUE(m_pEngine->Start(false));
    }

    void TearDown() override
    {
        m_pEngine->Destroy();
        delete m_pEngine;
        CTTMLMenu::Destroy();
        MainLoopTest::TearDown();
    }

    static bool Clock_Cb(void* pUser, long long* pTime)
    {
        *pTime = static_cast<EnginePlayback*>(pUser)->m_mediaTime;
        return true;
    }

    // Runs the main loop until done() holds, polling it on the loop.
    template <typename F>
    bool RunUntil(F done)
    {
        m_poll = [done] { return done(); };
        Ecore_Timer* pPoll = ecore_timer_add(0.005, Poll_Cb, this);
        bool quit = RunLoop();
        if (!quit)
            ecore_timer_del(pPoll);
        return quit;
    }

    CEngine* m_pEngine = nullptr;
    std::atomic<long long> m_mediaTime{0};
    DocumentLedger m_ledger;

private:
    static Eina_Bool Poll_Cb(void* data)
    {
        if (!static_cast<EnginePlayback*>(data)->m_poll())
            return ECORE_CALLBACK_RENEW;
        Quit();
        return ECORE_CALLBACK_CANCEL;
    }

    std::function<bool()> m_poll;
};

// A caption division change notified on the source's thread while the main
// loop waits for that thread (a source being stopped joins it): the engine
// must not wait for the main loop there, and still redraws on the loop later.
TEST_F(EnginePlayback, MenuChangeOffTheMainLoopDoesNotWaitForIt)
{
    LogCapture log;
    m_pEngine->AddToQueue(MakeDocument(m_ledger, {{60000, 70000}}));
    ASSERT_TRUE(RunUntil([&] { return log.HasContaining("synched timer for time=[60000]"); }));

    bool joined = false;
    auto step = [&] {
        std::packaged_task<void()> notify([] { CTTMLMenu::GetInstance()->NotifyMenuChange(); });
        std::future<void> done = notify.get_future();
        std::thread source(std::move(notify));
        // A deadlock guard, not a time limit: a waiting listener never returns.
        joined = done.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
        if (joined)
            source.join();
        else
            source.detach();  // released once the loop runs again
    };
    After(0.0, &step);
    ASSERT_TRUE(RunUntil([&] { return log.Has("It seems no subtitle on screen!"); }));
    EXPECT_TRUE(joined) << "the listener waited for the main loop";
}

}  // namespace
