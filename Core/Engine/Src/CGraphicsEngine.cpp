#include "CGraphicsEngine.h"

#include "IMutex.h"
#include "Lock.h"
#include "TTMLLog.h"

#include <algorithm>
#include <new>

namespace TTML {

class CRenderer {
public:
    CRenderer(int serial, const std::list<CElementSPTR>& elements, bool fontScale, bool flashing)
        : m_serial(serial), m_elements(elements), m_bFontScale(fontScale), m_bFlashing(flashing)
    {
    }
    int m_serial;
    std::list<CElementSPTR> m_elements;
    bool m_bFontScale;
    bool m_bFlashing;
};

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
    m_events.push_back(Event{RENDERER_CREATED, pRenderer->m_serial, pRenderer->m_elements.size()});
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
    m_events.push_back(Event{RENDERER_DRAWN, pRenderer->m_serial, pRenderer->m_elements.size()});
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
    m_events.push_back(Event{RENDERER_DESTROYED, pRenderer->m_serial, pRenderer->m_elements.size()});
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
