#include "CElementHandler.h"

#include "TTMLLog.h"
#include "Util.h"

namespace TTML {

CElementHandler::CElementHandler()
{
    // Keys are lower case: lookups fold the name first.
    for (int type = 0; type < TTML_ELEM_COUNT; ++type) {
        std::string key = kTTMLElemNames[type];
        StrToLower(key);
        m_elemMap.emplace(key, type);
    }
}

int CElementHandler::ToElemEnum(const std::string& name) const
{
    if (name.empty()) {
        TTML_WARN("Empty string");
        return ELEM_UNKNOWN;
    }
    // Documents nearly always use the table's own spelling; fold only when
    // the name as written is not found.
    auto it = m_elemMap.find(name);
    if (it == m_elemMap.end()) {
        std::string key = name;
        StrToLower(key);
        it = m_elemMap.find(key);
    }
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
