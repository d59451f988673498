#ifndef TTML_PARSER_PROFILE_EBU_CEBUPROFILE_H
#define TTML_PARSER_PROFILE_EBU_CEBUPROFILE_H

#include "CProfile.h"

namespace TTML {

// Walker of EBU-TT-D documents: the generic walk plus paragraph, span and
// metadata handling, and the rule that a document must declare a region.
// Owned by the parser; used on the parser thread (see CProfile).
class CEBUProfile : public CProfile {
public:
    CEBUProfile();
    ~CEBUProfile() override;

    // CProfile::Initialize, then creates the CEBUAttrHandler and installs it
    // as the handler of all elements.
    bool Initialize() override;
    void Destroy() override;
    void Reset() override;

protected:
    int t_ProcessElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element) override;
    // ERR_INVALID for a document without regions, else the interval split.
    int t_ProcessSubtitleInfo() override;
    virtual int t_HandleSpanElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);
    virtual int t_HandleMetaDataElement(XMLNODEPTR node, CElementSPTR& element);
    // Walks the paragraph's children itself: ERR_SKIP_CHILDREN on success.
    int t_HandlePElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element);

private:
    int m_HandleEmptyRegionList();
};

}  // namespace TTML

#endif
