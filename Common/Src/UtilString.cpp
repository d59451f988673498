#include "Util.h"

#include <cctype>
#include <sys/time.h>

namespace TTML {

const char* const kWhiteSpaces = " \t\n\r";

namespace {
const char* const kRealNumberChars = "0123456789.";
}  // namespace

void StrTrimLeft(std::string& str)
{
    str.erase(0, str.find_first_not_of(kWhiteSpaces));
}

void StrTrimRight(std::string& str)
{
    const std::string::size_type last = str.find_last_not_of(kWhiteSpaces);
    if (last == std::string::npos)
        str.clear();
    else
        str.erase(last + 1);
}

void StrToLower(std::string& str)
{
    for (char& c : str)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool IsDigits(const std::string& str)
{
    return str.find_first_not_of("0123456789") == std::string::npos;
}

bool IsRealNumber(const std::string& str)
{
    std::string copy(str);
    StrTrimLeft(copy);
    if (!copy.empty() && (copy.front() == '.' || copy.back() == '.'))
        return false;
    // The character check looks at the untrimmed text on purpose: callers
    // rely on a leading blank making the value invalid.
    return str.find_first_not_of(kRealNumberChars) == std::string::npos;
}

std::vector<std::string> StrSplit(const std::string& text, const std::string& delimiter)
{
    std::vector<std::string> pieces;
    std::string rest(text);
    StrTrimLeft(rest);
    StrTrimRight(rest);
    if (delimiter.empty()) {
        // Would never advance; callers always pass a literal.
        pieces.push_back(rest);
        return pieces;
    }
    std::string::size_type start = 0;
    std::string::size_type found;
    while ((found = rest.find(delimiter, start)) != std::string::npos) {
        pieces.push_back(rest.substr(start, found - start));
        start = found + delimiter.size();
    }
    pieces.push_back(rest.substr(start));
    return pieces;
}

bool SplitStrByFindFirstOf(const std::string& text, const std::string& chars, std::string& first,
                           std::string& second)
{
    std::string copy(text);
    StrTrimLeft(copy);
    const std::string::size_type pos = copy.find_first_of(chars);
    if (pos == std::string::npos)
        return false;
    first = copy.substr(0, pos);
    second = copy.substr(pos);
    return true;
}

uint32_t TTMLGetTimeofDay()
{
    struct timeval now = {};
    gettimeofday(&now, nullptr);
    // Unsigned arithmetic wraps modulo 2^32 by definition.
    return static_cast<uint32_t>(static_cast<uint64_t>(now.tv_sec) * 1000u +
                                 static_cast<uint64_t>(now.tv_usec) / 1000u);
}

}  // namespace TTML
