#include "CStyleRegionInfo.h"

namespace TTML {

namespace {

CElementSPTR Find(const std::map<std::string, CElementSPTR>& map, const std::string& id)
{
    auto it = map.find(id);
    return it == map.end() ? CElementSPTR() : it->second;
}

}  // namespace

CStyleRegionInfo::~CStyleRegionInfo()
{
    Reset();
}

void CStyleRegionInfo::AddStyle(std::string id, CElementSPTR& style)
{
    m_styles.emplace(std::move(id), style);
}

void CStyleRegionInfo::AddRegion(std::string id, CElementSPTR& region)
{
    m_regions.emplace(std::move(id), region);
}

CElementSPTR CStyleRegionInfo::GetStyle(const std::string& id) const
{
    return Find(m_styles, id);
}

CElementSPTR CStyleRegionInfo::GetRegion(const std::string& id) const
{
    return Find(m_regions, id);
}

void CStyleRegionInfo::Reset()
{
    m_styles.clear();
    m_regions.clear();
}

}  // namespace TTML
