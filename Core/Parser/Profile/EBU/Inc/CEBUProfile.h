#ifndef TTML_PARSER_PROFILE_EBU_CEBUPROFILE_H
#define TTML_PARSER_PROFILE_EBU_CEBUPROFILE_H

#include "CProfile.h"

namespace TTML {

// Walker of EBU-TT-D documents: the generic walk with the EBU-TT-D attribute
// rules, a version check on the document metadata, and the rule that a
// document must declare a region.
// Owned by the parser; used on the parser thread (see CProfile).
class CEBUProfile : public CProfile {
public:
    CEBUProfile();
    ~CEBUProfile() override;

protected:
    // A CEBUAttrHandler.
    CAttrHandler* t_CreateAttrHandler() override;
    // Attributes, then documentEbuttVersion must be empty or "v1.0"
    // (ERR_INVALID otherwise).
    int t_HandleMetaDataElement(XMLNODEPTR node, CElementSPTR& element) override;
    // ERR_INVALID for a document without regions, else the interval split.
    int t_ProcessSubtitleInfo() override;

private:
    int m_HandleEmptyRegionList();
};

}  // namespace TTML

#endif
