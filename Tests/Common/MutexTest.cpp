#include "IMutex.h"
#include "Lock.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <string>
#include <thread>

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

TEST(Mutex, IsRecursiveAndRefusesOtherThreadsAtOnceUntilTheLastUnlock)
{
    MutexPtr m = NewMutex();
    ASSERT_TRUE(m);
    m->Lock();
    m->Lock();
    EXPECT_TRUE(m->TryLock(0));
    // The timeout is never waited for (a wait of ULONG_MAX ms would never return).
    for (unsigned long timeoutMs : {0ul, 1000ul, ULONG_MAX})
        EXPECT_FALSE(TryLockElsewhere(m.get(), timeoutMs)) << timeoutMs;
    m->Unlock();
    m->Unlock();
    EXPECT_FALSE(TryLockElsewhere(m.get()));
    m->Unlock();
    EXPECT_TRUE(TryLockElsewhere(m.get(), ULONG_MAX));
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
}

}  // namespace
