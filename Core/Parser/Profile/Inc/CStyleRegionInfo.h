#ifndef TTML_PARSER_PROFILE_CSTYLEREGIONINFO_H
#define TTML_PARSER_PROFILE_CSTYLEREGIONINFO_H

#include "CElement.h"

#include <map>
#include <string>

namespace TTML {

// Styles and regions of the document being walked, by xml:id. Owned by a
// profile, emptied between documents; parser thread only.
class CStyleRegionInfo {
public:
    CStyleRegionInfo() = default;
    ~CStyleRegionInfo();

    CStyleRegionInfo(const CStyleRegionInfo&) = delete;
    CStyleRegionInfo& operator=(const CStyleRegionInfo&) = delete;

    // The first element registered under an id stays.
    void AddStyle(std::string id, CElementSPTR& style);
    void AddRegion(std::string id, CElementSPTR& region);
    // Empty pointer when the id is not registered.
    CElementSPTR GetStyle(const std::string& id) const;
    CElementSPTR GetRegion(const std::string& id) const;
    bool IsEmptyRegionList() const { return m_regions.empty(); }
    // Releases every registered element.
    void Reset();

private:
    std::map<std::string, CElementSPTR> m_styles;
    std::map<std::string, CElementSPTR> m_regions;
};

}  // namespace TTML

#endif
