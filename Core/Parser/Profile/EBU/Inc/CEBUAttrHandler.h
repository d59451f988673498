#ifndef TTML_PARSER_PROFILE_EBU_CEBUATTRHANDLER_H
#define TTML_PARSER_PROFILE_EBU_CEBUATTRHANDLER_H

#include "CAttrHandler.h"

#include <map>
#include <string>

namespace TTML {

// Attribute rules of EBU-TT-D: 51 named attributes, the EBU defaults and one
// validator per checked attribute. Attributes without a validator (opacity,
// textOutline, zIndex, dur, tickRate, ...) are refused with
// ERR_NOT_SUPPORTED and so have no effect. Begin and end must be clock times
// and are rewritten to decimal milliseconds of the handler's current
// document (SetSubtitleInfo). Threads: as CAttrHandler.
class CEBUAttrHandler : public CAttrHandler {
public:
    CEBUAttrHandler();
    ~CEBUAttrHandler() override;

    // ERR_NOT_SUPPORTED for attributes without a validator (including -1);
    // otherwise the validator's code. `value` may be rewritten.
    int ValidateAttribute(TTMLAttr attr, std::string& value) override;

private:
    using Validator = int (CEBUAttrHandler::*)(std::string& value);

    void m_StoreAttrTypes();
    void m_StoreDefaultAttrValues();
    void m_StoreValidationFuncPtr();

    // Clock time only; begin also gets the document's segment start.
    int m_ValidateBegin(std::string& value);
    int m_ValidateEnd(std::string& value);
    int m_ConvertClockTime(std::string& value, TTMLAttr attr);
    int m_ValidateLinePadding(std::string& value);
    int m_ValidateMultiRowAlign(std::string& value);
    int m_ValidateRegion(std::string& value);
    int m_ValidateStyle(std::string& value);
    int m_ValidateAgent(std::string& value);
    int m_ValidateConformsToStandard(std::string& value);
    int m_ValidateFrameRate(std::string& value);
    int m_ValidateFrameRateMultiplier(std::string& value);
    int m_ValidateRole(std::string& value);
    int m_ValidateCellResolution(std::string& value);
    int m_ValidateTimeBase(std::string& value);
    int m_ValidateColorFormat(std::string& value);
    int m_ValidateDirection(std::string& value);
    int m_ValidateDisplayAlign(std::string& value);
    int m_ValidateOriginExtent(std::string& value);
    // ERR_INVALID when the first family is a downloadable font that failed.
    int m_ValidateFontFamily(std::string& value);
    int m_ValidateFontSize(std::string& value);
    int m_ValidateFontStyle(std::string& value);
    int m_ValidateFontWeight(std::string& value);
    int m_ValidateLineHeight(std::string& value);
    int m_ValidateOrigin(std::string& value);
    int m_ValidateOverflow(std::string& value);
    int m_ValidatePadding(std::string& value);
    int m_ValidateShowBackground(std::string& value);
    int m_ValidateTextAlign(std::string& value);
    // "none" stays; "underline" becomes "2" (the underline flag).
    int m_ValidateTextDecoration(std::string& value);
    int m_ValidateUnicodeBidi(std::string& value);
    int m_ValidateWrapOption(std::string& value);
    int m_ValidateWritingMode(std::string& value);
    int m_ValidateId(std::string& value);
    int m_ValidateLang(std::string& value);
    int m_ValidateXmlSpace(std::string& value);

    std::map<int, Validator> m_validators;
};

}  // namespace TTML

#endif
