#ifndef TTML_SOURCE_SUBRAWDATA_H
#define TTML_SOURCE_SUBRAWDATA_H

#include "TTMLTypes.h"

#include <string>

namespace TTML {

// One XML document from the source (message 0). Allocated by the source with
// new; whoever ends up holding it (controller or parser) deletes it.
struct SubRawData {
    int type = 0;                        // source-private kind; the core does not read it
    int profile = TTML_PROFILE_NONE;     // from the transport (TTMLProfile)
    long long timeStamp = 0;             // ms added to the media time when timing
    unsigned long long segmentBegin = 0; // ms; in-band segment bounds
    unsigned long long segmentEnd = 0;   // ms
    std::string url;                     // where the document came from; the core does not read it
    std::string xmlData;                 // the document text
    std::string subSampleData;           // sub-sample images (IMSC 1 image profile)
    void* pCore = nullptr;               // the registered user data (the controller)
};

}  // namespace TTML

#endif
