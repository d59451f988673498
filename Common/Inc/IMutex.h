#ifndef TTML_COMMON_IMUTEX_H
#define TTML_COMMON_IMUTEX_H

namespace TTML {

// A recursive mutex: the thread that holds it may take it again and must
// release it as often as it took it.
class IMutex {
public:
    // Returns a new recursive mutex, or null when it could not be set up.
    // The caller owns it and releases it with Destroy().
    static IMutex* Create();

    virtual void Lock() = 0;
    virtual void Unlock() = 0;
    // One attempt that never blocks; true when the mutex was taken.
    // `timeoutMs` is accepted for interface compatibility and not used.
    virtual bool TryLock(unsigned long timeoutMs) = 0;
    // Deletes the object; it must not be held by any thread.
    virtual void Destroy() = 0;
    virtual ~IMutex() {}
};

}  // namespace TTML

#endif
