#include "CNameCache.h"

namespace TTML {

void CNameCache::Clear()
{
    m_slots.fill(Slot{nullptr, kMissing});
}

}  // namespace TTML
