#include "CAttrMap.h"

#include <algorithm>

namespace TTML {

namespace {

bool KeyLess(const CAttrMap::value_type& entry, int key)
{
    return entry.first < key;
}

const size_t kCopyHeadroom = 4;

}  // namespace

CAttrMap::CAttrMap(const CAttrMap& other)
{
    m_values.reserve(other.m_values.size() + kCopyHeadroom);
    m_values.assign(other.m_values.begin(), other.m_values.end());
}

CAttrMap& CAttrMap::operator=(const CAttrMap& other)
{
    if (this != &other) {
        if (m_values.capacity() < other.m_values.size() + kCopyHeadroom) {
            m_values.clear();
            m_values.reserve(other.m_values.size() + kCopyHeadroom);
        }
        m_values.assign(other.m_values.begin(), other.m_values.end());
    }
    return *this;
}

CAttrMap::CAttrMap(std::initializer_list<value_type> values)
{
    for (const value_type& v : values)
        Set(v.first, v.second);
}

std::vector<CAttrMap::value_type>::iterator CAttrMap::m_LowerBound(int key)
{
    return std::lower_bound(m_values.begin(), m_values.end(), key, KeyLess);
}

CAttrMap::const_iterator CAttrMap::find(int key) const
{
    auto it = std::lower_bound(m_values.begin(), m_values.end(), key, KeyLess);
    return (it != m_values.end() && it->first == key) ? it : m_values.end();
}

const std::string* CAttrMap::Get(int key) const
{
    auto it = find(key);
    return it == end() ? nullptr : &it->second;
}

void CAttrMap::Set(int key, const std::string& value)
{
    auto it = m_LowerBound(key);
    if (it != m_values.end() && it->first == key)
        it->second = value;
    else
        m_values.emplace(it, key, value);
}

void CAttrMap::Set(int key, std::string&& value)
{
    auto it = m_LowerBound(key);
    if (it != m_values.end() && it->first == key)
        it->second = std::move(value);
    else
        m_values.emplace(it, key, std::move(value));
}

bool CAttrMap::Erase(int key)
{
    auto it = m_LowerBound(key);
    if (it == m_values.end() || it->first != key)
        return false;
    m_values.erase(it);
    return true;
}

}  // namespace TTML
