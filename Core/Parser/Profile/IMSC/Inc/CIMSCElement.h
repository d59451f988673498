#ifndef TTML_PARSER_PROFILE_IMSC_CIMSCELEMENT_H
#define TTML_PARSER_PROFILE_IMSC_CIMSCELEMENT_H

#include "CElement.h"

#include <list>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace TTML {

// Element of the IMSC 1 profiles. Stores only the attributes that the
// installed handler's tables let through (see AddAttrValue), carries the
// `set` elements that change it over time, and for the image profile the
// decoded image of a `div`.
// Timed sets (those of the element and, copied on creation, of its
// ancestors) are consumed when the element is split into pieces; a region's
// sets stay for the whole document. Times are document milliseconds.
// Threads: as CElement (built on the parser thread, read-only afterwards).
class CIMSCElement : public CElement {
public:
    // type: a TTMLElem value.
    explicit CIMSCElement(int type);
    ~CIMSCElement() override;

    // The element as an IMSC element, or null when it is none. Every element
    // of an IMSC walk is exactly this class: checked by type first, which
    // costs less than a dynamic_cast.
    static CIMSCElement* From(CElement* element);
    static const CIMSCElement* From(const CElement* element);

    // Refuses numbers outside 0..57 with a warning. A style stores
    // everything; a span (text nodes included) stores only what applies to
    // spans; other types store what is inheritable or applies to them.
    // Without an installed handler nothing is filtered.
    void AddAttrValue(int attr, const std::string& value) override;
    void AddAttrValue(int attr, std::string&& value) override;
    // CElement::CreateFromParent (unfiltered copy of the parent's map), then,
    // unless this is a `set`, the parent's timed sets when it is an IMSC
    // element (the records share the set elements).
    void CreateFromParent(CElementSPTR& parent) override;

    // True while image data is held (an empty pointer holds none).
    bool IsImageProfile() const override;
    // Shares `data`; null clears it.
    void SetImageData(std::shared_ptr<CImageData>& data) override;
    std::shared_ptr<CImageData> GetImageData() override;
    void ResetImageData() override;

    // On a region: appended to the region sets whatever the times, its
    // backgroundcolor moved to regionbackgroundcolor. Elsewhere: kept as a
    // timed record when both `begin` and `end` (decimal ms) are given,
    // ignored otherwise. A null `set` only warns.
    void AddSetElement(const std::string& begin, const std::string& end, CElementSPTR& set);
    // Inserts the (begin, end) of every timed record.
    void GetSetKeys(std::set<std::pair<unsigned long long, unsigned long long>>& out) const;
    // Appends, in record order, the set of every record covering [begin, end].
    void GetSetElementList(unsigned long long begin, unsigned long long end, std::list<CElementSPTR>& out) const;
    // `out` becomes a copy of the region sets.
    void GetSetRegionList(std::list<CElementSPTR>& out) const;
    // Empties the timed records and the region sets.
    void ClearSetElementList();
    unsigned GetSetElementCount() const { return m_pExtra ? static_cast<unsigned>(m_pExtra->timedSets.size()) : 0; }
    unsigned GetSetRegionCount() const { return m_pExtra ? static_cast<unsigned>(m_pExtra->regionSets.size()) : 0; }

private:
    struct TimedSet {
        unsigned long long begin;
        unsigned long long end;
        CElementSPTR set;
    };

    // What few elements carry: sets and images. Kept apart, so that the
    // many elements without them stay small.
    struct Extra {
        std::vector<TimedSet> timedSets;  // insertion order
        std::vector<CElementSPTR> regionSets;
        std::shared_ptr<CImageData> imageData;
    };

    bool m_IsStored(int attr) const;
    // Created on first use.
    Extra& m_GetExtra();

    std::unique_ptr<Extra> m_pExtra;
};

}  // namespace TTML

#endif
