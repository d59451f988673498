#ifndef TTML_PARSER_PROFILE_CATTRMAP_H
#define TTML_PARSER_PROFILE_CATTRMAP_H

#include <boost/smart_ptr/intrusive_ptr.hpp>

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace TTML {

// An element's attributes: values by attribute number, iterated in ascending
// number. Every element starts as a copy of its parent's attributes and then
// adds a few of its own, so a copy does not duplicate the entries: it shares
// them, frozen, and keeps only what is set afterwards. A frozen layer is
// never changed, so a later write to either map is seen by that map alone.
// Keys are attribute numbers, 0 .. kMaxKeys - 1; Set ignores other keys and
// lookups of them find nothing.
// Copying a map freezes the source's own entries (its logical content is
// unchanged), so a map must not be copied while another thread reads or
// copies it, unless it was frozen (Freeze) since it last changed.
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
        reference operator*() const { return *m_pMap->m_Entry(m_key); }
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
    // Shares the source's entries; see the class comment.
    CAttrMap(const CAttrMap& other);
    CAttrMap& operator=(const CAttrMap& other);
    // The source is left empty.
    CAttrMap(CAttrMap&& other) noexcept;
    CAttrMap& operator=(CAttrMap&& other) noexcept;
    // A later duplicate key replaces an earlier one.
    CAttrMap(std::initializer_list<value_type> values);
    ~CAttrMap();

    const_iterator begin() const { return const_iterator(this, m_NextKey(0)); }
    const_iterator end() const { return const_iterator(this, kMaxKeys); }
    size_t size() const { return m_Count(m_present); }
    bool empty() const { return m_present == 0; }
    void clear();

    const_iterator find(int key) const { return m_Has(key) ? const_iterator(this, key) : end(); }
    size_t count(int key) const { return m_Has(key) ? 1 : 0; }
    // Null when absent; valid until the map changes or is copied.
    const std::string* Get(int key) const { return m_Has(key) ? &m_Entry(key)->second : nullptr; }
    void Set(int key, const std::string& value);
    void Set(int key, std::string&& value);
    // Returns whether the key was there.
    bool Erase(int key);
    // Room for `extra` more entries of this map's own, so that a run of Sets
    // allocates once.
    void Reserve(size_t extra);
    // Sets every entry of `other` except `skipKey`, making room once.
    void SetAll(const CAttrMap& other, int skipKey);

    // Gathers every entry into one shared layer. Until the map next changes,
    // copies of it leave it untouched, so they may be taken from several
    // threads at once.
    void Freeze() const;

    // Same keys with the same values, whatever order they were added in.
    bool operator==(const CAttrMap& other) const;
    bool operator!=(const CAttrMap& other) const { return !(*this == other); }

private:
    // Entries of a map at the moment it was copied, on top of its base.
    struct Layer;
    // A layer counts its own readers, so a map holds one pointer, not two.
    friend void intrusive_ptr_add_ref(const Layer* layer) noexcept;
    friend void intrusive_ptr_release(const Layer* layer) noexcept;
    using LayerSPTR = boost::intrusive_ptr<const Layer>;

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
    // The entry of a present key, from this map or the nearest layer below.
    const value_type* m_Entry(int key) const;
    // Position of `bit`'s entry among entries kept in key order under `own`.
    static size_t m_Position(uint64_t own, uint64_t bit)
    {
        return m_Count(own & (bit - 1));
    }
    // Set bits; written out, since the builtin is a library call on targets
    // without a population-count instruction (the compiler still uses one
    // where there is).
    static size_t m_Count(uint64_t bits)
    {
        bits -= (bits >> 1) & 0x5555555555555555ULL;
        bits = (bits & 0x3333333333333333ULL) + ((bits >> 2) & 0x3333333333333333ULL);
        bits = (bits + (bits >> 4)) & 0x0f0f0f0f0f0f0f0fULL;
        return static_cast<size_t>((bits * 0x0101010101010101ULL) >> 56);
    }
    // Moves the own entries into a new shared layer under this map.
    void m_Freeze() const;
    // Empty map only.
    void m_CopyFrom(const CAttrMap& other);
    template <typename T>
    void m_Set(int key, T&& value);

    mutable LayerSPTR m_pBase;                  // shared, never changed
    mutable std::vector<value_type> m_values;  // own entries, in key order
    mutable uint64_t m_own = 0;                 // bit k: key k is in m_values
    uint64_t m_present = 0;                     // bit k: key k is held (own or below)
};

}  // namespace TTML

#endif
