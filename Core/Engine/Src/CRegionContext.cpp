#include "CRegionContext.h"

namespace TTML {

void CRegionContext::AddContext(const std::string& id, ITextContext* pContext)
{
    m_contexts[id].push_back(pContext);
}

std::list<void*>* CRegionContext::GetContextList(const std::string& id)
{
    auto it = m_contexts.find(id);
    return it == m_contexts.end() ? nullptr : &it->second;
}

const std::list<void*>* CRegionContext::GetContextList(const std::string& id) const
{
    auto it = m_contexts.find(id);
    return it == m_contexts.end() ? nullptr : &it->second;
}

void CRegionContext::GetRegionList(std::list<std::string>& ids) const
{
    for (const auto& entry : m_contexts)
        ids.push_back(entry.first);
}

void CRegionContext::Clear()
{
    m_contexts.clear();
}

}  // namespace TTML
