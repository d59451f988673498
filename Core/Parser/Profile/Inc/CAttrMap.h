#ifndef TTML_PARSER_PROFILE_CATTRMAP_H
#define TTML_PARSER_PROFILE_CATTRMAP_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace TTML {

// An element's attributes: values by attribute number, iterated in ascending
// number. Every element starts as a copy of its parent's attributes and then
// adds a few of its own, so the entries sit in one contiguous block in the
// order they were added (short values fit in the strings themselves), and a
// small table of positions by key makes lookup and insertion constant time
// instead of shifting the block.
// Keys are attribute numbers, 0 .. kMaxKeys - 1; Set ignores other keys and
// lookups of them find nothing.
class CAttrMap {
public:
    using value_type = std::pair<int, std::string>;
    static constexpr int kMaxKeys = 64;

    // Visits the entries in ascending key order.
    class const_iterator {
    public:
        using iterator_category = std::forward_iterator_tag;
        using value_type = CAttrMap::value_type;
        using difference_type = std::ptrdiff_t;
        using pointer = const value_type*;
        using reference = const value_type&;

        const_iterator() = default;
        reference operator*() const { return m_pMap->m_values[m_pMap->m_slot[m_key]]; }
        pointer operator->() const { return &**this; }
        const_iterator& operator++()
        {
            m_key = m_pMap->m_NextKey(m_key + 1);
            return *this;
        }
        const_iterator operator++(int)
        {
            const_iterator before = *this;
            ++*this;
            return before;
        }
        bool operator==(const const_iterator& other) const { return m_key == other.m_key; }
        bool operator!=(const const_iterator& other) const { return m_key != other.m_key; }

    private:
        friend class CAttrMap;
        const_iterator(const CAttrMap* map, int key) : m_pMap(map), m_key(key) {}

        const CAttrMap* m_pMap = nullptr;
        int m_key = kMaxKeys;
    };

    CAttrMap() = default;
    // Copies keep a little spare room: a copied parent map is followed by
    // the element's own attributes.
    CAttrMap(const CAttrMap& other);
    CAttrMap& operator=(const CAttrMap& other);
    // The source is left empty.
    CAttrMap(CAttrMap&& other) noexcept;
    CAttrMap& operator=(CAttrMap&& other) noexcept;
    // A later duplicate key replaces an earlier one.
    CAttrMap(std::initializer_list<value_type> values);

    const_iterator begin() const { return const_iterator(this, m_NextKey(0)); }
    const_iterator end() const { return const_iterator(this, kMaxKeys); }
    size_t size() const { return m_values.size(); }
    bool empty() const { return m_values.empty(); }
    void clear();

    const_iterator find(int key) const { return m_Has(key) ? const_iterator(this, key) : end(); }
    size_t count(int key) const { return m_Has(key) ? 1 : 0; }
    // Null when absent; valid until the map changes.
    const std::string* Get(int key) const { return m_Has(key) ? &m_values[m_slot[key]].second : nullptr; }
    void Set(int key, const std::string& value);
    void Set(int key, std::string&& value);
    // Returns whether the key was there.
    bool Erase(int key);

    // Same keys with the same values, whatever order they were added in.
    bool operator==(const CAttrMap& other) const;
    bool operator!=(const CAttrMap& other) const { return !(*this == other); }

private:
    bool m_Has(int key) const
    {
        return key >= 0 && key < kMaxKeys && ((m_present >> key) & 1u) != 0;
    }
    // First present key at or after `from`; kMaxKeys when none.
    int m_NextKey(int from) const
    {
        if (from >= kMaxKeys)
            return kMaxKeys;
        const uint64_t rest = m_present >> from;
        return rest == 0 ? kMaxKeys : from + __builtin_ctzll(rest);
    }
    template <typename T>
    void m_Set(int key, T&& value);

    std::vector<value_type> m_values;  // in the order keys were added
    uint64_t m_present = 0;            // bit k: key k is held
    uint8_t m_slot[kMaxKeys] = {};     // position in m_values of each held key
};

}  // namespace TTML

#endif
