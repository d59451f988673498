#include "CGraphicsEngine.h"

#include "CRegionSurface.h"
#include "CRenderer.h"
#include "IGraphics.h"
#include "IMutex.h"
#include "IRootContainer.h"
#include "Lock.h"
#include "TTMLLog.h"
#include "Util.h"

#include <cstdlib>
#include <new>

namespace TTML {

namespace {

// The first two numbers of a "a b" parameter (strtol, so "1920px" reads
// 1920); the defaults when the text is empty.
void ReadPair(const std::string& text, int& first, int& second)
{
    if (text.empty())
        return;
    std::vector<std::string> tokens = StrSplit(text, " ");
    std::vector<std::string> numbers;
    for (const std::string& token : tokens)
        if (!token.empty())
            numbers.push_back(token);
    first = numbers.size() > 0 ? static_cast<int>(std::strtol(numbers[0].c_str(), nullptr, 10)) : 0;
    second = numbers.size() > 1 ? static_cast<int>(std::strtol(numbers[1].c_str(), nullptr, 10)) : 0;
}

}  // namespace

CGraphicsEngine::CGraphicsEngine(IGraphics* pGraphics)
    : m_pGraphics(pGraphics), m_pRegionSurface(nullptr), m_rootRect(), m_cellSize(0.0, 0.0), m_pMutex(nullptr)
{
    m_pMutex = IMutex::Create();
    TTML_ASSERT(m_pMutex);
}

CGraphicsEngine::~CGraphicsEngine()
{
    if (m_pRegionSurface)
        TTML_WARN("renderers were not destroyed; %d still hold the region surfaces",
                  m_pRegionSurface->GetRefCount());
    m_pMutex->Destroy();
}

void CGraphicsEngine::CreateRootSurface(const std::string& cellResolution, const std::string& extent,
                                        const std::string& aspectRatio)
{
    int columns = 1;
    int rows = 1;
    ReadPair(cellResolution, columns, rows);
    TTML_INFO("resolution h v : %d %d", columns, rows);
    IRootContainer* pRoot = m_pGraphics ? m_pGraphics->GetRootContainer() : nullptr;
    if (!pRoot) {
        TTML_WARN("RootContainer is NULL");
        return;
    }
    int aspectW = 1;
    int aspectH = 1;
    ReadPair(aspectRatio, aspectW, aspectH);
    int extentW = -1;
    int extentH = -1;
    ReadPair(extent, extentW, extentH);
    // The main loop may be building a renderer (a redraw) from the geometry.
    TTML::Lock lock(m_pMutex);
    pRoot->SetRootInfo(extentW, extentH, aspectW, aspectH);
    pRoot->GetGeometry(&m_rootRect.x, &m_rootRect.y, &m_rootRect.w, &m_rootRect.h);
    // Integer divisions, as the cell grid is whole pixels; 0 rows or columns
    // give a cell size of 0 rather than a division by zero.
    m_cellSize.first = columns > 0 ? static_cast<double>(m_rootRect.w / columns) : 0.0;
    m_cellSize.second = rows > 0 ? static_cast<double>(m_rootRect.h / rows) : 0.0;
}

CRenderer* CGraphicsEngine::CreateRenderer(const std::list<CElementSPTR>* pElementList, bool fontScaleFlag)
{
    if (!pElementList) {
        TTML_WARN("pElementList pointer null");
        return nullptr;
    }
    TTML::Lock lock(m_pMutex);
    if (!m_pRegionSurface) {
        m_pRegionSurface = new (std::nothrow) CRegionSurface();
        TTML_ASSERT(m_pRegionSurface);
    }
    CRenderer* pRenderer = new (std::nothrow) CRenderer(m_pGraphics, m_pRegionSurface);
    TTML_ASSERT(pRenderer);
    pRenderer->ProcessElementList(pElementList, m_rootRect, m_cellSize, fontScaleFlag);
    return pRenderer;
}

int CGraphicsEngine::RenderText(CRenderer* pRenderer)
{
    if (!pRenderer) {
        TTML_WARN("pRenderer is null");
        return 0;
    }
    return pRenderer->RenderText();
}

bool CGraphicsEngine::IsFlashingEnabled(CRenderer* pRenderer)
{
    if (!pRenderer) {
        TTML_WARN("pRenderer is null");
        return false;
    }
    return pRenderer->IsFlashingEnabled();
}

void CGraphicsEngine::DestroyRenderer(CRenderer* pRenderer)
{
    if (!pRenderer) {
        TTML_WARN("pRenderer is null");
        return;
    }
    {
        TTML::Lock lock(m_pMutex);
        if (pRenderer->Clear())
            m_pRegionSurface = nullptr;
    }
    delete pRenderer;
}

}  // namespace TTML
