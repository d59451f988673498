#ifndef TTML_PARSER_PROFILE_IMSC_CIMSCATTRHANDLER_H
#define TTML_PARSER_PROFILE_IMSC_CIMSCATTRHANDLER_H

#include "CAttrHandler.h"

#include <string>

namespace TTML {

// Attribute rules shared by the IMSC 1 text and image profiles: one row for
// every attribute number, with its default, check, inheritance and the
// elements it applies to (which CIMSCElement filters with). All 57 keyed
// attributes are named; those whose row has no check (clockmode, dropmode,
// markermode, pixelaspectratio, profile, parabackgroundcolor, filllinegap)
// are refused with ERR_NOT_SUPPORTED.
// Profile number 1 (SetProfile) is the image profile: writing modes are
// horizontal only and extents must be pixels.
// Begin, end and dur are rewritten to decimal milliseconds using the rates of
// the handler's current document (SetSubtitleInfo; without one, no frame or
// tick rate). Threads: as CAttrHandler.
class CIMSCAttrHandler : public CAttrHandler {
public:
    CIMSCAttrHandler();
    ~CIMSCAttrHandler() override;

    // ERR_NOT_SUPPORTED for attributes without a check (including -1);
    // otherwise the check's code. `value` may be rewritten.
    int ValidateAttribute(TTMLAttr attr, std::string& value) override;

private:
    using Row = TAttrRow<CIMSCAttrHandler>;

    // Lower-cases `value`; offset time or clock time.
    static bool m_ValidateTimeExpression(std::string& value);
    // Whole-value match of one length (px, em, c, %); `unit`, when given,
    // receives the unit of a match.
    static bool m_ValidateLengthExpression(const std::string& value, std::string* unit = nullptr);
    // A colour as m_ValidateColorFormat takes it; `item` gets the stored form.
    static bool m_IsColor(std::string& item);

    // The checks the rows name that need the handler: the document's rates
    // and segment for times, the profile for geometry.
    int m_ConvertTime(std::string& value, TTMLAttr attr);
    int m_ValidateBegin(std::string& value);
    int m_ValidateDur(std::string& value);
    int m_ValidateEnd(std::string& value);
    int m_ValidateExtent(std::string& value);
    int m_ValidateWritingMode(std::string& value);

    // Rates divide frame and tick counts, so a rate that is not above 0 is
    // refused with a warning naming it (ERR_IGNORE: the document keeps the
    // default, 30 frames or 1 tick per second). ttp:frameRate takes digits
    // only, so "0" is the one such value that passes the common check.
    static int m_ValidateFrameRate(std::string& value);
    static int m_ValidateSubFrameRate(std::string& value);
    static int m_ValidateTickRate(std::string& value);
    // Named colours become their "#rrggbbaa" code.
    static int m_ValidateColorFormat(std::string& value);
    static int m_ValidateFontFamily(std::string& value);
    static int m_ValidateFontSize(std::string& value);
    static int m_ValidateLineHeight(std::string& value);
    static int m_ValidateOpacity(std::string& value);
    static int m_ValidateOrigin(std::string& value);
    static int m_ValidatePadding(std::string& value);
    // Rewritten to the renderer's flag word: underline 2, nounderline 4,
    // linethrough 8, nolinethrough 16, overline 32, nooverline 64.
    static int m_ValidateTextDecoration(std::string& value);
    // Rewritten with single blanks and colour names as codes.
    static int m_ValidateTextOutline(std::string& value);
    static int m_ValidateZIndex(std::string& value);
    static int m_ValidateAltText(std::string& value);
    // "urn:...:<id>" becomes "<id>"; anything else is kept as written.
    static int m_ValidateSMPTEBackgroundImage(std::string& value);

    // Each row's check, by attribute number.
    Row::Check m_checks[TTML_ATTR_COUNT];
};

}  // namespace TTML

#endif
