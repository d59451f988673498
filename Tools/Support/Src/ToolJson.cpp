#include "ToolJson.h"

#include <cstdio>
#include <sstream>

namespace TTML {

void JsonString(std::ostream& os, const std::string& s)
{
    os << '"';
    for (unsigned char c : s) {
        switch (c) {
        case '"': os << "\\\""; break;
        case '\\': os << "\\\\"; break;
        case '\n': os << "\\n"; break;
        case '\r': os << "\\r"; break;
        case '\t': os << "\\t"; break;
        default:
            if (c < 0x20) {
                char buf[8];
                std::snprintf(buf, sizeof(buf), "\\u%04x", c);
                os << buf;
            } else {
                os << static_cast<char>(c);
            }
        }
    }
    os << '"';
}

std::string JsonQuoted(const std::string& s)
{
    std::ostringstream os;
    JsonString(os, s);
    return os.str();
}

}  // namespace TTML
