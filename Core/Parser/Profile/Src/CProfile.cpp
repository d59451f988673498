#include "CProfile.h"

#include "CAgentInfo.h"
#include "CAttrHandler.h"
#include "CElementHandler.h"
#include "CStyleRegionInfo.h"
#include "CSubtitleInfo.h"
#include "SubRawData.h"
#include "TTMLLimits.h"
#include "TTMLLog.h"
#include "Util.h"

#include <cstdlib>
#include <new>

namespace TTML {

class CProfile::DepthGuard {
public:
    explicit DepthGuard(int& depth) : m_depth(depth) { ++m_depth; }
    ~DepthGuard() { --m_depth; }
    DepthGuard(const DepthGuard&) = delete;
    DepthGuard& operator=(const DepthGuard&) = delete;

private:
    int& m_depth;
};

// A child list lent for one scope. Lists go back to the walker, so the walk
// allocates none once it has seen its deepest nesting.
class CProfile::ChildList {
public:
    explicit ChildList(std::vector<std::vector<XMLNODEPTR>>& spares) : m_spares(spares)
    {
        if (!m_spares.empty()) {
            m_list = std::move(m_spares.back());
            m_spares.pop_back();
        }
    }
    ~ChildList()
    {
        // A long body leaves a long list behind; that one is not kept.
        if (m_list.capacity() > kKeptCapacity)
            return;
        m_list.clear();
        m_spares.push_back(std::move(m_list));
    }
    ChildList(const ChildList&) = delete;
    ChildList& operator=(const ChildList&) = delete;

