#ifndef TTML_PARSER_PROFILE_CNAMECACHE_H
#define TTML_PARSER_PROFILE_CNAMECACHE_H

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>

namespace TTML {

// Numbers of the names one document uses, keyed by the address the reader
// keeps each name at. The reader keeps one copy of every distinct name, so a
// name is looked up by its text about once per document, not once per node.
// Addresses are only meaningful while the document lives: Clear before the
// next one. Not thread-safe; each walker owns its caches.
class CNameCache {
public:
    static constexpr int kMissing = INT_MIN;

    CNameCache() { Clear(); }

    // The number stored for `name`, or kMissing.
    int Find(const void* name) const
    {
        const Slot& slot = m_slots[m_Index(name)];
        return slot.name == name && name ? slot.number : kMissing;
    }
    // Replaces whatever shared the slot.
    void Add(const void* name, int number) { m_slots[m_Index(name)] = Slot{name, number}; }
    void Clear();

private:
    struct Slot {
        const void* name;
        int number;
    };
    static constexpr size_t kSlots = 64;  // a document uses a few dozen names; see m_Index
    static size_t m_Index(const void* name)
    {
        // Names lie packed side by side, so low bits alone would collide:
        // take the top bits of a multiplicative hash.
        const uint64_t mixed = static_cast<uint64_t>(reinterpret_cast<uintptr_t>(name)) * 0x9E3779B97F4A7C15ULL;
        return static_cast<size_t>(mixed >> 58);  // 64 slots
    }
    std::array<Slot, kSlots> m_slots;
};

}  // namespace TTML

#endif
