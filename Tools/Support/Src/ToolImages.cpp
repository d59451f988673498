#include "ToolImages.h"

#include "CSubSampleBuilder.h"

#include <unistd.h>

#include <boost/regex.hpp>

#include <algorithm>

namespace TTML {

namespace {

void AddValues(std::string::const_iterator begin, std::string::const_iterator end, std::vector<std::string>& refs)
{
    static const boost::regex kAttr("[:\\s]backgroundImage\\s*=\\s*(?:\"([^\"]*)\"|'([^']*)')");
    for (boost::sregex_iterator it(begin, end, kAttr), last; it != last; ++it) {
        std::string value = (*it)[1].matched ? (*it)[1].str() : (*it)[2].str();
        if (!value.empty() && std::find(refs.begin(), refs.end(), value) == refs.end())
            refs.push_back(value);
    }
}

}  // namespace

std::vector<std::string> BackgroundImages(const std::string& xml, bool divsOnly)
{
    std::vector<std::string> refs;
    if (!divsOnly) {
        AddValues(xml.begin(), xml.end(), refs);
        return refs;
    }
    // Quoted values may hold '>', so they are skipped whole.
    static const boost::regex kDivTag("<(?:[\\w.-]+:)?div(?=[\\s/>])(?:[^>\"']|\"[^\"]*\"|'[^']*')*>");
    for (boost::sregex_iterator tag(xml.begin(), xml.end(), kDivTag), end; tag != end; ++tag)
        AddValues((*tag)[0].first, (*tag)[0].second, refs);
    return refs;
}

void PackImages(const std::string& file, const std::vector<std::string>& refs, std::string& subSampleData)
{
    std::string dir;
    std::string::size_type slash = file.find_last_of('/');
    if (slash != std::string::npos)
        dir = file.substr(0, slash + 1);
    std::vector<std::string> paths;
    for (const auto& ref : refs) {
        if (ref.compare(0, 4, "urn:") == 0 || ref[0] == '#' || ref[0] == '/')
            continue;
        std::string path = dir + ref;
        if (access(path.c_str(), R_OK) == 0)
            paths.push_back(path);
    }
    if (!paths.empty())
        CSubSampleBuilder::BuildFromFiles(paths, subSampleData);
}

}  // namespace TTML
