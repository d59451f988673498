#include "CAttrMap.h"

#include <cstring>

namespace TTML {

namespace {

const size_t kCopyHeadroom = 8;

}  // namespace

CAttrMap::CAttrMap(const CAttrMap& other) : m_present(other.m_present)
{
    m_values.reserve(other.m_values.size() + kCopyHeadroom);
    m_values.assign(other.m_values.begin(), other.m_values.end());
    std::memcpy(m_slot, other.m_slot, sizeof(m_slot));
}

CAttrMap& CAttrMap::operator=(const CAttrMap& other)
{
    if (this != &other) {
        if (m_values.capacity() < other.m_values.size() + kCopyHeadroom) {
            m_values.clear();
            m_values.reserve(other.m_values.size() + kCopyHeadroom);
        }
        m_values.assign(other.m_values.begin(), other.m_values.end());
        m_present = other.m_present;
        std::memcpy(m_slot, other.m_slot, sizeof(m_slot));
    }
    return *this;
}

CAttrMap::CAttrMap(CAttrMap&& other) noexcept
    : m_values(std::move(other.m_values)), m_present(other.m_present)
{
    std::memcpy(m_slot, other.m_slot, sizeof(m_slot));
    other.clear();
}

CAttrMap& CAttrMap::operator=(CAttrMap&& other) noexcept
{
    if (this != &other) {
        m_values = std::move(other.m_values);
        m_present = other.m_present;
        std::memcpy(m_slot, other.m_slot, sizeof(m_slot));
        other.clear();
    }
    return *this;
}

CAttrMap::CAttrMap(std::initializer_list<value_type> values)
{
    for (const value_type& v : values)
        Set(v.first, v.second);
}

void CAttrMap::clear()
{
    m_values.clear();
    m_present = 0;
}

template <typename T>
void CAttrMap::m_Set(int key, T&& value)
{
    if (key < 0 || key >= kMaxKeys)
        return;
    if (m_Has(key)) {
        m_values[m_slot[key]].second = std::forward<T>(value);
        return;
    }
    m_slot[key] = static_cast<uint8_t>(m_values.size());
    m_values.emplace_back(key, std::forward<T>(value));
    m_present |= uint64_t(1) << key;
}

void CAttrMap::Set(int key, const std::string& value)
{
    m_Set(key, value);
}

void CAttrMap::Set(int key, std::string&& value)
{
    m_Set(key, std::move(value));
}

bool CAttrMap::Erase(int key)
{
    if (!m_Has(key))
        return false;
    // The last entry takes the freed place, so nothing else moves.
    const uint8_t pos = m_slot[key];
    if (pos + 1u != m_values.size()) {
        m_values[pos] = std::move(m_values.back());
        m_slot[m_values[pos].first] = pos;
    }
    m_values.pop_back();
    m_present &= ~(uint64_t(1) << key);
    return true;
}

bool CAttrMap::operator==(const CAttrMap& other) const
{
    if (m_present != other.m_present)
        return false;
    for (const value_type& entry : m_values) {
        if (entry.second != other.m_values[other.m_slot[entry.first]].second)
            return false;
    }
    return true;
}

}  // namespace TTML
