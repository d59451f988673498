#include "CSubSampleBuilder.h"

#include <fstream>
#include <iterator>
#include <utility>

#include "CImageData.h"
#include "CSubSampleImageUtil.h"
#include "TTMLLog.h"

namespace TTML {

namespace {

void AppendU32(std::string& out, size_t value)
{
    for (int shift = 0; shift < 32; shift += 8)
        out.push_back(static_cast<char>((value >> shift) & 0xff));
}

}  // namespace

bool CSubSampleBuilder::Build(const std::vector<Entry>& entries, std::string& out)
{
    out.clear();
    if (entries.size() > CSubSampleImageUtil::kMaxEntries) {
        TTML_WARN("Too many sub-sample images: %zu", entries.size());
        return false;
    }
    size_t total = 12;
    for (const auto& entry : entries) {
        if (entry.name.size() > CSubSampleImageUtil::kMaxNameLength) {
            TTML_WARN("Sub-sample image name too long: %s", entry.name.c_str());
            return false;
        }
        if (entry.bytes.size() > CImageData::kMaxBytes) {
            TTML_WARN("Sub-sample image too large: %s (%zu bytes)", entry.name.c_str(), entry.bytes.size());
            return false;
        }
        total += 8 + entry.name.size() + entry.bytes.size();
    }
    out.reserve(total);
    out.append("ISSD", 4);
    AppendU32(out, 1);
    AppendU32(out, entries.size());
    for (const auto& entry : entries) {
        AppendU32(out, entry.name.size());
        out.append(entry.name);
        AppendU32(out, entry.bytes.size());
        out.append(entry.bytes);
    }
    return true;
}

bool CSubSampleBuilder::BuildFromFiles(const std::vector<std::string>& paths, std::string& out)
{
    out.clear();
    std::vector<Entry> entries;
    entries.reserve(paths.size());
    for (const auto& path : paths) {
        std::ifstream in(path, std::ios::binary);
        if (!in) {
            TTML_WARN("Cannot read image file %s", path.c_str());
            return false;
        }
        Entry entry;
        size_t slash = path.find_last_of('/');
        entry.name = slash == std::string::npos ? path : path.substr(slash + 1);
        entry.bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        if (in.bad()) {
            TTML_WARN("Cannot read image file %s", path.c_str());
            return false;
        }
        entries.push_back(std::move(entry));
    }
    return Build(entries, out);
}

}  // namespace TTML
