// Stand-in until the caption menu lands: records calls only.
#include "CTTMLMenu.h"

#include "TTMLLog.h"

#include <mutex>
#include <new>

namespace TTML {

namespace {

// Menu colour enumeration; index 0 is never handed out.
const TTMLColor kMenuColors[9] = {
    {65535, 65535, 65535, 65535, true},  // 0: unused
    {65535, 65535, 65535, 65535, true},  // 1 white
    {65535, 0, 0, 0, true},              // 2 black
    {65535, 65535, 0, 0, true},          // 3 red
    {65535, 0, 65535, 0, true},          // 4 green
    {65535, 0, 0, 65535, true},          // 5 blue
    {65535, 65535, 65535, 0, true},      // 6 yellow
    {65535, 65535, 0, 65535, true},      // 7 magenta
    {65535, 0, 65535, 65535, true},      // 8 cyan
};

// Menu font enumeration; the Cpf names are the TV's preset caption fonts.
const char* const kMenuFonts[9] = {
    "monospaceserif", "monospaceserif", "Cpf01", "Cpf02", "Cpf03", "Cpf04", "Cpf05", "Cpf06", "Cpf07",
};

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

bool CTTMLMenu::GetTTMLColorByEnum(int index, TTMLColor& out) const
{
    if (index == 0)
        return false;
    if (index < 1 || index > 8) {
        TTML_WARN("Wrong Color selected.");
        return false;
    }
    out = kMenuColors[index];
    return true;
}

bool CTTMLMenu::GetTTMLFontStyleByEnum(int index, std::string& out) const
{
    if (index == 0)
        return false;
    if (index < 1 || index > 8) {
        TTML_WARN("Wrong Font Style selected.");
        return false;
    }
    out = kMenuFonts[index];
    return true;
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
