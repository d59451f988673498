#include "CEBUAttrHandler.h"

#include "TTMLLog.h"
#include "Util.h"


namespace TTML {

CEBUAttrHandler::CEBUAttrHandler()
{
    m_StoreAttrTypes();
    m_StoreDefaultAttrValues();
    m_StoreValidationFuncPtr();
}

CEBUAttrHandler::~CEBUAttrHandler() = default;

void CEBUAttrHandler::m_StoreAttrTypes()
{
    // Everything up to space except the text pseudo-attribute, plus
    // fillLineGap; the IMSC-only names stay unknown here.
    for (int attr = ATTR_BEGIN; attr <= ATTR_SPACE; ++attr) {
        if (attr != ATTR_TEXT)
            t_NameAttribute(attr);
    }
    t_NameAttribute(ATTR_FILLLINEGAP);
}

void CEBUAttrHandler::m_StoreDefaultAttrValues()
{
    static const struct {
        int attr;
        const char* value;
    } kDefaults[] = {
        {ATTR_BACKGROUNDCOLOR, "#00000000"},
        {ATTR_REGIONBACKGROUNDCOLOR, "#00000000"},
        {ATTR_PARABACKGROUNDCOLOR, "#00000000"},
        {ATTR_FONTSIZE, "100%"},
        {ATTR_LINEPADDING, "0c"},
        {ATTR_MULTIROWALIGN, "auto"},
        {ATTR_DISPLAYALIGN, "before"},
        {ATTR_FONTFAMILY, "default"},
        {ATTR_FONTSTYLE, "normal"},
        {ATTR_FONTWEIGHT, "normal"},
        {ATTR_LINEHEIGHT, "normal"},
        {ATTR_OVERFLOW, "hidden"},
        {ATTR_SHOWBACKGROUND, "always"},
        {ATTR_TEXTALIGN, "start"},
        {ATTR_TEXTDECORATION, "none"},
        {ATTR_UNICODEBIDI, "normal"},
        {ATTR_WRAPOPTION, "wrap"},
        {ATTR_WRITINGMODE, "lrtb"},
    };
    for (const auto& d : kDefaults)
        t_SetDefaultAttrValue(d.attr, d.value);
}

void CEBUAttrHandler::m_StoreValidationFuncPtr()
{
    static const struct {
        int attr;
        Validator fn;
    } kValidators[] = {
        {ATTR_BEGIN, &CEBUAttrHandler::m_ValidateBegin},
        {ATTR_END, &CEBUAttrHandler::m_ValidateEnd},
        {ATTR_LINEPADDING, &CEBUAttrHandler::m_ValidateLinePadding},
        {ATTR_MULTIROWALIGN, &CEBUAttrHandler::m_ValidateMultiRowAlign},
        {ATTR_REGION, &CEBUAttrHandler::m_ValidateRegion},
        {ATTR_STYLE, &CEBUAttrHandler::m_ValidateStyle},
        {ATTR_AGENT, &CEBUAttrHandler::m_ValidateAgent},
        {ATTR_CONFORMSTOSTANDARD, &CEBUAttrHandler::m_ValidateConformsToStandard},
        {ATTR_FRAMERATE, &CEBUAttrHandler::m_ValidateFrameRate},
        {ATTR_FRAMERATEMULTIPLIER, &CEBUAttrHandler::m_ValidateFrameRateMultiplier},
        {ATTR_ROLE, &CEBUAttrHandler::m_ValidateRole},
        {ATTR_CELLRESOLUTION, &CEBUAttrHandler::m_ValidateCellResolution},
        {ATTR_TIMEBASE, &CEBUAttrHandler::m_ValidateTimeBase},
        {ATTR_BACKGROUNDCOLOR, &CEBUAttrHandler::m_ValidateColorFormat},
        {ATTR_DIRECTION, &CEBUAttrHandler::m_ValidateDirection},
        {ATTR_DISPLAYALIGN, &CEBUAttrHandler::m_ValidateDisplayAlign},
        {ATTR_EXTENT, &CEBUAttrHandler::m_ValidateOriginExtent},
        {ATTR_COLOR, &CEBUAttrHandler::m_ValidateColorFormat},
        {ATTR_FONTFAMILY, &CEBUAttrHandler::m_ValidateFontFamily},
        {ATTR_FONTSIZE, &CEBUAttrHandler::m_ValidateFontSize},
        {ATTR_FONTSTYLE, &CEBUAttrHandler::m_ValidateFontStyle},
        {ATTR_FONTWEIGHT, &CEBUAttrHandler::m_ValidateFontWeight},
        {ATTR_LINEHEIGHT, &CEBUAttrHandler::m_ValidateLineHeight},
        {ATTR_ORIGIN, &CEBUAttrHandler::m_ValidateOrigin},
        {ATTR_OVERFLOW, &CEBUAttrHandler::m_ValidateOverflow},
        {ATTR_PADDING, &CEBUAttrHandler::m_ValidatePadding},
        {ATTR_REGIONBACKGROUNDCOLOR, &CEBUAttrHandler::m_ValidateColorFormat},
        {ATTR_SHOWBACKGROUND, &CEBUAttrHandler::m_ValidateShowBackground},
        {ATTR_TEXTALIGN, &CEBUAttrHandler::m_ValidateTextAlign},
        {ATTR_TEXTDECORATION, &CEBUAttrHandler::m_ValidateTextDecoration},
        {ATTR_UNICODEBIDI, &CEBUAttrHandler::m_ValidateUnicodeBidi},
        {ATTR_WRAPOPTION, &CEBUAttrHandler::m_ValidateWrapOption},
        {ATTR_WRITINGMODE, &CEBUAttrHandler::m_ValidateWritingMode},
        {ATTR_ID, &CEBUAttrHandler::m_ValidateId},
        {ATTR_LANG, &CEBUAttrHandler::m_ValidateLang},
        {ATTR_SPACE, &CEBUAttrHandler::m_ValidateXmlSpace},
    };
    for (const auto& v : kValidators)
        m_validators.emplace(v.attr, v.fn);
}

int CEBUAttrHandler::ValidateAttribute(TTMLAttr attr, std::string& value)
{
    auto it = m_validators.find(attr);
    if (it == m_validators.end())
        return ERR_NOT_SUPPORTED;
    return (this->*(it->second))(value);
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

int CEBUAttrHandler::m_ValidateLinePadding(std::string& value)
{
    return t_ValidateLinePadding(value);
}

int CEBUAttrHandler::m_ValidateMultiRowAlign(std::string& value)
{
    return t_ValidateMultiRowAlign(value);
}

int CEBUAttrHandler::m_ValidateRegion(std::string& /*value*/)
{
    return ERR_NONE;
}

int CEBUAttrHandler::m_ValidateStyle(std::string& value)
{
    return t_ValidateStyle(value);
}

int CEBUAttrHandler::m_ValidateAgent(std::string& value)
{
    return t_ValidateAgent(value);
}

int CEBUAttrHandler::m_ValidateConformsToStandard(std::string& /*value*/)
{
    return ERR_NONE;
}

int CEBUAttrHandler::m_ValidateFrameRate(std::string& value)
{
    return t_ValidateFrameRate(value);
}

int CEBUAttrHandler::m_ValidateFrameRateMultiplier(std::string& value)
{
    return t_SpaceSeparatedIntegersValidation(value) ? ERR_NONE : ERR_IGNORE;
}

int CEBUAttrHandler::m_ValidateRole(std::string& value)
{
    return t_ValidateRole(value);
}

int CEBUAttrHandler::m_ValidateCellResolution(std::string& value)
{
    return t_SpaceSeparatedIntegersValidation(value) ? ERR_NONE : ERR_IGNORE;
}

int CEBUAttrHandler::m_ValidateTimeBase(std::string& value)
{
    return t_ValidateTimeBase(value);
}

int CEBUAttrHandler::m_ValidateColorFormat(std::string& value)
{
    return t_ValidateColorFormat(value);
}

int CEBUAttrHandler::m_ValidateDirection(std::string& value)
{
    return t_ValidateDirection(value);
}

int CEBUAttrHandler::m_ValidateDisplayAlign(std::string& value)
{
    return t_ValidateDisplayAlign(value);
}

int CEBUAttrHandler::m_ValidateOriginExtent(std::string& value)
{
    return t_ValidateOriginExtent(value);
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

int CEBUAttrHandler::m_ValidateFontSize(std::string& value)
{
    return t_ValidateFontSize(value);
}

int CEBUAttrHandler::m_ValidateFontStyle(std::string& value)
{
    StrToLower(value);
    return (value == "normal" || value == "italic") ? ERR_NONE : ERR_IGNORE;
}

int CEBUAttrHandler::m_ValidateFontWeight(std::string& value)
{
    return t_ValidateFontWeight(value);
}

int CEBUAttrHandler::m_ValidateLineHeight(std::string& value)
{
    return t_ValidateLineHeight(value);
}

int CEBUAttrHandler::m_ValidateOrigin(std::string& value)
{
    return t_ValidateOriginExtent(value);
}

int CEBUAttrHandler::m_ValidateOverflow(std::string& value)
{
    return t_ValidateOverflow(value);
}

int CEBUAttrHandler::m_ValidatePadding(std::string& value)
{
    return t_ValidatePadding(value);
}

int CEBUAttrHandler::m_ValidateShowBackground(std::string& value)
{
    return t_ValidateShowBackground(value);
}

int CEBUAttrHandler::m_ValidateTextAlign(std::string& value)
{
    return t_ValidateTextAlign(value);
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

int CEBUAttrHandler::m_ValidateUnicodeBidi(std::string& value)
{
    return t_ValidateUnicodeBidi(value);
}

int CEBUAttrHandler::m_ValidateWrapOption(std::string& value)
{
    return t_ValidateWrapOption(value);
}

int CEBUAttrHandler::m_ValidateWritingMode(std::string& value)
{
    return t_ValidateWritingMode(value);
}

int CEBUAttrHandler::m_ValidateId(std::string& value)
{
    return t_ValidateId(value);
}

int CEBUAttrHandler::m_ValidateLang(std::string& value)
{
    return t_ValidateLang(value);
}

int CEBUAttrHandler::m_ValidateXmlSpace(std::string& value)
{
    return t_ValidateXmlSpace(value);
}

}  // namespace TTML
