#ifndef TTML_PARSER_PROFILE_IMSC_CIMSCATTRHANDLER_H
#define TTML_PARSER_PROFILE_IMSC_CIMSCATTRHANDLER_H

#include "CAttrHandler.h"

#include <map>
#include <string>

namespace TTML {

// Attribute rules shared by the IMSC 1 text and image profiles: all 57 keyed
// attributes named, 31 defaults, 50 validators, the inheritance and
// applies-to tables that CIMSCElement filters with. Named attributes without
// a validator (clockmode, dropmode, markermode, pixelaspectratio, profile,
// parabackgroundcolor, filllinegap) are refused with ERR_NOT_SUPPORTED.
// Profile number 1 (SetProfile) is the image profile: writing modes are
// horizontal only and extents must be pixels.
// Begin, end and dur are rewritten to decimal milliseconds using the rates of
// the handler's current document (SetSubtitleInfo; without one, no frame or
// tick rate). Threads: as CAttrHandler.
class CIMSCAttrHandler : public CAttrHandler {
public:
    CIMSCAttrHandler();
    ~CIMSCAttrHandler() override;

    // ERR_NOT_SUPPORTED for attributes without a validator (including -1);
    // otherwise the validator's code. `value` may be rewritten.
    int ValidateAttribute(TTMLAttr attr, std::string& value) override;

private:
    using Validator = int (CIMSCAttrHandler::*)(std::string& value);

    void m_StoreAttrTypes();
    void m_StoreDefaultAttrValues();
    void m_StoreValidationFuncPtr();
    void m_StoreInheritableProperty();
    void m_StoreAppliesToValues();

    // Lower-cases `value`; offset time or clock time.
    bool m_ValidateTimeExpression(std::string& value);
    // Whole-value match of one length (px, em, c, %); `unit`, when given,
    // receives the unit of a match.
    bool m_ValidateLengthExpression(const std::string& value, std::string* unit = nullptr) const;
    // A colour as m_ValidateColorFormat takes it; `item` gets the stored form.
    bool m_IsColor(std::string& item);
    int m_ConvertTime(std::string& value, TTMLAttr attr);

    int m_ValidateBegin(std::string& value);
    int m_ValidateDur(std::string& value);
    int m_ValidateEnd(std::string& value);
    int m_ValidateLinePadding(std::string& value);
    int m_ValidateMultiRowAlign(std::string& value);
    int m_ValidateRegion(std::string& value);
    int m_ValidateStyle(std::string& value);
    int m_ValidateAgent(std::string& value);
    int m_ValidateConformsToStandard(std::string& value);
    // Rates divide frame and tick counts, so a rate that is not above 0 is
    // refused with a warning naming it (ERR_IGNORE: the document keeps the
    // default, 30 frames or 1 tick per second). ttp:frameRate takes digits
    // only, so "0" is the one such value that passes the common check.
    int m_ValidateFrameRate(std::string& value);
    int m_ValidateFrameRateMultiplier(std::string& value);
    int m_ValidateRole(std::string& value);
    int m_ValidateCellResolution(std::string& value);
    int m_ValidateSubFrameRate(std::string& value);
    int m_ValidateTickRate(std::string& value);
    int m_ValidateTimeBase(std::string& value);
    // Named colours become their "#rrggbbaa" code.
    int m_ValidateColorFormat(std::string& value);
    int m_ValidateDirection(std::string& value);
    int m_ValidateDisplay(std::string& value);
    int m_ValidateDisplayAlign(std::string& value);
    int m_ValidateExtent(std::string& value);
    int m_ValidateFontFamily(std::string& value);
    int m_ValidateFontSize(std::string& value);
    int m_ValidateFontStyle(std::string& value);
    int m_ValidateFontWeight(std::string& value);
    int m_ValidateLineHeight(std::string& value);
    int m_ValidateOpacity(std::string& value);
    int m_ValidateOrigin(std::string& value);
    int m_ValidateOverflow(std::string& value);
    int m_ValidatePadding(std::string& value);
    int m_ValidateShowBackground(std::string& value);
    int m_ValidateTextAlign(std::string& value);
    // Rewritten to the renderer's flag word: underline 2, nounderline 4,
    // linethrough 8, nolinethrough 16, overline 32, nooverline 64.
    int m_ValidateTextDecoration(std::string& value);
    // Rewritten with single blanks and colour names as codes.
    int m_ValidateTextOutline(std::string& value);
    int m_ValidateUnicodeBidi(std::string& value);
    int m_ValidateVisibility(std::string& value);
    int m_ValidateWrapOption(std::string& value);
    int m_ValidateWritingMode(std::string& value);
    int m_ValidateZIndex(std::string& value);
    int m_ValidateId(std::string& value);
    int m_ValidateLang(std::string& value);
    int m_ValidateXmlSpace(std::string& value);
    int m_ValidateAltText(std::string& value);
    int m_ValidateAspectRatio(std::string& value);
    int m_ValidateProgressivelyDecodable(std::string& value);
    // "urn:...:<id>" becomes "<id>"; anything else is kept as written.
    int m_ValidateSMPTEBackgroundImage(std::string& value);
    int m_ValidateForcedDisplay(std::string& value);
    int m_ValidateTimeContainer(std::string& value);

    std::map<int, Validator> m_validators;
};

}  // namespace TTML

#endif
