#include "CAttrMap.h"

#include "TTMLLog.h"

#include <atomic>
#include <new>

namespace TTML {

namespace {

// Copies of maps whose chain is this deep are made flat, so that lookups
// stay short however often a map is written and copied in turn.
const unsigned kMaxDepth = 12;

// Own entries grow by half, from room for one: most elements add one or two
// of their own, and an element keeps its map for as long as the document is
// shown, so slack costs memory for its whole life.
size_t GrownCapacity(size_t size)
{
    return size + size / 2 + 1;
}

}  // namespace

struct CAttrMap::Layer {
    mutable std::atomic<unsigned> readers{0};
    LayerSPTR base;
    std::vector<value_type> values;  // in key order
    uint64_t own = 0;
    unsigned depth = 1;
};

void intrusive_ptr_add_ref(const CAttrMap::Layer* layer) noexcept
{
    layer->readers.fetch_add(1, std::memory_order_relaxed);
}

void intrusive_ptr_release(const CAttrMap::Layer* layer) noexcept
{
    if (layer->readers.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete layer;
}

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
    for (int key = other.m_NextKey(0); key < kMaxKeys; key = other.m_NextKey(key + 1))
        m_values.push_back(*other.m_Entry(key));
    m_own = m_present;
}

CAttrMap::CAttrMap(CAttrMap&& other) noexcept
    : m_pBase(std::move(other.m_pBase)),
      m_values(std::move(other.m_values)),
      m_own(other.m_own),
      m_present(other.m_present)
{
    other.clear();
}

CAttrMap& CAttrMap::operator=(CAttrMap&& other) noexcept
{
    if (this != &other) {
        m_pBase = std::move(other.m_pBase);
        m_values = std::move(other.m_values);
        m_own = other.m_own;
        m_present = other.m_present;
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
        return &m_values[m_Position(m_own, bit)];
    // Present but not own: the nearest layer that owns it holds the value.
    for (const Layer* layer = m_pBase.get(); layer; layer = layer->base.get()) {
        if (layer->own & bit)
            return &layer->values[m_Position(layer->own, bit)];
    }
    return nullptr;
}

void CAttrMap::m_Freeze() const
{
    if (m_own == 0)
        return;
    Layer* layer = new (std::nothrow) Layer();
    TTML_ASSERT(layer);
    layer->depth = m_pBase ? m_pBase->depth + 1 : 1;
    layer->base = std::move(m_pBase);
    // A layer lives as long as its last reader: no spare room.
    m_values.shrink_to_fit();
    layer->values = std::move(m_values);
    layer->own = m_own;
    m_pBase.reset(layer);
    m_values = std::vector<value_type>();
    m_own = 0;
}

void CAttrMap::Freeze() const
{
    if (m_own == 0 && (!m_pBase || m_pBase->depth == 1))
        return;
    Layer* layer = new (std::nothrow) Layer();
    TTML_ASSERT(layer);
    layer->values.reserve(size());
    for (int key = m_NextKey(0); key < kMaxKeys; key = m_NextKey(key + 1))
        layer->values.push_back(*m_Entry(key));
    layer->own = m_present;
    m_pBase.reset(layer);
    m_values = std::vector<value_type>();
    m_own = 0;
}

template <typename T>
void CAttrMap::m_Set(int key, T&& value)
{
    if (key < 0 || key >= kMaxKeys)
        return;
    const uint64_t bit = uint64_t(1) << key;
    const size_t pos = m_Position(m_own, bit);
    if (m_own & bit) {
        m_values[pos].second = std::forward<T>(value);
        return;
    }
    // A key held below is shadowed; the layer itself stays as it is.
    const auto at = static_cast<std::ptrdiff_t>(pos);
    if (m_values.size() == m_values.capacity()) {
        // The value may be one of ours: take it before the entries move.
        std::string held(std::forward<T>(value));
        m_values.reserve(GrownCapacity(m_values.size()));
        m_values.emplace(m_values.begin() + at, key, std::move(held));
    } else {
        m_values.emplace(m_values.begin() + at, key, std::forward<T>(value));
    }
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

void CAttrMap::Reserve(size_t extra)
{
    if (m_values.size() + extra > m_values.capacity())
        m_values.reserve(m_values.size() + extra);
}

void CAttrMap::SetAll(const CAttrMap& other, int skipKey)
{
    uint64_t keys = other.m_present;
    if (skipKey >= 0 && skipKey < kMaxKeys)
        keys &= ~(uint64_t(1) << skipKey);
    const size_t added = m_Count(keys & ~m_own);
    if (&other != this && m_values.size() + added > m_values.capacity())
        m_values.reserve(m_values.size() + added);
    for (int key = other.m_NextKey(0); key < kMaxKeys; key = other.m_NextKey(key + 1)) {
        if ((keys >> key) & 1u)
            m_Set(key, other.m_Entry(key)->second);
    }
}

bool CAttrMap::Erase(int key)
{
    if (!m_Has(key))
        return false;
    const uint64_t bit = uint64_t(1) << key;
    if (m_own & bit) {
        m_values.erase(m_values.begin() + static_cast<std::ptrdiff_t>(m_Position(m_own, bit)));
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
