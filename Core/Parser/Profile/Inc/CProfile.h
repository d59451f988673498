#ifndef TTML_PARSER_PROFILE_CPROFILE_H
#define TTML_PARSER_PROFILE_CPROFILE_H

#include "CElement.h"
#include "CNameCache.h"
#include "IXmlParser.h"
#include "TTMLLimits.h"
#include "TTMLLog.h"
#include "TTMLTypes.h"

#include <list>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace TTML {

class CAgentInfo;
class CAttrHandler;
class CElementHandler;
class CStyleRegionInfo;
class CSubtitleInfo;
struct SubRawData;

// Base of the document walkers: walks one TTML DOM, turns the elements it
// keeps into CElements with validated attributes, resolves style and region
// references, normalises text and fills a CSubtitleInfo, which it finally
// splits into intervals. The walk, its dispatch and lifecycle are this
// class's; a profile supplies its attribute handler and overrides only the
// t_ operations where its rules differ (element class, timing, metadata,
// what happens after the walk).
// Handlers return TTMLErrorCode values: ERR_NONE walks the children,
// ERR_SKIP_CHILDREN means the handler walked them itself (success),
// anything else fails.
// Threads: everything runs on the parser thread, except
// OnErrorDownloadableFonts, which only reaches the handler's locked list.
class CProfile {
private:
    bool m_bInitialized = false;
    int m_profile = TTML_PROFILE_NONE;

public:
    // What the parser hands a profile for one document; nothing is owned.
    struct TTMLProfileData {
        IXmlParser* pXmlParser = nullptr;        // reader holding the DOM; required
        CSubtitleInfo* pSubtitleInfo = nullptr;  // empty document to fill; required
        SubRawData* pSubRawData = nullptr;       // source record (image profile only)
    };

    // Documents nesting deeper than this (XML levels, nested spans included)
    // are refused with ERR_INVALID instead of recursing further.
    static constexpr int kMaxNestingDepth = Limits::kMaxNestingDepth;

    CProfile();
    // Calls Destroy when the owner forgot.
    virtual ~CProfile();

    CProfile(const CProfile&) = delete;
    CProfile& operator=(const CProfile&) = delete;

    // Creates the element name table, the registries and the profile's
    // attribute handler, which becomes the one elements use. False (with a
    // warning) when already initialised.
    virtual bool Initialize();
    // Deletes registries, attribute handler and name table; forgets the reader.
    virtual void Destroy();
    // Walks one document into data->pSubtitleInfo and splits it. ERR_NONE,
    // or the failing code (ERR_NULL_POINTER for missing inputs, ERR_INVALID
    // for a refused document). The document stays owned by the caller.
    virtual int ProcessSubtitles(TTMLProfileData* data);
    // Empties the registries and forgets the document; call between documents.
    virtual void Reset();
    // Profile number (-1 none, 0 IMSC 1 text, 1 IMSC 1 image, 2 EBU-TT-D);
    // also given to the attribute handler. Only after Initialize.
    virtual void SetProfile(int profile);
    virtual int GetProfile();
    // Font names that failed to download; any thread.
    virtual void OnErrorDownloadableFonts(const std::list<std::string>& fonts);

protected:
    // The profile's attribute handler, made once by Initialize and owned here.
    // Null only when allocation failed (fatal).
    virtual CAttrHandler* t_CreateAttrHandler() = 0;
    // An element of the profile's class; fatal when allocation fails.
    virtual CElementSPTR t_CreateElementOfType(int type);

