#ifndef TTML_SOURCE_CATSCSOURCE_H
#define TTML_SOURCE_CATSCSOURCE_H

#include "CTTMLSource.h"

namespace TTML {

// The ATSC 3.0 broadcast source. It plays the feed named by the environment
// variable INTERTITLE_ATSC_FEED, else INTERTITLE_FEED, read at construction;
// without either it has nothing to play (Start returns false).
class CATSCSource : public CTTMLSource {
public:
    static constexpr const char* kFeedVariable = "INTERTITLE_ATSC_FEED";

    CATSCSource();
};

}  // namespace TTML

#endif
