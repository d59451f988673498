#include "CDocumentParser.h"

#include "CWarningCollector.h"
#include "CSourceFeed.h"
#include "TTMLTypes.h"

namespace TTML {

bool CDocumentParser::Initialize(int subtitleMode)
{
    m_bInitialized = m_parser.Initialize(subtitleMode, &Parsed_Cb, this);
    return m_bInitialized;
}

void CDocumentParser::Destroy()
{
    Reset();
    if (m_bInitialized)
        m_parser.Destroy();
    m_bInitialized = false;
}

SubRawData* CDocumentParser::NewRecord(const std::string& file, int profile, std::string* pWhy)
{
    auto* pRecord = new SubRawData();
    pRecord->profile = profile;
    pRecord->url = file;
    if (!CSourceFeed::ReadFile(file, pRecord->xmlData, pWhy)) {
        delete pRecord;
        return nullptr;
    }
    if (profile == TTML_PROFILE_NONE && pRecord->xmlData.find(kImsc1ImageDesignator) != std::string::npos)
        pRecord->profile = TTML_PROFILE_IMSC1_IMAGE;
    return pRecord;
}

int CDocumentParser::Parse(SubRawData* pRecord, int* pResolvedProfile, std::vector<std::string>* pWarnings)
{
    if (!pWarnings)
        return m_parser.ProcessRecord(pRecord, pResolvedProfile);
    CWarningCollector collector;
    int result = m_parser.ProcessRecord(pRecord, pResolvedProfile);
    *pWarnings = collector.Take();
    return result;
}

void CDocumentParser::Reset()
{
    delete m_pSubtitleInfo;
    m_pSubtitleInfo = nullptr;
}

void CDocumentParser::Parsed_Cb(int msgId, void* data)
{
    if (msgId != 0 || !data)
        return;
    auto* pData = static_cast<ParserCallbackData*>(data);
    auto* self = static_cast<CDocumentParser*>(pData->pUserData);
    delete self->m_pSubtitleInfo;
    self->m_pSubtitleInfo = pData->pSubtitleInfo;
}

}  // namespace TTML
