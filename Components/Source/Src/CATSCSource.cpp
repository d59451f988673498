#include "CATSCSource.h"

namespace TTML {

CATSCSource::CATSCSource()
{
    t_LoadFeedFromEnvironment(kFeedVariable, "ATSC");
}

}  // namespace TTML
