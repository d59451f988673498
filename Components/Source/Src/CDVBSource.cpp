#include "CDVBSource.h"

namespace TTML {

CDVBSource::CDVBSource()
{
    t_LoadFeedFromEnvironment(kFeedVariable, "DVB");
}

}  // namespace TTML
