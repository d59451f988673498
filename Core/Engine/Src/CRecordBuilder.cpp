#include "CRecordBuilder.h"

#include "CGraphicsEngine.h"
#include "IMutex.h"
#include "Lock.h"
#include "SubtitleRenderingInfo.h"
#include "TTMLLog.h"

#include <new>

namespace TTML {

CRecordBuilder::CRecordBuilder(CGraphicsEngine* pGraphicsEngine, IMutex* pRenderingMutex)
    : m_pGraphicsEngine(pGraphicsEngine), m_pRenderingMutex(pRenderingMutex), m_bFontScale(false),
      m_pSubtitleInfo(nullptr), m_next(m_keys.end()), m_bSeekPending(false), m_seekPosition(0),
      m_pSeekMutex(nullptr)
{
    m_pSeekMutex = IMutex::Create();
    TTML_ASSERT(m_pSeekMutex);
}

CRecordBuilder::~CRecordBuilder()
{
    m_pSeekMutex->Destroy();
}

void CRecordBuilder::SetFontScale(bool fontScale)
{
    m_bFontScale = fontScale;
}

void CRecordBuilder::Begin(const CSubtitleInfo* pSubtitleInfo)
{
    {
        TTML::Lock lock(m_pRenderingMutex);
        m_pGraphicsEngine->CreateRootSurface(pSubtitleInfo->GetCellResolution(), pSubtitleInfo->GetTTExtent(),
                                             pSubtitleInfo->GetAspectRatio());
    }
    m_pSubtitleInfo = pSubtitleInfo;
    m_keys.clear();
    pSubtitleInfo->GetUniqueKeys(m_keys);
    m_next = m_keys.begin();
}

bool CRecordBuilder::HasNext() const
{
    return m_next != m_keys.end();
}

SubtitleRenderingInfo* CRecordBuilder::Next()
{
    {
        TTML::Lock lock(m_pSeekMutex);
        if (m_bSeekPending) {
            m_bSeekPending = false;
            // The seek position is a media time; intervals are in document
            // time, which is media time + the document's time stamp.
            const long long docTime = m_seekPosition + m_pSubtitleInfo->GetTimeStamp();
            const unsigned long long seekTime = docTime < 0 ? 0 : static_cast<unsigned long long>(docTime);
            // Resume from the interval holding the seek position.
            auto at = m_keys.lower_bound(CSubtitleInfo::TimeInterval(seekTime, seekTime));
            if (at != m_keys.begin())
                --at;
            m_next = at;
        }
    }
    const CSubtitleInfo::TimeInterval interval = *m_next++;
    SubtitleRenderingInfo* pRecord = new (std::nothrow) SubtitleRenderingInfo();
    if (!pRecord)
        return nullptr;
    pRecord->m_BeginTime = interval.first;
    pRecord->m_EndTime = interval.second;
    pRecord->m_TimeStamp = m_pSubtitleInfo->GetTimeStamp();
    m_pSubtitleInfo->GetElementListForInterval(interval, pRecord->m_ElementList);
    pRecord->m_pRendererData = m_pGraphicsEngine->CreateRenderer(&pRecord->m_ElementList, m_bFontScale);
    return pRecord;
}

void CRecordBuilder::MarkSeek(long long position)
{
    TTML::Lock lock(m_pSeekMutex);
    // Kept signed: it is a media time, shifted by each document's time stamp.
    m_seekPosition = position;
    m_bSeekPending = true;
}

bool CRecordBuilder::IsSeekPending() const
{
    TTML::Lock lock(m_pSeekMutex);
    return m_bSeekPending;
}

}  // namespace TTML
