#ifndef TTML_PARSER_PROFILE_IMSC_CIMSCPROFILE_H
#define TTML_PARSER_PROFILE_IMSC_CIMSCPROFILE_H

#include "CProfile.h"

#include <string>
#include <vector>

namespace TTML {

class CIMSCElement;

// Walker of IMSC 1 text documents: the generic walk with every element a
// CIMSCElement, plus the IMSC 1 timing model (begin and end relative to the
// parent, dur, par and seq containers), sticky display "none", the
// showBackground rules, a default region "anonymous", the root extent, and
// `set` elements, which split an element's interval into pieces that each
// carry the set values in their own copy.
// Times are decimal strings of milliseconds as the attribute checks store
// them. Owned by the parser; used on the parser thread (see CProfile).
class CIMSCProfile : public CProfile {
public:
    CIMSCProfile();
    ~CIMSCProfile() override;

protected:
    // A CIMSCAttrHandler.
    CAttrHandler* t_CreateAttrHandler() override;
    // Always a CIMSCElement.
    CElementSPTR t_CreateElementOfType(int type) override;
    // Walked through with an info line.
    int t_HandleOtherElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element) override;
    // `set` children are recorded on element at once and not walked.
    void t_GetChildElementList(XMLNODEPTR node, CElementSPTR& element, std::vector<XMLNODEPTR>& list) override;
    // Child nodes (text included) of a p or span; its sets are recorded
    // aside, leaving the element's own begin and end as they were.
    void t_GetChildNodeList(XMLNODEPTR node, CElementSPTR& element, std::vector<XMLNODEPTR>& list) override;
    // Generic parsing; an inherited display "none" survives the element's own.
    int t_ParseAttributes(XMLNODEPTR node, CElementSPTR& element) override;
    // Generic root handling plus frame rate, tick rate, pixel extent and
    // aspect ratio of the document.
    int t_HandleTTElement(XMLNODEPTR node, CElementSPTR& element) override;
    // A style inside a region styles the region itself.
    int t_HandleStyleElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element) override;
    // Begin and end relative to the parent's begin (not for a text node,
    // which has none of its own), then dur and the parent's time container.
    int t_ApplyTimingRules(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element) override;
    // Generic references; an inherited display "none" survives them.
    int t_HandleReferencedElement(XMLNODEPTR node, CElementSPTR& element) override;
    // Either time empty: untimed. Otherwise split at the element's own sets,
    // or at its region's sets, honouring display and showBackground.
    void t_AddElement(const std::string& begin, const std::string& end, CElementSPTR& element) override;
    // Adds the default region when the document declared none, then splits.
    int t_ProcessSubtitleInfo() override;

private:
    // Two pixel lengths ("640px 480px"); anything else warns and is false.
    bool m_IsTTExtentValid(const std::string& extent);
    // Offsets the node's own begin and end by the parent's begin. A sum past
    // 2^64 ms warns naming the attribute and gives ERR_INVALID.
    int m_HandleTimings(XMLNODEPTR node, const CElementSPTR& parent, CElementSPTR& element);
    // Applies element's dur: clips its end, or places it in a seq parent.
    // May move the parent's begin and drop the parent's dur. An end past
    // 2^64 ms stays at the largest time rather than wrap to an early one.
    void m_HandleTimeContainerAndDurProperty(CElementSPTR& parent, CElementSPTR& element);
    // False when the element (or its region) is hidden without a background
    // to keep; a hidden element that keeps its background loses its text.
    bool m_IsDisplayValueAuto(CElementSPTR& element);
    // The same, with the element's region already looked up (null: none).
    bool m_IsDisplayValueAuto(CElementSPTR& element, const CElement* region);
    void m_AddElement(CElementSPTR& element, unsigned long long begin, unsigned long long end);
    void m_AddElementWithSet(CIMSCElement* imsc, CElementSPTR& element, unsigned long long begin,
                             unsigned long long end);
    void m_HandleSetElement(XMLNODEPTR node, CElementSPTR& parent);
    void m_HandleEmptyRegionList();
    // An ELEM_SET copy of element (same parent) for one piece of its interval.
    CElementSPTR m_CreatePiece(CElementSPTR& element);
    bool m_IsSetNode(XMLNODEPTR node);
};

}  // namespace TTML

#endif
