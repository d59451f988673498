#include "CTask.h"
#include "IMutex.h"
#include "Lock.h"
#include "LogCapture.h"
#include "TCallback.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <climits>
#include <chrono>
#include <cstring>
#include <functional>
#include <memory>
#include <future>
#include <mutex>
#include <numeric>
#include <set>
#include <string>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

using TTML::CTask;
using TTML::IMutex;
using TTML::TCallback;

namespace {

const char kStopLine[] = "Task: Stop task event: stopping infinite loop.";
const std::string kIdleStop = "Task is neither running nor in preparation stage! Q Size=[";
const std::string kNoCleanup = "No Cleanup CB is registered!!! queueSize=[";

std::vector<int> Range(int from, int to)
{
    std::vector<int> v(to > from ? to - from : 0);
    std::iota(v.begin(), v.end(), from);
    return v;
}

// Event i is a pointer to the int i owned by the fixture. Records what the
// worker and the cleanup callback are handed, and can hold the worker inside
// one event until the test releases it.
class TaskTest : public ::testing::Test {
protected:
    ~TaskTest() override { Release(); }  // never leave a worker held at the join

    void Connect(bool withCleanup, CTask* pTask = nullptr)
    {
        (pTask ? *pTask : task)
            .Connect(new TCallback<TaskTest>(this, &TaskTest::OnEvent),
                     withCleanup ? new TCallback<TaskTest>(this, &TaskTest::OnCleanup) : nullptr);
    }
    void Post(int from, int to, CTask* pTask = nullptr)
    {
        for (int i = from; i < to; ++i)
            (pTask ? *pTask : task).SendEvent(&ids[i]);
    }
    void WaitHeld() { held.get_future().wait(); }
    void Release()
    {
        if (!released.exchange(true))
            gate.set_value();
    }

    std::vector<int> Events() const { return Read(events); }
    std::vector<int> Cleaned() const { return Read(cleaned); }
    std::set<long> Threads() const { return Read(threads); }
    std::string LastName() const { return Read(lastName); }

    int holdAt = -1;                  // the event the worker waits in; set before Start
    std::function<void(int)> onEvent;  // runs on the worker after each event is recorded
    std::vector<int> ids = Range(0, 2000);

private:
    void OnEvent(void* data)
    {
        const int v = *static_cast<int*>(data);
        char name[17] = {0};
        prctl(PR_GET_NAME, name, 0, 0, 0);
        {
            std::lock_guard<std::mutex> guard(lock);
            events.push_back(v);
            threads.insert(syscall(SYS_gettid));
            lastName = name;
        }
        if (v == holdAt) {
            held.set_value();
            gateOpen.wait();
        }
        if (onEvent)
            onEvent(v);
    }
    void OnCleanup(void* data)
    {
        std::lock_guard<std::mutex> guard(lock);
        cleaned.push_back(*static_cast<int*>(data));
    }
    template <typename T>
    T Read(const T& field) const
    {
        std::lock_guard<std::mutex> guard(lock);
        return field;
    }

    std::promise<void> held, gate;
    std::shared_future<void> gateOpen = gate.get_future().share();
    std::atomic<bool> released{false};
    mutable std::mutex lock;
    std::vector<int> events, cleaned;
    std::set<long> threads;
    std::string lastName;

protected:
    CTask task;  // last, so that it stops its worker while the rest still lives
};

// The worker's name is cut to the 15 characters a thread name holds, with a
// warning.
TEST_F(TaskTest, EventsOfEveryProducerRunInPostingOrderOnOneNamedWorkerAndStopRunsThemFirst)
{
    const int kProducers = 4, kPerProducer = 500;
    Connect(false);
    LogCapture log;
    ASSERT_TRUE(task.Start("SixteenCharNames"));
    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p)
        producers.emplace_back([this, p] { Post(p * kPerProducer, (p + 1) * kPerProducer); });
    for (auto& t : producers)
        t.join();
    task.Stop();

    std::vector<int> events = Events();
    ASSERT_EQ(size_t(kProducers * kPerProducer), events.size());
    std::vector<int> next(kProducers, 0);
    for (int v : events)
        EXPECT_EQ(v / kPerProducer * kPerProducer + next[v / kPerProducer]++, v) << "out of order";
    EXPECT_EQ(1u, Threads().size());
    EXPECT_EQ("SixteenCharName", LastName()) << "the worker's name, not the caller's";
    EXPECT_EQ(1, log.Count("Name [SixteenCharNames] is too long", DLOG_WARN));
    for (const char* line : {kStopLine, "After pthread_join", "Enter", "Exit"})
        EXPECT_EQ(1, log.Count(line, DLOG_INFO)) << line;

    // Stopped: a second Stop has nothing to join and nothing to clean.
    log.Clear();
    task.Stop();
    EXPECT_TRUE(log.Has(kIdleStop + "0]", DLOG_INFO)) << log.Dump();
    EXPECT_FALSE(log.HasContaining("No Cleanup CB"));
}

