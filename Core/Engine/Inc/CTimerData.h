#ifndef TTML_ENGINE_CTIMERDATA_H
#define TTML_ENGINE_CTIMERDATA_H

namespace TTML {

// What the presentation timer hands to the engine's expiry callback: the
// document time it was armed for, with that record's timestamp, and the
// record now on screen.
// Owned by CTimerManager; written under its mutex, read by the engine on the
// UI main loop from inside the expiry callback.
class CTimerData {
public:
    // pUserData: the engine, not owned.
    explicit CTimerData(void* pUserData);
    virtual ~CTimerData();

    // time: document time in ms; timeStamp: ms added to the media time.
    void SetTimingInfo(unsigned long long time, long long timeStamp);
    unsigned long long GetTime() const;
    long long GetTimeStamp() const;
    // A SubtitleRenderingInfo*, not owned; null when nothing is on screen.
    void* GetRenderedSubData() const;
    void SetRenderedSubData(void* pSubData);
    void* GetUserData() const;

private:
    unsigned long long m_time;
    long long m_timeStamp;
    void* m_pRenderedSubData;  // not owned
    void* m_pUserData;         // not owned
};

}  // namespace TTML

#endif
