#ifndef TTML_ENGINE_CREGIONSURFACE_H
#define TTML_ENGINE_CREGIONSURFACE_H

#include <list>
#include <map>
#include <mutex>
#include <string>

namespace TTML {

class ITextSurface;

// The text surfaces (regions) shared by every live renderer, by region id,
// so that a region keeps its surface from one interval to the next.
// Reference-counted by the renderers: each takes one reference when made
// and gives it back in CRenderer::Clear; the one that brings the count to 0
// destroys the surfaces and this object.
//
// Ownership: the surfaces belong to this registry's last user, not to the
// map (Clear forgets them without touching them).
// Threads: renderers are made on the engine thread and drawn on the main
// loop, so the map takes its own lock; the graphics engine serialises the
// reference count changes.
class CRegionSurface {
public:
    CRegionSurface() = default;
    CRegionSurface(const CRegionSurface&) = delete;
    CRegionSurface& operator=(const CRegionSurface&) = delete;

    // Inserts only when id is absent: an existing surface is never replaced.
    void Add(const std::string& id, ITextSurface* pSurface);
    // Null when id has none.
    ITextSurface* GetTextSurface(const std::string& id) const;
    // Appends every surface, in id order (bytewise).
    void GetTextSurfaceList(std::list<void*>& surfaces) const;
    // Forgets every surface without touching it.
    void Clear();
    void AddRef();
    // The count after the release.
    int Release();
    int GetRefCount() const;

private:
    mutable std::mutex m_lock;
    std::map<std::string, ITextSurface*> m_surfaces;
    int m_refCount = 0;
};

}  // namespace TTML

#endif