    std::vector<XMLNODEPTR>& Get() { return m_list; }

private:
    static constexpr size_t kKeptCapacity = 256;
    std::vector<std::vector<XMLNODEPTR>>& m_spares;
    std::vector<XMLNODEPTR> m_list;
};

CProfile::CProfile()
{
    TTML_INFO("Construction done");
}

CProfile::~CProfile()
{
    if (m_bInitialized)
        m_Release();
    TTML_INFO("Destruction done");
}

bool CProfile::Initialize()
{
    if (m_bInitialized) {
        TTML_WARN("CProfile is already initialized, returning false.");
        return false;
    }
    t_pElementHandler = new (std::nothrow) CElementHandler();
    TTML_ASSERT(t_pElementHandler);
    t_pAgentInfo = new (std::nothrow) CAgentInfo();
    TTML_ASSERT(t_pAgentInfo);
    t_pStyleRegionInfo = new (std::nothrow) CStyleRegionInfo();
    TTML_ASSERT(t_pStyleRegionInfo);
    m_bInitialized = true;
    t_pAttrHandler = t_CreateAttrHandler();
    TTML_ASSERT(t_pAttrHandler);
    CElement::SetAttributeHandler(t_pAttrHandler);
    return true;
}

void CProfile::Destroy()
{
    if (m_bInitialized)
        m_Release();
    else
        TTML_WARN("CProfile is already destroyed, returning false.");
    t_pXmlParser = nullptr;
    TTML_INFO("Destroy is done");
}

void CProfile::m_Release()
{
    delete t_pAgentInfo;
    t_pAgentInfo = nullptr;
    delete t_pStyleRegionInfo;
    t_pStyleRegionInfo = nullptr;
    if (t_pAttrHandler) {
        // Elements must not keep reaching a deleted handler for defaults;
        // the next walk installs its own again.
        CElement::SetAttributeHandler(nullptr);
        delete t_pAttrHandler;
        t_pAttrHandler = nullptr;
    }
    delete t_pElementHandler;
    t_pElementHandler = nullptr;
    m_bInitialized = false;
    t_pSubtitleInfo = nullptr;
}

void CProfile::Reset()
{
    if (t_pAgentInfo)
        t_pAgentInfo->Reset();
    if (t_pStyleRegionInfo)
        t_pStyleRegionInfo->Reset();
    t_pSubtitleInfo = nullptr;
    TTML_INFO("Reset is done");
}

void CProfile::SetProfile(int profile)
{
    m_profile = profile;
    if (t_pAttrHandler)
        t_pAttrHandler->SetProfile(profile);
}

int CProfile::GetProfile()
{
    return m_profile;
}

void CProfile::OnErrorDownloadableFonts(const std::list<std::string>& fonts)
{
    if (t_pAttrHandler)
        t_pAttrHandler->OnErrorDownloadableFonts(fonts);
}

int CProfile::ProcessSubtitles(TTMLProfileData* data)
{
    if (!data || !data->pXmlParser || !data->pSubtitleInfo) {
        TTML_WARN("Invalid parameters");
        return ERR_NULL_POINTER;
    }
    if (!t_pAgentInfo || !t_pStyleRegionInfo || !t_pAttrHandler || !t_pElementHandler) {
        TTML_WARN("NULL pointer found");
        return ERR_NULL_POINTER;
    }

    t_pXmlParser = data->pXmlParser;
    t_pSubtitleInfo = data->pSubtitleInfo;
    t_pAttrHandler->SetSubtitleInfo(t_pSubtitleInfo);
    // Elements take their defaults from the handler installed last; with
    // several profiles alive that may be another profile's.
    CElement::SetAttributeHandler(t_pAttrHandler);
    m_nDepth = 0;
    m_elementNames.Clear();
    m_attrNames.Clear();

    int result = ERR_NONE;
    size_t nodes = 0;
    XMLNODEPTR root = t_pXmlParser->GetRootElement();
    if (!root) {
        TTML_WARN("Root element not found");
        result = ERR_INVALID;
    } else if (!m_IsWithinLimits(root, t_pXmlParser->GetDocumentBytes(), nodes)) {
        result = ERR_INVALID;
    } else {
        // Each node adds at most one element in the usual document: one
        // allocation instead of a doubling series as the walk goes.
        t_pSubtitleInfo->ReserveElements(nodes);
        CElementSPTR noParent;
        result = t_ParseNode(root, noParent);
        if (result == ERR_NONE)
            result = t_ProcessSubtitleInfo();
    }

    t_pAttrHandler->SetSubtitleInfo(nullptr);
    // The names' addresses die with the document.
    m_elementNames.Clear();
    m_attrNames.Clear();
    return result;
}

bool CProfile::m_IsWithinLimits(XMLNODEPTR root, size_t documentBytes, size_t& nodes)
{
    // Counted before anything is built, so a refused document costs no more
    // than its DOM. Descends without recursion: the path holds one node per
    // level, however many siblings there are.
    nodes = 0;
    size_t regions = 0;
    size_t styles = 0;
    std::vector<XMLNODEPTR> path;
    XMLNODEPTR node = root;
    while (node) {
        ++nodes;
        XMLNODEPTR next = nullptr;
        if (!t_pXmlParser->IsTextNode(node)) {
            const int type = t_ElementTypeOf(node);
            regions += type == ELEM_REGION;
            styles += type == ELEM_STYLE;
            next = t_pXmlParser->GetChildNodeList(node);
        }
        if (next) {
            path.push_back(node);
        } else {
            next = t_pXmlParser->GetNextNode(node);
            while (!next && !path.empty()) {
                next = t_pXmlParser->GetNextNode(path.back());
                path.pop_back();
            }
        }
        node = next;
    }
    const struct {
        const char* what;
        size_t found;
        size_t limit;
    } counts[] = {
        {"regions", regions, Limits::kMaxRegions},
        {"styles", styles, Limits::kMaxStyles},
        {"elements", nodes, Limits::MaxElements(documentBytes)},
    };
    // The most specific count first: many regions are also many elements.
    for (const auto& c : counts) {
        if (c.found > c.limit) {
            TTML_WARN("Too many %s in document: %zu (limit %zu); refused", c.what, c.found, c.limit);
            return false;
        }
    }
    return true;
}

int CProfile::t_ParseNode(XMLNODEPTR node, CElementSPTR& parent)
{
    TTML_ASSERT(t_pXmlParser);
    if (!node) {
        TTML_WARN("pXmlNode: Null pointer error");
        return ERR_NULL_POINTER;
    }
    if (m_nDepth >= kMaxNestingDepth) {
        TTML_WARN("Document nesting deeper than %d levels; refusing it", kMaxNestingDepth);
        return ERR_INVALID;
    }
    DepthGuard guard(m_nDepth);

    CElementSPTR element = t_CreateElement(node);
    int result = t_ProcessElement(node, parent, element);
    if (result == ERR_NONE) {
        ChildList children(m_spareChildLists);
        t_GetChildElementList(node, element, children.Get());
        for (XMLNODEPTR child : children.Get()) {
            int r = t_ParseNode(child, element);
            if (r != ERR_NONE) {
                TTML_WARN("Error in parsing for node %s; error code=%d", t_pXmlParser->GetNodeName(node).c_str(), r);
                result = r;
                break;
            }
        }
    }
    if (result == ERR_SKIP_CHILDREN)
        result = ERR_NONE;
    // Paragraphs are most of a document: freeing each one when done lets the
    // elements built after it reuse its memory, so the tree and the elements
    // never stand in full side by side.
    if (element && element->GetType() == ELEM_P)
        m_ReleaseNode(node);
    return result;
}

void CProfile::m_ReleaseNode(XMLNODEPTR node)
{
    m_checkedTimes[0].attr = nullptr;
    m_checkedTimes[1].attr = nullptr;
    t_pXmlParser->ReleaseNode(node);
}

int CProfile::t_ProcessElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("Null pointer");
        return ERR_NULL_POINTER;
    }
    switch (element->GetType()) {
    case ELEM_BODY:
        return t_HandleBodyElement(node, parent, element);
    case ELEM_DIV:
        return t_HandleDivElement(node, parent, element);
    case ELEM_DOCUMENTEBUTTVERSION:
    case ELEM_DOCUMENTMETADATA:
    case ELEM_METADATA:
        return t_HandleMetaDataElement(node, element);
    case ELEM_P:
        return t_HandlePElement(node, parent, element);
    case ELEM_SPAN:
        return t_HandleSpanElement(node, parent, element);
    case ELEM_STYLE:
        return t_HandleStyleElement(node, parent, element);
    // A root, region or line break that fails is not stored but does not end
    // the walk; a profile that needs a region checks after the walk.
    case ELEM_REGION:
        if (t_HandleRegionElement(node, element) == ERR_NONE)
            return ERR_NONE;
        break;
    case ELEM_TT:
        if (t_HandleTTElement(node, element) == ERR_NONE)
            return ERR_NONE;
        break;
    case ELEM_BR:
        if (t_HandleLineBreak(node, parent, element) == ERR_NONE)
            return ERR_NONE;
        break;
    default:
        break;
    }
    return t_HandleOtherElement(node, parent, element);
}

