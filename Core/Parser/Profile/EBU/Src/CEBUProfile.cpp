#include "CEBUProfile.h"

#include "CAgentInfo.h"
#include "CEBUAttrHandler.h"
#include "CStyleRegionInfo.h"
#include "CSubtitleInfo.h"
#include "TTMLLog.h"

#include <memory>
#include <new>

namespace TTML {

CEBUProfile::CEBUProfile()
{
    TTML_INFO("Construction done");
}

CEBUProfile::~CEBUProfile()
{
    TTML_INFO("Destruction done");
}

bool CEBUProfile::Initialize()
{
    bool result = CProfile::Initialize();
    if (!result)
        return result;
    t_InstallAttrHandler(new (std::nothrow) CEBUAttrHandler());
    return true;
}

void CEBUProfile::Destroy()
{
    CProfile::Destroy();
    t_pXmlParser = nullptr;
    TTML_INFO("Destroy is done");
}

void CEBUProfile::Reset()
{
    t_ForgetDocument();
    TTML_INFO("Reset is done");
}

int CEBUProfile::t_ProcessElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("Null pointer");
        return ERR_NULL_POINTER;
    }
    if (CProfile::t_ProcessElement(node, parent, element) == ERR_NONE)
        return ERR_NONE;

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
    default:
        // Containers such as head, styling and layout are only walked
        // through; a failed region, root or line break is not stored and
        // the missing region is caught after the walk.
        return ERR_NONE;
    }
}

int CEBUProfile::t_HandlePElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("pXmlNode or pCElement is NULL");
        return ERR_NULL_POINTER;
    }
    element->CreateFromParent(parent);
    t_HandleReferencedElement(node, element);
    int result = t_ParseAttributes(node, element);
    if (result != ERR_NONE)
        return result;

    // A paragraph's background belongs to its text lines, never the region.
    std::string value;
    if (element->GetAttrValue(ATTR_BACKGROUNDCOLOR, value)) {
        element->RemoveAttrValue(ATTR_BACKGROUNDCOLOR);
        element->AddAttrValue(ATTR_PARABACKGROUNDCOLOR, value);
    }

    XMLNODEPTR child = t_pXmlParser->GetChildNodeList(node);
    if (!child) {
        TTML_INFO("No text/span element found");
        std::string begin;
        std::string end;
        std::string showBackground;
        if (!element->GetAttrValue(ATTR_BEGIN, begin) || !element->GetAttrValue(ATTR_END, end) ||
            !element->GetAttrValue(ATTR_SHOWBACKGROUND, showBackground)) {
            TTML_WARN("begin/end/showBG attributes not found in P. just ignore it");
        } else if (showBackground == "always") {
            // An empty paragraph still shows its background for its interval.
            CElementSPTR span;
            try {
                span = std::make_shared<CElement>(ELEM_SPAN);
            } catch (const std::bad_alloc& e) {
                TTML_WARN("%s", e.what());
            }
            TTML_ASSERT(span);
            span->CreateFromParent(element);
            span->AddAttrValue(ATTR_TEXT, "");
            t_AddElement(begin, end, span);
        }
    } else {
        for (; child; child = t_pXmlParser->GetNextNode(child)) {
            CElementSPTR childElement = t_CreateElement(child);
            t_CheckLastSibling(child, childElement);
            result = t_ProcessElement(child, element, childElement);
            if (result != ERR_NONE) {
                TTML_WARN("Error in t_processElement for BR element; error=%d", result);
                return result;
            }
        }
    }

    t_CheckLastSibling(node, element);
    t_AddElement("", "", element);
    return ERR_SKIP_CHILDREN;
}

int CEBUProfile::t_HandleSpanElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    TTML_ASSERT(t_pSubtitleInfo && t_pXmlParser);
    if (!node || !element || !parent) {
        TTML_WARN("pXmlNode or pCElement or pParent is NULL");
        return ERR_NULL_POINTER;
    }
    element->CreateFromParent(parent);
    t_HandleReferencedElement(node, element);
    int result = t_ParseAttributes(node, element);
    if (result != ERR_NONE) {
        TTML_WARN("Failed in parsing attributes");
        return result;
    }

    if (t_pXmlParser->IsTextNode(node) || !t_pXmlParser->GetChildElementList(node))
        return t_HandleTextNode(node, element);

    for (XMLNODEPTR child = t_pXmlParser->GetChildNodeList(node); child; child = t_pXmlParser->GetNextNode(child)) {
        result = t_HandleSpanChildElement(node, child, parent, element);
        if (result != ERR_NONE) {
            TTML_WARN("Error in processing children of Span. error code = %d", result);
            return result;
        }
    }
    t_AddElement("", "", element);
    return ERR_NONE;
}

int CEBUProfile::t_HandleMetaDataElement(XMLNODEPTR node, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("pNode or pCElement is Null");
        return ERR_NULL_POINTER;
    }
    int result = t_ParseAttributes(node, element);
    if (result != ERR_NONE)
        return result;
    return t_ValidateCopyrightVersion(node, element) ? ERR_NONE : ERR_INVALID;
}

int CEBUProfile::m_HandleEmptyRegionList()
{
    return t_pStyleRegionInfo->IsEmptyRegionList() ? ERR_INVALID : ERR_NONE;
}

int CEBUProfile::t_ProcessSubtitleInfo()
{
    int result = m_HandleEmptyRegionList();
    if (result != ERR_NONE)
        return result;
    return CProfile::t_ProcessSubtitleInfo();
}

}  // namespace TTML