    // One XML level: creates the node's element, dispatches it and, on
    // ERR_NONE, walks its child elements. Refuses nodes beyond
    // kMaxNestingDepth. parent is empty for the root. A paragraph's subtree
    // is released from the reader once walked (nothing reads it again).
    virtual int t_ParseNode(XMLNODEPTR node, CElementSPTR& parent);
    // Dispatch by element type: tt, region, br, body, div, the metadata
    // elements, p, span and style to their handlers; everything else, and a
    // root, region or line break that failed, to t_HandleOtherElement.
    virtual int t_ProcessElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // Elements without a handler (head, styling, layout, unknown names): not
    // stored, their children walked. ERR_NONE.
    virtual int t_HandleOtherElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // Appends the node's child elements (no text nodes) in document order.
    virtual void t_GetChildElementList(XMLNODEPTR node, CElementSPTR& element,
                                       std::vector<XMLNODEPTR>& list);
    // Appends the child nodes, text included, of a p or span in document order.
    virtual void t_GetChildNodeList(XMLNODEPTR node, CElementSPTR& element, std::vector<XMLNODEPTR>& list);
    // Validates every attribute of node and stores the accepted ones.
    virtual int t_ParseAttributes(XMLNODEPTR node, CElementSPTR& element);
    virtual int t_HandleTTElement(XMLNODEPTR node, CElementSPTR& element);
    virtual int t_HandleRegionElement(XMLNODEPTR node, CElementSPTR& element);
    virtual int t_HandleStyleElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    virtual int t_HandleBodyElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    virtual int t_HandleDivElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // Walks the paragraph's children itself: ERR_SKIP_CHILDREN on success. An
    // empty paragraph that always shows its background gets an empty text run
    // for its interval.
    virtual int t_HandlePElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // A span element or a text node: its text, or its child nodes through
    // t_HandleSpanChildElement.
    virtual int t_HandleSpanElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // documentMetadata, metadata and documentEbuttVersion: attributes only.
    virtual int t_HandleMetaDataElement(XMLNODEPTR node, CElementSPTR& element);
    // The profile's timing rules for a div, p or span (or a span's text node)
    // once its attributes are in. None here: times are absolute.
    virtual int t_ApplyTimingRules(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // Marks element as last child when node has no following element or
    // text sibling. A null element is ignored.
    virtual void t_CheckLastSibling(XMLNODEPTR node, CElementSPTR& element);
    // Text nodes are ELEM_SPAN; unknown names ELEM_UNKNOWN. Empty for null.
    // Made by t_CreateElementOfType.
    virtual CElementSPTR t_CreateElement(XMLNODEPTR node);
    virtual int t_HandleLineBreak(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // Copies the region, then the styles (in order) that node refers to.
    virtual int t_HandleReferencedElement(XMLNODEPTR node, CElementSPTR& element);
    // begin/end: decimal ms; either empty keeps the element untimed.
    virtual void t_AddElement(const std::string& begin, const std::string& end,
                              CElementSPTR& element);
    // Splits the filled document into intervals.
    virtual int t_ProcessSubtitleInfo();
    // Stores the (normalised) text and adds element with its times.
    virtual int t_HandleTextNode(XMLNODEPTR node, CElementSPTR& element);
    // One child node (text or element) of a span; spanParent is the span's
    // parent element, spanElement the span's own. Every element made here
    // gets the enclosing paragraph as parent. Counts towards the nesting
    // limit, since nested spans recurse through here.
    virtual int t_HandleSpanChildElement(XMLNODEPTR spanNode, XMLNODEPTR child,
                                         CElementSPTR& spanParent, CElementSPTR& spanElement);

    // documentEbuttVersion must be empty or "v1.0"; other types pass.
    bool t_ValidateCopyrightVersion(XMLNODEPTR node, CElementSPTR& element);
    // The precedence of every content element: all of the parent's
    // attributes, replaced by referenced ones, replaced by its own.
    int t_InheritAndParseAttributes(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // Moves a value from one attribute to another, if there is one.
    static void t_RenameAttr(CElementSPTR& element, TTMLAttr from, TTMLAttr to);
    // An element of class TElement, as t_CreateElementOfType makes them.
    template <typename TElement>
    static CElementSPTR t_MakeElement(int type);
    // The TTMLElem number of an element node's name.
    int t_ElementTypeOf(XMLNODEPTR node);
    // Collapses line feed, carriage return, tab and space runs into single
    // spaces and trims, unless the text has none of them to collapse.
    static void t_RemoveExtraWhiteSpace(std::string& text);

    // A begin or end as the last t_ParseAttributes checked it: the attribute
    // node, the validator's code and the value it left. Lets a profile that
    // offsets times reuse the check instead of repeating it.
    struct TCheckedTime {
        XMLATTRPTR attr = nullptr;
        int code = 0;
        std::string value;
    };
    // The entry for a simple (single text) begin or end attribute of node, or
    // null when the last t_ParseAttributes did not check that attribute.
    const TCheckedTime* t_FindCheckedTime(XMLNODEPTR node, TTMLAttr attr) const;

    CAttrHandler* t_pAttrHandler = nullptr;        // owned; created by the subclass
    CElementHandler* t_pElementHandler = nullptr;  // owned
    IXmlParser* t_pXmlParser = nullptr;            // current reader, not owned
    CAgentInfo* t_pAgentInfo = nullptr;            // owned
    CStyleRegionInfo* t_pStyleRegionInfo = nullptr;  // owned
    CSubtitleInfo* t_pSubtitleInfo = nullptr;      // current document, not owned
    // The warnings of the paragraph and span handlers for a null node,
    // element or parent: each profile words its own.
    const char* t_pNullParagraphWarning = "pXmlNode or pCElement is NULL";
    const char* t_pNullSpanWarning = "pXmlNode or pCElement or pParent is NULL";

private:
    TCheckedTime m_checkedTimes[2];  // begin, end

    // Counts one nesting level for the lifetime of a scope.
    class DepthGuard;

    // What Destroy and the destructor both release.
    void m_Release();
    // Frees a walked subtree in the reader; forgets checked times that may
    // point into it.
    void m_ReleaseNode(XMLNODEPTR node);

    // False, with a warning naming the limit, when the document under root
    // (documentBytes long, as the reader read it) has more regions, styles or
    // elements and text runs than TTMLLimits.h allows. `nodes` receives the
    // count of elements and text runs.
    bool m_IsWithinLimits(XMLNODEPTR root, size_t documentBytes, size_t& nodes);

    int m_nDepth = 0;  // current recursion depth of the walk
    // Child lists not lent out at the moment (see ChildList).
    class ChildList;
    std::vector<std::vector<XMLNODEPTR>> m_spareChildLists;
    // Reused by t_HandleReferencedElement so each element costs no new
    // strings for its region and style ids.
    std::string m_regionKey{kTTMLAttrKeys[ATTR_REGION]};
    std::string m_styleKey{kTTMLAttrKeys[ATTR_STYLE]};
    std::string m_referenceValue;
    std::string m_referenceId;
    // Element and attribute numbers by reader name, for the current document
    // only (emptied when ProcessSubtitles starts and ends).
    CNameCache m_elementNames;
    CNameCache m_attrNames;
};

template <typename TElement>
CElementSPTR CProfile::t_MakeElement(int type)
{
    CElementSPTR element;
    try {
        element = std::make_shared<TElement>(type);
    } catch (const std::bad_alloc& e) {
        TTML_WARN("%s", e.what());
    }
    TTML_ASSERT(element);
    return element;
}

}  // namespace TTML

#endif
