#include "CIMSCProfile.h"

#include "CAttrHandler.h"
#include "CElementHandler.h"
#include "CIMSCAttrHandler.h"
#include "CIMSCElement.h"
#include "CStyleRegionInfo.h"
#include "CSubtitleInfo.h"
#include "TTMLLog.h"
#include "Util.h"

#include <boost/regex.hpp>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <list>
#include <memory>
#include <new>
#include <set>

namespace TTML {

namespace {

unsigned long long ToMs(const std::string& value)
{
    return StoredMsToULL(value);
}

// A sum that would wrap stays at the largest time instead.
unsigned long long AddMs(unsigned long long a, unsigned long long b)
{
    return b > std::numeric_limits<unsigned long long>::max() - a ? std::numeric_limits<unsigned long long>::max()
                                                                  : a + b;
}

std::string FromMs(unsigned long long value)
{
    return std::to_string(value);
}

const std::string kDisplayNone = "none";

bool Holds(const CElement& element, TTMLAttr attr, const char* value)
{
    const std::string* held = element.GetAttrMap().Get(attr);
    return held && *held == value;
}

// display="none" once set stays: neither references nor the element's own
// attributes bring it back.
bool IsHidden(const CElementSPTR& element)
{
    return element && Holds(*element, ATTR_DISPLAY, "none");
}

}  // namespace

CIMSCProfile::CIMSCProfile()
{
    t_pNullParagraphWarning = "NULL pointer";
    t_pNullSpanWarning = "NULL pointer";
    TTML_INFO("Construction done");
}

CIMSCProfile::~CIMSCProfile()
{
    TTML_INFO("Destruction done");
}

int CIMSCProfile::t_HandleOtherElement(XMLNODEPTR /*node*/, CElementSPTR& /*parent*/, CElementSPTR& element)
{
    TTML_INFO("No matching case found. eElement=%d", element->GetType());
    return ERR_NONE;
}

bool CIMSCProfile::m_IsSetNode(XMLNODEPTR node)
{
    return !t_pXmlParser->IsTextNode(node) && t_ElementTypeOf(node) == ELEM_SET;
}

void CIMSCProfile::t_GetChildElementList(XMLNODEPTR node, CElementSPTR& element, std::vector<XMLNODEPTR>& list)
{
    if (!node) {
        TTML_WARN("pXmlNode: Null pointer error");
        return;
    }
    for (XMLNODEPTR child = t_pXmlParser->GetChildElementList(node); child;
         child = t_pXmlParser->GetNextElementNode(child)) {
        if (m_IsSetNode(child))
            m_HandleSetElement(child, element);
        else
            list.push_back(child);
    }
}

void CIMSCProfile::t_GetChildNodeList(XMLNODEPTR node, CElementSPTR& element, std::vector<XMLNODEPTR>& list)
{
    if (!node) {
        TTML_WARN("pXmlNode: Null pointer error");
        return;
    }
    std::vector<XMLNODEPTR> sets;
    for (XMLNODEPTR child = t_pXmlParser->GetChildNodeList(node); child; child = t_pXmlParser->GetNextNode(child)) {
        if (m_IsSetNode(child))
            sets.push_back(child);
        else
            list.push_back(child);
    }
    if (sets.empty() || !element)
        return;

    // A seq container's begin walks forward over its sets; the element
    // itself keeps its own interval.
    std::string begin;
    std::string end;
    element->GetAttrValue(ATTR_BEGIN, begin);
    element->GetAttrValue(ATTR_END, end);
    for (XMLNODEPTR set : sets)
        m_HandleSetElement(set, element);
    if (!begin.empty())
        element->AddAttrValue(ATTR_BEGIN, begin);
    if (!end.empty())
        element->AddAttrValue(ATTR_END, end);
}

int CIMSCProfile::t_ParseAttributes(XMLNODEPTR node, CElementSPTR& element)
{
    const bool hidden = IsHidden(element);
    int result = CProfile::t_ParseAttributes(node, element);
    if (result == ERR_NONE && hidden)
        element->AddAttrValue(ATTR_DISPLAY, kDisplayNone);
    return result;
}

int CIMSCProfile::t_HandleReferencedElement(XMLNODEPTR node, CElementSPTR& element)
{
    const bool hidden = IsHidden(element);
    int result = CProfile::t_HandleReferencedElement(node, element);
    if (result == ERR_NONE && hidden)
        element->AddAttrValue(ATTR_DISPLAY, kDisplayNone);
    return result;
}

int CIMSCProfile::t_HandleTTElement(XMLNODEPTR node, CElementSPTR& element)
{
    int result = CProfile::t_HandleTTElement(node, element);
    if (result != ERR_NONE)
        return result;

    std::string frameRate = "30";
    std::string multiplier = "1 1";
    element->GetAttrValue(ATTR_FRAMERATE, frameRate);
    element->GetAttrValue(ATTR_FRAMERATEMULTIPLIER, multiplier);
    t_pSubtitleInfo->SetFrameRate(frameRate, multiplier);

    std::string tickRate = "1";
    element->GetAttrValue(ATTR_TICKRATE, tickRate);
    t_pSubtitleInfo->SetTickRate(tickRate);

    std::string extent;
    if (element->GetAttrValue(ATTR_EXTENT, extent) && extent != "auto" && m_IsTTExtentValid(extent))
        t_pSubtitleInfo->SetTTExtent(extent);

    std::string aspectRatio;
    if (element->GetAttrValue(ATTR_ASPECTRATIO, aspectRatio))
        t_pSubtitleInfo->SetAspectRatio(aspectRatio);
    return ERR_NONE;
}

bool CIMSCProfile::m_IsTTExtentValid(const std::string& extent)
{
    static const boost::regex kLength("(([+])?\\d+(\\.\\d+)?)(px|em|c|%)");
    const std::vector<std::string> items = StrSplit(extent, " ");
    if (items.size() != 2) {
        TTML_WARN("tt extent must have two values");
        return false;
    }
    for (const std::string& item : items) {
        boost::smatch match;
        if (!boost::regex_match(item, match, kLength)) {
            TTML_WARN("Invalid format");
            return false;
        }
        if (match[4].str() != "px") {
            TTML_WARN("Unit must be px for tt element");
            return false;
        }
    }
    return true;
}

int CIMSCProfile::t_HandleStyleElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("NULL Pointer");
        return ERR_NULL_POINTER;
    }
    if (!parent || parent->GetType() != ELEM_REGION)
        return CProfile::t_HandleStyleElement(node, parent, element);

    // The region is already registered under its id; an inline style's id
    // must not rename it.
    std::string regionId;
    bool hasId = parent->GetAttrValue(ATTR_ID, regionId);
    int result = t_ParseAttributes(node, parent);
    if (result != ERR_NONE)
        return result;
    if (hasId)
        parent->AddAttrValue(ATTR_ID, regionId);
    else
        parent->RemoveAttrValue(ATTR_ID);

    t_RenameAttr(parent, ATTR_BACKGROUNDCOLOR, ATTR_REGIONBACKGROUNDCOLOR);
    return ERR_NONE;
}

