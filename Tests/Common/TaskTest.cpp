#include "CTask.h"
#include "LogCapture.h"
#include "TCallback.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <future>
#include <memory>
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
using TTML::TCallback;

namespace {

const char kStopLine[] = "Task: Stop task event: stopping infinite loop.";

long ThreadId()
{
    return syscall(SYS_gettid);
}

std::string ThreadName()
{
    char name[17] = {0};
    prctl(PR_GET_NAME, name, 0, 0, 0);
    return name;
}

std::vector<int> Range(int from, int to)
{
    std::vector<int> v(to > from ? to - from : 0);
    std::iota(v.begin(), v.end(), from);
    return v;
}

// Target of a task's callbacks: events are pointers to ints owned by the test.
class Recorder {
public:
    void OnEvent(void* data)
    {
        int value = *static_cast<int*>(data);
        {
            std::lock_guard<std::mutex> guard(m_lock);
            m_events.push_back(value);
            m_threads.insert(ThreadId());
            m_lastThreadName = ThreadName();
        }
        if (onEvent)
            onEvent(value);
    }

    void OnCleanup(void* data)
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_cleaned.push_back(*static_cast<int*>(data));
    }

    void ConnectTo(CTask& task, bool withCleanup)
    {
        task.Connect(new TCallback<Recorder>(this, &Recorder::OnEvent),
                     withCleanup ? new TCallback<Recorder>(this, &Recorder::OnCleanup) : nullptr);
    }

    std::vector<int> Events() const { return Read(m_events); }
    std::vector<int> Cleaned() const { return Read(m_cleaned); }
    std::set<long> Threads() const { return Read(m_threads); }
    std::string LastThreadName() const { return Read(m_lastThreadName); }

    // Runs on the worker after each event is recorded; set before Start.
    std::function<void(int)> onEvent;

private:
    template <typename T>
    T Read(const T& field) const
    {
        std::lock_guard<std::mutex> guard(m_lock);
        return field;
    }

    mutable std::mutex m_lock;
    std::vector<int> m_events;
    std::vector<int> m_cleaned;
    std::set<long> m_threads;
    std::string m_lastThreadName;
};

// Event payloads: ids[i] == i, stable for the lifetime of the test.
struct Payloads {
    explicit Payloads(int n) : ids(Range(0, n)) {}
    void* operator[](int i) { return &ids[i]; }
    std::vector<int> ids;
};

TEST(TaskQueue, DeliversEventsOfEveryProducerInPostingOrderOnOneWorker)
{
    const int kProducers = 4, kPerProducer = 500;
    Payloads payload(kProducers * kPerProducer);
    Recorder rec;
    CTask task;
    rec.ConnectTo(task, false);
    ASSERT_TRUE(task.Start("FifoTask"));

    std::vector<std::thread> producers;
    for (int p = 0; p < kProducers; ++p)
        producers.emplace_back([&, p] {
            for (int i = 0; i < kPerProducer; ++i)
                task.SendEvent(payload[p * kPerProducer + i]);
        });
    for (auto& t : producers)
        t.join();
    task.Reset();

    std::vector<int> events = rec.Events();
    ASSERT_EQ(size_t(kProducers * kPerProducer), events.size());
    std::vector<int> next(kProducers, 0);
    for (int v : events) {
        int p = v / kPerProducer;
        EXPECT_EQ(p * kPerProducer + next[p], v) << "producer " << p << " out of order";
        ++next[p];
    }
    std::set<long> threads = rec.Threads();
    ASSERT_EQ(1u, threads.size());
    EXPECT_NE(ThreadId(), *threads.begin());
    task.Stop();
}

