#include "CAttrMap.h"

#include <cstring>

namespace TTML {

namespace {

// Copies of maps whose chain is this deep are made flat, so that lookups
// stay short however often a map is written and copied in turn.
const unsigned kMaxDepth = 12;

}  // namespace

struct CAttrMap::Layer {
    LayerSPTR base;
    std::vector<value_type> values;
    uint64_t own = 0;
    uint8_t slot[kMaxKeys] = {};
    unsigned depth = 1;
};

CAttrMap::CAttrMap(const CAttrMap& other)
{
    m_CopyFrom(other);
}

CAttrMap& CAttrMap::operator=(const CAttrMap& other)
{
    if (this != &other) {
        clear();
        m_CopyFrom(other);
    }
    return *this;
}

void CAttrMap::m_CopyFrom(const CAttrMap& other)
{
    m_present = other.m_present;
    const unsigned depth = other.m_pBase ? other.m_pBase->depth : 0;
    if (other.m_own == 0 || depth < kMaxDepth) {
        other.m_Freeze();
        m_pBase = other.m_pBase;
        return;
    }
    // Too deep to stack another layer: a flat copy of everything held.
    m_values.reserve(size());
    for (int key = other.m_NextKey(0); key < kMaxKeys; key = other.m_NextKey(key + 1)) {
        m_slot[key] = static_cast<uint8_t>(m_values.size());
        m_values.push_back(*other.m_Entry(key));
    }
    m_own = m_present;
}

CAttrMap::CAttrMap(CAttrMap&& other) noexcept
    : m_pBase(std::move(other.m_pBase)),
      m_values(std::move(other.m_values)),
      m_own(other.m_own),
      m_present(other.m_present)
{
    std::memcpy(m_slot, other.m_slot, sizeof(m_slot));
    other.clear();
}

CAttrMap& CAttrMap::operator=(CAttrMap&& other) noexcept
{
    if (this != &other) {
        m_pBase = std::move(other.m_pBase);
        m_values = std::move(other.m_values);
        m_own = other.m_own;
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

CAttrMap::~CAttrMap() = default;

void CAttrMap::clear()
{
    m_pBase.reset();
    m_values.clear();
    m_own = 0;
    m_present = 0;
}

const CAttrMap::value_type* CAttrMap::m_Entry(int key) const
{
    const uint64_t bit = uint64_t(1) << key;
    if (m_own & bit)
        return &m_values[m_slot[key]];
    // Present but not own: the nearest layer that owns it holds the value.
    for (const Layer* layer = m_pBase.get(); layer; layer = layer->base.get()) {
        if (layer->own & bit)
            return &layer->values[layer->slot[key]];
    }
    return nullptr;
}

void CAttrMap::m_Freeze() const
{
    if (m_own == 0)
        return;
    auto layer = std::make_shared<Layer>();
    layer->depth = m_pBase ? m_pBase->depth + 1 : 1;
    layer->base = std::move(m_pBase);
    // The strings move with the vector's buffer, so values already handed
    // out stay where they are.
    layer->values = std::move(m_values);
    layer->own = m_own;
    std::memcpy(layer->slot, m_slot, sizeof(m_slot));
    m_pBase = std::move(layer);
    m_values = std::vector<value_type>();
    m_own = 0;
}

void CAttrMap::Freeze() const
{
    if (m_own == 0 && (!m_pBase || m_pBase->depth == 1))
        return;
    auto layer = std::make_shared<Layer>();
    layer->values.reserve(size());
    for (int key = m_NextKey(0); key < kMaxKeys; key = m_NextKey(key + 1)) {
        layer->slot[key] = static_cast<uint8_t>(layer->values.size());
        layer->values.push_back(*m_Entry(key));
    }
    layer->own = m_present;
    m_pBase = std::move(layer);
    m_values = std::vector<value_type>();
    m_own = 0;
}

template <typename T>
void CAttrMap::m_Set(int key, T&& value)
{
    if (key < 0 || key >= kMaxKeys)
        return;
    const uint64_t bit = uint64_t(1) << key;
    if (m_own & bit) {
        m_values[m_slot[key]].second = std::forward<T>(value);
        return;
    }
    // A key held below is shadowed; the layer itself stays as it is.
    m_slot[key] = static_cast<uint8_t>(m_values.size());
    m_values.emplace_back(key, std::forward<T>(value));
    m_own |= bit;
    m_present |= bit;
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
    const uint64_t bit = uint64_t(1) << key;
    if (m_own & bit) {
        // The last entry takes the freed place, so nothing else moves.
        const uint8_t pos = m_slot[key];
        if (pos + 1u != m_values.size()) {
            m_values[pos] = std::move(m_values.back());
            m_slot[m_values[pos].first] = pos;
        }
        m_values.pop_back();
        m_own &= ~bit;
    }
    // A value below stays in its layer but is no longer seen from here.
    m_present &= ~bit;
    return true;
}

bool CAttrMap::operator==(const CAttrMap& other) const
{
    if (m_present != other.m_present)
        return false;
    for (int key = m_NextKey(0); key < kMaxKeys; key = m_NextKey(key + 1)) {
        if (m_Entry(key)->second != other.m_Entry(key)->second)
            return false;
    }
    return true;
}

}  // namespace TTML
