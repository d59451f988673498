#ifndef TTML_PARSER_PROFILE_CELEMENTHANDLER_H
#define TTML_PARSER_PROFILE_CELEMENTHANDLER_H

#include "TTMLElem.h"

#include <map>
#include <string>

namespace TTML {

// Element name table: lower-case local names to TTMLElem values. Filled by
// the constructor and never changed; owned by a profile, used on the parser
// thread.
class CElementHandler {
public:
    CElementHandler();

    // Case-insensitive lookup (the argument is not changed); ELEM_UNKNOWN,
    // with a warning, for the empty name or a name outside the table.
    int ToElemEnum(const std::string& name) const;
    // Case-sensitive: true only for a name exactly as in the table.
    bool IsValidElement(const std::string& name) const;

private:
    std::map<std::string, int> m_elemMap;
};

}  // namespace TTML

#endif