TEST(TaskReset, ReturnsOnlyAfterEveryEarlierEventRanAndKeepsTheWorker)
{
    Payloads payload(150);
    Recorder rec;
    std::promise<void> lastEntered, resetCalled, gate;
    std::shared_future<void> gateOpen = gate.get_future().share();
    rec.onEvent = [&](int v) {
        if (v == 99) {
            lastEntered.set_value();
            gateOpen.wait();
        }
    };
    CTask task;
    rec.ConnectTo(task, false);
    ASSERT_TRUE(task.Start("ResetTask"));
    for (int i = 0; i < 100; ++i)
        task.SendEvent(payload[i]);

    // Event 99 is held until the main thread is on its way into Reset.
    std::thread opener([&] {
        lastEntered.get_future().wait();
        resetCalled.get_future().wait();
        gate.set_value();
    });
    resetCalled.set_value();
    task.Reset();
    EXPECT_EQ(Range(0, 100), rec.Events());
    opener.join();

    for (int i = 100; i < 150; ++i)
        task.SendEvent(payload[i]);
    task.Reset();
    EXPECT_EQ(Range(0, 150), rec.Events());
    task.Stop();
}

TEST(TaskReset, OnANeverStartedTaskReturnsAtOnceAndDeliversNothing)
{
    Payloads payload(3);
    Recorder rec;
    CTask task;
    rec.ConnectTo(task, false);
    for (int i = 0; i < 3; ++i)
        task.SendEvent(payload[i]);
    LogCapture log;
    task.Reset();
    EXPECT_TRUE(log.Has("Returning as task is not running", DLOG_INFO)) << log.Dump();
    EXPECT_TRUE(rec.Events().empty());
}

TEST(TaskStop, EndsTheWorkerAfterTheEventsAheadOfIt)
{
    Payloads payload(50);
    Recorder rec;
    CTask task;
    rec.ConnectTo(task, false);
    LogCapture log;
    ASSERT_TRUE(task.Start("StopTask"));
    for (int i = 0; i < 50; ++i)
        task.SendEvent(payload[i]);
    task.Stop();
    EXPECT_EQ(Range(0, 50), rec.Events());
    EXPECT_EQ(1, log.Count(kStopLine, DLOG_INFO)) << log.Dump();
    EXPECT_EQ(1, log.Count("After pthread_join", DLOG_INFO));
    EXPECT_EQ(1, log.Count("Enter", DLOG_INFO));
    EXPECT_EQ(1, log.Count("Exit", DLOG_INFO));

    // Stopped: a second Stop has nothing to join and nothing to clean.
    log.Clear();
    task.Stop();
    EXPECT_TRUE(log.Has("Task is neither running nor in preparation stage! Q Size=[0]", DLOG_INFO)) << log.Dump();
    EXPECT_FALSE(log.HasContaining("No Cleanup CB"));
}

// Runs `action` on the logging thread the first time a line with exactly
// `message` is logged. Replaces any LogCapture while it lives.
class LineHook {
public:
    LineHook(const char* message, std::function<void()> action) : m_message(message), m_action(std::move(action))
    {
        dlog_set_hook(&LineHook::Hook, this);
    }
    ~LineHook() { dlog_set_hook(nullptr, nullptr); }
    int Hits() const { return m_hits.load(); }

private:
    static void Hook(log_priority, const char* tag, const char* msg, void* user)
    {
        auto* self = static_cast<LineHook*>(user);
        if (std::strcmp(tag, "TTML") == 0 && LogCapture::MessageOf(msg) == self->m_message && self->m_hits++ == 0)
            self->m_action();
    }

    std::string m_message;
    std::function<void()> m_action;
    std::atomic<int> m_hits{0};
};

TEST(TaskStop, EventPostedAfterTheStopMarkerIsNeverDelivered)
{
    Payloads payload(11);
    Recorder rec;
    CTask task;
    rec.ConnectTo(task, true);
    {
        // Posted by the worker itself once it has taken Stop's marker, while
        // Stop is still waiting to join it.
        LineHook hook(kStopLine, [&] { task.SendEvent(payload[10]); });
        ASSERT_TRUE(task.Start("LateTask"));
        for (int i = 0; i < 10; ++i)
            task.SendEvent(payload[i]);
        task.Stop();
        ASSERT_EQ(1, hook.Hits());
    }
    EXPECT_EQ(Range(0, 10), rec.Events());

    // The late event is still queued: the next Stop hands it to the cleanup.
    LogCapture log;
    task.Stop();
    EXPECT_TRUE(log.Has("Task is neither running nor in preparation stage! Q Size=[1]", DLOG_INFO)) << log.Dump();
    EXPECT_EQ(std::vector<int>{10}, rec.Cleaned());
    EXPECT_EQ(Range(0, 10), rec.Events());
}

