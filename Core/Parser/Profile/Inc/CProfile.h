#ifndef TTML_PARSER_PROFILE_CPROFILE_H
#define TTML_PARSER_PROFILE_CPROFILE_H

#include "CElement.h"
#include "IXmlParser.h"
#include "TTMLLimits.h"
#include "TTMLTypes.h"

#include <list>
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
// splits into intervals. Subclasses add the paragraph, span and metadata
// handlers and their timing rules by overriding the t_ operations.
// Handlers return TTMLErrorCode values: ERR_NONE walks the children,
// ERR_SKIP_CHILDREN means the handler walked them itself (success),
// ERR_NO_MATCH means the base dispatch has no handler, anything else fails.
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

    // Creates the element name table and the registries. False (with a
    // warning) when already initialised. Subclasses also create and install
    // their attribute handler.
    virtual bool Initialize();
    // Deletes registries, attribute handler and name table.
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
    // Shared by the profiles' Initialize and Reset: takes ownership of the
    // profile's attribute handler and makes it the one elements use; empties
    // the per-document registries and forgets the document.
    void t_InstallAttrHandler(CAttrHandler* handler);
    void t_ForgetDocument();

    // One XML level: creates the node's element, dispatches it and, on
    // ERR_NONE, walks its child elements. Refuses nodes beyond
    // kMaxNestingDepth. parent is empty for the root.
    virtual int t_ParseNode(XMLNODEPTR node, CElementSPTR& parent);
    // Base dispatch: region, tt and br; ERR_NO_MATCH for other types.
    virtual int t_ProcessElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // Appends the node's child elements (no text nodes) in document order.
    virtual void t_GetChildElementList(XMLNODEPTR node, CElementSPTR& element,
                                       std::vector<XMLNODEPTR>& list);
    // Validates every attribute of node and stores the accepted ones.
    virtual int t_ParseAttributes(XMLNODEPTR node, CElementSPTR& element);
    virtual int t_HandleTTElement(XMLNODEPTR node, CElementSPTR& element);
    virtual int t_HandleRegionElement(XMLNODEPTR node, CElementSPTR& element);
    virtual int t_HandleStyleElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    virtual int t_HandleBodyElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    virtual int t_HandleDivElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    // Marks element as last child when node has no following element or
    // text sibling. A null element is ignored.
    virtual void t_CheckLastSibling(XMLNODEPTR node, CElementSPTR& element);
    // Text nodes are ELEM_SPAN; unknown names ELEM_UNKNOWN. Empty for null.
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

private:
    TCheckedTime m_checkedTimes[2];  // begin, end

    // Counts one nesting level for the lifetime of a scope.
    class DepthGuard;

    // False, with a warning naming the limit, when the document under root
    // (documentBytes long, as the reader read it) has more regions, styles or
    // elements and text runs than TTMLLimits.h allows.
    bool m_IsWithinLimits(XMLNODEPTR root, size_t documentBytes);

    int m_nDepth = 0;  // current recursion depth of the walk
    // Child nodes of the element being walked at each depth (index depth-1);
    // sized once, so a list never moves while a shallower level reads it.
    std::vector<std::vector<XMLNODEPTR>> m_childLists{static_cast<size_t>(kMaxNestingDepth)};
    static constexpr size_t kKeptChildListCapacity = 256;
    // Reused by t_HandleReferencedElement so each element costs no new
    // strings for its region and style ids.
    std::string m_regionKey{kTTMLAttrKeys[ATTR_REGION]};
    std::string m_styleKey{kTTMLAttrKeys[ATTR_STYLE]};
    std::string m_referenceValue;
    std::string m_referenceId;
};

}  // namespace TTML

#endif
