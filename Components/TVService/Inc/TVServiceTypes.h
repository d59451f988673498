#ifndef TTML_TVSERVICE_TVSERVICETYPES_H
#define TTML_TVSERVICE_TVSERVICETYPES_H

#include <map>
#include <string>

namespace TTML {

// The TV service's data classes as its callers see them.

// What the set is watching; the service reports it as a number.
enum TSTvMode { TV_MODE_NONE = 0, TV_MODE_DTV = 1, TV_MODE_ATV = 2, TV_MODE_IP = 3 };

// Service information keys a criteria helper can fetch.
enum { SERVICE_INFO_SERVICE_ID = 12 };

// One caption track of a service. lang holds the ISO 639-2 code in its low
// three bytes, first letter highest ("eng" = 0x656e67).
struct TCCaption {
    std::string id;
    unsigned int lang = 0;
};

// Which service information keys a query fetches.
class TCCriteriaHelper {
public:
    void Fetch(int infoKey) { m_keys[infoKey] = true; }
    bool Fetches(int infoKey) const { return m_keys.count(infoKey) != 0; }

private:
    std::map<int, bool> m_keys;
};

// The answer to a service information query: the fetched keys' values.
class TCServiceData {
public:
    void Set(int infoKey, unsigned long long value) { m_values[infoKey] = value; }
    // False when the query did not fetch infoKey.
    bool Get(int infoKey, unsigned long long& value) const
    {
        auto it = m_values.find(infoKey);
        if (it == m_values.end())
            return false;
        value = it->second;
        return true;
    }

private:
    std::map<int, unsigned long long> m_values;
};

}  // namespace TTML

#endif
