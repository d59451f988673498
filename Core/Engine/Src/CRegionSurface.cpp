#include "CRegionSurface.h"

namespace TTML {

void CRegionSurface::Add(const std::string& id, ITextSurface* pSurface)
{
    std::lock_guard<std::mutex> guard(m_lock);
    m_surfaces.emplace(id, pSurface);
}

ITextSurface* CRegionSurface::GetTextSurface(const std::string& id) const
{
    std::lock_guard<std::mutex> guard(m_lock);
    auto it = m_surfaces.find(id);
    return it == m_surfaces.end() ? nullptr : it->second;
}

void CRegionSurface::GetTextSurfaceList(std::list<void*>& surfaces) const
{
    std::lock_guard<std::mutex> guard(m_lock);
    for (const auto& entry : m_surfaces)
        surfaces.push_back(entry.second);
}

void CRegionSurface::Clear()
{
    std::lock_guard<std::mutex> guard(m_lock);
    m_surfaces.clear();
}

void CRegionSurface::AddRef()
{
    std::lock_guard<std::mutex> guard(m_lock);
    ++m_refCount;
}

int CRegionSurface::Release()
{
    std::lock_guard<std::mutex> guard(m_lock);
    return --m_refCount;
}

int CRegionSurface::GetRefCount() const
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_refCount;
}

}  // namespace TTML
