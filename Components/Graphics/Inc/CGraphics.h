#ifndef TTML_GRAPHICS_CGRAPHICS_H
#define TTML_GRAPHICS_CGRAPHICS_H

#include "IGraphics.h"

#include <string>

#include <map>
#include <mutex>

namespace TTML {

class CRootContainer;
class IDrawObserver;

// IGraphics over Ecore and Evas. Holds an Ecore-Evas reference and the
// main-loop call service (CMainThreadUtils) from Initialize to Destroy.
//
// Text surfaces (CTextSurface) and text contexts (CTextContext) may be made
// and set up on any thread; they draw on the main loop. DestroyObject called
// elsewhere frees them on the main loop.
class CGraphics final : public IGraphics {
public:
    CGraphics() = default;
    CGraphics(const CGraphics&) = delete;
    CGraphics& operator=(const CGraphics&) = delete;

    void Destroy() override;
    bool Initialize(void* parent) override;
    void* CreateObject(int kind) override;
    void DestroyObject(void* object) override;
    IRootContainer* GetRootContainer() override;

    // Objects handed out and not yet given back (any thread).
    size_t GetObjectCount() const;

    // The process's draw observer (see IDrawObserver); null removes it. Once
    // this returns, the previous observer is not called again. Any thread.
    static void SetDrawObserver(IDrawObserver* pObserver);
    // Whether one is set, so callers can skip working out texts. Any thread.
    static bool HasDrawObserver();
    // Tells the observer, if any (see IDrawObserver::OnDrawEvent).
    static void NotifyDraw(int kind, const void* object, const std::string& text);

private:
    ~CGraphics();  // Destroy() only
    void m_Release();
    void m_FreeObject(void* object, int kind);
    static void m_FreeSurface_Cb(void* object);
    static void m_FreeContext_Cb(void* object);

    bool m_bInitialized = false;
    CRootContainer* m_pRootContainer = nullptr;
    mutable std::mutex m_lock;
    std::map<void*, int> m_objects;  // object -> kind
};

}  // namespace TTML

#endif
