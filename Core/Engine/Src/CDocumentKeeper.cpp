#include "CDocumentKeeper.h"

#include "CRecordBuilder.h"
#include "CSubtitleInfo.h"
#include "IMutex.h"
#include "Lock.h"
#include "TTMLLog.h"

namespace TTML {

CDocumentKeeper::CDocumentKeeper()
    : m_pSubtitleInfo(nullptr), m_bOutOfBand(true), m_documentsInFlight(0), m_bReplayWanted(false),
      m_pSubtitleInfoMutex(nullptr)
{
    m_pSubtitleInfoMutex = IMutex::Create();
    TTML_ASSERT(m_pSubtitleInfoMutex);
}

CDocumentKeeper::~CDocumentKeeper()
{
    DestroyAll();
    m_pSubtitleInfoMutex->Destroy();
}

void CDocumentKeeper::SetBandMode(bool bandMode)
{
    TTML::Lock lock(m_pSubtitleInfoMutex);
    m_bOutOfBand = !bandMode;
}

void CDocumentKeeper::Queued()
{
    TTML::Lock lock(m_pSubtitleInfoMutex);
    ++m_documentsInFlight;
}

void CDocumentKeeper::Drop(CSubtitleInfo* pSubtitleInfo)
{
    delete pSubtitleInfo;
    TTML::Lock lock(m_pSubtitleInfoMutex);
    --m_documentsInFlight;
}

CSubtitleInfo* CDocumentKeeper::Keep(CSubtitleInfo* pSubtitleInfo, const CRecordBuilder& builder)
{
    TTML::Lock lock(m_pSubtitleInfoMutex);
    if (!m_bOutOfBand) {
        m_subtitleInfoList.push_back(pSubtitleInfo);
    } else {
        if (m_pSubtitleInfo != pSubtitleInfo)
            delete m_pSubtitleInfo;
        m_pSubtitleInfo = pSubtitleInfo;
    }
    --m_documentsInFlight;
    // A seek completed while this (newer) document was on its way: it is
    // the one to replay, unless it already started from the seek position.
    if (!m_bReplayWanted || m_documentsInFlight != 0)
        return nullptr;
    m_bReplayWanted = false;
    if (!m_bOutOfBand || !builder.IsSeekPending())
        return nullptr;
    CSubtitleInfo* pReplay = m_pSubtitleInfo;
    m_pSubtitleInfo = nullptr;
    ++m_documentsInFlight;
    return pReplay;
}

CSubtitleInfo* CDocumentKeeper::TakeForReplay()
{
    TTML::Lock lock(m_pSubtitleInfoMutex);
    if (!m_bOutOfBand)
        return nullptr;
    if (m_documentsInFlight > 0) {
        // A newer document is on its way and will replace the current one:
        // replaying the older one now would cut it away. The newest replays.
        m_bReplayWanted = true;
        return nullptr;
    }
    CSubtitleInfo* pReplay = m_pSubtitleInfo;
    m_pSubtitleInfo = nullptr;
    if (pReplay)
        ++m_documentsInFlight;
    return pReplay;
}

void CDocumentKeeper::PruneEnded(unsigned long long time)
{
    TTML::Lock lock(m_pSubtitleInfoMutex);
    if (m_bOutOfBand || m_subtitleInfoList.size() <= 2)
        return;
    for (auto it = m_subtitleInfoList.begin(); it != m_subtitleInfoList.end();) {
        const unsigned long long lastEnd = (*it)->GetLastEndTime();
        if (lastEnd <= time) {
            TTML_INFO("Deleted subtitle info with lastEndTime =[%llu], timeInfo=[%llu]", lastEnd, time);
            delete *it;
            it = m_subtitleInfoList.erase(it);
        } else {
            ++it;
        }
    }
}

void CDocumentKeeper::DestroyAll()
{
    TTML::Lock lock(m_pSubtitleInfoMutex);
    delete m_pSubtitleInfo;
    m_pSubtitleInfo = nullptr;
    // The list is emptied whatever the mode: documents kept before a start
    // switched to out of band would otherwise wait for the destructor.
    for (CSubtitleInfo* pInfo : m_subtitleInfoList)
        delete pInfo;
    m_subtitleInfoList.clear();
    m_bReplayWanted = false;
    if (!m_bOutOfBand)
        TTML_INFO("Deleting All subtitle info");
}

}  // namespace TTML
