#include "CIMSCElement.h"

#include "CAttrHandler.h"
#include "TTMLLog.h"
#include "Util.h"

#include <cstdlib>
#include <new>
#include <typeinfo>

namespace TTML {

CIMSCElement::CIMSCElement(int type) : CElement(type) {}

CIMSCElement::~CIMSCElement() = default;

CIMSCElement* CIMSCElement::From(CElement* element)
{
    if (element && typeid(*element) == typeid(CIMSCElement))
        return static_cast<CIMSCElement*>(element);
    return dynamic_cast<CIMSCElement*>(element);
}

const CIMSCElement* CIMSCElement::From(const CElement* element)
{
    return From(const_cast<CElement*>(element));
}

bool CIMSCElement::m_IsStored(int attr) const
{
    const int type = GetType();
    if (type == ELEM_STYLE || !t_pAttrHandler)
        return true;
    // Unknown elements have no applies-to column: inheritance alone decides.
    const bool known = type >= 0 && type < TTML_ELEM_COUNT;
    const bool applies = known && t_pAttrHandler->IsAppliesTo(attr, type);
    if (type == ELEM_SPAN)
        return applies;
    return applies || t_pAttrHandler->IsInheritableAttribute(attr);
}

void CIMSCElement::AddAttrValue(int attr, const std::string& value)
{
    if (t_IsAttrNumber(attr) && m_IsStored(attr))
        CElement::AddAttrValue(attr, value);
}

void CIMSCElement::AddAttrValue(int attr, std::string&& value)
{
    if (t_IsAttrNumber(attr) && m_IsStored(attr))
        CElement::AddAttrValue(attr, std::move(value));
}

void CIMSCElement::CreateFromParent(CElementSPTR& parent)
{
    CElement::CreateFromParent(parent);
    if (GetType() == ELEM_SET || !parent || parent.get() == this)
        return;
    // A span carries its paragraph's sets so that it is split by them too.
    const CIMSCElement* pParent = From(parent.get());
    if (pParent && pParent->m_pExtra && !pParent->m_pExtra->timedSets.empty())
        m_GetExtra().timedSets = pParent->m_pExtra->timedSets;
}

bool CIMSCElement::IsImageProfile() const
{
    return m_pExtra && m_pExtra->imageData;
}

void CIMSCElement::SetImageData(std::shared_ptr<CImageData>& data)
{
    if (data || m_pExtra)
        m_GetExtra().imageData = data;
}

std::shared_ptr<CImageData> CIMSCElement::GetImageData()
{
    return m_pExtra ? m_pExtra->imageData : nullptr;
}

void CIMSCElement::ResetImageData()
{
    if (m_pExtra)
        m_pExtra->imageData.reset();
}

void CIMSCElement::AddSetElement(const std::string& begin, const std::string& end, CElementSPTR& set)
{
    if (!set) {
        TTML_WARN("Null pointer");
        return;
    }
    if (GetType() == ELEM_REGION) {
        // A region's background is drawn from regionbackgroundcolor; its
        // sets are timed against each content element, not here.
        std::string colour;
        if (set->GetAttrValue(ATTR_BACKGROUNDCOLOR, colour)) {
            set->RemoveAttrValue(ATTR_BACKGROUNDCOLOR);
            set->AddAttrValue(ATTR_REGIONBACKGROUNDCOLOR, colour);
        }
        m_GetExtra().regionSets.push_back(set);
        return;
    }
    if (begin.empty() || end.empty())
        return;
    m_GetExtra().timedSets.push_back(
        {StoredMsToULL(begin), StoredMsToULL(end), set});
}

void CIMSCElement::GetSetKeys(std::set<std::pair<unsigned long long, unsigned long long>>& out) const
{
    if (!m_pExtra)
        return;
    for (const TimedSet& record : m_pExtra->timedSets)
        out.emplace(record.begin, record.end);
}

void CIMSCElement::GetSetElementList(unsigned long long begin, unsigned long long end,
                                     std::list<CElementSPTR>& out) const
{
    if (!m_pExtra)
        return;
    for (const TimedSet& record : m_pExtra->timedSets) {
        if (record.begin <= begin && record.end >= end)
            out.push_back(record.set);
    }
}

void CIMSCElement::GetSetRegionList(std::list<CElementSPTR>& out) const
{
    if (m_pExtra)
        out.assign(m_pExtra->regionSets.begin(), m_pExtra->regionSets.end());
    else
        out.clear();
}

void CIMSCElement::ClearSetElementList()
{
    if (m_pExtra) {
        m_pExtra->timedSets.clear();
        m_pExtra->regionSets.clear();
    }
}

CIMSCElement::Extra& CIMSCElement::m_GetExtra()
{
    if (!m_pExtra) {
        m_pExtra.reset(new (std::nothrow) Extra());
        TTML_ASSERT(m_pExtra);
    }
    return *m_pExtra;
}

}  // namespace TTML
