#ifndef TTML_SOURCE_SEEKNOTIFYDATA_H
#define TTML_SOURCE_SEEKNOTIFYDATA_H

namespace TTML {

// Payload of the seek-start message (6). Owned by the source; valid during the call.
struct SeekNotifyData {
    long long position = 0;  // ms
    void* pCore = nullptr;
};

}  // namespace TTML

#endif
