#ifndef TTML_PARSER_PROFILE_EBU_CEBUATTRHANDLER_H
#define TTML_PARSER_PROFILE_EBU_CEBUATTRHANDLER_H

#include "CAttrHandler.h"

#include <string>

namespace TTML {

// Attribute rules of EBU-TT-D: one row per named attribute (51 of them) with
// its default and its check. Attributes whose row has no check (opacity,
// textOutline, zIndex, dur, tickRate, ...) are refused with
// ERR_NOT_SUPPORTED and so have no effect; nothing is filtered by
// inheritance or applies-to. Begin and end must be clock times and are
// rewritten to decimal milliseconds of the handler's current document
// (SetSubtitleInfo). Threads: as CAttrHandler.
class CEBUAttrHandler : public CAttrHandler {
public:
    CEBUAttrHandler();
    ~CEBUAttrHandler() override;

    // ERR_NOT_SUPPORTED for attributes without a check (including -1);
    // otherwise the check's code. `value` may be rewritten.
    int ValidateAttribute(TTMLAttr attr, std::string& value) override;

private:
    using Row = TAttrRow<CEBUAttrHandler>;

    // Each row's check, by attribute number.
    Row::Check m_checks[TTML_ATTR_COUNT];

    // "none" stays; "underline" becomes "2" (the underline flag).
    static int m_ValidateTextDecoration(std::string& value);
    // ERR_INVALID when the first family is a downloadable font that failed.
    int m_ValidateFontFamily(std::string& value);
    // Clock time only; begin also gets the document's segment start.
    int m_ValidateBegin(std::string& value);
    int m_ValidateEnd(std::string& value);
    int m_ConvertClockTime(std::string& value, TTMLAttr attr);
};

}  // namespace TTML

#endif
