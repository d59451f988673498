#include "CMainThreadUtils.h"
#include "LogCapture.h"
#include "MainLoopFixture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

using namespace TTML;

namespace {

typedef std::function<void()> Fn;

// Runs a Fn handed over as the call's data.
void* Invoke(void* data)
{
    (*static_cast<Fn*>(data))();
    return data;
}

class MainThreadUtilsTest : public MainLoopTest {
public:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        m_pUtils = CMainThreadUtils::GetInstance();
        ASSERT_NE(nullptr, m_pUtils);
    }

    // Waits (polling) until `count` calls are pending: only the test knows
    // that the worker is about to block.
    void WaitForPending(size_t count)
    {
        while (m_pUtils->GetPendingCount() < count)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    CMainThreadUtils* m_pUtils = nullptr;
    Fn m_quit = [] { Quit(); };
};

// Counts the runs of a function.
struct Call {
    std::atomic<int> runs{0};
    static void* Fn(void* data)
    {
        ++static_cast<Call*>(data)->runs;
        return data;
    }
};

TEST_F(MainThreadUtilsTest, OnTheMainLoopSyncRunsDirectlyAndAsyncLater)
{
    Call call;
    bool ran = false;
    // Before the loop runs: queuing would wait for ourselves forever.
    EXPECT_EQ(&call, m_pUtils->RunEflSafeCallFunctionSync("direct", Call::Fn, &call, &ran));
    EXPECT_TRUE(ran);
    // And from inside a function the service itself is running; an async
    // call made there runs after it, not inside it.
    Call inner, later;
    void* innerResult = nullptr;
    int laterRunsInside = -1;
    Fn quitLater = [&] {
        Call::Fn(&later);
        Quit();
    };
    Fn outer = [&] {
        innerResult = m_pUtils->RunEflSafeCallFunctionSync("inner", Call::Fn, &inner);
        m_pUtils->RunEflSafeCallFunctionAsync("later", Invoke, &quitLater);
        laterRunsInside = later.runs;
    };
    ASSERT_EQ(CMainThreadUtils::ASYNC_QUEUED, m_pUtils->RunEflSafeCallFunctionAsync("outer", Invoke, &outer));
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(&inner, innerResult);
    EXPECT_EQ(0, laterRunsInside);
    EXPECT_EQ(1, later.runs.load());
    EXPECT_EQ(0u, m_pUtils->GetPendingCount());
}

// Several workers mixing both kinds: each worker's calls run on the main
// loop in its order, every synchronous caller gets its own result, nothing
// is left pending.
TEST_F(MainThreadUtilsTest, CallsRunInOrderPerCallerAndNoneIsLost)
{
    const int kWorkers = 4, kCalls = 200;
    struct Item {
        std::vector<int>* pSeen;
        int value;
    };
    std::vector<std::vector<int>> seen(kWorkers);  // touched on the main loop only
    std::vector<std::vector<Item>> items(kWorkers);
    std::atomic<int> wrongResults{0}, finished{0};
    for (int w = 0; w < kWorkers; ++w)
        for (int i = 0; i < kCalls; ++i)
            items[w].push_back(Item{&seen[w], i});
    auto record = [](void* d) -> void* {
        Item* it = static_cast<Item*>(d);
        it->pSeen->push_back(eina_main_loop_is() ? it->value : -1);
        return d;
    };
    Fn last = [&] {
        if (++finished == kWorkers)
            Quit();
    };
    std::vector<std::thread> workers;
    for (int w = 0; w < kWorkers; ++w) {
        workers.emplace_back([&, w] {
            for (int i = 0; i < kCalls; ++i) {
                Item* pItem = &items[w][i];
                if (i % 10 == 9 ? m_pUtils->RunEflSafeCallFunctionSync("sync", record, pItem) != pItem
                                : m_pUtils->RunEflSafeCallFunctionAsync("async", record, pItem) != 0)
                    ++wrongResults;
            }
            // Everything this worker queued runs before its last call.
            m_pUtils->RunEflSafeCallFunctionSync("last", Invoke, &last);
        });
    }
    EXPECT_TRUE(RunLoop());
    for (auto& t : workers)
        t.join();
    EXPECT_EQ(0, wrongResults.load());
    for (int w = 0; w < kWorkers; ++w) {
        ASSERT_EQ((size_t)kCalls, seen[w].size()) << "worker " << w;
        for (int i = 0; i < kCalls; ++i)
            EXPECT_EQ(i, seen[w][i]) << "worker " << w;
    }
    EXPECT_EQ(0u, m_pUtils->GetPendingCount());
}

// The reset pattern: a worker is blocked in a synchronous call while the main
// loop, inside a call it was asked to run, waits for that worker. Entering the
// stop state must release the worker without running its function.
enum ReleaseBy { BY_STOP_STATE, BY_STOP_STATE_AND_STOP, BY_RELEASE_OF_THE_SERVICE };

struct ReleaseCase {
    const char* name;
    ReleaseBy by;
};

class BlockedCaller : public MainThreadUtilsTest, public ::testing::WithParamInterface<ReleaseCase> {};

TEST_P(BlockedCaller, IsReleasedWithoutRunningItsFunction)
{
    const ReleaseBy by = GetParam().by;
    Call blocked, queuedBehind;
    void* result = &blocked;
    bool ran = true;
    std::thread worker;
    // The worker starts only once the "reset" is running, so its call queues
    // behind it and cannot run first.
    Fn reset = [&] {
        WaitForPending(3);  // this call, the worker's async call and its blocked sync call
        if (by == BY_RELEASE_OF_THE_SERVICE) {
            DestroyGraphics();
        } else {
            m_pUtils->SetStop(true);
            if (by == BY_STOP_STATE_AND_STOP)
                m_pUtils->Stop();
        }
        worker.join();  // deadlocks here if the worker is not released
        if (by == BY_STOP_STATE_AND_STOP) {
            // Queued before Stop(): must never run, even now.
            m_pUtils->SetStop(false);
            m_pUtils->RunEflSafeCallFunctionAsync("after", Invoke, &m_quit);
        } else {
            Quit();
        }
    };
    ASSERT_EQ(CMainThreadUtils::ASYNC_QUEUED, m_pUtils->RunEflSafeCallFunctionAsync("reset", Invoke, &reset));
    worker = std::thread([&] {
        m_pUtils->RunEflSafeCallFunctionAsync("behind", Call::Fn, &queuedBehind);
        result = m_pUtils->RunEflSafeCallFunctionSync("blocked", Call::Fn, &blocked, &ran);
    });
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(nullptr, result);
    EXPECT_FALSE(ran);
    EXPECT_EQ(0, blocked.runs.load());
    if (by != BY_STOP_STATE) {
        EXPECT_EQ(0, queuedBehind.runs.load()) << "a call queued before Stop() ran";
    }
    if (by == BY_RELEASE_OF_THE_SERVICE) {
        EXPECT_EQ(nullptr, CMainThreadUtils::GetInstance());
    } else {
        // The stop state alone keeps the async call queued for later.
        EXPECT_EQ(by == BY_STOP_STATE ? 1u : 0u, m_pUtils->GetPendingCount());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Release, BlockedCaller,
    ::testing::Values(ReleaseCase{"SetStop", BY_STOP_STATE}, ReleaseCase{"SetStopAndStop", BY_STOP_STATE_AND_STOP},
                      ReleaseCase{"GraphicsDestroy", BY_RELEASE_OF_THE_SERVICE}),
    TTMLTest::RowName());

// Queued calls wait through the stop state and run in order after it; new
// ones do not run meanwhile.
TEST_F(MainThreadUtilsTest, StopStateHoldsQueuedCallsAndRefusesNewOnes)
{
    LogCapture log;
    std::vector<int> order;
    Fn first = [&] { order.push_back(1); };
    Fn second = [&] {
        order.push_back(2);
        Quit();
    };
    m_pUtils->RunEflSafeCallFunctionAsync("queued", Invoke, &first);
    m_pUtils->RunEflSafeCallFunctionAsync("queued", Invoke, &second);
    m_pUtils->SetStop(true);
    EXPECT_TRUE(m_pUtils->IsStopped());
    Call call;
    bool ran = true;
    EXPECT_EQ(nullptr, m_pUtils->RunEflSafeCallFunctionSync("main", Call::Fn, &call, &ran));
    EXPECT_FALSE(ran);
    void* workerResult = &call;
    int asyncResult = -1;
    std::thread([&] {
        workerResult = m_pUtils->RunEflSafeCallFunctionSync("worker", Call::Fn, &call);
        asyncResult = m_pUtils->RunEflSafeCallFunctionAsync("worker-async", Call::Fn, &call);
    }).join();  // returns without any main loop running
    EXPECT_EQ(nullptr, workerResult);
    EXPECT_EQ(CMainThreadUtils::ASYNC_STOPPED, asyncResult);
    EXPECT_TRUE(log.Has("worker-async: refused in stop state", DLOG_WARN)) << log.Dump();
    EXPECT_EQ(2u, m_pUtils->GetPendingCount());

    auto leave = [&] {
        EXPECT_TRUE(order.empty()) << "ran during the stop state";
        m_pUtils->SetStop(false);
    };
    After(0.1, &leave);
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ((std::vector<int>{1, 2}), order);
    EXPECT_EQ(0, call.runs.load());
    EXPECT_EQ(&call, m_pUtils->RunEflSafeCallFunctionSync("main", Call::Fn, &call, &ran));
    EXPECT_TRUE(ran);
}

TEST_F(MainThreadUtilsTest, StopDropsQueuedCallsAndHandsTheirDataBack)
{
    LogCapture log;
    bool ran = true;
    EXPECT_EQ(nullptr, m_pUtils->RunEflSafeCallFunctionSync("nofn", nullptr, nullptr, &ran));
    EXPECT_FALSE(ran);
    EXPECT_EQ(CMainThreadUtils::ASYNC_INVALID, m_pUtils->RunEflSafeCallFunctionAsync("nofn", nullptr, nullptr));
    EXPECT_EQ(2, log.Count("nofn: fn is null", DLOG_WARN));

    Call calls[5];
    static int dropped;
    dropped = 0;
    for (Call& c : calls)
        m_pUtils->RunEflSafeCallFunctionAsync("queued", Call::Fn, &c, [](void*) { ++dropped; });
    EXPECT_EQ(5u, m_pUtils->GetPendingCount());
    m_pUtils->Stop();
    EXPECT_EQ(5, dropped);
    EXPECT_EQ(0u, m_pUtils->GetPendingCount());
    m_pUtils->RunEflSafeCallFunctionAsync("later", Invoke, &m_quit);
    EXPECT_TRUE(RunLoop());
    for (Call& c : calls)
        EXPECT_EQ(0, c.runs.load());
}

}  // namespace
