#include "CRenderingData.h"

#include "CGraphicsEngine.h"
#include "TTMLLog.h"

#include <iterator>

namespace TTML {

CRenderingData::CRenderingData() {}

CRenderingData::~CRenderingData()
{
    // The engine clears the schedule first; anything left here is its bug,
    // and the records cannot be freed without the graphics engine.
    if (!m_dataMap.empty()) {
        TTML_WARN("Potential memory leak! Need to check.");
        Dump();
    }
}

bool CRenderingData::AddData(SubtitleRenderingInfo* pData, CGraphicsEngine* pGraphicEngine)
{
    if (!pData || !pGraphicEngine) {
        TTML_WARN("pData/pGraphicEngine is null!!!");
        return false;
    }

    RenderingMap::iterator endEntry = m_dataMap.find(pData->m_EndTime);
    if (endEntry != m_dataMap.end()) {
        SubtitleRenderingInfo* pOld = endEntry->second.second;
        // A flashing record comes back after its begin entry was popped.
        if (pOld == pData) {
            m_AddData(pData);
            return false;
        }
        if (pOld && pOld->m_BeginTime == pData->m_BeginTime) {
            TTML_INFO("Old data with same timings found in map. begin=%llu, end=%llu",
                      pOld->m_BeginTime, pOld->m_EndTime);
            m_ReplaceSubtitleData(pOld, pData);
            if (pData->m_pRendererData)
                pGraphicEngine->DestroyRenderer(pData->m_pRendererData);
            delete pData;
            // Already on screen: draw the merged record again at once.
            if (m_dataMap.find(pOld->m_BeginTime) == m_dataMap.end()) {
                m_dataMap[pOld->m_BeginTime] = RenderingPair(pOld, nullptr);
                TTML_INFO("Special case where new data (whose timings are same as old data in map) "
                          "comes late. It will be rendered again. begin=%llu and end=%llu",
                          pOld->m_BeginTime, pOld->m_EndTime);
            }
            return false;
        }
    }

    bool bCut = false;
    if (IsOverlapping(pData))
        bCut = m_DeleteOverlappdData(pData, pGraphicEngine);
    m_AddData(pData);
    return bCut;
}

bool CRenderingData::IsOverlapping(SubtitleRenderingInfo* pData)
{
    if (!pData)
        return false;
    if (m_dataMap.empty()) {
        TTML_INFO("Data map is empty!");
        return false;
    }
    return pData->m_BeginTime < m_dataMap.rbegin()->first;
}

bool CRenderingData::GetFront(unsigned long long& time, RenderingPair& data)
{
    if (m_dataMap.empty()) {
        TTML_INFO("Data map is empty!");
        return false;
    }
    time = m_dataMap.begin()->first;
    data = m_dataMap.begin()->second;
    return true;
}

bool CRenderingData::PopNextSubtitleData(unsigned long long& time, RenderingPair& data)
{
    if (!GetFront(time, data))
        return false;
    return RemoveData(time);
}

bool CRenderingData::RemoveData(unsigned long long time)
{
    RenderingMap::iterator it = m_dataMap.find(time);
    if (it == m_dataMap.end()) {
        TTML_INFO("No data available in map for time [%llu].", time);
        return false;
    }
    m_dataMap.erase(it);
    return true;
}

void CRenderingData::Dump()
{
    if (m_dataMap.empty()) {
        TTML_INFO("Data map is empty!");
        return;
    }
    TTML_INFO("Current data map holds below items:\n");
    int index = 1;
    for (const RenderingMap::value_type& entry : m_dataMap) {
        TTML_INFO("%i. Time=[%llu] : ", index++, entry.first);
        const SubtitleRenderingInfo* pRemove = entry.second.second;
        if (pRemove)
            TTML_INFO("To remove: bTime=[%llu], eTime[%llu]", pRemove->m_BeginTime, pRemove->m_EndTime);
        else
            TTML_INFO("No data to remove!");
        const SubtitleRenderingInfo* pRender = entry.second.first;
        if (pRender)
            TTML_INFO("To render: bTime=[%llu], eTime[%llu]", pRender->m_BeginTime, pRender->m_EndTime);
        else
            TTML_INFO("No data to render!");
        TTML_INFO("\n");
    }
}

void CRenderingData::m_AddData(SubtitleRenderingInfo* pData)
{
    // operator[] creates a missing entry as (null, null); an existing entry
    // keeps its other half, which is how back-to-back records share one.
    m_dataMap[pData->m_BeginTime].first = pData;
    m_dataMap[pData->m_EndTime].second = pData;
    TTML_INFO("Subtitle rendering data is added for bTime=%llu, etime=%llu",
              pData->m_BeginTime, pData->m_EndTime);
}

void CRenderingData::m_ReplaceSubtitleData(SubtitleRenderingInfo* pOld, SubtitleRenderingInfo* pNew)
{
    std::list<CElementSPTR>& oldList = pOld->m_ElementList;
    const std::size_t n = oldList.size();
    const std::size_t m = pNew->m_ElementList.size();
    if (m < n) {
        std::list<CElementSPTR>::iterator keepEnd = oldList.begin();
        std::advance(keepEnd, n - m);
        oldList.erase(keepEnd, oldList.end());
    } else {
        oldList.clear();
    }
    oldList.insert(oldList.end(), pNew->m_ElementList.begin(), pNew->m_ElementList.end());
    // The current renderer was built for the old list; rebuilt at the next drawing.
    pOld->m_bRecreateRenderer = true;
    TTML_INFO("merged new data [%p] with existing [%p]", static_cast<void*>(pNew),
              static_cast<void*>(pOld));
}

bool CRenderingData::m_DeleteOverlappdData(SubtitleRenderingInfo* pData, CGraphicsEngine* pGraphicEngine)
{
    const unsigned long long beginTime = pData->m_BeginTime;
    RenderingMap::iterator it = m_dataMap.upper_bound(beginTime);
    if (it == m_dataMap.end() || !pGraphicEngine) {
        TTML_ERROR("Data error!");
        return false;
    }

    // Records do not overlap, so only the first one ending after the new
    // begin can have started before it: keep it, shortened.
    SubtitleRenderingInfo* pPrevious = it->second.second;
    if (pPrevious && pPrevious->m_BeginTime < beginTime) {
        TTML_INFO("Restricting previous subtitle endTime(%llu) till the beginTime(%llu) of new.",
                  pPrevious->m_EndTime, beginTime);
        pPrevious->m_EndTime = beginTime;
        RenderingPair& cutEntry = m_dataMap[beginTime];
        cutEntry.first = nullptr;
        cutEntry.second = pPrevious;
        it = m_dataMap.erase(it);
    }

    // Everything later goes; each record is freed through its end entry.
    while (it != m_dataMap.end()) {
        SubtitleRenderingInfo* pRemove = it->second.second;
        if (pRemove) {
            TTML_INFO("Deleting sub data from previous file(s).");
            if (pRemove->m_pRendererData)
                pGraphicEngine->DestroyRenderer(pRemove->m_pRendererData);
            delete pRemove;
        }
        it = m_dataMap.erase(it);
    }
    return true;
}

}  // namespace TTML
