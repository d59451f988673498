#include "CElementHandler.h"

#include "TTMLLog.h"
#include "Util.h"

namespace TTML {

namespace {

struct ElemName {
    const char* name;
    TTMLElem type;
};

const ElemName kElemNames[] = {
    {"actor", ELEM_ACTOR},
    {"agent", ELEM_AGENT},
    {"body", ELEM_BODY},
    {"br", ELEM_BR},
    {"copyright", ELEM_COPYRIGHT},
    {"desc", ELEM_DESC},
    {"div", ELEM_DIV},
    {"documentebuttversion", ELEM_DOCUMENTEBUTTVERSION},
    {"documentmetadata", ELEM_DOCUMENTMETADATA},
    {"head", ELEM_HEAD},
    {"layout", ELEM_LAYOUT},
    {"metadata", ELEM_METADATA},
    {"name", ELEM_NAME},
    {"p", ELEM_P},
    {"region", ELEM_REGION},
    {"span", ELEM_SPAN},
    {"style", ELEM_STYLE},
    {"styling", ELEM_STYLING},
    {"title", ELEM_TITLE},
    {"tt", ELEM_TT},
    {"set", ELEM_SET},
};

}  // namespace

CElementHandler::CElementHandler()
{
    for (const auto& e : kElemNames)
        m_elemMap.emplace(e.name, e.type);
}

int CElementHandler::ToElemEnum(const std::string& name) const
{
    if (name.empty()) {
        TTML_WARN("Empty string");
        return ELEM_UNKNOWN;
    }
    std::string key = name;
    StrToLower(key);
    auto it = m_elemMap.find(key);
    if (it == m_elemMap.end()) {
        TTML_WARN("No matching element found: %s", name.c_str());
        return ELEM_UNKNOWN;
    }
    return it->second;
}

bool CElementHandler::IsValidElement(const std::string& name) const
{
    if (m_elemMap.empty()) {
        TTML_WARN("Map is empty");
        return false;
    }
    return m_elemMap.count(name) != 0;
}

}  // namespace TTML
