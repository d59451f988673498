#include "CEBUProfile.h"

#include "CEBUAttrHandler.h"
#include "CStyleRegionInfo.h"
#include "TTMLLog.h"

#include <new>

namespace TTML {

CEBUProfile::CEBUProfile()
{
    TTML_INFO("Construction done");
}

CEBUProfile::~CEBUProfile()
{
    TTML_INFO("Destruction done");
}

CAttrHandler* CEBUProfile::t_CreateAttrHandler()
{
    return new (std::nothrow) CEBUAttrHandler();
}

int CEBUProfile::t_HandleMetaDataElement(XMLNODEPTR node, CElementSPTR& element)
{
    if (!node || !element) {
        TTML_WARN("pNode or pCElement is Null");
        return ERR_NULL_POINTER;
    }
    int result = CProfile::t_HandleMetaDataElement(node, element);
    if (result != ERR_NONE)
        return result;
    return t_ValidateCopyrightVersion(node, element) ? ERR_NONE : ERR_INVALID;
}

int CEBUProfile::m_HandleEmptyRegionList()
{
    return t_pStyleRegionInfo->IsEmptyRegionList() ? ERR_INVALID : ERR_NONE;
}

int CEBUProfile::t_ProcessSubtitleInfo()
{
    int result = m_HandleEmptyRegionList();
    if (result != ERR_NONE)
        return result;
    return CProfile::t_ProcessSubtitleInfo();
}

}  // namespace TTML
