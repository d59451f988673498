#ifndef TTML_SOURCE_CDVBSOURCE_H
#define TTML_SOURCE_CDVBSOURCE_H

#include "CTTMLSource.h"

namespace TTML {

// The DVB broadcast source. It plays the feed named by the environment
// variable INTERTITLE_DVB_FEED, else INTERTITLE_FEED, read at construction;
// without either it has nothing to play (Start returns false).
class CDVBSource : public CTTMLSource {
public:
    static constexpr const char* kFeedVariable = "INTERTITLE_DVB_FEED";

    CDVBSource();
};

}  // namespace TTML

#endif
