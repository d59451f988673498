#ifndef TTML_ENGINE_CRENDERINGDATA_H
#define TTML_ENGINE_CRENDERINGDATA_H

#include "SubtitleRenderingInfo.h"

#include <map>
#include <utility>

namespace TTML {

class CGraphicsEngine;

// The rendering schedule: records filed under the times at which something
// changes. Each entry holds the record to draw at that time (it begins there)
// and the record to remove at that time (it ends there); at least one of the
// two is set. A record is filed under its begin and its end time until its
// begin entry is popped (it is then on screen).
//
// Ownership: records given to AddData belong to the schedule. Popping or
// removing an entry never deletes its records; the engine deletes each record
// (renderer first) when it consumes or clears its remove entry.
// Threads: not thread-safe; the engine guards it with its rendering mutex.
class CRenderingData {
public:
    // first: record to draw at the entry's time; second: record to remove.
    typedef std::pair<SubtitleRenderingInfo*, SubtitleRenderingInfo*> RenderingPair;
    typedef std::map<unsigned long long, RenderingPair> RenderingMap;

    CRenderingData();
    // Warns and dumps when entries are left; the records are not deleted.
    virtual ~CRenderingData();
    CRenderingData(const CRenderingData&) = delete;
    CRenderingData& operator=(const CRenderingData&) = delete;

    // Files pData. Identical timings merge into the scheduled record (pData
    // is deleted, its renderer destroyed through pGraphicEngine); data
    // scheduled after an overlapping begin is cut away. True when something
    // was cut, so the armed timer must be re-armed; false otherwise.
    // Takes pData in every case except a null argument, when nothing is
    // taken and the caller keeps pData.
    bool AddData(SubtitleRenderingInfo* pData, CGraphicsEngine* pGraphicEngine);
    // pData begins earlier than the latest time in the schedule.
    bool IsOverlapping(SubtitleRenderingInfo* pData);
    // The earliest entry, left in place. False (outputs untouched) when empty.
    bool GetFront(unsigned long long& time, RenderingPair& data);
    // GetFront, then the entry is erased.
    bool PopNextSubtitleData(unsigned long long& time, RenderingPair& data);
    // Erases the entry for `time` without deleting its records.
    bool RemoveData(unsigned long long time);
    // Logs every entry in time order.
    void Dump();

    // Read-only view for the engine's checks and for tests.
    const RenderingMap& GetMap() const { return m_dataMap; }

private:
    void m_AddData(SubtitleRenderingInfo* pData);
    void m_ReplaceSubtitleData(SubtitleRenderingInfo* pOld, SubtitleRenderingInfo* pNew);
    bool m_DeleteOverlappdData(SubtitleRenderingInfo* pData, CGraphicsEngine* pGraphicEngine);

    RenderingMap m_dataMap;
};

}  // namespace TTML

#endif
