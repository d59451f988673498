#include "CAttrHandler.h"

#include "CSubtitleInfo.h"

#include "IMutex.h"
#include "Lock.h"
#include "TTMLLog.h"
#include "Util.h"

#include <boost/regex.hpp>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <limits>

namespace TTML {

namespace {

bool EndsWith(const std::string& value, char c)
{
    return !value.empty() && value.back() == c;
}

// "<real>%": no sign allowed anywhere; a lone "%" counts (empty number).
bool IsPercentage(const std::string& value)
{
    if (!EndsWith(value, '%') || value.find('-') != std::string::npos)
        return false;
    return IsRealNumber(value.substr(0, value.size() - 1));
}

// Space-separated percentages; `minParts`..`maxParts` of them.
bool IsPercentageList(const std::string& value, size_t minParts, size_t maxParts)
{
    if (value.empty())
        return false;
    const std::vector<std::string> parts = StrSplit(value, " ");
    if (parts.size() < minParts || parts.size() > maxParts)
        return false;
    return std::all_of(parts.begin(), parts.end(), [](const std::string& p) {
        return EndsWith(p, '%') && IsRealNumber(p.substr(0, p.size() - 1));
    });
}

bool IsAsciiDigit(char c)
{
    return c >= '0' && c <= '9';
}

// The clock-time form: two or more hour digits, minutes and seconds 00 to
// 59, then optionally a full stop and digits, or a colon, frame digits and
// optionally a full stop and sub-frame digits. Read by hand: every begin and
// end of a document comes through here.
bool IsClockTime(const std::string& value)
{
    const size_t n = value.size();
    size_t i = 0;
    while (i < n && IsAsciiDigit(value[i]))
        ++i;
    if (i < 2)
        return false;
    for (int field = 0; field < 2; ++field) {
        if (i + 3 > n || value[i] != ':' || value[i + 1] < '0' || value[i + 1] > '5' || !IsAsciiDigit(value[i + 2]))
            return false;
        i += 3;
    }
    auto digitsFrom = [&value, n](size_t& at) {
        const size_t first = at;
        while (at < n && IsAsciiDigit(value[at]))
            ++at;
        return at > first;
    };
    if (i < n && value[i] == ':') {
        ++i;
        if (!digitsFrom(i))
            return false;
    }
    if (i < n && value[i] == '.') {
        ++i;
        if (!digitsFrom(i))
            return false;
    }
    return i == n;
}

constexpr const char* kRoles[] = {
    "action",         "caption",        "description",    "dialog",         "expletive",      "kinesic",
    "lyrics",         "music",          "narration",      "quality",        "sound",          "source",
    "suppressed",     "reproduction",   "thought",        "title",          "transcription",  "extension-role",
};

}  // namespace

CAttrHandler::CAttrHandler() : m_attrNames(TTML_ATTR_COUNT)
{
    m_inheritable.set();
    m_pFontsMutex = IMutex::Create();
    TTML_ASSERT(m_pFontsMutex);
}

CAttrHandler::~CAttrHandler()
{
    if (m_pFontsMutex)
        m_pFontsMutex->Destroy();
}

CAttrMap CAttrHandler::GetDefaultAttrValues() const
{
    return m_defaultValues;
}

int CAttrHandler::ToAttrEnum(std::string& name)
{
    if (name.empty())
        return -1;
    StrToLower(name);
    auto it = m_attrNameMap.find(name);
    return it == m_attrNameMap.end() ? -1 : it->second;
}

std::string CAttrHandler::ToAttrString(TTMLAttr attr)
{
    const int n = attr;
    if (n < 0 || n >= TTML_ATTR_COUNT)
        return "invalid";
    return m_attrNames[n];
}

bool CAttrHandler::IsMappedAttribute(std::string& name)
{
    return ToAttrEnum(name) != -1;
}

void CAttrHandler::OnErrorDownloadableFonts(const std::list<std::string>& fonts)
{
    Lock lock(m_pFontsMutex);
    m_downloadableFonts = fonts;
}

std::list<std::string> CAttrHandler::t_GetDownloadableFontsInfo() const
{
    Lock lock(m_pFontsMutex);
    return m_downloadableFonts;
}

bool CAttrHandler::IsInheritableAttribute(int attr) const
{
    if (attr < 0 || attr >= TTML_ATTR_COUNT) {
        TTML_WARN("Invalid attribute type");
        return false;
    }
    return m_inheritable[attr];
}

bool CAttrHandler::IsAppliesTo(int attr, int elem) const
{
    if (static_cast<unsigned>(attr) >= static_cast<unsigned>(TTML_ATTR_COUNT) ||
        static_cast<unsigned>(elem) >= static_cast<unsigned>(TTML_ELEM_COUNT)) {
        TTML_WARN("Invalid parameters");
        return false;
    }
    return ((m_appliesTo[attr] >> elem) & 1u) != 0;
}

void CAttrHandler::m_AddRow(int attr, const char* defaultValue, bool inherited, TTMLElemSet appliesTo)
{
    const char* key = kTTMLAttrKeys[attr];
    if (key[0] != '\0') {
        m_attrNames[attr] = key;
        m_attrNameMap[key] = attr;
    }
    if (defaultValue)
        m_defaultValues.Set(attr, defaultValue);
    m_inheritable[attr] = inherited;
    m_appliesTo[attr] = appliesTo;
}

// ---- Common checks ------------------------------------------------------

int CAttrHandler::m_LowerKeyword(std::string& value, const char* const* words, size_t count)
{
    StrToLower(value);
    return std::any_of(words, words + count, [&value](const char* w) { return value == w; }) ? ERR_NONE
                                                                                              : ERR_IGNORE;
}

bool CAttrHandler::t_ValidateBooleanValues(std::string& value)
{
    StrToLower(value);
    return value == "true" || value == "false";
}

int CAttrHandler::t_ValidateFillLineGap(std::string& value)
{
    return t_ValidateBooleanValues(value) ? ERR_NONE : ERR_IGNORE;
}

int CAttrHandler::t_ValidateXmlSpace(std::string& value)
{
    static constexpr const char* kWords[] = {"default", "preserve"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateRole(std::string& value)
{
    return t_OneOf<kRoles>(value);
}

int CAttrHandler::t_ValidateWrapOption(std::string& value)
{
    static constexpr const char* kWords[] = {"wrap", "nowrap"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateTextAlign(std::string& value)
{
    static constexpr const char* kWords[] = {"left", "center", "right", "start", "end"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateShowBackground(std::string& value)
{
    static constexpr const char* kWords[] = {"always", "whenactive"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateFontWeight(std::string& value)
{
    static constexpr const char* kWords[] = {"normal", "bold"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateDisplayAlign(std::string& value)
{
    static constexpr const char* kWords[] = {"before", "center", "after"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateMultiRowAlign(std::string& value)
{
    static constexpr const char* kWords[] = {"start", "center", "end", "auto"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateDirection(std::string& value)
{
    static constexpr const char* kWords[] = {"ltr", "rtl"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateWritingMode(std::string& value)
{
    static constexpr const char* kWords[] = {"lrtb", "rltb", "tbrl", "tblr", "lr", "rl", "tb"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateUnicodeBidi(std::string& value)
{
    static constexpr const char* kWords[] = {"normal", "embed", "bidioverride"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateOverflow(std::string& value)
{
    static constexpr const char* kWords[] = {"visible", "hidden"};
    return t_OneOf<kWords>(value);
}

int CAttrHandler::t_ValidateTimeBase(std::string& value)
{
    // Only media time can be followed against the player's clock.
    StrToLower(value);
    return value == "media" ? ERR_NONE : ERR_INVALID;
}

int CAttrHandler::t_ValidateAgent(std::string& value)
{
    StrTrimLeft(value);
    return value.empty() ? ERR_INVALID : ERR_NONE;
}

int CAttrHandler::t_ValidateId(std::string& value)
{
    return value.empty() ? ERR_INVALID : ERR_NONE;
}

int CAttrHandler::t_ValidateLang(std::string& value)
{
    return value.empty() ? ERR_IGNORE : ERR_NONE;
}

int CAttrHandler::t_ValidateStyle(std::string& value)
{
    return value.empty() ? ERR_IGNORE : ERR_NONE;
}

int CAttrHandler::t_ValidateRegion(std::string& /*value*/)
{
    // An unknown region id is reported when the reference is resolved.
    return ERR_NONE;
}

int CAttrHandler::t_ValidateConformsToStandard(std::string& /*value*/)
{
    return ERR_NONE;
}

int CAttrHandler::t_ValidateFrameRate(std::string& value)
{
    StrTrimLeft(value);
    return !value.empty() && IsDigits(value) ? ERR_NONE : ERR_IGNORE;
}

int CAttrHandler::t_ValidateClockTimeFormat(std::string& value)
{
    return IsClockTime(value) ? ERR_NONE : ERR_IGNORE;
}

int CAttrHandler::t_ValidateColorFormat(std::string& value)
{
    static const boost::regex kColour(
        "^((#([0-9a-fA-F][0-9a-fA-F]){3,4})|"
        "(rgb\\((([0-9]|[1-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])\\,){2}"
        "([0-9]|[1-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])\\))|"
        "(rgba\\((([0-9]|[1-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5])\\,){3}"
        "([0-9]|[1-9][0-9]|1[0-9][0-9]|2[0-4][0-9]|25[0-5]))\\))$");
    StrTrimLeft(value);
    return boost::regex_match(value, kColour) ? ERR_NONE : ERR_IGNORE;
}

int CAttrHandler::t_ValidateLineHeight(std::string& value)
{
    StrToLower(value);
    return value == "normal" || IsPercentage(value) ? ERR_NONE : ERR_IGNORE;
}

int CAttrHandler::t_ValidateFontSize(std::string& value)
{
    return IsPercentage(value) ? ERR_NONE : ERR_IGNORE;
}

int CAttrHandler::t_ValidateLinePadding(std::string& value)
{
    StrToLower(value);
    if (!EndsWith(value, 'c') || value.find('-') != std::string::npos)
        return ERR_IGNORE;
    return IsRealNumber(value.substr(0, value.size() - 1)) ? ERR_NONE : ERR_IGNORE;
}

int CAttrHandler::t_ValidatePadding(std::string& value)
{
    return IsPercentageList(value, 1, 4) ? ERR_NONE : ERR_IGNORE;
}

int CAttrHandler::t_ValidateOriginExtent(std::string& value)
{
    // Pixel geometry cannot be placed on a screen of unknown size: refuse.
    StrTrimLeft(value);
    return IsPercentageList(value, 2, 2) ? ERR_NONE : ERR_INVALID;
}

int CAttrHandler::t_ValidateFontFamily(std::string& value)
{
    // Any named family is kept; the renderer falls back to its default font
    // for names it does not have.
    return value.empty() ? ERR_IGNORE : ERR_NONE;
}

bool CAttrHandler::t_SpaceSeparatedIntegersValidation(std::string& value)
{
    StrTrimLeft(value);
    if (value.empty())
        return false;
    const std::vector<std::string> parts = StrSplit(value, " ");
    if (parts.size() != 2)
        return false;
    return std::all_of(parts.begin(), parts.end(),
                       [](const std::string& p) { return std::strtol(p.c_str(), nullptr, 10) > 0; });
}

bool CAttrHandler::t_StoreTimeAsMS(std::string& value, TTMLAttr attr) const
{
    const CSubtitleInfo* pInfo = GetSubtitleInfo();
    const double frameRate = pInfo ? pInfo->GetEffectiveFrameRate() : 0.0;
    const int tickRate = pInfo ? pInfo->GetTickRate() : 0;
    // Without a colon it can only be an offset time: no clock split needed.
    unsigned long long ms = value.find(':') == std::string::npos
                                ? ConvertOffsetTimeToMS(value, frameRate, tickRate)
                                : ConvertTimeExpressionToMS(value, frameRate, tickRate);
    // The conversion saturates there; no double below 2^64 converts to the
    // largest value, so it can only mean a time past the range.
    if (ms == std::numeric_limits<unsigned long long>::max()) {
        TTML_WARN("Time out of range in %s: %s", kTTMLAttrKeys[attr], value.c_str());
        return false;
    }
    if (attr == ATTR_BEGIN && pInfo)
        pInfo->ApplySubtitleSegmentBoundaries(ms);

    char buf[24];
    const std::to_chars_result done = std::to_chars(buf, buf + sizeof(buf), ms);
    value.assign(buf, done.ptr);
    return true;
}

}  // namespace TTML
