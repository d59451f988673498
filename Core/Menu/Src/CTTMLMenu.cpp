// Stand-in until the caption menu lands: records calls only.
#include "CTTMLMenu.h"

#include "TTMLLog.h"

#include <mutex>
#include <new>

namespace TTML {

namespace {

std::mutex g_callLock;
std::vector<std::string> g_calls;

}  // namespace

CTTMLMenu* CTTMLMenu::m_pTTMLMenu = nullptr;

CTTMLMenu* CTTMLMenu::GetInstance()
{
    if (!m_pTTMLMenu) {
        m_pTTMLMenu = new (std::nothrow) CTTMLMenu();
        TTML_ASSERT(m_pTTMLMenu);
    }
    return m_pTTMLMenu;
}

void CTTMLMenu::Destroy()
{
    TTML_INFO("");
    m_Record("Destroy()");
    delete m_pTTMLMenu;
    m_pTTMLMenu = nullptr;
}

bool CTTMLMenu::ReadMenuData()
{
    m_Record("ReadMenuData()");
    return true;
}

bool CTTMLMenu::RegisterVconfKeysForCaption()
{
    m_Record("RegisterVconfKeysForCaption()");
    return true;
}

bool CTTMLMenu::UnregisterVconfKeysForCaption()
{
    m_Record("UnregisterVconfKeysForCaption()");
    return true;
}

void CTTMLMenu::SetCaptionDivisionMode(bool forcedOff)
{
    m_Record(std::string("SetCaptionDivisionMode(") + (forcedOff ? "1" : "0") + ")");
}

void CTTMLMenu::SetLangInMenu(int sourceMode)
{
    m_Record("SetLangInMenu(" + std::to_string(sourceMode) + ")");
}

void CTTMLMenu::RegisterMenuChangeNotify(MenuChangeCallback fn, void* pUserData)
{
    m_Record("RegisterMenuChangeNotify()");
    m_listeners.emplace(fn, pUserData);
}

void* CTTMLMenu::UnRegisterMenuChangeNotify(MenuChangeCallback fn)
{
    m_Record("UnRegisterMenuChangeNotify()");
    auto it = m_listeners.find(fn);
    if (it == m_listeners.end()) {
        TTML_WARN("Callback info not found!");
        return nullptr;
    }
    void* pUserData = it->second;
    m_listeners.erase(it);
    return pUserData;
}

void CTTMLMenu::NotifyMenuChange()
{
    for (const auto& listener : m_listeners) {
        if (listener.first) {
            TTML_INFO("Notify menu changes!");
            listener.first(listener.second);
        }
    }
}

std::vector<std::string> CTTMLMenu::TakeCalls()
{
    std::lock_guard<std::mutex> guard(g_callLock);
    std::vector<std::string> calls;
    calls.swap(g_calls);
    return calls;
}

void CTTMLMenu::m_Record(const std::string& call)
{
    std::lock_guard<std::mutex> guard(g_callLock);
    g_calls.push_back(call);
}

}  // namespace TTML
