#include "CPresenter.h"

#include "CDocumentKeeper.h"
#include "CGraphicsEngine.h"
#include "CRenderingData.h"
#include "CTimerData.h"
#include "IMutex.h"
#include "Lock.h"
#include "SubtitleRenderingInfo.h"
#include "TTMLLog.h"
#include "TTMLTypes.h"

#include <new>
#include <utility>

namespace TTML {

CPresenter::CPresenter(IGraphics* pGraphics, CDocumentKeeper* pKeeper, CTimerManager::MediaTimeSource mediaTime)
    : m_pKeeper(pKeeper), m_pTimerManager(nullptr), m_pGraphicsEngine(nullptr), m_subtitleMode(1),
      m_pRenderingData(nullptr), m_pRenderingMutex(nullptr)
{
    m_pTimerManager = new (std::nothrow) CTimerManager(pGraphics, m_OnTimer_Cb, this, std::move(mediaTime));
    TTML_ASSERT(m_pTimerManager);
    m_pGraphicsEngine = new (std::nothrow) CGraphicsEngine(pGraphics);
    TTML_ASSERT(m_pGraphicsEngine);
    m_pRenderingData = new (std::nothrow) CRenderingData();
    TTML_ASSERT(m_pRenderingData);
    m_pRenderingMutex = IMutex::Create();
    TTML_ASSERT(m_pRenderingMutex);
}

CPresenter::~CPresenter()
{
    for (SubtitleRenderingInfo* pRecord : m_unscheduled)
        Discard(pRecord);
    m_pRenderingMutex->Destroy();
    delete m_pRenderingData;
    delete m_pGraphicsEngine;
    delete m_pTimerManager;
}

void CPresenter::SetSubtitleMode(int subtitleMode)
{
    m_subtitleMode = subtitleMode;
}

void CPresenter::SetBandMode(bool bandMode)
{
    m_pTimerManager->SetBandMode(bandMode);
}

bool CPresenter::AddIfAhead(SubtitleRenderingInfo* pRecord)
{
    bool bOverlapped = false;
    bool timerAdded = false;
    unsigned long long timerTime = 0;
    {
        TTML::Lock lock(m_pRenderingMutex);
        bOverlapped = m_pRenderingData->IsOverlapping(pRecord);
        timerAdded = m_pTimerManager->IsTimerAdded();
        timerTime = m_pTimerManager->GetTimerTimeInfo();
        // The armed timer reaches a later, non-overlapping record by itself.
        if (!bOverlapped && timerAdded && pRecord->m_BeginTime > timerTime) {
            m_pRenderingData->AddData(pRecord, m_pGraphicsEngine);
            TTML_INFO("Data added through worker thread!");
            return true;
        }
    }
    TTML_INFO("Sending to main loop. beginTime[%llu], timerAdded[%d], TimerTimeInfo()[%llu] bOverlapped[%d]",
              pRecord->m_BeginTime, timerAdded, timerTime, bOverlapped);
    return false;
}

void CPresenter::Add(SubtitleRenderingInfo* pRecord)
{
    TTML::Lock lock(m_pRenderingMutex);
    if (m_pRenderingData->AddData(pRecord, m_pGraphicsEngine))
        m_pTimerManager->StopTimer();
    m_SyncNextSubtitle();
}

void CPresenter::KeepUnscheduled(SubtitleRenderingInfo* pRecord)
{
    TTML::Lock lock(m_pRenderingMutex);
    m_unscheduled.push_back(pRecord);
}

void CPresenter::Discard(SubtitleRenderingInfo* pRecord)
{
    if (!pRecord)
        return;
    m_pGraphicsEngine->DestroyRenderer(pRecord->m_pRendererData);
    pRecord->m_pRendererData = nullptr;
    delete pRecord;
}

void CPresenter::Clear()
{
    TTML::Lock lock(m_pRenderingMutex);
    unsigned long long time = 0;
    CRenderingData::RenderingPair entry(nullptr, nullptr);
    // Every record has exactly one remove entry, so each is deleted once.
    while (m_pRenderingData->PopNextSubtitleData(time, entry)) {
        if (entry.second)
            Discard(entry.second);
    }
    for (SubtitleRenderingInfo* pRecord : m_unscheduled)
        Discard(pRecord);
    m_unscheduled.clear();
    m_pTimerManager->StopTimer();
    TTML_INFO("Done");
}

void CPresenter::Pause()
{
    TTML_INFO("");
    m_pTimerManager->PauseTimer();
}

void CPresenter::Resume()
{
    TTML_INFO("");
    m_pTimerManager->ResumeTimer();
    ArmIfIdle();
}

void CPresenter::ArmIfIdle()
{
    TTML::Lock lock(m_pRenderingMutex);
    if (!m_pTimerManager->IsTimerAdded())
        m_SyncNextSubtitle();
}

bool CPresenter::IsWaiting()
{
    if (m_pTimerManager->IsPaused())
        return true;
    TTML::Lock lock(m_pRenderingMutex);
    return !m_pTimerManager->IsTimerAdded() && !m_pRenderingData->GetMap().empty();
}

bool CPresenter::IsTimerAdded()
{
    return m_pTimerManager->IsTimerAdded();
}

bool CPresenter::m_SyncNextSubtitle()
{
    TTML::Lock lock(m_pRenderingMutex);
    for (;;) {
        unsigned long long nextTime = 0;
        CRenderingData::RenderingPair entry(nullptr, nullptr);
        if (!m_pRenderingData->GetFront(nextTime, entry)) {
            TTML_INFO("No subtitle left in rendering queue.");
            return false;
        }
        SubtitleRenderingInfo* pNextSubInfo = entry.first ? entry.first : entry.second;
        if (m_pTimerManager->SetTimer(nextTime, pNextSubInfo->m_EndTime, pNextSubInfo->m_TimeStamp)) {
            TTML_INFO("synched timer for time=[%llu]; pNextSubInfo=[%p]", nextTime, static_cast<void*>(pNextSubInfo));
            return true;
        }
        // Without a media time (before the start, after a stop) nothing is
        // over yet: keep the schedule and arm when the time is there.
        if (!m_pTimerManager->HasMediaTime()) {
            TTML_INFO("No media time yet; schedule kept");
            return false;
        }
        TTML_WARN("Updating for next subtitle failed for nextTime=[%llu]; endTime=[%llu]; pNextSubInfo=[%p]", nextTime,
                  pNextSubInfo->m_EndTime, static_cast<void*>(pNextSubInfo));
        if (entry.second) {
            TTML_INFO("Deleting rendering data");
            m_OnTextRemove(entry.second);
        }
        m_pRenderingData->RemoveData(nextTime);
    }
}

unsigned char CPresenter::m_OnTimer_Cb(void* pData)
{
    CTimerData* pTimerData = static_cast<CTimerData*>(pData);
    CPresenter* pSelf = pTimerData ? static_cast<CPresenter*>(pTimerData->GetUserData()) : nullptr;
    if (!pTimerData || !pSelf) {
        TTML_WARN("pTimerData/pEngine is null");
        return 1;
    }
    if ((pSelf->m_subtitleMode & SUBTITLE_MODE_RESYNC) && pSelf->m_pTimerManager->SyncCurrentSubtitles()) {
        TTML_INFO("Synchronizing timer");
        return 1;
    }
    if (!pSelf->m_OnViewUpdate(pTimerData)) {
        pSelf->m_pTimerManager->StopTimer();
        return 0;
    }
    return 1;
}

bool CPresenter::m_OnViewUpdate(CTimerData* /*pTimerData*/)
{
    // The timer data is the manager's own: it is written through the manager,
    // under its mutex.
    TTML::Lock lock(m_pRenderingMutex);
    unsigned long long dataTime = 0;
    CRenderingData::RenderingPair entry(nullptr, nullptr);
    if (!m_pRenderingData->PopNextSubtitleData(dataTime, entry)) {
        TTML_INFO("No data is in rendering queue!");
        return false;
    }
    if (m_pTimerManager->IsTimerAdded()) {
        unsigned long long timerTime = m_pTimerManager->GetTimerTimeInfo();
        if (timerTime != dataTime)
            TTML_WARN("Mismatch in timings. Check this!! dataTime=%llu, timerTime=%llu", dataTime, timerTime);
    }
    SubtitleRenderingInfo* pBegin = entry.first;
    SubtitleRenderingInfo* pEnd = entry.second;
    if (pBegin) {
        if (!pBegin->m_bFlashing && pEnd) {
            m_pTimerManager->SetRenderedSubData(nullptr);
            m_OnTextRemove(pEnd);
        }
        m_OnTextRender(pBegin);
        m_pTimerManager->SetRenderedSubData(pBegin);
        if (m_pGraphicsEngine->IsFlashingEnabled(pBegin->m_pRendererData)) {
            pBegin->m_bFlashing = true;
            if (m_pTimerManager->SetFlashInterval(pBegin->m_EndTime, pBegin->m_TimeStamp)) {
                TTML_INFO("SetFlashInterval is successful, re-added rendering data to map again");
                m_pRenderingData->AddData(pBegin, m_pGraphicsEngine);
                return true;
            }
        }
    } else if (pEnd) {
        m_pTimerManager->SetRenderedSubData(nullptr);
        m_OnTextRemove(pEnd);
    }
    const bool result = m_SyncNextSubtitle();
    if (!result)
        m_pTimerManager->StopTimer();
    return result;
}

void CPresenter::m_OnTextRender(SubtitleRenderingInfo* pRenderingInfo)
{
    if (!pRenderingInfo) {
        TTML_WARN("pRenderingInfo is null");
        return;
    }
    if (pRenderingInfo->m_bRecreateRenderer) {
        m_pGraphicsEngine->DestroyRenderer(pRenderingInfo->m_pRendererData);
        pRenderingInfo->m_pRendererData = m_pGraphicsEngine->CreateRenderer(
            &pRenderingInfo->m_ElementList, (m_subtitleMode & SUBTITLE_MODE_FONT_SCALE) != 0);
        pRenderingInfo->m_bRecreateRenderer = false;
    }
    if (m_pGraphicsEngine->RenderText(pRenderingInfo->m_pRendererData))
        TTML_INFO("rendering done for pointer pTRenderingInfo->m_pRendererData=%p",
                  static_cast<void*>(pRenderingInfo->m_pRendererData));
    else
        TTML_WARN("m_OnTextRender failed");
}

void CPresenter::m_OnTextRemove(SubtitleRenderingInfo* pRenderingInfo)
{
    if (!pRenderingInfo)
        return;
    if (m_pTimerManager->GetRenderedSubData() == pRenderingInfo)
        m_pTimerManager->SetRenderedSubData(nullptr);
    m_pKeeper->PruneEnded(pRenderingInfo->m_EndTime);
    TTML_INFO("Remove text for pTRenderingInfo->m_pRendererData=%p",
              static_cast<void*>(pRenderingInfo->m_pRendererData));
    Discard(pRenderingInfo);
}

void CPresenter::UpdateCurrentSubtitle()
{
    TTML::Lock lock(m_pRenderingMutex);
    if (!m_pTimerManager->IsTimerAdded()) {
        TTML_INFO("No subtitle is on screen!");
        return;
    }
    SubtitleRenderingInfo* pShown = static_cast<SubtitleRenderingInfo*>(m_pTimerManager->GetRenderedSubData());
    if (!pShown) {
        TTML_INFO("It seems no subtitle on screen!");
        return;
    }
    if (m_pTimerManager->GetTimerTimeInfo() != pShown->m_EndTime) {
        TTML_WARN("Something went wrong, mismatch in timings!");
        return;
    }
    pShown->m_bRecreateRenderer = true;
    m_OnTextRender(pShown);
    TTML_INFO("Subtitles on screen update after menu change!");
}

}  // namespace TTML