TEST_F(TaskTest, ResetReturnsOnlyAfterEveryEarlierEventRanAndKeepsTheWorker)
{
    Connect(false);
    holdAt = 99;
    LogCapture log;
    ASSERT_TRUE(task.Start("FifteenCharName"));
    Post(0, 100);
    // Event 99 is held until the main thread is on its way into Reset. The
    // callback runs without the queue mutex, so others can take it meanwhile.
    std::promise<void> resetting;
    std::thread opener([&] {
        WaitHeld();
        resetting.get_future().wait();
        task.Lock();
        task.Unlock();
        Release();
    });
    resetting.set_value();
    task.Reset();
    EXPECT_EQ(Range(0, 100), Events());
    opener.join();

    Post(100, 150);
    task.Reset();
    EXPECT_EQ(Range(0, 150), Events());
    EXPECT_EQ("FifteenCharName", LastName());
    EXPECT_FALSE(log.HasContaining("is too long"));
}

// Hands every line's message to `seen` on the logging thread. Replaces any
// LogCapture while it lives.
class LineHook {
public:
    explicit LineHook(std::function<void(const std::string&)> seen) : m_seen(std::move(seen))
    {
        dlog_set_hook(&LineHook::Hook, this);
    }
    ~LineHook() { dlog_set_hook(nullptr, nullptr); }

private:
    static void Hook(log_priority, const char* tag, const char* msg, void* user)
    {
        if (std::strcmp(tag, "TTML") == 0)
            static_cast<LineHook*>(user)->m_seen(LogCapture::MessageOf(msg));
    }

    std::function<void(const std::string&)> m_seen;
};

// The stop marker is positional: events behind it stay queued, both those
// already there as the worker reaches it and one posted after it took it.
TEST_F(TaskTest, EventsBehindTheStopMarkerAreNeverDelivered)
{
    Connect(true);
    Post(0, 5);
    task.SendEvent(nullptr);
    Post(5, 10);

    // Whichever comes first: the worker leaving, or (wrongly) an event behind the marker.
    std::promise<bool> outcome;
    std::atomic<bool> decided{false};
    auto decide = [&](bool exited) {
        if (!decided.exchange(true))
            outcome.set_value(exited);
    };
    onEvent = [&](int v) {
        if (v >= 5)
            decide(false);
    };
    {
        LineHook hook([&](const std::string& message) {
            if (message == kStopLine)
                Post(10, 11);  // the worker has taken the marker and is on its way out
            else if (message == "Exit")
                decide(true);
        });
        ASSERT_TRUE(task.Start("Marker"));
        ASSERT_TRUE(outcome.get_future().get()) << "events behind the marker were delivered";
    }
    EXPECT_EQ(Range(0, 5), Events());

    // Stop finds no worker, joins the ended thread and cleans what follows the marker.
    LogCapture log;
    task.Stop();
    EXPECT_TRUE(log.Has(kIdleStop + "6]", DLOG_INFO)) << log.Dump();
    EXPECT_EQ(Range(5, 11), Cleaned());
}

// A reset whose marker sits behind a stop marker must not take the stop
// marker as its answer: it would return while the events between still run.
TEST_F(TaskTest, StopMarkerAheadIsNotTakenAsTheResetsAnswer)
{
    Connect(true);
    holdAt = 0;
    ASSERT_TRUE(task.Start("StopReset"));
    Post(0, 1);
    WaitHeld();
    task.SendEvent(nullptr);
    Post(1, 2);
    std::thread resetter([this] { task.Reset(); });
    // Give the reset time to queue its marker behind the others; if it is
    // later, it finds the worker gone and the test proves nothing, it does not fail.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    Release();
    resetter.join();  // released when the worker ends
    EXPECT_EQ(std::vector<int>{0}, Events());
    // The worker may still be on its way out: then this Stop joins it and
    // the second one finds the queue left behind.
    task.Stop();
    task.Stop();
    EXPECT_EQ(std::vector<int>{1}, Cleaned());
}

struct CleanupCase {
    const char* name;
    bool cleanupCb;
    int posts;
    int droppedOnPost;  // oldest events handed to the cleanup while posting
};

class TaskCleanup : public TaskTest, public ::testing::WithParamInterface<CleanupCase> {};

// Without a worker, Reset returns at once and posting keeps the newest 20
// events when a cleanup callback exists; Stop then hands it the rest. Without
// one, everything stays queued (with warnings) for the next worker.
TEST_P(TaskCleanup, TrimsAnIdleQueueToTwentyAndStopEmptiesIt)
{
    const CleanupCase& c = GetParam();
    Connect(c.cleanupCb);
    LogCapture log;
    Post(0, c.posts);
    task.Reset();
    EXPECT_TRUE(log.Has("Returning as task is not running", DLOG_INFO)) << log.Dump();
    EXPECT_EQ(Range(0, c.droppedOnPost), Cleaned());
    EXPECT_TRUE(Events().empty());
    for (int size = 21; size <= c.posts; ++size)
        EXPECT_EQ(c.cleanupCb ? 0 : 1, log.Count(kNoCleanup + std::to_string(size) + "]", DLOG_WARN)) << size;

    const std::string kept = std::to_string(c.posts - c.droppedOnPost) + "]";
    log.Clear();
    task.Stop();
    EXPECT_TRUE(log.Has(kIdleStop + kept, DLOG_INFO)) << log.Dump();
    EXPECT_EQ(c.cleanupCb ? 0 : 1, log.Count(kNoCleanup + kept, DLOG_WARN)) << log.Dump();
    EXPECT_EQ(c.cleanupCb ? Range(0, c.posts) : std::vector<int>{}, Cleaned());

    // What Stop left behind goes to the next worker, in order.
    ASSERT_TRUE(task.Start("Leftovers"));
    task.Reset();
    EXPECT_EQ(c.cleanupCb ? std::vector<int>{} : Range(0, c.posts), Events());
}

