#include "CGraphics.h"

#include "CMainThreadUtils.h"
#include "CRootContainer.h"
#include "CTextContext.h"
#include "CTextSurface.h"
#include "CTimer.h"
#include "IDrawObserver.h"
#include "TTMLLog.h"

#include <Ecore.h>
#include <Ecore_Evas.h>

#include <atomic>
#include <new>
#include <vector>

namespace TTML {

namespace {

std::mutex g_observerLock;
IDrawObserver* g_pObserver = nullptr;
std::atomic<bool> g_bObserved{false};

}  // namespace

void CGraphics::SetDrawObserver(IDrawObserver* pObserver)
{
    std::lock_guard<std::mutex> guard(g_observerLock);
    g_pObserver = pObserver;
    g_bObserved = pObserver != nullptr;
}

bool CGraphics::HasDrawObserver()
{
    return g_bObserved;
}

void CGraphics::NotifyDraw(int kind, const void* object, const std::string& text)
{
    std::lock_guard<std::mutex> guard(g_observerLock);
    if (g_pObserver)
        g_pObserver->OnDrawEvent(static_cast<IDrawObserver::Kind>(kind), object, text);
}

IGraphics* IGraphics::Create()
{
    return new (std::nothrow) CGraphics();
}

CGraphics::~CGraphics()
{
    m_Release();
}

void CGraphics::Destroy()
{
    TTML_INFO("");
    delete this;
}

bool CGraphics::Initialize(void* parent)
{
    TTML_INFO("");
    if (!parent) {
        TTML_WARN("pParent is null");
        return false;
    }
    if (m_bInitialized) {
        TTML_WARN("Already initialized");
        return false;
    }
    if (!eina_main_loop_is()) {
        TTML_WARN("Initialize must run on the main loop");
        return false;
    }
    Evas_Object* pParent = static_cast<Evas_Object*>(parent);
    if (!evas_object_evas_get(pParent)) {
        TTML_WARN("pParent is not an Evas object");
        return false;
    }
    // Our own reference: timers and main-loop calls need Ecore until Destroy.
    ecore_evas_init();
    m_pRootContainer = CRootContainer::Create(pParent);
    if (!m_pRootContainer || !CMainThreadUtils::Acquire()) {
        delete m_pRootContainer;
        m_pRootContainer = nullptr;
        ecore_evas_shutdown();
        return false;
    }
    m_bInitialized = true;
    return true;
}

void* CGraphics::CreateObject(int kind)
{
    if (!m_bInitialized) {
        TTML_WARN("CreateObject before Initialize");
        return nullptr;
    }
    void* pObject = nullptr;
    switch (kind) {
    case OBJECT_TEXT_SURFACE: {
        // Any thread: nothing touches the canvas until the first drawing call.
        CTextSurface* pSurface = new (std::nothrow) CTextSurface(m_pRootContainer);
        TTML_ASSERT(pSurface);
        pObject = static_cast<ITextSurface*>(pSurface);
        break;
    }
    case OBJECT_TEXT_CONTEXT: {
        CTextContext* pContext = new (std::nothrow) CTextContext(m_pRootContainer);
        TTML_ASSERT(pContext);
        pObject = static_cast<ITextContext*>(pContext);
        break;
    }
    case OBJECT_TIMER: {
        if (!eina_main_loop_is()) {
            TTML_WARN("CreateObject: timers are made on the main loop");
            return nullptr;
        }
        CTimer* pTimer = new (std::nothrow) CTimer();
        TTML_ASSERT(pTimer);
        pObject = static_cast<ITimer*>(pTimer);
        break;
    }
    default:
        TTML_WARN("CreateObject: invalid kind %d", kind);
        return nullptr;
    }
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_objects[pObject] = kind;
    }
    if (kind == OBJECT_TEXT_CONTEXT && HasDrawObserver())
        NotifyDraw(IDrawObserver::PARAGRAPH_MADE, pObject, std::string());
    return pObject;
}

void CGraphics::DestroyObject(void* object)
{
    if (!object) {
        TTML_WARN("pObject is null");
        return;
    }
    int kind;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        auto it = m_objects.find(object);
        if (it == m_objects.end()) {
            TTML_WARN("DestroyObject: unknown object %p", object);
            return;
        }
        kind = it->second;
        m_objects.erase(it);
    }
    if (kind == OBJECT_TEXT_CONTEXT && HasDrawObserver()) {
        CTextContext* pContext = static_cast<CTextContext*>(static_cast<ITextContext*>(object));
        NotifyDraw(IDrawObserver::PARAGRAPH_GONE, object, pContext->GetPlainText());
    }
    m_FreeObject(object, kind);
}

void CGraphics::m_FreeObject(void* object, int kind)
{
    if (kind == OBJECT_TEXT_SURFACE || kind == OBJECT_TEXT_CONTEXT) {
        // Canvas objects die on the main loop; the root container outlives
        // what is posted there (it is deleted on the main loop too).
        void (*pFree)(void*) = kind == OBJECT_TEXT_SURFACE ? m_FreeSurface_Cb : m_FreeContext_Cb;
        if (eina_main_loop_is())
            pFree(object);
        else
            ecore_main_loop_thread_safe_call_async(pFree, object);
        return;
    }
    if (kind == OBJECT_TIMER) {
        CTimer* pTimer = static_cast<CTimer*>(static_cast<ITimer*>(object));
        if (!eina_main_loop_is()) {
            // Ecore timers die on the main loop; it may still fire once before.
            TTML_WARN("DestroyObject: timer handed to the main loop");
            ecore_main_loop_thread_safe_call_async(
                [](void* p) { CTimer::Release(static_cast<CTimer*>(p)); }, pTimer);
            return;
        }
        CTimer::Release(pTimer);
    }
}

void CGraphics::m_FreeSurface_Cb(void* object)
{
    delete static_cast<CTextSurface*>(static_cast<ITextSurface*>(object));
}

void CGraphics::m_FreeContext_Cb(void* object)
{
    delete static_cast<CTextContext*>(static_cast<ITextContext*>(object));
}

IRootContainer* CGraphics::GetRootContainer()
{
    return m_pRootContainer;
}

size_t CGraphics::GetObjectCount() const
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_objects.size();
}

void CGraphics::m_Release()
{
    if (!m_bInitialized)
        return;
    std::map<void*, int> left;
    {
        std::lock_guard<std::mutex> guard(m_lock);
        left.swap(m_objects);
    }
    if (!left.empty())
        TTML_WARN("%zu objects were not given back; freeing them", left.size());
    for (auto& entry : left)
        m_FreeObject(entry.first, entry.second);
    CMainThreadUtils::Release();
    delete m_pRootContainer;
    m_pRootContainer = nullptr;
    m_bInitialized = false;
    ecore_evas_shutdown();
}

}  // namespace TTML
