#ifndef TTML_PARSER_PROFILE_CATTRMAP_H
#define TTML_PARSER_PROFILE_CATTRMAP_H

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace TTML {

// An element's attributes: values by attribute number, iterated in ascending
// number. Kept in one sorted vector because every element starts as a copy
// of its parent's attributes, and one contiguous block (short values fit in
// the strings themselves) copies and frees far faster than a tree of nodes.
class CAttrMap {
public:
    using value_type = std::pair<int, std::string>;
    using const_iterator = std::vector<value_type>::const_iterator;

    CAttrMap() = default;
    // Copies keep a little spare room: a copied parent map is followed by
    // the element's own attributes.
    CAttrMap(const CAttrMap& other);
    CAttrMap& operator=(const CAttrMap& other);
    CAttrMap(CAttrMap&&) = default;
    CAttrMap& operator=(CAttrMap&&) = default;
    // A later duplicate key replaces an earlier one.
    CAttrMap(std::initializer_list<value_type> values);

    const_iterator begin() const { return m_values.begin(); }
    const_iterator end() const { return m_values.end(); }
    size_t size() const { return m_values.size(); }
    bool empty() const { return m_values.empty(); }
    void clear() { m_values.clear(); }

    const_iterator find(int key) const;
    size_t count(int key) const { return find(key) == end() ? 0 : 1; }
    // Null when absent; valid until the map changes.
    const std::string* Get(int key) const;
    void Set(int key, const std::string& value);
    void Set(int key, std::string&& value);
    // Returns whether the key was there.
    bool Erase(int key);

    bool operator==(const CAttrMap& other) const { return m_values == other.m_values; }
    bool operator!=(const CAttrMap& other) const { return !(*this == other); }

private:
    std::vector<value_type>::iterator m_LowerBound(int key);

    std::vector<value_type> m_values;
};

}  // namespace TTML

#endif
