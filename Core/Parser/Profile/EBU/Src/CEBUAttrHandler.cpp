#include "CEBUAttrHandler.h"

#include "TTMLLog.h"
#include "Util.h"

namespace TTML {

namespace {

constexpr const char* kFontStyles[] = {"normal", "italic"};

}  // namespace

CEBUAttrHandler::CEBUAttrHandler()
{
    using H = CEBUAttrHandler;
    // One row per attribute the profile names; the IMSC-only names (altText,
    // aspectRatio, progressivelyDecodable, backgroundImage, forcedDisplay,
    // timeContainer) have none and stay unknown here. A row without a check
    // keeps the name known but drops its value.
    static constexpr Row kRows[] = {
        // attribute                  default      check
        {ATTR_BEGIN,                  nullptr,     &H::m_ValidateBegin},
        {ATTR_DUR},
        {ATTR_END,                    nullptr,     &H::m_ValidateEnd},
        {ATTR_LINEPADDING,            "0c",        &t_ValidateLinePadding},
        {ATTR_MULTIROWALIGN,          "auto",      &t_ValidateMultiRowAlign},
        {ATTR_REGION,                 nullptr,     &t_ValidateRegion},
        {ATTR_STYLE,                  nullptr,     &t_ValidateStyle},
        {ATTR_AGENT,                  nullptr,     &t_ValidateAgent},
        {ATTR_CONFORMSTOSTANDARD,     nullptr,     &t_ValidateConformsToStandard},
        {ATTR_FRAMERATE,              nullptr,     &t_ValidateFrameRate},
        {ATTR_FRAMERATEMULTIPLIER,    nullptr,     &t_SpaceSeparatedIntegersValidation},
        {ATTR_ROLE,                   nullptr,     &t_ValidateRole},
        {ATTR_CELLRESOLUTION,         nullptr,     &t_SpaceSeparatedIntegersValidation},
        {ATTR_CLOCKMODE},
        {ATTR_DROPMODE},
        {ATTR_MARKERMODE},
        {ATTR_PIXELASPECTRATIO},
        {ATTR_PROFILE},
        {ATTR_SUBFRAMERATE},
        {ATTR_TICKRATE},
        {ATTR_TIMEBASE,               nullptr,     &t_ValidateTimeBase},
        {ATTR_BACKGROUNDCOLOR,        "#00000000", &t_ValidateColorFormat},
        {ATTR_DIRECTION,              nullptr,     &t_ValidateDirection},
        {ATTR_DISPLAY},
        {ATTR_DISPLAYALIGN,           "before",    &t_ValidateDisplayAlign},
        {ATTR_EXTENT,                 nullptr,     &t_ValidateOriginExtent},
        {ATTR_COLOR,                  nullptr,     &t_ValidateColorFormat},
        {ATTR_FONTFAMILY,             "default",   &H::m_ValidateFontFamily},
        {ATTR_FONTSIZE,               "100%",      &t_ValidateFontSize},
        {ATTR_FONTSTYLE,              "normal",    &t_OneOf<kFontStyles>},
        {ATTR_FONTWEIGHT,             "normal",    &t_ValidateFontWeight},
        {ATTR_LINEHEIGHT,             "normal",    &t_ValidateLineHeight},
        {ATTR_OPACITY},
        {ATTR_ORIGIN,                 nullptr,     &t_ValidateOriginExtent},
        {ATTR_OVERFLOW,               "hidden",    &t_ValidateOverflow},
        {ATTR_PADDING,                nullptr,     &t_ValidatePadding},
        {ATTR_PARABACKGROUNDCOLOR,    "#00000000"},
        {ATTR_REGIONBACKGROUNDCOLOR,  "#00000000", &t_ValidateColorFormat},
        {ATTR_SHOWBACKGROUND,         "always",    &t_ValidateShowBackground},
        {ATTR_TEXTALIGN,              "start",     &t_ValidateTextAlign},
        {ATTR_TEXTDECORATION,         "none",      &m_ValidateTextDecoration},
        {ATTR_TEXTOUTLINE},
        {ATTR_UNICODEBIDI,            "normal",    &t_ValidateUnicodeBidi},
        {ATTR_VISIBILITY},
        {ATTR_WRAPOPTION,             "wrap",      &t_ValidateWrapOption},
        {ATTR_WRITINGMODE,            "lrtb",      &t_ValidateWritingMode},
        {ATTR_ZINDEX},
        {ATTR_ID,                     nullptr,     &t_ValidateId},
        {ATTR_LANG,                   nullptr,     &t_ValidateLang},
        {ATTR_SPACE,                  nullptr,     &t_ValidateXmlSpace},
        {ATTR_FILLLINEGAP},
    };
    static_assert(Row::InAttrOrder(kRows), "EBU-TT-D rows must stand in attribute number order");
    t_LoadRows(kRows, m_checks);
}

CEBUAttrHandler::~CEBUAttrHandler() = default;

int CEBUAttrHandler::ValidateAttribute(TTMLAttr attr, std::string& value)
{
    // -1 is a name the profile does not know.
    if (attr < 0 || attr >= TTML_ATTR_COUNT)
        return ERR_NOT_SUPPORTED;
    return m_checks[attr].Run(*this, value);
}

int CEBUAttrHandler::m_ConvertClockTime(std::string& value, TTMLAttr attr)
{
    if (t_ValidateClockTimeFormat(value) != ERR_NONE)
        return ERR_IGNORE;
    return t_StoreTimeAsMS(value, attr) ? ERR_NONE : ERR_INVALID;
}

int CEBUAttrHandler::m_ValidateBegin(std::string& value)
{
    return m_ConvertClockTime(value, ATTR_BEGIN);
}

int CEBUAttrHandler::m_ValidateEnd(std::string& value)
{
    return m_ConvertClockTime(value, ATTR_END);
}

int CEBUAttrHandler::m_ValidateFontFamily(std::string& value)
{
    const std::list<std::string> failed = t_GetDownloadableFontsInfo();
    if (!failed.empty()) {
        // A document naming a font that could not be fetched would render
        // with the wrong metrics; refuse it instead.
        const std::string first = StrSplit(value, ",").front();
        for (const std::string& name : failed) {
            if (first == name)
                return ERR_INVALID;
        }
    }
    return t_ValidateFontFamily(value);
}

int CEBUAttrHandler::m_ValidateTextDecoration(std::string& value)
{
    StrToLower(value);
    if (value == "none")
        return ERR_NONE;
    if (value == "underline") {
        value = "2";  // the renderer's underline flag
        return ERR_NONE;
    }
    return ERR_IGNORE;
}

}  // namespace TTML
