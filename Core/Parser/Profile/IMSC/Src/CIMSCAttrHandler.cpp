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

// The offset-time form: digits, an optional fraction and one of the units
// h, m, ms, s, f, t. Read by hand: every begin and end comes through here.
bool IsOffsetTime(const std::string& value)
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

// Applies-to columns.
constexpr TTMLElemSet kNowhere = 0;
constexpr TTMLElemSet kRoot = ElemSet({ELEM_TT});
constexpr TTMLElemSet kDiv = ElemSet({ELEM_DIV});
constexpr TTMLElemSet kPSpan = ElemSet({ELEM_P, ELEM_SPAN});
constexpr TTMLElemSet kPStyle = ElemSet({ELEM_P, ELEM_STYLE});
constexpr TTMLElemSet kPStyleSet = ElemSet({ELEM_P, ELEM_STYLE, ELEM_SET});
constexpr TTMLElemSet kSpanStyleSet = ElemSet({ELEM_SPAN, ELEM_STYLE, ELEM_SET});
constexpr TTMLElemSet kPSpanStyleSet = ElemSet({ELEM_P, ELEM_SPAN, ELEM_STYLE, ELEM_SET});
constexpr TTMLElemSet kRegionStyleSet = ElemSet({ELEM_REGION, ELEM_STYLE, ELEM_SET});
constexpr TTMLElemSet kExtentHolders = ElemSet({ELEM_REGION, ELEM_STYLE, ELEM_TT, ELEM_SET});
constexpr TTMLElemSet kRegionRefs = ElemSet({ELEM_BODY, ELEM_DIV, ELEM_P, ELEM_SPAN});
constexpr TTMLElemSet kContainers = ElemSet({ELEM_BODY, ELEM_DIV, ELEM_P, ELEM_REGION, ELEM_SPAN});
constexpr TTMLElemSet kTimed = kContainers | ElemSet({ELEM_SET});
constexpr TTMLElemSet kStyleRefs = kContainers | ElemSet({ELEM_STYLE});
constexpr TTMLElemSet kBoxes = kStyleRefs | ElemSet({ELEM_SET});

// Keyword checks.
constexpr const char* kTimeBases[] = {"media", "smpte", "clock"};
constexpr const char* kDisplays[] = {"none", "auto"};
constexpr const char* kFontStyles[] = {"normal", "italic", "oblique"};
constexpr const char* kVisibilities[] = {"hidden", "visible"};
constexpr const char* kTimeContainers[] = {"par", "seq"};
constexpr const char* kImageWritingModes[] = {"lrtb", "rltb", "lr", "rl"};

}  // namespace

