#ifndef TTML_SOURCE_STARTNOTIFYDATA_H
#define TTML_SOURCE_STARTNOTIFYDATA_H

namespace TTML {

// Payload of the start message (1). Owned by the source; valid during the call.
struct StartNotifyData {
    bool bandMode = false;  // documents arrive as in-band segments
    void* pCore = nullptr;
};

}  // namespace TTML

#endif
