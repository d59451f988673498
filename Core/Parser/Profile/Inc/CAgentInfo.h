#ifndef TTML_PARSER_PROFILE_CAGENTINFO_H
#define TTML_PARSER_PROFILE_CAGENTINFO_H

#include "CAgent.h"

#include <map>
#include <string>

namespace TTML {

// Agents of the document being walked, by xml:id. Owns the stored agents.
// Owned by a profile, emptied between documents; parser thread only.
class CAgentInfo {
public:
    CAgentInfo() = default;
    ~CAgentInfo();

    CAgentInfo(const CAgentInfo&) = delete;
    CAgentInfo& operator=(const CAgentInfo&) = delete;

    // Takes ownership of `agent` unless `id` is already present, in which
    // case nothing is stored and the caller keeps it.
    void SetAgent(const std::string& id, CAgent* agent);
    // Null when absent; the registry keeps ownership.
    CAgent* GetAgent(const std::string& id) const;
    // Deletes every stored agent.
    void Reset();

private:
    std::map<std::string, CAgent*> m_agents;
};

}  // namespace TTML

#endif
