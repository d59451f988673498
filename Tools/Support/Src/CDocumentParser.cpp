#include "CDocumentParser.h"

#include "CWarningCollector.h"
#include "ToolFile.h"
#include "ToolImages.h"

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

SubRawData* CDocumentParser::NewRecord(const std::string& file, int profile)
{
    auto* pRecord = new SubRawData();
    pRecord->profile = profile;
    pRecord->url = file;
    if (!ReadWholeFile(file, pRecord->xmlData)) {
        delete pRecord;
        return nullptr;
    }
    if (profile == -1 && pRecord->xmlData.find(kImageProfileDesignator) != std::string::npos)
        pRecord->profile = 1;
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