// The marker is positional: events queued behind it stay queued, even when
// they are already there as the worker reaches it.
TEST(TaskStop, EventsQueuedBehindTheMarkerStayQueued)
{
    Payloads payload(10);
    Recorder rec;
    CTask task;
    rec.ConnectTo(task, true);
    for (int i = 0; i < 5; ++i)
        task.SendEvent(payload[i]);
    task.SendEvent(nullptr);
    for (int i = 5; i < 10; ++i)
        task.SendEvent(payload[i]);

    // Whichever comes first: the worker leaving, or (wrongly) the last event.
    std::promise<bool> outcome;
    std::atomic<bool> decided{false};
    auto decide = [&](bool exited) {
        if (!decided.exchange(true))
            outcome.set_value(exited);
    };
    rec.onEvent = [&](int v) {
        if (v == 9)
            decide(false);
    };
    {
        LineHook hook("Exit", [&] { decide(true); });
        ASSERT_TRUE(task.Start("Marker"));
        ASSERT_TRUE(outcome.get_future().get()) << "events behind the marker were delivered";
    }
    EXPECT_EQ(Range(0, 5), rec.Events());

    // Stop finds no worker, joins the ended thread and cleans what follows the marker.
    LogCapture log;
    task.Stop();
    EXPECT_TRUE(log.Has("Task is neither running nor in preparation stage! Q Size=[5]")) << log.Dump();
    EXPECT_EQ(Range(5, 10), rec.Cleaned());
}

// A reset whose marker sits behind a stop marker must not take the stop
// marker as its answer: it would return while the events between still run.
TEST(TaskReset, StopMarkerAheadIsNotTakenAsTheResetsAnswer)
{
    Payloads payload(2);
    Recorder rec;
    std::promise<void> held, gate;
    std::shared_future<void> gateOpen = gate.get_future().share();
    rec.onEvent = [&](int v) {
        if (v == 0) {
            held.set_value();
            gateOpen.wait();
        }
    };
    CTask task;
    rec.ConnectTo(task, true);
    ASSERT_TRUE(task.Start("StopReset"));
    task.SendEvent(payload[0]);
    held.get_future().wait();
    task.SendEvent(nullptr);
    task.SendEvent(payload[1]);
    std::thread resetter([&] { task.Reset(); });
    // Give the reset time to queue its marker behind the others; if it is
    // later, it finds the worker gone and the test proves nothing, it does not fail.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    gate.set_value();
    resetter.join();  // released when the worker ends
    EXPECT_EQ(std::vector<int>{0}, rec.Events());
    // The worker may still be on its way out: then this Stop joins it and
    // the second one finds the queue left behind.
    task.Stop();
    task.Stop();
    EXPECT_EQ(std::vector<int>{1}, rec.Cleaned());
}

struct CleanupCase {
    const char* name;
    bool cleanupCb;
    int posts;
    int droppedOnPost;  // oldest events handed to the cleanup while posting
};

class TaskCleanup : public ::testing::TestWithParam<CleanupCase> {};