int CProfile::t_HandleOtherElement(XMLNODEPTR /*node*/, CElementSPTR& /*parent*/, CElementSPTR& /*element*/)
{
    return ERR_NONE;
}

void CProfile::t_GetChildElementList(XMLNODEPTR node, CElementSPTR& /*element*/, std::vector<XMLNODEPTR>& list)
{
    if (!node) {
        TTML_WARN("pXmlNode: Null pointer error");
        return;
    }
    for (XMLNODEPTR child = t_pXmlParser->GetChildElementList(node); child;
         child = t_pXmlParser->GetNextElementNode(child))
        list.push_back(child);
}

void CProfile::t_GetChildNodeList(XMLNODEPTR node, CElementSPTR& /*element*/, std::vector<XMLNODEPTR>& list)
{
    for (XMLNODEPTR child = t_pXmlParser->GetChildNodeList(node); child; child = t_pXmlParser->GetNextNode(child))
        list.push_back(child);
}

int CProfile::t_ParseAttributes(XMLNODEPTR node, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("Null pointer found");
        return ERR_NULL_POINTER;
    }
    TTML_ASSERT(t_pXmlParser);
    // Text nodes never carry attributes; skip the reader round trip.
    if (node->type != XML_ELEMENT_NODE)
        return ERR_NONE;

    m_checkedTimes[0].attr = nullptr;
    m_checkedTimes[1].attr = nullptr;
    size_t count = 0;
    for (XMLATTRPTR attr = node->properties; attr; attr = attr->next)
        ++count;
    element->ReserveAttrValues(count);
    std::string name;
    std::string value;
    for (XMLATTRPTR attr = t_pXmlParser->GetAttributeList(node); attr; attr = t_pXmlParser->GetNextAttr(attr)) {
        value = t_pXmlParser->GetAttrValue(attr);
        int number = m_attrNames.Find(attr->name);
        if (number == CNameCache::kMissing) {
            name = t_pXmlParser->GetAttrName(attr);
            number = t_pAttrHandler->ToAttrEnum(name);
            m_attrNames.Add(attr->name, number);
        }
        // An unknown name has no TTMLAttr value; it is dropped like an
        // attribute without a validator.
        if (number < 0 || number >= TTML_ATTR_COUNT)
            continue;
        int code = t_pAttrHandler->ValidateAttribute(static_cast<TTMLAttr>(number), value);
        if (number == ATTR_BEGIN || number == ATTR_END) {
            TCheckedTime& checked = m_checkedTimes[number == ATTR_END];
            checked.attr = attr;
            checked.code = code;
            checked.value = value;
        }
        switch (code) {
        case ERR_NONE:
            element->AddAttrValue(number, value);
            break;
        case ERR_IGNORE:
        case ERR_NOT_SUPPORTED:
            break;
        case ERR_INVALID:
            return ERR_INVALID;
        default:
            TTML_WARN("Unknown error code found = %d", code);
            return code;
        }
    }
    return ERR_NONE;
}

