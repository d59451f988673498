#include "CTimerData.h"

namespace TTML {

CTimerData::CTimerData(void* pUserData)
    : m_time(0), m_timeStamp(0), m_pRenderedSubData(nullptr), m_pUserData(pUserData)
{
}

CTimerData::~CTimerData() {}

void CTimerData::SetTimingInfo(unsigned long long time, long long timeStamp)
{
    m_time = time;
    m_timeStamp = timeStamp;
}

unsigned long long CTimerData::GetTime() const { return m_time; }

long long CTimerData::GetTimeStamp() const { return m_timeStamp; }

void* CTimerData::GetRenderedSubData() const { return m_pRenderedSubData; }

void CTimerData::SetRenderedSubData(void* pSubData) { m_pRenderedSubData = pSubData; }

void* CTimerData::GetUserData() const { return m_pUserData; }

}  // namespace TTML