// Without a worker, posting keeps the newest 20 events when a cleanup
// callback exists; Stop then hands it the rest. Without one, everything stays
// queued (with warnings) for the next worker.
TEST_P(TaskCleanup, TrimsAnIdleQueueToTwentyAndStopEmptiesIt)
{
    const CleanupCase& c = GetParam();
    Payloads payload(c.posts);
    Recorder rec;
    CTask task;
    rec.ConnectTo(task, c.cleanupCb);
    LogCapture log;
    for (int i = 0; i < c.posts; ++i)
        task.SendEvent(payload[i]);
    EXPECT_EQ(Range(0, c.droppedOnPost), rec.Cleaned());
    EXPECT_TRUE(rec.Events().empty());
    for (int size = 21; size <= c.posts; ++size) {
        std::string warning = "No Cleanup CB is registered!!! queueSize=[" + std::to_string(size) + "]";
        EXPECT_EQ(c.cleanupCb ? 0 : 1, log.Count(warning, DLOG_WARN)) << warning;
    }

    const int kept = c.posts - c.droppedOnPost;
    std::string stopLine = "Task is neither running nor in preparation stage! Q Size=[" + std::to_string(kept) + "]";
    std::string stopWarning = "No Cleanup CB is registered!!! queueSize=[" + std::to_string(kept) + "]";
    log.Clear();
    task.Stop();
    EXPECT_TRUE(log.Has(stopLine, DLOG_INFO)) << log.Dump();
    EXPECT_EQ(c.cleanupCb ? 0 : 1, log.Count(stopWarning, DLOG_WARN)) << log.Dump();
    EXPECT_EQ(c.cleanupCb ? Range(0, c.posts) : std::vector<int>{}, rec.Cleaned());

    // What Stop left behind goes to the next worker, in order.
    ASSERT_TRUE(task.Start("Leftovers"));
    task.Reset();
    EXPECT_EQ(c.cleanupCb ? std::vector<int>{} : Range(0, c.posts), rec.Events());
    task.Stop();
}

INSTANTIATE_TEST_SUITE_P(
    Floor, TaskCleanup,
    ::testing::Values(CleanupCase{"twenty_posts_keep_all", true, 20, 0},
                      CleanupCase{"twenty_one_posts_drop_oldest", true, 21, 1},
                      CleanupCase{"twenty_five_posts_drop_five_oldest", true, 25, 5},
                      CleanupCase{"no_cleanup_cb_warns_and_keeps_all", false, 25, 0}),
    TTMLTest::RowName());

struct NameCase {
    const char* label;
    const char* name;
    const char* expected;
    bool warned;
};

void PrintTo(const NameCase& c, std::ostream* os)
{
    *os << c.label;
}

class TaskName : public ::testing::TestWithParam<NameCase> {};

TEST_P(TaskName, WorkerIsNamedWithAtMostFifteenCharacters)
{
    const NameCase& c = GetParam();
    Payloads payload(1);
    Recorder rec;
    CTask task;
    rec.ConnectTo(task, false);
    const std::string callerName = ThreadName();
    LogCapture log;
    ASSERT_TRUE(task.Start(c.name));
    task.SendEvent(payload[0]);
    task.Reset();
    task.Stop();

    EXPECT_EQ(c.expected, rec.LastThreadName());
    EXPECT_EQ(callerName, ThreadName()) << "the caller must keep its name";
    EXPECT_EQ(c.warned ? 1 : 0, log.Count(std::string("Name [") + c.name + "] is too long", DLOG_WARN));
    // The worker's own log lines carry the name too.
    bool found = false;
    for (const auto& line : log.Lines())
        if (line.message == kStopLine)
            found = line.text.find(std::string("Thread:[") + c.expected + " ") != std::string::npos;
    EXPECT_TRUE(found) << log.Dump();
}

INSTANTIATE_TEST_SUITE_P(
    Length, TaskName,
    ::testing::Values(NameCase{"short", "Parser", "Parser", false},
                      NameCase{"fifteen", "FifteenCharName", "FifteenCharName", false},
                      NameCase{"sixteen", "SixteenCharNames", "SixteenCharName", true},
                      NameCase{"long", "AVeryLongWorkerThreadName", "AVeryLongWorker", true}),
    [](const ::testing::TestParamInfo<NameCase>& i) { return std::string(i.param.label); });