CIMSCAttrHandler::CIMSCAttrHandler()
{
    using H = CIMSCAttrHandler;
    // Every attribute number has its row; the text slot has no key and so
    // is never named. A row without a check keeps the name known but drops
    // its value.
    static constexpr Row kRows[] = {
        // attribute                  default           check                                inherited, applies to
        {ATTR_BEGIN,                  nullptr,          &H::m_ValidateBegin,                 true,  kTimed},
        {ATTR_DUR,                    nullptr,          &H::m_ValidateDur,                   true,  kTimed},
        {ATTR_END,                    nullptr,          &H::m_ValidateEnd,                   true,  kTimed},
        {ATTR_LINEPADDING,            "0c",             &t_ValidateLinePadding,              true,  kPStyle},
        {ATTR_MULTIROWALIGN,          "auto",           &t_ValidateMultiRowAlign,            true,  kPStyle},
        {ATTR_REGION,                 "anonymous",      &t_ValidateRegion,                   true,  kRegionRefs},
        {ATTR_STYLE,                  nullptr,          &t_ValidateStyle,                    true,  kStyleRefs},
        {ATTR_TEXT,                   nullptr,          {},                                  true,  kPSpan},
        {ATTR_AGENT,                  nullptr,          &t_ValidateAgent,                    true,  kNowhere},
        {ATTR_CONFORMSTOSTANDARD,     nullptr,          &t_ValidateConformsToStandard,       true,  kNowhere},
        {ATTR_FRAMERATE,              nullptr,          &m_ValidateFrameRate,                true,  kRoot},
        {ATTR_FRAMERATEMULTIPLIER,    nullptr,          &t_SpaceSeparatedIntegersValidation, true,  kRoot},
        {ATTR_ROLE,                   nullptr,          &t_ValidateRole,                     true,  kNowhere},
        {ATTR_CELLRESOLUTION,         nullptr,          &t_SpaceSeparatedIntegersValidation, true,  kRoot},
        {ATTR_CLOCKMODE,              nullptr,          {},                                  true,  kNowhere},
        {ATTR_DROPMODE,               nullptr,          {},                                  true,  kNowhere},
        {ATTR_MARKERMODE,             nullptr,          {},                                  true,  kNowhere},
        {ATTR_PIXELASPECTRATIO,       nullptr,          {},                                  true,  kNowhere},
        {ATTR_PROFILE,                nullptr,          {},                                  true,  kNowhere},
        {ATTR_SUBFRAMERATE,           nullptr,          &m_ValidateSubFrameRate,             true,  kNowhere},
        {ATTR_TICKRATE,               nullptr,          &m_ValidateTickRate,                 true,  kRoot},
        {ATTR_TIMEBASE,               nullptr,          &t_OneOf<kTimeBases>,                true,  kRoot},
        {ATTR_BACKGROUNDCOLOR,        "#00000000",      &m_ValidateColorFormat,              false, kBoxes},
        {ATTR_DIRECTION,              "ltr",            &t_ValidateDirection,                true,  kPSpanStyleSet},
        {ATTR_DISPLAY,                "auto",           &t_OneOf<kDisplays>,                 true,  kBoxes},
        {ATTR_DISPLAYALIGN,           "before",         &t_ValidateDisplayAlign,             false, kRegionStyleSet},
        {ATTR_EXTENT,                 "auto",           &H::m_ValidateExtent,                false, kExtentHolders},
        {ATTR_COLOR,                  "#ffffffff",      &m_ValidateColorFormat,              true,  kSpanStyleSet},
        {ATTR_FONTFAMILY,             "monospaceserif", &m_ValidateFontFamily,               true,  kSpanStyleSet},
        {ATTR_FONTSIZE,               "1c",             &m_ValidateFontSize,                 true,  kSpanStyleSet},
        {ATTR_FONTSTYLE,              "normal",         &t_OneOf<kFontStyles>,               true,  kSpanStyleSet},
        {ATTR_FONTWEIGHT,             "normal",         &t_ValidateFontWeight,               true,  kSpanStyleSet},
        {ATTR_LINEHEIGHT,             "normal",         &m_ValidateLineHeight,               true,  kPStyleSet},
        {ATTR_OPACITY,                "1.0",            &m_ValidateOpacity,                  false, kRegionStyleSet},
        {ATTR_ORIGIN,                 "auto",           &m_ValidateOrigin,                   false, kRegionStyleSet},
        {ATTR_OVERFLOW,               "hidden",         &t_ValidateOverflow,                 false, kRegionStyleSet},
        {ATTR_PADDING,                "0px",            &m_ValidatePadding,                  false, kRegionStyleSet},
        {ATTR_PARABACKGROUNDCOLOR,    "#00000000",      {},                                  true,  kNowhere},
        {ATTR_REGIONBACKGROUNDCOLOR,  "#00000000",      &m_ValidateColorFormat,              true,  kNowhere},
        {ATTR_SHOWBACKGROUND,         "always",         &t_ValidateShowBackground,           false, kRegionStyleSet},
        {ATTR_TEXTALIGN,              "start",          &t_ValidateTextAlign,                true,  kPStyleSet},
        {ATTR_TEXTDECORATION,         "none",           &m_ValidateTextDecoration,           true,  kSpanStyleSet},
        {ATTR_TEXTOUTLINE,            "none",           &m_ValidateTextOutline,              true,  kSpanStyleSet},
        {ATTR_UNICODEBIDI,            "normal",         &t_ValidateUnicodeBidi,              false, kPSpanStyleSet},
        {ATTR_VISIBILITY,             "visible",        &t_OneOf<kVisibilities>,             true,  kBoxes},
        {ATTR_WRAPOPTION,             "wrap",           &t_ValidateWrapOption,               true,  kSpanStyleSet},
        {ATTR_WRITINGMODE,            "lrtb",           &H::m_ValidateWritingMode,           false, kRegionStyleSet},
        {ATTR_ZINDEX,                 "auto",           &m_ValidateZIndex,                   false, kRegionStyleSet},
        {ATTR_ID,                     nullptr,          &t_ValidateId,                       true,  kAllElems},
        {ATTR_LANG,                   nullptr,          &t_ValidateLang,                     true,  kAllElems},
        {ATTR_SPACE,                  nullptr,          &t_ValidateXmlSpace,                 true,  kAllElems},
        {ATTR_ALTTEXT,                nullptr,          &m_ValidateAltText,                  true,  kNowhere},
        {ATTR_ASPECTRATIO,            nullptr,          &t_SpaceSeparatedIntegersValidation, true,  kNowhere},
        {ATTR_PROGRESSIVELYDECODABLE, nullptr,          &t_ValidateBooleanValues,            true,  kNowhere},
        {ATTR_BACKGROUNDIMAGE,        nullptr,          &m_ValidateSMPTEBackgroundImage,     true,  kDiv},
        {ATTR_FORCEDDISPLAY,          "false",          &t_ValidateBooleanValues,            true,  kNowhere},
        {ATTR_FILLLINEGAP,            nullptr,          {},                                  true,  kNowhere},
        {ATTR_TIMECONTAINER,          "par",            &t_OneOf<kTimeContainers>,           true,  kContainers},
    };
    static_assert(std::size(kRows) == TTML_ATTR_COUNT && Row::InAttrOrder(kRows),
                  "IMSC 1 rows must stand in attribute number order, one for each number");
    t_LoadRows(kRows, m_checks);
}

