#include "CElement.h"

#include "CAttrHandler.h"
#include "TTMLLog.h"

namespace TTML {

CAttrHandler* CElement::t_pAttrHandler = nullptr;

CElement::CElement(int type) : m_type(type) {}

CElement::~CElement() = default;

void CElement::AddAttrValue(int attr, const std::string& value)
{
    if (attr < 0 || attr >= TTML_ATTR_COUNT) {
        TTML_WARN("Can't insert any invalid attribute.");
        return;
    }
    m_attrMap[attr] = value;
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
    auto defaults = t_pAttrHandler->GetDefaultAttrValues();
    m_attrMap.clear();
    for (auto& kv : defaults)
        m_attrMap.emplace_hint(m_attrMap.end(), kv.first, std::move(kv.second));
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
    auto it = m_attrMap.find(attr);
    if (it == m_attrMap.end())
        return false;
    value = it->second;
    return true;
}

void CElement::RemoveAttrValue(int attr)
{
    m_attrMap.erase(attr);
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
    for (const auto& kv : referenced->m_attrMap) {
        if (kv.first != ATTR_ID)
            m_attrMap[kv.first] = kv.second;
    }
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
