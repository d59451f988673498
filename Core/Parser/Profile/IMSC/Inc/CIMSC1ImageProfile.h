#ifndef TTML_PARSER_PROFILE_IMSC_CIMSC1IMAGEPROFILE_H
#define TTML_PARSER_PROFILE_IMSC_CIMSC1IMAGEPROFILE_H

#include "CIMSCProfile.h"

namespace TTML {

class CSubSampleImageUtil;

// Walker of IMSC 1 image documents: each subtitle is a `div` with begin,
// end and a background image reference, and no text. The IMSC 1 text walk
// with these changes: a `div` becomes one timed element carrying its decoded
// image (its children are not walked), a `p` reached by the walk refuses the
// document, and the images come from the sub-sample data of the document's
// SubRawData record.
// Owned by the parser; used on the parser thread (see CProfile).
class CIMSC1ImageProfile : public CIMSCProfile {
public:
    CIMSC1ImageProfile();
    ~CIMSC1ImageProfile() override;

    void Destroy() override;
    // Requires data->pSubRawData (ERR_NULL_POINTER without it). The image
    // util lives for this call only; elements keep their CImageData.
    int ProcessSubtitles(TTMLProfileData* data) override;
    void Reset() override;

protected:
    // IMSC 1 div handling, then ERR_INVALID when begin, end or
    // showBackground is missing; untimed when showBackground is
    // "whenactive" without an image. ERR_SKIP_CHILDREN on success.
    int t_HandleDivElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element) override;
    // Always ERR_INVALID (ERR_NULL_POINTER for null arguments).
    int t_HandlePElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element) override;

private:
    CSubSampleImageUtil* m_pImageUtil;  // owned; null outside ProcessSubtitles
};

}  // namespace TTML

#endif