const CProfile::TCheckedTime* CProfile::t_FindCheckedTime(XMLNODEPTR node, TTMLAttr attr) const
{
    if (attr != ATTR_BEGIN && attr != ATTR_END)
        return nullptr;
    const TCheckedTime& checked = m_checkedTimes[attr == ATTR_END];
    if (!node || !checked.attr)
        return nullptr;
    // Only the attribute a lookup by name finds, and only when it is one text
    // run, reads the same through either accessor of the reader.
    const xmlAttrPtr prop = xmlHasProp(node, reinterpret_cast<const xmlChar*>(kTTMLAttrKeys[attr]));
    if (prop != checked.attr || prop->type != XML_ATTRIBUTE_NODE || !prop->children || prop->children->next ||
        prop->children->type != XML_TEXT_NODE || !prop->children->content)
        return nullptr;
    return &checked;
}

int CProfile::t_HandleTTElement(XMLNODEPTR node, CElementSPTR& element)
{
    if (!node) {
        TTML_WARN("pNode is Null");
        return ERR_NULL_POINTER;
    }
    int result = t_ParseAttributes(node, element);
    if (result != ERR_NONE)
        return result;

    std::string cellResolution = "32 15";
    element->GetAttrValue(ATTR_CELLRESOLUTION, cellResolution);
    t_pSubtitleInfo->SetCellResolution(cellResolution);
    std::string timeBase = "media";
    element->GetAttrValue(ATTR_TIMEBASE, timeBase);
    t_pSubtitleInfo->SetTimeBase(timeBase);
    return ERR_NONE;
}

int CProfile::t_HandleBodyElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    if (!node || !parent || !element) {
        TTML_WARN("NULL pointer error");
        return ERR_NULL_POINTER;
    }
    TTML_ASSERT(t_pSubtitleInfo);

    // The body starts from the defaults; of the root only language and
    // white-space handling carry over.
    CElementSPTR noParent;
    element->CreateFromParent(noParent);
    std::string value;
    if (parent->GetAttrValue(ATTR_LANG, value))
        element->AddAttrValue(ATTR_LANG, value);
    if (parent->GetAttrValue(ATTR_SPACE, value))
        element->AddAttrValue(ATTR_SPACE, value);

    t_HandleReferencedElement(node, element);
    return t_ParseAttributes(node, element);
}

int CProfile::t_HandleDivElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    if (!node || !parent || !element) {
        TTML_WARN("NULL pointer error");
        return ERR_NULL_POINTER;
    }
    TTML_ASSERT(t_pSubtitleInfo);
    int result = t_InheritAndParseAttributes(node, parent, element);
    return result == ERR_NONE ? t_ApplyTimingRules(node, parent, element) : result;
}

