#include "CSubSampleImageUtil.h"

#include <cstring>

#include "TTMLLog.h"

namespace TTML {

namespace {

const char kMagic[4] = {'I', 'S', 'S', 'D'};
const unsigned int kVersion = 1;

unsigned int ReadU32(const std::string& data, size_t pos)
{
    const unsigned char* p = reinterpret_cast<const unsigned char*>(data.data()) + pos;
    return static_cast<unsigned int>(p[0]) | (static_cast<unsigned int>(p[1]) << 8) |
           (static_cast<unsigned int>(p[2]) << 16) | (static_cast<unsigned int>(p[3]) << 24);
}

// Index references are short digit strings; longer ones cannot be a
// position within kMaxEntries and are treated as names.
bool ParseIndex(const std::string& reference, size_t& index)
{
    if (reference.empty() || reference.size() > 9)
        return false;
    size_t value = 0;
    for (char c : reference) {
        if (c < '0' || c > '9')
            return false;
        value = value * 10 + static_cast<size_t>(c - '0');
    }
    index = value;
    return true;
}

}  // namespace

CSubSampleImageUtil::CSubSampleImageUtil(std::string& subSampleData) : m_data(subSampleData)
{
    if (!m_ReadIndex()) {
        m_entries.clear();
        m_data.clear();
    }
}

CSubSampleImageUtil::~CSubSampleImageUtil() = default;

bool CSubSampleImageUtil::m_ReadIndex()
{
    if (m_data.empty())
        return true;
    if (m_data.size() < 12 || std::memcmp(m_data.data(), kMagic, 4) != 0) {
        TTML_WARN("Sub-sample data refused: no ISSD header");
        return false;
    }
    unsigned int version = ReadU32(m_data, 4);
    if (version != kVersion) {
        TTML_WARN("Sub-sample data refused: version %u", version);
        return false;
    }
    unsigned int count = ReadU32(m_data, 8);
    if (count > kMaxEntries) {
        TTML_WARN("Sub-sample data refused: %u entries", count);
        return false;
    }
    // Every length is compared with what is left, never added to a position
    // first, so no value can wrap past the end.
    size_t pos = 12;
    m_entries.reserve(count);
    for (unsigned int i = 1; i <= count; ++i) {
        Entry entry{0, 0, 0, 0, false, nullptr};
        if (m_data.size() - pos < 4) {
            TTML_WARN("Sub-sample data refused: entry %u truncated", i);
            return false;
        }
        entry.nameLength = ReadU32(m_data, pos);
        pos += 4;
        if (entry.nameLength > kMaxNameLength || entry.nameLength > m_data.size() - pos) {
            TTML_WARN("Sub-sample data refused: entry %u name length %zu", i, entry.nameLength);
            return false;
        }
        entry.nameOffset = pos;
        pos += entry.nameLength;
        if (m_data.size() - pos < 4) {
            TTML_WARN("Sub-sample data refused: entry %u truncated", i);
            return false;
        }
        entry.dataLength = ReadU32(m_data, pos);
        pos += 4;
        if (entry.dataLength > CImageData::kMaxBytes || entry.dataLength > m_data.size() - pos) {
            TTML_WARN("Sub-sample data refused: entry %u image length %zu", i, entry.dataLength);
            return false;
        }
        entry.dataOffset = pos;
        pos += entry.dataLength;
        m_entries.push_back(entry);
    }
    if (pos != m_data.size()) {
        TTML_WARN("Sub-sample data refused: %zu bytes after the last entry", m_data.size() - pos);
        return false;
    }
    return true;
}

std::string CSubSampleImageUtil::GetName(size_t index) const
{
    if (index == 0 || index > m_entries.size())
        return std::string();
    const Entry& entry = m_entries[index - 1];
    return m_data.substr(entry.nameOffset, entry.nameLength);
}

long CSubSampleImageUtil::m_FindEntry(const std::string& reference) const
{
    size_t index = 0;
    if (ParseIndex(reference, index))
        return (index >= 1 && index <= m_entries.size()) ? static_cast<long>(index - 1) : -1;

    size_t slash = reference.find_last_of('/');
    std::string base = slash == std::string::npos ? reference : reference.substr(slash + 1);
    if (base.empty())
        return -1;
    for (size_t i = 0; i < m_entries.size(); ++i) {
        const Entry& entry = m_entries[i];
        if (entry.nameLength == 0)
            continue;
        if (m_data.compare(entry.nameOffset, entry.nameLength, reference) == 0 ||
            m_data.compare(entry.nameOffset, entry.nameLength, base) == 0)
            return static_cast<long>(i);
    }
    return -1;
}

std::shared_ptr<CImageData> CSubSampleImageUtil::GetImage(const std::string& reference)
{
    long found = m_FindEntry(reference);
    if (found < 0) {
        TTML_WARN("Image \"%s\" not found in the sub-sample data", reference.c_str());
        return nullptr;
    }
    Entry& entry = m_entries[static_cast<size_t>(found)];
    if (!entry.decoded) {
        entry.image = CImageData::FromPng(reference, m_data.data() + entry.dataOffset, entry.dataLength);
        entry.decoded = true;
    }
    return entry.image;
}

void CSubSampleImageUtil::ReleaseImages()
{
    for (auto& entry : m_entries) {
        entry.image.reset();
        entry.decoded = false;
    }
}

void CSubSampleImageUtil::Clear()
{
    m_entries.clear();
    m_data.clear();
    m_data.shrink_to_fit();
}

}  // namespace TTML