int CIMSCProfile::t_ApplyTimingRules(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    if (!t_pXmlParser->IsTextNode(node)) {
        int result = m_HandleTimings(node, parent, element);
        if (result != ERR_NONE)
            return result;
    }
    m_HandleTimeContainerAndDurProperty(parent, element);
    return ERR_NONE;
}

CAttrHandler* CIMSCProfile::t_CreateAttrHandler()
{
    return new (std::nothrow) CIMSCAttrHandler();
}

CElementSPTR CIMSCProfile::t_CreateElementOfType(int type)
{
    return t_MakeElement<CIMSCElement>(type);
}

CElementSPTR CIMSCProfile::m_CreatePiece(CElementSPTR& element)
{
    CElementSPTR piece = t_CreateElementOfType(ELEM_SET);
    if (!piece)
        return piece;
    piece->CreateFromParent(element);
    CElementSPTR parent = element->GetParent();
    piece->SetParent(parent);
    return piece;
}

int CIMSCProfile::m_HandleTimings(XMLNODEPTR node, const CElementSPTR& parent, CElementSPTR& element)
{
    if (!node || !parent || !element) {
        // Nothing to offset; the caller's own checks decide about the element.
        TTML_WARN("null pointer!");
        return ERR_NONE;
    }
    const std::string* parentBegin = parent->GetAttrMap().Get(ATTR_BEGIN);
    if (!parentBegin)
        return ERR_NONE;
    const unsigned long long offset = ToMs(*parentBegin);

    struct Key {
        TTMLAttr attr;
        const char* format;
    };
    static const Key kKeys[] = {
        {ATTR_BEGIN, "Adding parent's (type=%d) begin time (%llu ms) to child's (type=%d) begin time (%s ms)"},
        {ATTR_END, "Adding parent's (type=%d) begin time (%llu ms) to child's (type=%d) end time (%s ms)"},
    };
    std::string value;
    for (const Key& key : kKeys) {
        // Usually the attribute pass has just checked this very value.
        if (const TCheckedTime* checked = t_FindCheckedTime(node, key.attr)) {
            if (checked->code != ERR_NONE)
                continue;
            value = checked->value;
        } else {
            std::string name(kTTMLAttrKeys[key.attr]);
            if (!t_pXmlParser->GetAttrValue(node, name, value))
                continue;
            if (t_pAttrHandler->ValidateAttribute(key.attr, value) != ERR_NONE)
                continue;
        }
        TTML_INFO(key.format, parent->GetType(), offset, element->GetType(), value.c_str());
        const unsigned long long own = ToMs(value);
        if (AddMs(offset, own) == std::numeric_limits<unsigned long long>::max()) {
            TTML_WARN("Time out of range in %s: parent begin %llu ms + %llu ms", kTTMLAttrKeys[key.attr], offset, own);
            return ERR_INVALID;
        }
        element->AddAttrValue(key.attr, FromMs(offset + own));
    }
    return ERR_NONE;
}