int CProfile::t_HandlePElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("%s", t_pNullParagraphWarning);
        return ERR_NULL_POINTER;
    }
    int result = t_InheritAndParseAttributes(node, parent, element);
    if (result == ERR_NONE)
        result = t_ApplyTimingRules(node, parent, element);
    if (result != ERR_NONE)
        return result;
    // A paragraph's background belongs to its text lines, never the region.
    t_RenameAttr(element, ATTR_BACKGROUNDCOLOR, ATTR_PARABACKGROUNDCOLOR);

    if (!t_pXmlParser->GetChildNodeList(node)) {
        TTML_INFO("No text/span element found");
        std::string begin;
        std::string end;
        std::string showBackground;
        if (!element->GetAttrValue(ATTR_BEGIN, begin) || !element->GetAttrValue(ATTR_END, end) ||
            !element->GetAttrValue(ATTR_SHOWBACKGROUND, showBackground)) {
            TTML_WARN("begin/end/showBG attributes not found in P. just ignore it");
        } else if (showBackground == "always") {
            // An empty paragraph still shows its background for its interval.
            CElementSPTR span = t_CreateElementOfType(ELEM_SPAN);
            span->CreateFromParent(element);
            span->AddAttrValue(ATTR_TEXT, "");
            t_AddElement(begin, end, span);
        }
    }

    ChildList children(m_spareChildLists);
    t_GetChildNodeList(node, element, children.Get());
    for (XMLNODEPTR child : children.Get()) {
        CElementSPTR childElement = t_CreateElement(child);
        t_CheckLastSibling(child, childElement);
        result = t_ProcessElement(child, element, childElement);
        if (result != ERR_NONE) {
            TTML_WARN("Error in t_processElement for BR element; error=%d", result);
            return result;
        }
    }
    t_CheckLastSibling(node, element);
    t_AddElement("", "", element);
    return ERR_SKIP_CHILDREN;
}

int CProfile::t_HandleSpanElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    TTML_ASSERT(t_pSubtitleInfo && t_pXmlParser);
    if (!node || !element || !parent) {
        TTML_WARN("%s", t_pNullSpanWarning);
        return ERR_NULL_POINTER;
    }
    int result = t_InheritAndParseAttributes(node, parent, element);
    if (result != ERR_NONE) {
        TTML_WARN("Failed in parsing attributes");
        return result;
    }
    result = t_ApplyTimingRules(node, parent, element);
    if (result != ERR_NONE)
        return result;
    if (t_pXmlParser->IsTextNode(node) || !t_pXmlParser->GetChildElementList(node))
        return t_HandleTextNode(node, element);

    ChildList children(m_spareChildLists);
    t_GetChildNodeList(node, element, children.Get());
    // t_HandleSpanChildElement counts nesting, so deep span chains stop at
    // the walker's limit.
    for (XMLNODEPTR child : children.Get()) {
        result = t_HandleSpanChildElement(node, child, parent, element);
        if (result != ERR_NONE) {
            TTML_WARN("Error in processing children of Span. error code = %d", result);
            return result;
        }
    }
    t_AddElement("", "", element);
    return ERR_NONE;
}

int CProfile::t_HandleMetaDataElement(XMLNODEPTR node, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("Null pointer");
        return ERR_NULL_POINTER;
    }
    return t_ParseAttributes(node, element);
}

int CProfile::t_ApplyTimingRules(XMLNODEPTR /*node*/, CElementSPTR& /*parent*/, CElementSPTR& /*element*/)
{
    return ERR_NONE;
}

int CProfile::t_InheritAndParseAttributes(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    element->CreateFromParent(parent);
    t_HandleReferencedElement(node, element);
    return t_ParseAttributes(node, element);
}

void CProfile::t_RenameAttr(CElementSPTR& element, TTMLAttr from, TTMLAttr to)
{
    std::string value;
    if (element->GetAttrValue(from, value)) {
        element->RemoveAttrValue(from);
        element->AddAttrValue(to, std::move(value));
    }
}

int CProfile::t_HandleStyleElement(XMLNODEPTR node, CElementSPTR& /*parent*/, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("NULL Pointer");
        return ERR_NULL_POINTER;
    }
    int result = t_ParseAttributes(node, element);
    if (result != ERR_NONE) {
        TTML_WARN("Attribute parsing error");
        return result;
    }
    std::string id;
    if (element->GetAttrValue(ATTR_ID, id))
        t_pStyleRegionInfo->AddStyle(id, element);
    return ERR_NONE;
}

int CProfile::t_HandleRegionElement(XMLNODEPTR node, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("NULL Pointer error");
        return ERR_NULL_POINTER;
    }
    t_HandleReferencedElement(node, element);
    int result = t_ParseAttributes(node, element);
    if (result != ERR_NONE) {
        TTML_WARN("Attribute parsing error");
    } else {
        // A region's own or referenced background fills the region, not
        // the text lines inheriting from it.
        t_RenameAttr(element, ATTR_BACKGROUNDCOLOR, ATTR_REGIONBACKGROUNDCOLOR);
        std::string id;
        element->GetAttrValue(ATTR_ID, id);
        t_pStyleRegionInfo->AddRegion(id, element);
    }
    TTML_INFO("Function is done");
    return result;
}