INSTANTIATE_TEST_SUITE_P(
    Floor, TaskCleanup,
    ::testing::Values(CleanupCase{"twenty_posts_keep_all", true, 20, 0},
                      CleanupCase{"twenty_one_posts_drop_oldest", true, 21, 1},
                      CleanupCase{"twenty_five_posts_drop_five_oldest", true, 25, 5},
                      CleanupCase{"no_cleanup_cb_warns_and_keeps_all", false, 25, 0}),
    TTMLTest::RowName());

TEST_F(TaskTest, OnlyOneOfManyConcurrentStartsWinsAndItsWorkerKeepsRunning)
{
    const int kCallers = 4;
    Connect(false);
    LogCapture log;
    std::promise<void> go;
    std::shared_future<void> goSignal = go.get_future().share();
    std::atomic<int> started{0};
    std::vector<std::thread> callers;
    for (int i = 0; i < kCallers; ++i)
        callers.emplace_back([&] {
            goSignal.wait();
            started += task.Start("Racer");
        });
    go.set_value();
    for (auto& t : callers)
        t.join();
    EXPECT_EQ(1, started.load());
    EXPECT_EQ(kCallers - 1,
              log.Count("Thread is already created. New request for creation should not be made!", DLOG_ERROR));
    Post(0, 2);
    task.Reset();
    EXPECT_EQ(Range(0, 2), Events());
    EXPECT_EQ(1u, Threads().size());
    EXPECT_EQ("Racer", LastName());
    task.Stop();
    EXPECT_EQ(1, log.Count("After pthread_join"));
    EXPECT_TRUE(task.Start("Again")) << "a stopped task may be started again";
}

TEST_F(TaskTest, DestructorStopsALiveWorkerAfterSettingTheIgnoreFlag)
{
    LogCapture log;
    auto* pTask = new CTask();
    std::atomic<bool> lastSawIgnored{false};
    // The worker is held in event 0 so that the rest are still queued when
    // the destructor sets the flag; they still run before the join.
    holdAt = 0;
    onEvent = [&](int v) {
        if (v == 19)
            lastSawIgnored = pTask->IsTaskIgnored();
    };
    Connect(false, pTask);
    ASSERT_TRUE(pTask->Start("Doomed"));
    Post(0, 20, pTask);
    WaitHeld();
    std::thread opener([&] {
        while (!pTask->IsTaskIgnored())
            std::this_thread::yield();
        Release();
    });
    delete pTask;
    opener.join();
    EXPECT_TRUE(log.Has("Task still running. Stopping now.", DLOG_WARN)) << log.Dump();
    EXPECT_EQ(1, log.Count("After pthread_join"));
    EXPECT_EQ(Range(0, 20), Events());
    EXPECT_TRUE(lastSawIgnored.load());

    log.Clear();
    delete new CTask();
    EXPECT_FALSE(log.Has("Task still running. Stopping now."));
}

// ---- Mutex and scoped holder ----

struct MutexDeleter {
    void operator()(IMutex* m) const { m->Destroy(); }
};
using MutexPtr = std::unique_ptr<IMutex, MutexDeleter>;

// TryLock from a thread that does not hold the mutex.
bool TryLockElsewhere(IMutex* m, unsigned long timeoutMs = 0)
{
    bool taken = false;
    std::thread([&] {
        taken = m->TryLock(timeoutMs);
        if (taken)
            m->Unlock();
    }).join();
    return taken;
}

// Taken directly and through nested holders; a holder without a mutex
// neither locks nor unlocks anything.
TEST(Mutex, IsRecursiveAndRefusesOtherThreadsAtOnceUntilTheLastUnlock)
{
    MutexPtr m(IMutex::Create());
    ASSERT_TRUE(m);
    m->Lock();
    {
        TTML::Lock outer(m.get()), inner(m.get()), none(nullptr);
        EXPECT_TRUE(m->TryLock(0));
    }
    // The timeout is never waited for (a wait of ULONG_MAX ms would never return).
    for (unsigned long timeoutMs : {0ul, 1000ul, ULONG_MAX})
        EXPECT_FALSE(TryLockElsewhere(m.get(), timeoutMs)) << timeoutMs;
    m->Unlock();
    EXPECT_FALSE(TryLockElsewhere(m.get()));
    m->Unlock();
    EXPECT_TRUE(TryLockElsewhere(m.get(), ULONG_MAX));
}

}  // namespace
