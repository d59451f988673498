#ifndef TTML_COMMON_ICALLBACK_H
#define TTML_COMMON_ICALLBACK_H

namespace TTML {

// A callable that a task hands its events to. `data` is the opaque event
// pointer as it was posted; what it points to, and who frees it, is agreed
// between the poster and the callback's target.
class ICallback {
public:
    virtual void Invoke(void* data) = 0;
    virtual ~ICallback() {}
};

}  // namespace TTML

#endif
