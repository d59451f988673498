#include "IMutex.h"
#include "Lock.h"

#include <gtest/gtest.h>

#include <climits>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using TTML::IMutex;

namespace {

struct MutexDeleter {
    void operator()(IMutex* m) const { m->Destroy(); }
};
using MutexPtr = std::unique_ptr<IMutex, MutexDeleter>;

MutexPtr NewMutex()
{
    return MutexPtr(IMutex::Create());
}

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

class MutexTryLock : public ::testing::TestWithParam<unsigned long> {};

// The timeout is never waited for: a held mutex refuses at once (a wait of
// ULONG_MAX ms would never return).
TEST_P(MutexTryLock, OnAMutexHeldByAnotherThreadFailsAtOnce)
{
    MutexPtr m = NewMutex();
    ASSERT_TRUE(m);
    std::promise<void> held, release;
    std::thread holder([&] {
        m->Lock();
        held.set_value();
        release.get_future().wait();
        m->Unlock();
    });
    held.get_future().wait();
    EXPECT_FALSE(m->TryLock(GetParam()));
    release.set_value();
    holder.join();
    EXPECT_TRUE(m->TryLock(GetParam()));
    m->Unlock();
}

INSTANTIATE_TEST_SUITE_P(Timeouts, MutexTryLock, ::testing::Values(0ul, 1000ul, ULONG_MAX),
                         [](const ::testing::TestParamInfo<unsigned long>& i) {
                             return i.param == 0 ? std::string("zero")
                                    : i.param == ULONG_MAX ? std::string("ulong_max")
                                                           : "ms_" + std::to_string(i.param);
                         });

TEST(Mutex, IsRecursiveAndReleasedOnlyByTheLastUnlock)
{
    MutexPtr m = NewMutex();
    ASSERT_TRUE(m);
    m->Lock();
    m->Lock();
    EXPECT_TRUE(m->TryLock(0));
    EXPECT_FALSE(TryLockElsewhere(m.get()));
    m->Unlock();
    m->Unlock();
    EXPECT_FALSE(TryLockElsewhere(m.get()));
    m->Unlock();
    EXPECT_TRUE(TryLockElsewhere(m.get()));
}

TEST(LockHolder, ExcludesOtherThreadsNestsAndIgnoresNull)
{
    MutexPtr m = NewMutex();
    ASSERT_TRUE(m);
    {
        TTML::Lock outer(m.get());
        {
            TTML::Lock inner(m.get());
            EXPECT_FALSE(TryLockElsewhere(m.get()));
        }
        EXPECT_FALSE(TryLockElsewhere(m.get()));
    }
    EXPECT_TRUE(TryLockElsewhere(m.get()));
    {
        // A holder without a mutex neither locks nor unlocks anything.
        TTML::Lock none(nullptr);
        EXPECT_TRUE(TryLockElsewhere(m.get()));
    }

    const int kThreads = 4, kRounds = 20000;
    long counter = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds; ++i) {
                TTML::Lock hold(m.get());
                ++counter;
            }
        });
    for (auto& t : threads)
        t.join();
    EXPECT_EQ(long(kThreads) * kRounds, counter);
}

}  // namespace
