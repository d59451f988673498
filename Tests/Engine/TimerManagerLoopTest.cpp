#include "../Graphics/MainLoopFixture.h"

#include "CTimerManager.h"

#include <chrono>
#include <vector>

using namespace TTML;

namespace {

// The timer manager over the real graphics timer on the Ecore main loop, with
// a media clock that runs in real time from the start of the test.
class TimerManagerLoopTest : public MainLoopTest {
protected:
    // Like the engine: the first expiry arms for the next record from inside
    // the callback and keeps the timer; the second stops it from inside.
    static unsigned char OnTimer_Cb(void* pData)
    {
        CTimerData* pTimerData = static_cast<CTimerData*>(pData);
        TimerManagerLoopTest* pSelf = static_cast<TimerManagerLoopTest*>(pTimerData->GetUserData());
        pSelf->m_fired.push_back(pTimerData->GetTime());
        if (pSelf->m_fired.size() == 1) {
            EXPECT_TRUE(pSelf->m_pManager->SetTimer(1050, 5000, 0));
            return 1;
        }
        pSelf->m_pManager->StopTimer();
        Quit();
        return 0;
    }

    std::chrono::steady_clock::time_point m_start;
    CTimerManager* m_pManager = nullptr;
    std::vector<unsigned long long> m_fired;
};

TEST_F(TimerManagerLoopTest, ExpiresOnMainLoopAndIsRearmedAndStoppedFromItsCallback)
{
    CTimerManager manager(m_pGraphics, OnTimer_Cb, this, [this](long long* pTime) {
        *pTime = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - m_start)
                     .count();
        return true;
    });
    m_pManager = &manager;
    m_start = std::chrono::steady_clock::now();

    ASSERT_TRUE(manager.SetTimer(50, 5000, 0));
    ASSERT_TRUE(manager.IsTimerAdded());
    ASSERT_TRUE(RunLoop(20.0));

    EXPECT_EQ((std::vector<unsigned long long>{50, 1050}), m_fired);
    EXPECT_FALSE(manager.IsTimerAdded());
}

}  // namespace