int CProfile::t_HandleReferencedElement(XMLNODEPTR node, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("NULL pointer");
        return ERR_NULL_POINTER;
    }
    TTML_ASSERT(t_pStyleRegionInfo && t_pXmlParser);
    if (node->type != XML_ELEMENT_NODE || !node->properties)
        return ERR_NONE;

    std::string& value = m_referenceValue;
    if (t_pXmlParser->GetAttrValue(node, m_regionKey, value)) {
        CElementSPTR region = t_pStyleRegionInfo->GetRegion(value);
        element->CopyReferencedAttr(region);
    }
    if (t_pXmlParser->GetAttrValue(node, m_styleKey, value)) {
        // The ids as StrSplit(value, " ") gives them (ends trimmed, single
        // spaces separating, empty ids kept), without a vector per element.
        static const char kBlanks[] = " \t\n\r";
        const size_t first = value.find_first_not_of(kBlanks);
        const size_t last = value.find_last_not_of(kBlanks);
        std::string& id = m_referenceId;
        size_t start = first == std::string::npos ? value.size() : first;
        const size_t stop = last == std::string::npos ? value.size() : last + 1;
        while (true) {
            size_t space = value.find(' ', start);
            if (space == std::string::npos || space > stop)
                space = stop;
            id.assign(value, start, space - start);
            CElementSPTR style = t_pStyleRegionInfo->GetStyle(id);
            element->CopyReferencedAttr(style);
            if (space >= stop)
                break;
            start = space + 1;
        }
    }
    return ERR_NONE;
}

void CProfile::t_CheckLastSibling(XMLNODEPTR node, CElementSPTR& element)
{
    TTML_ASSERT(t_pXmlParser);
    if (element && !t_pXmlParser->GetNextNode(node))
        element->SetLastChild();
}

CElementSPTR CProfile::t_CreateElement(XMLNODEPTR node)
{
    if (!node) {
        TTML_WARN("pXmlNode is a Null pointer");
        return CElementSPTR();
    }
    int type = t_pXmlParser->IsTextNode(node) ? static_cast<int>(ELEM_SPAN) : t_ElementTypeOf(node);
    return t_CreateElementOfType(type);
}

int CProfile::t_ElementTypeOf(XMLNODEPTR node)
{
    int type = m_elementNames.Find(node->name);
    if (type != CNameCache::kMissing)
        return type;
    type = t_pElementHandler->ToElemEnum(t_pXmlParser->GetNodeName(node));
    // An unknown name is looked up (and warned about) wherever it stands.
    if (type != ELEM_UNKNOWN)
        m_elementNames.Add(node->name, type);
    return type;
}

CElementSPTR CProfile::t_CreateElementOfType(int type)
{
    return t_MakeElement<CElement>(type);
}

int CProfile::t_HandleLineBreak(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    if (!node || !parent || !element) {
        TTML_WARN("NULL pointer detected");
        return ERR_NULL_POINTER;
    }
    TTML_ASSERT(t_pSubtitleInfo && t_pXmlParser);
    element->CreateFromParent(parent);
    std::string begin;
    std::string end;
    if (!element->GetAttrValue(ATTR_BEGIN, begin) || !element->GetAttrValue(ATTR_END, end))
        TTML_WARN("Element does not contain begin or end time");
    element->AddAttrValue(ATTR_TEXT, "\n");
    t_AddElement(begin, end, element);
    return ERR_NONE;
}

void CProfile::t_AddElement(const std::string& begin, const std::string& end, CElementSPTR& element)
{
    if (!begin.empty() && !end.empty()) {
        t_pSubtitleInfo->AddElement(StoredMsToULL(begin), StoredMsToULL(end), element);
    } else {
        t_pSubtitleInfo->AddElement(0, 0, element);
    }
}

int CProfile::t_ProcessSubtitleInfo()
{
    return t_pSubtitleInfo->SplitSubtitleInfoData();
}

