#include "CGraphicsEngine.h"

#include "IMutex.h"
#include "Lock.h"
#include "TTMLLog.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <new>

namespace TTML {

class CRenderer {
public:
    CRenderer(int serial, const std::list<CElementSPTR>& elements, bool fontScale, bool flashing)
        : m_serial(serial), m_elements(elements), m_bFontScale(fontScale), m_bFlashing(flashing),
          m_begin(0), m_end(0)
    {
        // Worked out once here so that recording a drawing stays cheap.
        bool timed = false;
        for (const CElementSPTR& element : m_elements) {
            std::string begin;
            std::string end;
            if (!element || !element->GetAttrValue(ATTR_BEGIN, begin) || !element->GetAttrValue(ATTR_END, end))
                continue;
            unsigned long long b = std::strtoull(begin.c_str(), nullptr, 10);
            unsigned long long e = std::strtoull(end.c_str(), nullptr, 10);
            m_begin = timed ? std::max(m_begin, b) : b;
            m_end = timed ? std::min(m_end, e) : e;
            timed = true;
        }
    }
    int m_serial;
    std::list<CElementSPTR> m_elements;
    bool m_bFontScale;
    bool m_bFlashing;
    unsigned long long m_begin;
    unsigned long long m_end;
};

namespace {

std::mutex g_observerLock;
CGraphicsEngine::EventObserver g_pObserver = nullptr;
void* g_pObserverUser = nullptr;

}  // namespace

void CGraphicsEngine::SetObserver(EventObserver observer, void* pUser)
{
    std::lock_guard<std::mutex> guard(g_observerLock);
    g_pObserver = observer;
    g_pObserverUser = pUser;
}

void CGraphicsEngine::m_Record(EventKind kind, const CRenderer* pRenderer)
{
    const long long now =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now().time_since_epoch())
            .count();
    m_events.push_back(Event{kind, pRenderer->m_serial, pRenderer->m_elements.size(), now, pRenderer->m_begin,
                             pRenderer->m_end});
    std::lock_guard<std::mutex> guard(g_observerLock);
    if (g_pObserver)
        g_pObserver(m_events.back(), g_pObserverUser);
}

CGraphicsEngine::CGraphicsEngine(IGraphics* pGraphics)
    : m_pGraphics(pGraphics), m_pMutex(nullptr), m_bFlashing(false), m_nextSerial(1), m_rejected(0),
      m_rootSurfaces(0)
{
    m_pMutex = IMutex::Create();
    TTML_ASSERT(m_pMutex);
}

CGraphicsEngine::~CGraphicsEngine()
{
    if (!m_live.empty()) {
        TTML_WARN("%zu renderer(s) not destroyed", m_live.size());
        for (CRenderer* pRenderer : m_live)
            delete pRenderer;
        m_live.clear();
    }
    m_pMutex->Destroy();
}

void CGraphicsEngine::CreateRootSurface(const std::string& cellResolution, const std::string& extent,
                                        const std::string& aspectRatio)
{
    TTML::Lock lock(m_pMutex);
    ++m_rootSurfaces;
    TTML_INFO("cellResolution=[%s] extent=[%s] aspectRatio=[%s]", cellResolution.c_str(),
              extent.c_str(), aspectRatio.c_str());
}

CRenderer* CGraphicsEngine::CreateRenderer(const std::list<CElementSPTR>* pElementList, bool fontScaleFlag)
{
    if (!pElementList) {
        TTML_WARN("pElementList pointer null");
        return nullptr;
    }
    TTML::Lock lock(m_pMutex);
    CRenderer* pRenderer =
        new (std::nothrow) CRenderer(m_nextSerial++, *pElementList, fontScaleFlag, m_bFlashing);
    TTML_ASSERT(pRenderer);
    m_live.push_back(pRenderer);
    m_Record(RENDERER_CREATED, pRenderer);
    return pRenderer;
}

int CGraphicsEngine::RenderText(CRenderer* pRenderer)
{
    if (!pRenderer) {
        TTML_WARN("pRenderer is null");
        return 0;
    }
    TTML::Lock lock(m_pMutex);
    if (!m_IsLive(pRenderer)) {
        TTML_WARN("renderer [%p] is not live", static_cast<void*>(pRenderer));
        ++m_rejected;
        return 0;
    }
    m_Record(RENDERER_DRAWN, pRenderer);
    return 1;
}

bool CGraphicsEngine::IsFlashingEnabled(CRenderer* pRenderer)
{
    if (!pRenderer) {
        TTML_WARN("pRenderer is null");
        return false;
    }
    TTML::Lock lock(m_pMutex);
    return m_IsLive(pRenderer) && pRenderer->m_bFlashing;
}

void CGraphicsEngine::DestroyRenderer(CRenderer* pRenderer)
{
    if (!pRenderer) {
        TTML_WARN("pRenderer is null");
        return;
    }
    TTML::Lock lock(m_pMutex);
    std::list<CRenderer*>::iterator it = std::find(m_live.begin(), m_live.end(), pRenderer);
    if (it == m_live.end()) {
        // A second destroy would be a double free with the real renderer.
        TTML_WARN("renderer [%p] is not live", static_cast<void*>(pRenderer));
        ++m_rejected;
        return;
    }
    m_live.erase(it);
    m_Record(RENDERER_DESTROYED, pRenderer);
    delete pRenderer;
}

void CGraphicsEngine::SetFlashing(bool enabled)
{
    TTML::Lock lock(m_pMutex);
    m_bFlashing = enabled;
}

std::vector<CGraphicsEngine::Event> CGraphicsEngine::GetEvents() const
{
    TTML::Lock lock(m_pMutex);
    return m_events;
}

int CGraphicsEngine::Count(EventKind kind) const
{
    TTML::Lock lock(m_pMutex);
    return static_cast<int>(std::count_if(m_events.begin(), m_events.end(),
                                          [kind](const Event& event) { return event.kind == kind; }));
}

int CGraphicsEngine::GetLiveCount() const
{
    TTML::Lock lock(m_pMutex);
    return static_cast<int>(m_live.size());
}

int CGraphicsEngine::GetRejectedCount() const
{
    TTML::Lock lock(m_pMutex);
    return m_rejected;
}

int CGraphicsEngine::GetRootSurfaceCount() const
{
    TTML::Lock lock(m_pMutex);
    return m_rootSurfaces;
}

int CGraphicsEngine::GetSerial(const CRenderer* pRenderer) const
{
    TTML::Lock lock(m_pMutex);
    return m_IsLive(pRenderer) ? pRenderer->m_serial : -1;
}

std::list<CElementSPTR> CGraphicsEngine::GetElements(const CRenderer* pRenderer) const
{
    TTML::Lock lock(m_pMutex);
    return m_IsLive(pRenderer) ? pRenderer->m_elements : std::list<CElementSPTR>();
}

bool CGraphicsEngine::GetFontScaleFlag(const CRenderer* pRenderer) const
{
    TTML::Lock lock(m_pMutex);
    return m_IsLive(pRenderer) && pRenderer->m_bFontScale;
}

bool CGraphicsEngine::m_IsLive(const CRenderer* pRenderer) const
{
    return std::find(m_live.begin(), m_live.end(), pRenderer) != m_live.end();
}

}  // namespace TTML
