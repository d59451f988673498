#include "CElement.h"

#include "CAttrHandler.h"
#include "TTMLLog.h"

namespace TTML {

CAttrHandler* CElement::t_pAttrHandler = nullptr;

CElement::CElement(int type) : m_type(type) {}

CElement::~CElement() = default;

bool CElement::t_IsAttrNumber(int attr)
{
    if (attr >= 0 && attr < TTML_ATTR_COUNT)
        return true;
    TTML_WARN("Can't insert any invalid attribute.");
    return false;
}

void CElement::AddAttrValue(int attr, const std::string& value)
{
    if (t_IsAttrNumber(attr))
        m_attrMap.Set(attr, value);
}

void CElement::AddAttrValue(int attr, std::string&& value)
{
    if (t_IsAttrNumber(attr))
        m_attrMap.Set(attr, std::move(value));
}

void CElement::CreateFromParent(CElementSPTR& parent)
{
    if (parent) {
        m_pParent = parent;
        if (parent.get() != this)
            m_attrMap = parent->m_attrMap;
        return;
    }
    if (!t_pAttrHandler) {
        TTML_WARN("NULL pointer error");
        return;
    }
    m_attrMap = t_pAttrHandler->GetDefaultAttrValues();
}

bool CElement::IsImageProfile() const
{
    return false;
}

void CElement::SetImageData(std::shared_ptr<CImageData>& /*data*/)
{
    TTML_WARN("Something went wrong, this function shouldn't be called");
}

std::shared_ptr<CImageData> CElement::GetImageData()
{
    TTML_WARN("Something went wrong, this function shouldn't be called");
    return nullptr;
}

void CElement::ResetImageData()
{
    TTML_WARN("Something went wrong, this function shouldn't be called");
}

void CElement::SetFontScaleFlag(bool scaled)
{
    m_bFontScaled = scaled;
}

bool CElement::GetFontScaleFlag()
{
    return m_bFontScaled;
}

bool CElement::GetAttrValue(int attr, std::string& value) const
{
    const std::string* found = m_attrMap.Get(attr);
    if (!found)
        return false;
    value = *found;
    return true;
}

void CElement::RemoveAttrValue(int attr)
{
    m_attrMap.Erase(attr);
}

void CElement::SetParent(CElementSPTR& parent)
{
    m_pParent = parent;
}

CElementSPTR CElement::GetParent() const
{
    return m_pParent.lock();
}

void CElement::CopyReferencedAttr(CElementSPTR& referenced)
{
    if (!referenced) {
        TTML_WARN("Referenced element not found");
        return;
    }
    m_attrMap.SetAll(referenced->m_attrMap, ATTR_ID);
}

bool CElement::ValidateChildType(std::string /*parent*/, std::string /*child*/)
{
    return true;
}

void CElement::SetAttributeHandler(CAttrHandler* handler)
{
    t_pAttrHandler = handler;
}

}  // namespace TTML