void CIMSCProfile::m_HandleTimeContainerAndDurProperty(CElementSPTR& parent, CElementSPTR& element)
{
    std::string dur;
    if (!parent || !element || !element->GetAttrValue(ATTR_DUR, dur))
        return;
    const unsigned long long duration = ToMs(dur);

    std::string value;
    if (element->GetAttrValue(ATTR_BEGIN, value)) {
        unsigned long long end = AddMs(ToMs(value), duration);
        if (element->GetAttrValue(ATTR_END, value))
            end = std::min(end, ToMs(value));
        element->AddAttrValue(ATTR_END, FromMs(end));
        return;
    }

    std::string container;
    std::string parentBegin;
    if (!parent->GetAttrValue(ATTR_TIMECONTAINER, container) || container != "seq" ||
        !parent->GetAttrValue(ATTR_BEGIN, parentBegin))
        return;
    const unsigned long long begin = ToMs(parentBegin);
    const bool parentHasDur = parent->GetAttrValue(ATTR_DUR, value);
    if (!parentHasDur && parent->GetAttrValue(ATTR_END, value)) {
        const unsigned long long parentEnd = ToMs(value);
        if (parentEnd != 0 && begin >= parentEnd) {
            // The sequence is used up: this child never shows.
            element->AddAttrValue(ATTR_BEGIN, "");
            element->AddAttrValue(ATTR_END, "");
            return;
        }
    }
    if (parentHasDur)
        parent->RemoveAttrValue(ATTR_DUR);

    unsigned long long end = AddMs(begin, duration);
    if (element->GetAttrValue(ATTR_END, value))
        end = std::min(end, ToMs(value));
    element->AddAttrValue(ATTR_BEGIN, FromMs(begin));
    element->AddAttrValue(ATTR_END, FromMs(end));
    // The next child of the sequence starts where this one ends.
    parent->AddAttrValue(ATTR_BEGIN, FromMs(end));
}

bool CIMSCProfile::m_IsDisplayValueAuto(CElementSPTR& element)
{
    CElementSPTR region;
    if (const std::string* regionId = element->GetAttrMap().Get(ATTR_REGION))
        region = t_pStyleRegionInfo->GetRegion(*regionId);
    return m_IsDisplayValueAuto(element, region.get());
}

bool CIMSCProfile::m_IsDisplayValueAuto(CElementSPTR& element, const CElement* region)
{
    if (region && Holds(*region, ATTR_DISPLAY, "none"))
        return false;
    if (!Holds(*element, ATTR_DISPLAY, "none"))
        return true;
    if (Holds(*element, ATTR_SHOWBACKGROUND, "whenactive"))
        return false;
    // Hidden, but the background stays: keep the area without text. Written
    // past the attribute filter, which would refuse text on a set copy.
    element->CElement::AddAttrValue(ATTR_TEXT, "");
    return true;
}

void CIMSCProfile::t_AddElement(const std::string& begin, const std::string& end, CElementSPTR& element)
{
    if (!element)
        return;
    if (begin.empty() || end.empty()) {
        t_pSubtitleInfo->AddElement(0, 0, element);
        return;
    }
    auto* imsc = CIMSCElement::From(element.get());
    if (!imsc)
        return;
    const unsigned long long b = ToMs(begin);
    const unsigned long long e = ToMs(end);
    if (imsc->GetSetElementCount() != 0)
        m_AddElementWithSet(imsc, element, b, e);
    else
        m_AddElement(element, b, e);
}

