#include "CAgent.h"

namespace TTML {

void CAgent::SetAgentName(const std::string& type, const std::string& name)
{
    m_names.emplace(type, name);
}

std::string CAgent::GetAgentName(const std::string& type) const
{
    auto it = m_names.find(type);
    return it == m_names.end() ? std::string() : it->second;
}

}  // namespace TTML