CIMSCAttrHandler::~CIMSCAttrHandler() = default;

int CIMSCAttrHandler::ValidateAttribute(TTMLAttr attr, std::string& value)
{
    // -1 is a name the profile does not know.
    if (attr < 0 || attr >= TTML_ATTR_COUNT)
        return ERR_NOT_SUPPORTED;
    return m_checks[attr].Run(*this, value);
}

// ---- Helpers ------------------------------------------------------------------

bool CIMSCAttrHandler::m_ValidateTimeExpression(std::string& value)
{
    StrToLower(value);
    return IsOffsetTime(value) || t_ValidateClockTimeFormat(value) == ERR_NONE;
}

bool CIMSCAttrHandler::m_ValidateLengthExpression(const std::string& value, std::string* unit)
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

// ---- Checks ---------------------------------------------------------------------

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

int CIMSCAttrHandler::m_ValidateFrameRate(std::string& value)
{
    if (t_ValidateFrameRate(value) == ERR_NONE && value.find_first_not_of('0') != std::string::npos)
        return ERR_NONE;
    TTML_WARN("ttp:frameRate must be a whole number above 0: %s; ignored", value.c_str());
    return ERR_IGNORE;
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

int CIMSCAttrHandler::m_ValidateColorFormat(std::string& value)
{
    StrTrimLeft(value);
    if (ConvertColorNameToColorCode(value))
        return ERR_NONE;
    return t_ValidateColorFormat(value);
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

int CIMSCAttrHandler::m_ValidateWritingMode(std::string& value)
{
    // Subtitle images are laid out horizontally only.
    if (GetProfile() == TTML_PROFILE_IMSC1_IMAGE)
        return t_OneOf<kImageWritingModes>(value);
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

int CIMSCAttrHandler::m_ValidateAltText(std::string& /*value*/)
{
    return ERR_NONE;
}

int CIMSCAttrHandler::m_ValidateSMPTEBackgroundImage(std::string& value)
{
    const std::vector<std::string> parts = StrSplit(value, ":");
    if (parts.front() == "urn")
        value = parts.back();
    return ERR_NONE;
}

}  // namespace TTML