void CIMSCProfile::m_AddElement(CElementSPTR& element, unsigned long long begin, unsigned long long end)
{
    static const std::string kNoRegion;
    const std::string* regionId = element->GetAttrMap().Get(ATTR_REGION);
    CElementSPTR regionElement = t_pStyleRegionInfo->GetRegion(regionId ? *regionId : kNoRegion);
    auto* region = CIMSCElement::From(regionElement.get());
    if (!region) {
        t_pSubtitleInfo->AddElement(begin, end, element);
        return;
    }
    const bool visible = m_IsDisplayValueAuto(element, region);
    if (region->GetSetRegionCount() == 0) {
        if (visible)
            t_pSubtitleInfo->AddElement(begin, end, element);
        else
            t_pSubtitleInfo->AddElement(0, 0, element);
        return;
    }

    // Region sets are timed from the element's own begin.
    std::list<CElementSPTR> sets;
    region->GetSetRegionList(sets);
    unsigned long long cursor = begin;
    std::string value;
    for (CElementSPTR& set : sets) {
        if (cursor == end)
            break;
        unsigned long long start;
        unsigned long long stop;
        if (set->GetAttrValue(ATTR_BEGIN, value) && !value.empty()) {
            // Clamped so that a set past the element's end adds nothing.
            start = std::min(AddMs(begin, ToMs(value)), end);
            if (visible && cursor < start)
                t_pSubtitleInfo->AddElement(cursor, start, element);
            stop = end;
            if (set->GetAttrValue(ATTR_END, value) && !value.empty())
                stop = std::min(AddMs(begin, ToMs(value)), end);
        } else if (set->GetAttrValue(ATTR_DUR, value) && !value.empty()) {
            start = cursor;
            stop = std::min(AddMs(cursor, ToMs(value)), end);
        } else {
            continue;
        }
        CElementSPTR piece = m_CreatePiece(element);
        if (!piece) {
            TTML_WARN("NULL pointer at line %d in %s", __LINE__, "m_AddElement");
            continue;
        }
        piece->CopyReferencedAttr(set);
        if (start < stop && m_IsDisplayValueAuto(piece))
            t_pSubtitleInfo->AddElement(start, stop, piece);
        cursor = stop;
    }
    if (visible && cursor < end) {
        CElementSPTR piece = m_CreatePiece(element);
        if (!piece) {
            TTML_WARN("NULL pointer at line %d in %s", __LINE__, "m_AddElement");
            return;
        }
        t_pSubtitleInfo->AddElement(cursor, end, piece);
    }
}

void CIMSCProfile::m_AddElementWithSet(CIMSCElement* imsc, CElementSPTR& element, unsigned long long begin,
                                       unsigned long long end)
{
    const bool visible = m_IsDisplayValueAuto(element);
    std::set<unsigned long long> points{begin, end};
    std::set<std::pair<unsigned long long, unsigned long long>> keys;
    imsc->GetSetKeys(keys);
    for (const auto& key : keys) {
        points.insert(key.first);
        points.insert(key.second);
    }

    // Consecutive points inside [begin, end]: each piece has one fixed set
    // of covering sets.
    for (auto it = points.lower_bound(begin); it != points.end() && *it < end;) {
        const unsigned long long from = *it;
        ++it;
        const unsigned long long to = *it;  // end is a point, so one follows
        std::list<CElementSPTR> covering;
        imsc->GetSetElementList(from, to, covering);
        if (covering.empty()) {
            if (visible)
                t_pSubtitleInfo->AddElement(from, to, element);
            else
                t_pSubtitleInfo->AddElement(0, 0, element);
            continue;
        }
        CElementSPTR piece = m_CreatePiece(element);
        if (!piece) {
            TTML_WARN("NULL pointer");
            continue;
        }
        // Later sets in document order win.
        for (CElementSPTR& set : covering)
            piece->CopyReferencedAttr(set);
        if (m_IsDisplayValueAuto(piece))
            t_pSubtitleInfo->AddElement(from, to, piece);
    }
    imsc->ClearSetElementList();
}

void CIMSCProfile::m_HandleSetElement(XMLNODEPTR node, CElementSPTR& parent)
{
    if (!node || !parent) {
        TTML_WARN("Null pointer");
        return;
    }
    CElementSPTR set = t_CreateElementOfType(ELEM_SET);
    if (!set) {
        TTML_WARN("NULL pointer");
        return;
    }
    if (t_ParseAttributes(node, set) != ERR_NONE)
        return;
    m_HandleTimeContainerAndDurProperty(parent, set);

    std::string begin;
    std::string end;
    set->GetAttrValue(ATTR_BEGIN, begin);
    set->GetAttrValue(ATTR_END, end);
    if (auto* imsc = CIMSCElement::From(parent.get()))
        imsc->AddSetElement(begin, end, set);
}

void CIMSCProfile::m_HandleEmptyRegionList()
{
    if (!t_pStyleRegionInfo->IsEmptyRegionList())
        return;
    // Elements default to region "anonymous", which covers the root container.
    CElementSPTR region = t_CreateElementOfType(ELEM_REGION);
    region->AddAttrValue(ATTR_ID, "anonymous");
    region->AddAttrValue(ATTR_EXTENT, "auto");
    region->AddAttrValue(ATTR_ORIGIN, "auto");
    t_pStyleRegionInfo->AddRegion("anonymous", region);
}

int CIMSCProfile::t_ProcessSubtitleInfo()
{
    m_HandleEmptyRegionList();
    return CProfile::t_ProcessSubtitleInfo();
}

}  // namespace TTML
