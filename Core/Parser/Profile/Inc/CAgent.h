#ifndef TTML_PARSER_PROFILE_CAGENT_H
#define TTML_PARSER_PROFILE_CAGENT_H

#include <map>
#include <string>

namespace TTML {

// Metadata of one ttm:agent: its type, actor and names by name type.
class CAgent {
public:
    CAgent() = default;

    void SetAgentType(const std::string& type) { m_agentType = type; }
    std::string GetAgentType() const { return m_agentType; }
    void SetActor(const std::string& actor) { m_actor = actor; }
    std::string GetActor() const { return m_actor; }
    // The first name stored for a name type stays.
    void SetAgentName(const std::string& type, const std::string& name);
    // "" when no name of that type is stored.
    std::string GetAgentName(const std::string& type) const;

private:
    std::string m_agentType;
    std::string m_actor;
    std::map<std::string, std::string> m_names;
};

}  // namespace TTML

#endif