int CProfile::t_HandleTextNode(XMLNODEPTR node, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("NULL pointer");
        return ERR_NULL_POINTER;
    }
    TTML_ASSERT(t_pSubtitleInfo && t_pXmlParser);

    std::string text = t_pXmlParser->GetElementContent(node);
    const CAttrMap& attrs = element->GetAttrMap();
    const std::string* space = attrs.Get(ATTR_SPACE);
    if (!space || *space == "default")
        t_RemoveExtraWhiteSpace(text);
    const bool empty = text.empty();
    element->AddAttrValue(ATTR_TEXT, std::move(text));

    static const std::string kNone;
    const std::string* begin = attrs.Get(ATTR_BEGIN);
    const std::string* end = attrs.Get(ATTR_END);
    const std::string* showBackground = attrs.Get(ATTR_SHOWBACKGROUND);
    if (!begin || !end || !showBackground) {
        TTML_WARN("begin/end/showBG attributes not found in the map. Ignoring this!");
        begin = end = &kNone;
    }
    if ((!showBackground || *showBackground != "always") && empty) {
        TTML_WARN("Empty Span found with BG as when active");
        begin = end = &kNone;
    }
    // Copies: adding the element may change its map.
    const std::string from = *begin;
    const std::string to = *end;
    t_AddElement(from, to, element);
    return ERR_NONE;
}

int CProfile::t_HandleSpanChildElement(XMLNODEPTR spanNode, XMLNODEPTR child, CElementSPTR& spanParent,
                                       CElementSPTR& spanElement)
{
    TTML_ASSERT(t_pSubtitleInfo && t_pXmlParser);
    if (!spanNode || !child || !spanParent || !spanElement) {
        TTML_WARN("pSpanXmlNode or pSpanChild or pSpanParent or pSpanCElement is NULL");
        return ERR_NULL_POINTER;
    }
    // Nested spans recurse through here, not through t_ParseNode.
    if (m_nDepth >= kMaxNestingDepth) {
        TTML_WARN("Document nesting deeper than %d levels; refusing it", kMaxNestingDepth);
        return ERR_INVALID;
    }
    DepthGuard guard(m_nDepth);

    CElementSPTR childElement = t_CreateElement(child);
    CElementSPTR paragraph = spanParent;
    while (paragraph && paragraph->GetType() != ELEM_P)
        paragraph = paragraph->GetParent();

    int result;
    if (!t_pXmlParser->IsTextNode(child)) {
        result = t_ProcessElement(child, spanElement, childElement);
        childElement->SetParent(paragraph);
    } else {
        childElement->CreateFromParent(spanElement);
        childElement->SetParent(paragraph);
        result = t_HandleTextNode(child, childElement);
    }

    if (result != ERR_NONE)
        TTML_WARN("Error in processing children of Span. error code = %d", result);
    else if (spanElement->GetLastChild())
        t_CheckLastSibling(child, childElement);
    return result;
}

bool CProfile::t_ValidateCopyrightVersion(XMLNODEPTR node, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("node/element pointer is NULL");
        return false;
    }
    const char* expected = nullptr;
    if (element->GetType() == ELEM_COPYRIGHT)
        expected = "ebu 2014";
    else if (element->GetType() == ELEM_DOCUMENTEBUTTVERSION)
        expected = "v1.0";
    else
        return true;
    std::string text = t_pXmlParser->GetElementContent(node);
    return text.empty() || text == expected;
}

void CProfile::t_RemoveExtraWhiteSpace(std::string& text)
{
    // One pass instead of the equivalent regular expressions: this runs for
    // every text node, including the indentation between paragraphs.
    auto isControl = [](char c) { return c == '\n' || c == '\r' || c == '\t'; };
    bool collapsible = false;
    for (size_t i = 0; i < text.size() && !collapsible; ++i)
        collapsible = isControl(text[i]) || (text[i] == ' ' && i + 1 < text.size() && text[i + 1] == ' ');
    // Single interior (or edge) spaces are kept as written.
    if (!collapsible)
        return;

    // Every run of spaces, tabs, line feeds and carriage returns becomes one
    // space; then both ends are trimmed.
    size_t out = 0;
    bool inRun = false;
    for (char c : text) {
        if (c == ' ' || isControl(c)) {
            if (!inRun)
                text[out++] = ' ';
            inRun = true;
        } else {
            text[out++] = c;
            inRun = false;
        }
    }
    text.resize(out);
    StrTrimLeft(text);
    StrTrimRight(text);
}

}  // namespace TTML
