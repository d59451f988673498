#include "CMainThreadUtils.h"
#include "LogCapture.h"
#include "MainLoopFixture.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

using namespace TTML;

namespace {

class MainThreadUtilsTest : public MainLoopTest {
public:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        m_pUtils = CMainThreadUtils::GetInstance();
        ASSERT_NE(nullptr, m_pUtils);
        m_mainThread = std::this_thread::get_id();
    }

    // Waits (polling) until `count` calls are pending: only the test knows
    // that the worker is about to block.
    void WaitForPending(size_t count)
    {
        while (m_pUtils->GetPendingCount() < count)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

    CMainThreadUtils* m_pUtils = nullptr;
    std::thread::id m_mainThread;
};

// Records the thread a function ran on.
struct Call {
    std::atomic<int> runs{0};
    std::thread::id thread;
    static void* Fn(void* data)
    {
        Call* c = static_cast<Call*>(data);
        c->thread = std::this_thread::get_id();
        ++c->runs;
        return c;
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
    struct Nested {
        CMainThreadUtils* pUtils = nullptr;
        Call inner, later;
        void* innerResult = nullptr;
        int laterRunsInside = -1;
    } nested;
    nested.pUtils = m_pUtils;
    ASSERT_EQ(CMainThreadUtils::ASYNC_QUEUED,
              m_pUtils->RunEflSafeCallFunctionAsync("outer", [](void* d) -> void* {
                  Nested* n = static_cast<Nested*>(d);
                  n->innerResult = n->pUtils->RunEflSafeCallFunctionSync("inner", Call::Fn, &n->inner);
                  n->pUtils->RunEflSafeCallFunctionAsync("later", [](void* l) -> void* {
                      Call::Fn(l);
                      ecore_main_loop_quit();
                      return nullptr;
                  }, &n->later);
                  n->laterRunsInside = n->later.runs;
                  return nullptr;
              }, &nested));
    EXPECT_TRUE(RunLoop());
    EXPECT_EQ(&nested.inner, nested.innerResult);
    EXPECT_EQ(m_mainThread, nested.inner.thread);
    EXPECT_EQ(0, nested.laterRunsInside);
    EXPECT_EQ(1, nested.later.runs.load());
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
    std::atomic<int> wrongResults{0};
    std::atomic<int> finished{0};
    for (int w = 0; w < kWorkers; ++w)
        for (int i = 0; i < kCalls; ++i)
            items[w].push_back(Item{&seen[w], i});
    auto record = [](void* d) -> void* {
        Item* it = static_cast<Item*>(d);
        it->pSeen->push_back(eina_main_loop_is() ? it->value : -1);
        return d;
    };
    std::vector<std::thread> workers;
    for (int w = 0; w < kWorkers; ++w) {
        workers.emplace_back([&, w] {
            for (int i = 0; i < kCalls; ++i) {
                Item* pItem = &items[w][i];
                if (i % 10 == 9) {
                    if (m_pUtils->RunEflSafeCallFunctionSync("sync", record, pItem) != pItem)
                        ++wrongResults;
                } else if (m_pUtils->RunEflSafeCallFunctionAsync("async", record, pItem) != 0) {
                    ++wrongResults;
                }
            }
            // Everything this worker queued runs before its last call.
            m_pUtils->RunEflSafeCallFunctionSync("last", [](void* d) -> void* {
                if (++*static_cast<std::atomic<int>*>(d) == 4)
                    ecore_main_loop_quit();
                return nullptr;
            }, &finished);
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

    struct Reset {
        BlockedCaller* pTest;
        ReleaseBy by;
        std::thread* pWorker;
        Call* pQueuedBehind;
    } reset{this, by, &worker, &queuedBehind};

    // The worker starts only once the "reset" is running, so its call queues
    // behind it and cannot run first.
    auto resetFn = [](void* d) -> void* {
        Reset* r = static_cast<Reset*>(d);
        // This call, the worker's async call and its blocked sync call.
        r->pTest->WaitForPending(3);
        switch (r->by) {
        case BY_STOP_STATE:
            r->pTest->m_pUtils->SetStop(true);
            break;
        case BY_STOP_STATE_AND_STOP:
            r->pTest->m_pUtils->SetStop(true);
            r->pTest->m_pUtils->Stop();
            break;
        case BY_RELEASE_OF_THE_SERVICE:
            r->pTest->DestroyGraphics();
            break;
        }
        r->pWorker->join();  // deadlocks here if the worker is not released
        if (r->by == BY_STOP_STATE_AND_STOP) {
            r->pTest->m_pUtils->SetStop(false);
            // Queued before Stop(): must never run, even now.
            Call* pAfter = new Call;
            r->pTest->m_pUtils->RunEflSafeCallFunctionAsync("after", [](void* a) -> void* {
                delete static_cast<Call*>(a);
                ecore_main_loop_quit();
                return nullptr;
            }, pAfter);
        } else {
            ecore_main_loop_quit();
        }
        return nullptr;
    };
    ASSERT_EQ(CMainThreadUtils::ASYNC_QUEUED, m_pUtils->RunEflSafeCallFunctionAsync("reset", resetFn, &reset));
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
    struct Item {
        std::vector<int>* pOrder;
        int value;
    } items[2] = {{&order, 1}, {&order, 2}};
    for (Item& it : items)
        m_pUtils->RunEflSafeCallFunctionAsync("queued", [](void* d) -> void* {
            Item* item = static_cast<Item*>(d);
            item->pOrder->push_back(item->value);
            if (item->value == 2)
                ecore_main_loop_quit();
            return nullptr;
        }, &it);
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
    EXPECT_EQ(0u, m_pUtils->GetPendingCount());

    Call calls[5];
    static int dropped;
    dropped = 0;
    for (Call& c : calls)
        m_pUtils->RunEflSafeCallFunctionAsync("queued", Call::Fn, &c, [](void*) { ++dropped; });
    EXPECT_EQ(5u, m_pUtils->GetPendingCount());
    m_pUtils->Stop();
    EXPECT_EQ(5, dropped);
    EXPECT_EQ(0u, m_pUtils->GetPendingCount());
    Call later;
    m_pUtils->RunEflSafeCallFunctionAsync("later", [](void* d) -> void* {
        Call::Fn(d);
        ecore_main_loop_quit();
        return nullptr;
    }, &later);
    EXPECT_TRUE(RunLoop());
    for (Call& c : calls)
        EXPECT_EQ(0, c.runs.load());
    EXPECT_EQ(1, later.runs.load());
}

}  // namespace
