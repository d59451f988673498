#ifndef INTERTITLE_TESTS_MODEL_TESTATTRHANDLER_H
#define INTERTITLE_TESTS_MODEL_TESTATTRHANDLER_H

#include "CAttrHandler.h"

#include <map>
#include <string>

// Fills the tables the way a profile handler does, so the base class can be
// exercised without a profile. `imscNames` names every keyed attribute;
// otherwise the image-profile-only ones (51..55, 57) stay unnamed.
class TestAttrHandler : public TTML::CAttrHandler {
public:
    explicit TestAttrHandler(bool imscNames = true, std::map<int, std::string> defaults = {})
    {
        for (int attr = 0; attr < TTML::TTML_ATTR_COUNT; ++attr) {
            const bool imscOnly = (attr >= TTML::ATTR_ALTTEXT && attr <= TTML::ATTR_FORCEDDISPLAY) ||
                                  attr == TTML::ATTR_TIMECONTAINER;
            if (imscNames || !imscOnly)
                t_NameAttribute(attr);
        }
        for (const auto& kv : defaults)
            t_SetDefaultAttrValue(kv.first, kv.second);
    }

    int ValidateAttribute(TTML::TTMLAttr, std::string&) override { return TTML::ERR_NOT_SUPPORTED; }

    using CAttrHandler::t_GetDownloadableFontsInfo;
    using CAttrHandler::t_SetAppliesTo;
    using CAttrHandler::t_SetInheritable;

    using CAttrHandler::t_SpaceSeparatedIntegersValidation;
    using CAttrHandler::t_ValidateAgent;
    using CAttrHandler::t_ValidateBooleanValues;
    using CAttrHandler::t_ValidateClockTimeFormat;
    using CAttrHandler::t_ValidateColorFormat;
    using CAttrHandler::t_ValidateConformsToStandard;
    using CAttrHandler::t_ValidateDirection;
    using CAttrHandler::t_ValidateDisplayAlign;
    using CAttrHandler::t_ValidateFillLineGap;
    using CAttrHandler::t_ValidateFontFamily;
    using CAttrHandler::t_ValidateFontSize;
    using CAttrHandler::t_ValidateFontWeight;
    using CAttrHandler::t_ValidateFrameRate;
    using CAttrHandler::t_ValidateId;
    using CAttrHandler::t_ValidateLang;
    using CAttrHandler::t_ValidateLineHeight;
    using CAttrHandler::t_ValidateLinePadding;
    using CAttrHandler::t_ValidateMultiRowAlign;
    using CAttrHandler::t_ValidateOriginExtent;
    using CAttrHandler::t_ValidateOverflow;
    using CAttrHandler::t_ValidatePadding;
    using CAttrHandler::t_ValidateRegion;
    using CAttrHandler::t_ValidateRole;
    using CAttrHandler::t_ValidateShowBackground;
    using CAttrHandler::t_ValidateStyle;
    using CAttrHandler::t_ValidateTextAlign;
    using CAttrHandler::t_ValidateTimeBase;
    using CAttrHandler::t_ValidateUnicodeBidi;
    using CAttrHandler::t_ValidateWrapOption;
    using CAttrHandler::t_ValidateWritingMode;
    using CAttrHandler::t_ValidateXmlSpace;
};

#endif
