#include "ToolFile.h"

#include <fstream>
#include <sstream>

namespace TTML {

bool ReadWholeFile(const std::string& path, std::string& out)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    std::ostringstream ss;
    ss << in.rdbuf();
    if (in.bad())
        return false;
    out = ss.str();
    return true;
}

}  // namespace TTML
