#include "CIMSCAttrHandler.h"

#include "TTMLLog.h"
#include "TTMLTypes.h"
#include "Util.h"

#include <boost/regex.hpp>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <vector>

namespace TTML {

namespace {

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Digits, an optional fraction and one of the units h, m, ms, s, f, t: a
// subset of what the offset-time pattern accepts, read without the matcher.
bool IsPlainOffsetTime(const std::string& value)
{
    const size_t n = value.size();
    size_t i = 0;
    while (i < n && IsDigit(value[i]))
        ++i;
    if (i == 0 || i == n)
        return false;
    if (value[i] == '.') {
        const size_t fraction = ++i;
        while (i < n && IsDigit(value[i]))
            ++i;
        if (i == fraction || i == n)
            return false;
    }
    const size_t rest = n - i;
    const char unit = value[i];
    if (rest == 1)
        return unit == 'h' || unit == 'm' || unit == 's' || unit == 'f' || unit == 't';
    return rest == 2 && unit == 'm' && value[i + 1] == 's';
}

template <size_t N>
int LowerKeyword(std::string& value, const char* const (&words)[N])
{
    StrToLower(value);
    return std::any_of(std::begin(words), std::end(words), [&value](const char* w) { return value == w; })
               ? ERR_NONE
               : ERR_IGNORE;
}

// strtod's leading number; false when the text does not start with one.
bool LeadingNumber(const std::string& value, double& out)
{
    const char* begin = value.c_str();
    char* stop = nullptr;
    out = std::strtod(begin, &stop);
    return stop != begin;
}

// Blank-separated items with empty pieces (repeated blanks) left out.
std::vector<std::string> Items(const std::string& value)
{
    std::vector<std::string> items = StrSplit(value, " ");
    items.erase(std::remove(items.begin(), items.end(), std::string()), items.end());
    return items;
}

}  // namespace

CIMSCAttrHandler::CIMSCAttrHandler()
{
    m_StoreAttrTypes();
    m_StoreDefaultAttrValues();
    m_StoreValidationFuncPtr();
    m_StoreInheritableProperty();
    m_StoreAppliesToValues();
}

CIMSCAttrHandler::~CIMSCAttrHandler() = default;

void CIMSCAttrHandler::m_StoreAttrTypes()
{
    // Every keyed attribute; t_NameAttribute skips the keyless text entry.
    for (int attr = 0; attr < TTML_ATTR_COUNT; ++attr)
        t_NameAttribute(attr);
}

void CIMSCAttrHandler::m_StoreDefaultAttrValues()
{
    static const struct {
        int attr;
        const char* value;
    } kDefaults[] = {
        {ATTR_BACKGROUNDCOLOR, "#00000000"},
        {ATTR_REGIONBACKGROUNDCOLOR, "#00000000"},
        {ATTR_PARABACKGROUNDCOLOR, "#00000000"},
        {ATTR_COLOR, "#ffffffff"},
        {ATTR_FONTSIZE, "1c"},
        {ATTR_FONTFAMILY, "monospaceserif"},
        {ATTR_OVERFLOW, "hidden"},
        {ATTR_VISIBILITY, "visible"},
        {ATTR_OPACITY, "1.0"},
        {ATTR_DISPLAY, "auto"},
        {ATTR_EXTENT, "auto"},
        {ATTR_ORIGIN, "auto"},
        {ATTR_SHOWBACKGROUND, "always"},
        {ATTR_TIMECONTAINER, "par"},
        {ATTR_UNICODEBIDI, "normal"},
        {ATTR_WRITINGMODE, "lrtb"},
        {ATTR_ZINDEX, "auto"},
        {ATTR_DIRECTION, "ltr"},
        {ATTR_DISPLAYALIGN, "before"},
        {ATTR_FONTSTYLE, "normal"},
        {ATTR_FONTWEIGHT, "normal"},
        {ATTR_LINEHEIGHT, "normal"},
        {ATTR_PADDING, "0px"},
        {ATTR_MULTIROWALIGN, "auto"},
        {ATTR_TEXTALIGN, "start"},
        {ATTR_TEXTDECORATION, "none"},
        {ATTR_TEXTOUTLINE, "none"},
        {ATTR_WRAPOPTION, "wrap"},
        {ATTR_LINEPADDING, "0c"},
        {ATTR_REGION, "anonymous"},
        {ATTR_FORCEDDISPLAY, "false"},
    };
    for (const auto& d : kDefaults)
        t_SetDefaultAttrValue(d.attr, d.value);
}

void CIMSCAttrHandler::m_StoreValidationFuncPtr()
{
    static const struct {
        int attr;
        Validator fn;
    } kValidators[] = {
        {ATTR_BEGIN, &CIMSCAttrHandler::m_ValidateBegin},
        {ATTR_DUR, &CIMSCAttrHandler::m_ValidateDur},
        {ATTR_END, &CIMSCAttrHandler::m_ValidateEnd},
        {ATTR_LINEPADDING, &CIMSCAttrHandler::m_ValidateLinePadding},
        {ATTR_MULTIROWALIGN, &CIMSCAttrHandler::m_ValidateMultiRowAlign},
        {ATTR_REGION, &CIMSCAttrHandler::m_ValidateRegion},
        {ATTR_STYLE, &CIMSCAttrHandler::m_ValidateStyle},
        {ATTR_AGENT, &CIMSCAttrHandler::m_ValidateAgent},
        {ATTR_CONFORMSTOSTANDARD, &CIMSCAttrHandler::m_ValidateConformsToStandard},
        {ATTR_FRAMERATE, &CIMSCAttrHandler::m_ValidateFrameRate},
        {ATTR_FRAMERATEMULTIPLIER, &CIMSCAttrHandler::m_ValidateFrameRateMultiplier},
        {ATTR_ROLE, &CIMSCAttrHandler::m_ValidateRole},
        {ATTR_CELLRESOLUTION, &CIMSCAttrHandler::m_ValidateCellResolution},
        {ATTR_SUBFRAMERATE, &CIMSCAttrHandler::m_ValidateSubFrameRate},
        {ATTR_TICKRATE, &CIMSCAttrHandler::m_ValidateTickRate},
        {ATTR_TIMEBASE, &CIMSCAttrHandler::m_ValidateTimeBase},
        {ATTR_BACKGROUNDCOLOR, &CIMSCAttrHandler::m_ValidateColorFormat},
        {ATTR_COLOR, &CIMSCAttrHandler::m_ValidateColorFormat},
        {ATTR_REGIONBACKGROUNDCOLOR, &CIMSCAttrHandler::m_ValidateColorFormat},
        {ATTR_DIRECTION, &CIMSCAttrHandler::m_ValidateDirection},
        {ATTR_DISPLAY, &CIMSCAttrHandler::m_ValidateDisplay},
        {ATTR_DISPLAYALIGN, &CIMSCAttrHandler::m_ValidateDisplayAlign},
        {ATTR_EXTENT, &CIMSCAttrHandler::m_ValidateExtent},
        {ATTR_FONTFAMILY, &CIMSCAttrHandler::m_ValidateFontFamily},
        {ATTR_FONTSIZE, &CIMSCAttrHandler::m_ValidateFontSize},
        {ATTR_FONTSTYLE, &CIMSCAttrHandler::m_ValidateFontStyle},
        {ATTR_FONTWEIGHT, &CIMSCAttrHandler::m_ValidateFontWeight},
        {ATTR_LINEHEIGHT, &CIMSCAttrHandler::m_ValidateLineHeight},
        {ATTR_OPACITY, &CIMSCAttrHandler::m_ValidateOpacity},
        {ATTR_ORIGIN, &CIMSCAttrHandler::m_ValidateOrigin},
        {ATTR_OVERFLOW, &CIMSCAttrHandler::m_ValidateOverflow},
        {ATTR_PADDING, &CIMSCAttrHandler::m_ValidatePadding},
        {ATTR_SHOWBACKGROUND, &CIMSCAttrHandler::m_ValidateShowBackground},
        {ATTR_TEXTALIGN, &CIMSCAttrHandler::m_ValidateTextAlign},
        {ATTR_TEXTDECORATION, &CIMSCAttrHandler::m_ValidateTextDecoration},
        {ATTR_TEXTOUTLINE, &CIMSCAttrHandler::m_ValidateTextOutline},
        {ATTR_UNICODEBIDI, &CIMSCAttrHandler::m_ValidateUnicodeBidi},
        {ATTR_VISIBILITY, &CIMSCAttrHandler::m_ValidateVisibility},
        {ATTR_WRAPOPTION, &CIMSCAttrHandler::m_ValidateWrapOption},
        {ATTR_WRITINGMODE, &CIMSCAttrHandler::m_ValidateWritingMode},
        {ATTR_ZINDEX, &CIMSCAttrHandler::m_ValidateZIndex},
        {ATTR_ID, &CIMSCAttrHandler::m_ValidateId},
        {ATTR_LANG, &CIMSCAttrHandler::m_ValidateLang},
        {ATTR_SPACE, &CIMSCAttrHandler::m_ValidateXmlSpace},
        {ATTR_ALTTEXT, &CIMSCAttrHandler::m_ValidateAltText},
        {ATTR_ASPECTRATIO, &CIMSCAttrHandler::m_ValidateAspectRatio},
        {ATTR_PROGRESSIVELYDECODABLE, &CIMSCAttrHandler::m_ValidateProgressivelyDecodable},
        {ATTR_BACKGROUNDIMAGE, &CIMSCAttrHandler::m_ValidateSMPTEBackgroundImage},
        {ATTR_FORCEDDISPLAY, &CIMSCAttrHandler::m_ValidateForcedDisplay},
        {ATTR_TIMECONTAINER, &CIMSCAttrHandler::m_ValidateTimeContainer},
    };
    for (const auto& v : kValidators)
        m_validators.emplace(v.attr, v.fn);
}

void CIMSCAttrHandler::m_StoreInheritableProperty()
{
    static const int kNotInherited[] = {
        ATTR_BACKGROUNDCOLOR, ATTR_DISPLAYALIGN,    ATTR_EXTENT,      ATTR_OPACITY,
        ATTR_ORIGIN,          ATTR_OVERFLOW,        ATTR_PADDING,     ATTR_SHOWBACKGROUND,
        ATTR_UNICODEBIDI,     ATTR_WRITINGMODE,     ATTR_ZINDEX,
    };
    for (int attr : kNotInherited)
        t_SetInheritable(attr, false);
}

void CIMSCAttrHandler::m_StoreAppliesToValues()
{
    struct Row {
        std::vector<int> attrs;
        std::vector<int> elems;  // empty: every element type
    };
    static const Row kRows[] = {
        {{ATTR_BEGIN, ATTR_DUR, ATTR_END}, {ELEM_BODY, ELEM_DIV, ELEM_P, ELEM_REGION, ELEM_SPAN, ELEM_SET}},
        {{ATTR_TIMECONTAINER}, {ELEM_BODY, ELEM_DIV, ELEM_P, ELEM_REGION, ELEM_SPAN}},
        {{ATTR_LINEPADDING, ATTR_MULTIROWALIGN}, {ELEM_P, ELEM_STYLE}},
        {{ATTR_REGION}, {ELEM_BODY, ELEM_DIV, ELEM_P, ELEM_SPAN}},
        {{ATTR_STYLE}, {ELEM_BODY, ELEM_DIV, ELEM_P, ELEM_REGION, ELEM_SPAN, ELEM_STYLE}},
        {{ATTR_TEXT}, {ELEM_P, ELEM_SPAN}},
        {{ATTR_FRAMERATE, ATTR_FRAMERATEMULTIPLIER, ATTR_CELLRESOLUTION, ATTR_TICKRATE, ATTR_TIMEBASE}, {ELEM_TT}},
        {{ATTR_BACKGROUNDCOLOR, ATTR_DISPLAY, ATTR_VISIBILITY},
         {ELEM_BODY, ELEM_DIV, ELEM_P, ELEM_REGION, ELEM_SPAN, ELEM_STYLE, ELEM_SET}},
        {{ATTR_DIRECTION, ATTR_UNICODEBIDI}, {ELEM_P, ELEM_SPAN, ELEM_STYLE, ELEM_SET}},
        {{ATTR_DISPLAYALIGN, ATTR_OPACITY, ATTR_ORIGIN, ATTR_OVERFLOW, ATTR_PADDING, ATTR_SHOWBACKGROUND,
          ATTR_WRITINGMODE, ATTR_ZINDEX},
         {ELEM_REGION, ELEM_STYLE, ELEM_SET}},
        {{ATTR_EXTENT}, {ELEM_REGION, ELEM_STYLE, ELEM_TT, ELEM_SET}},
        {{ATTR_COLOR, ATTR_FONTFAMILY, ATTR_FONTSIZE, ATTR_FONTSTYLE, ATTR_FONTWEIGHT, ATTR_TEXTDECORATION,
          ATTR_TEXTOUTLINE, ATTR_WRAPOPTION},
         {ELEM_SPAN, ELEM_STYLE, ELEM_SET}},
        {{ATTR_LINEHEIGHT, ATTR_TEXTALIGN}, {ELEM_P, ELEM_STYLE, ELEM_SET}},
        {{ATTR_ID, ATTR_LANG, ATTR_SPACE}, {}},
        {{ATTR_BACKGROUNDIMAGE}, {ELEM_DIV}},
    };
    for (const Row& row : kRows) {
        for (int attr : row.attrs) {
            if (row.elems.empty()) {
                for (int elem = 0; elem < TTML_ELEM_COUNT; ++elem)
                    t_SetAppliesTo(attr, elem, true);
            }
            for (int elem : row.elems)
                t_SetAppliesTo(attr, elem, true);
        }
    }
}

int CIMSCAttrHandler::ValidateAttribute(TTMLAttr attr, std::string& value)
{
    auto it = m_validators.find(attr);
    if (it == m_validators.end())
        return ERR_NOT_SUPPORTED;
    return (this->*(it->second))(value);
}

// ---- Helpers ------------------------------------------------------------------

bool CIMSCAttrHandler::m_ValidateTimeExpression(std::string& value)
{
    static const boost::regex kOffsetTime("(\\d+)(\\.\\d+)?(h|m[s]?|s|f|t)");
    StrToLower(value);
    // Most begins and ends are plain offsets (12.5s, 840ms); those are
    // accepted without the matcher, which sees everything else.
    return IsPlainOffsetTime(value) || boost::regex_match(value, kOffsetTime) ||
           t_ValidateClockTimeFormat(value) == ERR_NONE;
}

bool CIMSCAttrHandler::m_ValidateLengthExpression(const std::string& value, std::string* unit) const
{
    static const boost::regex kLength("(([+])?\\d+(\\.\\d+)?)(px|em|c|%)");
    boost::smatch match;
    if (!boost::regex_match(value, match, kLength))
        return false;
    if (unit)
        *unit = match[4].str();
    return true;
}

bool CIMSCAttrHandler::m_IsColor(std::string& item)
{
    std::string candidate = item;
    if (m_ValidateColorFormat(candidate) != ERR_NONE)
        return false;
    item = candidate;
    return true;
}

int CIMSCAttrHandler::m_ConvertTime(std::string& value, TTMLAttr attr)
{
    if (!m_ValidateTimeExpression(value))
        return ERR_IGNORE;
    return t_StoreTimeAsMS(value, attr) ? ERR_NONE : ERR_INVALID;
}

// ---- Validators -----------------------------------------------------------------

int CIMSCAttrHandler::m_ValidateBegin(std::string& value)
{
    return m_ConvertTime(value, ATTR_BEGIN);
}

int CIMSCAttrHandler::m_ValidateDur(std::string& value)
{
    return m_ConvertTime(value, ATTR_DUR);
}

int CIMSCAttrHandler::m_ValidateEnd(std::string& value)
{
    return m_ConvertTime(value, ATTR_END);
}

int CIMSCAttrHandler::m_ValidateLinePadding(std::string& value)
{
    return t_ValidateLinePadding(value);
}

int CIMSCAttrHandler::m_ValidateMultiRowAlign(std::string& value)
{
    return t_ValidateMultiRowAlign(value);
}

int CIMSCAttrHandler::m_ValidateRegion(std::string& /*value*/)
{
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateStyle(std::string& value)
{
    return t_ValidateStyle(value);
}

int CIMSCAttrHandler::m_ValidateAgent(std::string& value)
{
    return t_ValidateAgent(value);
}

int CIMSCAttrHandler::m_ValidateConformsToStandard(std::string& /*value*/)
{
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateFrameRate(std::string& value)
{
    if (t_ValidateFrameRate(value) == ERR_NONE && value.find_first_not_of('0') != std::string::npos)
        return ERR_NONE;
    TTML_WARN("ttp:frameRate must be a whole number above 0: %s; ignored", value.c_str());
    return ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateFrameRateMultiplier(std::string& value)
{
    return t_SpaceSeparatedIntegersValidation(value) ? ERR_NONE : ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateRole(std::string& value)
{
    return t_ValidateRole(value);
}

int CIMSCAttrHandler::m_ValidateCellResolution(std::string& value)
{
    return t_SpaceSeparatedIntegersValidation(value) ? ERR_NONE : ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateSubFrameRate(std::string& value)
{
    double rate = 0.0;
    return LeadingNumber(value, rate) && rate > 0.0 ? ERR_NONE : ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateTickRate(std::string& value)
{
    // The document keeps the whole number the value begins with, as an int;
    // a fraction below 1 would become a rate of 0, a huge value garbage.
    const long long whole = std::strtoll(value.c_str(), nullptr, 10);
    if (m_ValidateSubFrameRate(value) == ERR_NONE && whole >= 1 && whole <= INT_MAX)
        return ERR_NONE;
    TTML_WARN("ttp:tickRate out of range (1 to %d ticks a second): %s; ignored", INT_MAX, value.c_str());
    return ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateTimeBase(std::string& value)
{
    static const char* const kWords[] = {"media", "smpte", "clock"};
    return LowerKeyword(value, kWords);
}

int CIMSCAttrHandler::m_ValidateColorFormat(std::string& value)
{
    StrTrimLeft(value);
    if (ConvertColorNameToColorCode(value))
        return ERR_NONE;
    return t_ValidateColorFormat(value);
}

int CIMSCAttrHandler::m_ValidateDirection(std::string& value)
{
    return t_ValidateDirection(value);
}

int CIMSCAttrHandler::m_ValidateDisplay(std::string& value)
{
    static const char* const kWords[] = {"none", "auto"};
    return LowerKeyword(value, kWords);
}

int CIMSCAttrHandler::m_ValidateDisplayAlign(std::string& value)
{
    return t_ValidateDisplayAlign(value);
}

int CIMSCAttrHandler::m_ValidateExtent(std::string& value)
{
    StrToLower(value);
    if (value == "auto")
        return ERR_NONE;
    const std::vector<std::string> items = StrSplit(value, " ");
    std::string units[2];
    if (items.size() != 2 || !m_ValidateLengthExpression(items[0], &units[0]) ||
        !m_ValidateLengthExpression(items[1], &units[1])) {
        TTML_WARN("Invalid format");
        return ERR_IGNORE;
    }
    // Images are authored for a pixel raster; a relative size cannot be
    // honoured without scaling them.
    const bool imageProfile = GetProfile() == TTML_PROFILE_IMSC1_IMAGE;
    for (const std::string& unit : units) {
        if (unit != "px" && (imageProfile || unit != "%"))
            return ERR_IGNORE;
    }
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateFontFamily(std::string& value)
{
    if (value == "default") {
        value = "monospaceserif";
        return ERR_NONE;
    }
    return t_ValidateFontFamily(value);
}

int CIMSCAttrHandler::m_ValidateFontSize(std::string& value)
{
    if (value.empty())
        return ERR_NONE;
    StrToLower(value);
    for (const std::string& item : StrSplit(value, " ")) {
        if (!m_ValidateLengthExpression(item))
            return ERR_IGNORE;
    }
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateFontStyle(std::string& value)
{
    static const char* const kWords[] = {"normal", "italic", "oblique"};
    return LowerKeyword(value, kWords);
}

int CIMSCAttrHandler::m_ValidateFontWeight(std::string& value)
{
    return t_ValidateFontWeight(value);
}

int CIMSCAttrHandler::m_ValidateLineHeight(std::string& value)
{
    StrToLower(value);
    return value == "normal" || m_ValidateLengthExpression(value) ? ERR_NONE : ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateOpacity(std::string& value)
{
    // A value that does not start with a number is refused rather than read
    // as 0 (fully transparent).
    double opacity = 0.0;
    if (!LeadingNumber(value, opacity))
        return ERR_IGNORE;
    return opacity >= 0.0 && opacity <= 1.0 ? ERR_NONE : ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateOrigin(std::string& value)
{
    StrToLower(value);
    if (value == "auto")
        return ERR_NONE;
    const std::vector<std::string> items = StrSplit(value, " ");
    if (items.size() != 2)
        return ERR_IGNORE;
    for (const std::string& item : items) {
        std::string unit;
        if (!m_ValidateLengthExpression(item, &unit)) {
            TTML_WARN("Seems like invalid format of value=%s; ignoring!", value.c_str());
            return ERR_IGNORE;
        }
        if (unit != "px" && unit != "%")
            return ERR_IGNORE;
    }
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateOverflow(std::string& value)
{
    return t_ValidateOverflow(value);
}

int CIMSCAttrHandler::m_ValidatePadding(std::string& value)
{
    if (value.empty())
        return ERR_IGNORE;
    const std::vector<std::string> items = StrSplit(value, " ");
    if (items.size() > 4)
        return ERR_IGNORE;
    for (const std::string& item : items) {
        if (!m_ValidateLengthExpression(item))
            return ERR_IGNORE;
    }
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateShowBackground(std::string& value)
{
    return t_ValidateShowBackground(value);
}

int CIMSCAttrHandler::m_ValidateTextAlign(std::string& value)
{
    return t_ValidateTextAlign(value);
}

int CIMSCAttrHandler::m_ValidateTextDecoration(std::string& value)
{
    static const struct {
        const char* word;
        int flag;
    } kFlags[] = {
        {"underline", 2},     {"nounderline", 4}, {"linethrough", 8},
        {"nolinethrough", 16}, {"overline", 32},   {"nooverline", 64},
    };
    StrToLower(value);
    if (value == "none")
        return ERR_NONE;
    int flags = 0;
    for (const std::string& item : StrSplit(value, " ")) {
        for (const auto& f : kFlags) {
            if (item == f.word)
                flags |= f.flag;
        }
    }
    const bool contradicts = ((flags & 2) && (flags & 4)) || ((flags & 8) && (flags & 16)) ||
                             ((flags & 32) && (flags & 64));
    if (contradicts)
        return ERR_IGNORE;
    value = std::to_string(flags);
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateTextOutline(std::string& value)
{
    StrToLower(value);
    std::vector<std::string> items = Items(value);
    bool ok = false;
    switch (items.size()) {
    case 1:
        ok = items[0] == "none" || m_ValidateLengthExpression(items[0]);
        break;
    case 2:
        ok = m_ValidateLengthExpression(items[1]) &&
             (m_ValidateLengthExpression(items[0]) || m_IsColor(items[0]));
        break;
    case 3:
        ok = m_IsColor(items[0]) && m_ValidateLengthExpression(items[1]) && m_ValidateLengthExpression(items[2]);
        break;
    default:
        break;
    }
    if (!ok)
        return ERR_IGNORE;
    std::string rebuilt;
    for (const std::string& item : items) {
        if (!rebuilt.empty())
            rebuilt += ' ';
        rebuilt += item;
    }
    value = rebuilt;
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateUnicodeBidi(std::string& value)
{
    return t_ValidateUnicodeBidi(value);
}

int CIMSCAttrHandler::m_ValidateVisibility(std::string& value)
{
    static const char* const kWords[] = {"hidden", "visible"};
    return LowerKeyword(value, kWords);
}

int CIMSCAttrHandler::m_ValidateWrapOption(std::string& value)
{
    return t_ValidateWrapOption(value);
}

int CIMSCAttrHandler::m_ValidateWritingMode(std::string& value)
{
    if (GetProfile() == TTML_PROFILE_IMSC1_IMAGE) {
        // Subtitle images are laid out horizontally only.
        static const char* const kWords[] = {"lrtb", "rltb", "lr", "rl"};
        return LowerKeyword(value, kWords);
    }
    return t_ValidateWritingMode(value);
}

int CIMSCAttrHandler::m_ValidateZIndex(std::string& value)
{
    StrToLower(value);
    if (value == "auto")
        return ERR_NONE;
    // IsDigits accepts the empty text; an empty z-index says nothing.
    return !value.empty() && IsDigits(value) ? ERR_NONE : ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateId(std::string& value)
{
    return t_ValidateId(value);
}

int CIMSCAttrHandler::m_ValidateLang(std::string& value)
{
    return t_ValidateLang(value);
}

int CIMSCAttrHandler::m_ValidateXmlSpace(std::string& value)
{
    return t_ValidateXmlSpace(value);
}

int CIMSCAttrHandler::m_ValidateAltText(std::string& /*value*/)
{
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateAspectRatio(std::string& value)
{
    return t_SpaceSeparatedIntegersValidation(value) ? ERR_NONE : ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateProgressivelyDecodable(std::string& value)
{
    return t_ValidateBooleanValues(value) ? ERR_NONE : ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateSMPTEBackgroundImage(std::string& value)
{
    const std::vector<std::string> parts = StrSplit(value, ":");
    if (parts.front() == "urn")
        value = parts.back();
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateForcedDisplay(std::string& value)
{
    return t_ValidateBooleanValues(value) ? ERR_NONE : ERR_IGNORE;
}

int CIMSCAttrHandler::m_ValidateTimeContainer(std::string& value)
{
    static const char* const kWords[] = {"par", "seq"};
    return LowerKeyword(value, kWords);
}

}  // namespace TTML
