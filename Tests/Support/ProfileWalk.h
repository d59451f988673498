#ifndef INTERTITLE_TESTS_PROFILEWALK_H
#define INTERTITLE_TESTS_PROFILEWALK_H

#include "CEBUProfile.h"
#include "CIMSCProfile.h"
#include "CStyleRegionInfo.h"
#include "CSubtitleInfo.h"
#include "CXmlParser.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

namespace WalkTest {

// Exposes a profile's registries and text normalisation for inspection.
template <typename Base>
class Exposed : public Base {
public:
    TTML::CStyleRegionInfo* Registry() { return this->t_pStyleRegionInfo; }
    using TTML::CProfile::t_RemoveExtraWhiteSpace;
};
using TestProfile = Exposed<TTML::CEBUProfile>;

constexpr const char* kRegion = "<region xml:id=\"r1\" tts:origin=\"10% 10%\" tts:extent=\"80% 80%\"/>";
// Head metadata declaring EBU-TT-D (2018).
constexpr const char* kEbu2018 = "<metadata><ebuttm:documentMetadata><ebuttm:conformsToStandard>"
                                 "urn:ebu:tt:distribution:2018-04</ebuttm:conformsToStandard>"
                                 "</ebuttm:documentMetadata></metadata>";

// A TTML document (the EBU-TT-D and IMSC namespaces declared) with the given
// parts spliced in; the one document builder of the walk and parser tests.
inline std::string Doc(const std::string& body, const std::string& styling = "",
                       const std::string& layout = kRegion, const std::string& rootAttrs = "",
                       const std::string& headExtra = "", const std::string& bodyAttrs = "")
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>"
           "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
           " xmlns:tts=\"http://www.w3.org/ns/ttml#styling\" xmlns:ttm=\"http://www.w3.org/ns/ttml#metadata\""
           " xmlns:ebuttm=\"urn:ebu:tt:metadata\" xmlns:ebutts=\"urn:ebu:tt:style\" " +
           rootAttrs + "><head>" + headExtra + "<styling>" + styling + "</styling><layout>" + layout +
           "</layout></head><body " + bodyAttrs + ">" + body + "</body></tt>";
}

// `ms` as a clock time, hh:mm:ss.fff.
inline std::string ClockTime(unsigned long long ms)
{
    char text[32];
    std::snprintf(text, sizeof(text), "%02llu:%02llu:%02llu.%03llu", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60,
                  ms % 1000);
    return text;
}

// A paragraph from 1 s to 2 s in region r1 holding `inner`.
inline std::string Para(const std::string& inner, const std::string& attrs = "")
{
    return "<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\" " + attrs + ">" + inner +
           "</p></div>";
}

// Walks `xml` with an initialised `profile`, then resets it for the next document.
template <typename Profile>
inline int WalkAndReset(Profile& profile, const std::string& xml)
{
    TTML::CXmlParser reader;
    TTML::CSubtitleInfo info;
    EXPECT_TRUE(reader.ReadMemory(xml.data(), static_cast<int>(xml.size()))) << xml;
    TTML::CProfile::TTMLProfileData data;
    data.pXmlParser = &reader;
    data.pSubtitleInfo = &info;
    const int result = profile.ProcessSubtitles(&data);
    profile.Reset();
    return result;
}

struct Timed {
    unsigned long long begin;
    unsigned long long end;
    TTML::CElementSPTR element;
};

// One walk of `xml` by `Profile` as profile number `kNumber`. The profile is
// reset only on destruction so that its registries can still be inspected.
template <typename Profile, int kNumber>
class ProfileWalk {
public:
    explicit ProfileWalk(const std::string& xml)
    {
        EXPECT_TRUE(profile.Initialize());
        profile.SetProfile(kNumber);
        EXPECT_TRUE(reader.ReadMemory(xml.data(), static_cast<int>(xml.size()))) << xml;
        TTML::CProfile::TTMLProfileData data;
        data.pXmlParser = &reader;
        data.pSubtitleInfo = &info;
        result = profile.ProcessSubtitles(&data);
    }
    ~ProfileWalk()
    {
        profile.Reset();
        profile.Destroy();
        reader.Reset();
    }

    // Every listed element once, with the union of its split intervals, in
    // the order of first appearance.
    std::vector<Timed> TimedElements() const
    {
        std::set<TTML::CSubtitleInfo::TimeInterval> keys;
        info.GetUniqueKeys(keys);
        std::vector<Timed> out;
        for (const auto& key : keys) {
            std::list<TTML::CElementSPTR> elements;
            info.GetElementListForInterval(key, elements);
            for (const auto& e : elements) {
                bool seen = false;
                for (auto& t : out) {
                    if (t.element == e) {
                        t.begin = std::min(t.begin, key.first);
                        t.end = std::max(t.end, key.second);
                        seen = true;
                    }
                }
                if (!seen)
                    out.push_back({key.first, key.second, e});
            }
        }
        return out;
    }

    // The first timed element whose text is `text`; null when none.
    TTML::CElementSPTR Text(const std::string& text) const
    {
        for (const auto& t : TimedElements()) {
            std::string value;
            if (t.element->GetAttrValue(TTML::ATTR_TEXT, value) && value == text)
                return t.element;
        }
        return nullptr;
    }

    Exposed<Profile> profile;
    TTML::CXmlParser reader;
    TTML::CSubtitleInfo info;
    int result = -1;
};
using Walk = ProfileWalk<TTML::CEBUProfile, 2>;
using ImscWalk = ProfileWalk<TTML::CIMSCProfile, 0>;

// The attribute's value, or "<absent>".
inline std::string Attr(const TTML::CElementSPTR& element, int attr)
{
    std::string value;
    if (!element)
        return "<no element>";
    return element->GetAttrValue(attr, value) ? value : "<absent>";
}

}  // namespace WalkTest

#endif
