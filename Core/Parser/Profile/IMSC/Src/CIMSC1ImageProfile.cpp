#include "CIMSC1ImageProfile.h"

#include "CImageData.h"
#include "CSubSampleImageUtil.h"
#include "SubRawData.h"
#include "TTMLAttr.h"
#include "TTMLLog.h"

#include <memory>
#include <new>

namespace TTML {

CIMSC1ImageProfile::CIMSC1ImageProfile()
    : m_pImageUtil(nullptr)
{
    TTML_INFO("Construction done");
}

CIMSC1ImageProfile::~CIMSC1ImageProfile()
{
    // A walk never leaves the util behind; this only guards an early exit.
    delete m_pImageUtil;
    m_pImageUtil = nullptr;
    TTML_INFO("Destruction done");
}

void CIMSC1ImageProfile::Destroy()
{
    CIMSCProfile::Destroy();
    TTML_INFO("Destroy is done");
}

int CIMSC1ImageProfile::ProcessSubtitles(TTMLProfileData* data)
{
    if (!data || !data->pSubRawData) {
        TTML_WARN("Invalid parameters");
        return ERR_NULL_POINTER;
    }
    m_pImageUtil = new (std::nothrow) CSubSampleImageUtil(data->pSubRawData->subSampleData);
    TTML_ASSERT(m_pImageUtil);

    int result = CIMSCProfile::ProcessSubtitles(data);

    delete m_pImageUtil;
    m_pImageUtil = nullptr;
    return result;
}

void CIMSC1ImageProfile::Reset()
{
    CIMSCProfile::Reset();
    if (m_pImageUtil) {
        m_pImageUtil->ReleaseImages();
        m_pImageUtil->Clear();
    }
    TTML_INFO("Reset is done");
}

int CIMSC1ImageProfile::t_HandleDivElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    int result = CIMSCProfile::t_HandleDivElement(node, parent, element);
    if (result != ERR_NONE)
        return result;

    std::string begin;
    std::string end;
    std::string showBackground;
    if (!element->GetAttrValue(ATTR_BEGIN, begin) || !element->GetAttrValue(ATTR_END, end) ||
        !element->GetAttrValue(ATTR_SHOWBACKGROUND, showBackground)) {
        TTML_WARN("begin/end/showBG attributes not found in the map.");
        return ERR_INVALID;
    }

    std::string reference;
    element->GetAttrValue(ATTR_BACKGROUNDIMAGE, reference);
    if (showBackground == "whenactive" && reference.empty()) {
        TTML_WARN("Empty DIV found with BG as when active");
        begin.clear();
        end.clear();
    }
    t_AddElement(begin, end, element);

    if (!reference.empty() && m_pImageUtil) {
        std::shared_ptr<CImageData> image = m_pImageUtil->GetImage(reference);
        element->SetImageData(image);
    }
    return ERR_SKIP_CHILDREN;
}

int CIMSC1ImageProfile::t_HandlePElement(XMLNODEPTR node, CElementSPTR& parent, CElementSPTR& element)
{
    (void)parent;
    if (!node || !element) {
        TTML_WARN("NULL pointer");
        return ERR_NULL_POINTER;
    }
    TTML_WARN("This shouldnot be executed, definitely its invalid document :)");
    return ERR_INVALID;
}

}  // namespace TTML
