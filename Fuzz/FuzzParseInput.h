#ifndef INTERTITLE_FUZZ_FUZZPARSEINPUT_H
#define INTERTITLE_FUZZ_FUZZPARSEINPUT_H

// The parse target's input format, shared with the test that replays its
// regression inputs:
//   byte 0  transport profile, (b % 5) - 1: -1..3 (3 is a number no profile has)
//   byte 1  subtitle mode
//   then    the document text up to the first NUL byte, and after the NUL
//           the sub-sample data.
// Without a NUL part every image the document names (backgroundImage) is
// given one small PNG, so image documents get past the lookup into the walk.

#include "CSubSampleBuilder.h"
#include "SubRawData.h"

#include "../Tests/Image/PngMaker.h"

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace TTML {

inline std::string FuzzSubSamplesFor(const std::string& xml)
{
    static const std::string kAttr = "backgroundImage=\"";
    static const std::string kPng = MakePng(4, 2);
    std::vector<CSubSampleBuilder::Entry> entries;
    std::set<std::string> seen;
    for (size_t at = xml.find(kAttr); at != std::string::npos && entries.size() < 16;
         at = xml.find(kAttr, at + 1)) {
        const size_t begin = at + kAttr.size();
        const size_t end = xml.find('"', begin);
        if (end == std::string::npos)
            break;
        std::string name = xml.substr(begin, end - begin);
        const size_t slash = name.find_last_of('/');
        if (slash != std::string::npos)
            name.erase(0, slash + 1);
        if (name.empty() || name.size() > 256 || !seen.insert(name).second)
            continue;
        entries.push_back({name, kPng});
    }
    std::string out;
    CSubSampleBuilder::Build(entries, out);
    return out;
}

// A new record (the caller owns it) and the subtitle mode; null when the
// input is too short to hold the two leading bytes.
inline SubRawData* MakeFuzzRecord(const uint8_t* data, size_t size, int& mode)
{
    if (size < 2)
        return nullptr;
    SubRawData* pRecord = new SubRawData();
    pRecord->profile = static_cast<int>(data[0] % 5) - 1;
    mode = data[1];
    const std::string rest(reinterpret_cast<const char*>(data + 2), size - 2);
    const size_t nul = rest.find('\0');
    pRecord->xmlData = rest.substr(0, nul);
    if (nul != std::string::npos)
        pRecord->subSampleData = rest.substr(nul + 1);
    else
        pRecord->subSampleData = FuzzSubSamplesFor(pRecord->xmlData);
    return pRecord;
}

}  // namespace TTML

#endif