TEST(TaskStart, SecondStartIsRefusedAndTheFirstWorkerKeepsRunning)
{
    Payloads payload(2);
    Recorder rec;
    CTask task;
    rec.ConnectTo(task, false);
    LogCapture log;
    ASSERT_TRUE(task.Start("Once"));
    task.SendEvent(payload[0]);
    EXPECT_FALSE(task.Start("Twice"));
    task.SendEvent(payload[1]);
    task.Reset();
    EXPECT_EQ(1, log.Count("Thread is already created. New request for creation should not be made!", DLOG_ERROR));
    EXPECT_EQ(Range(0, 2), rec.Events());
    EXPECT_EQ(1u, rec.Threads().size());
    EXPECT_EQ("Once", rec.LastThreadName());
    task.Stop();

    // A stopped task may be started again.
    EXPECT_TRUE(task.Start("Again"));
    task.Stop();
}

TEST(TaskStart, OnlyOneOfManyConcurrentStartsWins)
{
    const int kCallers = 4;
    CTask task;
    LogCapture log;
    std::promise<void> go;
    std::shared_future<void> goSignal = go.get_future().share();
    std::atomic<int> started{0};
    std::vector<std::thread> callers;
    for (int i = 0; i < kCallers; ++i)
        callers.emplace_back([&] {
            goSignal.wait();
            if (task.Start("Racer"))
                ++started;
        });
    go.set_value();
    for (auto& t : callers)
        t.join();
    EXPECT_EQ(1, started.load());
    EXPECT_EQ(kCallers - 1, log.Count("Thread is already created. New request for creation should not be made!"));
    task.Stop();
    EXPECT_EQ(1, log.Count("After pthread_join"));
}

TEST(TaskCallbacks, RunWithoutTheQueueLockSoOthersCanPostMeanwhile)
{
    Payloads payload(2);
    Recorder rec;
    std::promise<void> entered, gate;
    std::shared_future<void> gateOpen = gate.get_future().share();
    rec.onEvent = [&](int v) {
        if (v == 0) {
            entered.set_value();
            gateOpen.wait();
        }
    };
    CTask task;
    rec.ConnectTo(task, false);
    ASSERT_TRUE(task.Start("Unlocked"));
    task.SendEvent(payload[0]);
    entered.get_future().wait();
    // Would block forever if the worker held the queue mutex here.
    task.SendEvent(payload[1]);
    task.Lock();
    task.Unlock();
    gate.set_value();
    task.Reset();
    EXPECT_EQ(Range(0, 2), rec.Events());
    task.Stop();
}

TEST(TaskDestructor, StopsALiveWorkerAfterSettingTheIgnoreFlag)
{
    Payloads payload(20);
    Recorder rec;
    LogCapture log;
    auto* task = new CTask();
    std::promise<void> entered, gate;
    std::shared_future<void> gateOpen = gate.get_future().share();
    std::atomic<bool> lastSawIgnored{false};
    // The worker is held in event 0 so that the rest are still queued when
    // the destructor sets the flag; they still run before the join.
    rec.onEvent = [&](int v) {
        if (v == 0) {
            entered.set_value();
            gateOpen.wait();
        } else if (v == 19) {
            lastSawIgnored = task->IsTaskIgnored();
        }
    };
    rec.ConnectTo(*task, false);
    ASSERT_TRUE(task->Start("Doomed"));
    for (int i = 0; i < 20; ++i)
        task->SendEvent(payload[i]);
    entered.get_future().wait();
    std::thread opener([&] {
        while (!task->IsTaskIgnored())
            std::this_thread::yield();
        gate.set_value();
    });
    delete task;
    opener.join();
    EXPECT_TRUE(log.Has("Task still running. Stopping now.", DLOG_WARN)) << log.Dump();
    EXPECT_EQ(1, log.Count("After pthread_join"));
    EXPECT_EQ(Range(0, 20), rec.Events());
    EXPECT_TRUE(lastSawIgnored.load());

    log.Clear();
    delete new CTask();
    EXPECT_FALSE(log.Has("Task still running. Stopping now."));
}

}  // namespace
