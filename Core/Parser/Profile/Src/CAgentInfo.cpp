#include "CAgentInfo.h"

namespace TTML {

CAgentInfo::~CAgentInfo()
{
    Reset();
}

void CAgentInfo::SetAgent(const std::string& id, CAgent* agent)
{
    m_agents.emplace(id, agent);
}

CAgent* CAgentInfo::GetAgent(const std::string& id) const
{
    auto it = m_agents.find(id);
    return it == m_agents.end() ? nullptr : it->second;
}

void CAgentInfo::Reset()
{
    for (auto& kv : m_agents)
        delete kv.second;
    m_agents.clear();
}

}  // namespace TTML
