#include "CTTMLMenu.h"

#include "CTVService.h"
#include "TCServiceUtility.h"
#include "TTMLLog.h"
#include "TTMLTypes.h"
#include "TVServiceAPI.h"

#include <vconf.h>

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

const char* const kKeyStatus = "db/menu/caption/caption";
const char* const kKeyLang = "db/menu/caption/captionlanguage";
const char* const kKeySize = "db/menu/caption/digitalcaptionoptions/size";
const char* const kKeyFontStyle = "db/menu/caption/digitalcaptionoptions/fontstyle";
const char* const kKeyStyle = "db/menu/caption/digitalcaptionoptions/style";
const char* const kKeyFontColor = "db/menu/caption/digitalcaptionoptions/fontcolor";
const char* const kKeyBgColor = "db/menu/caption/digitalcaptionoptions/backgroundcolor";
const char* const kKeyWindowColor = "db/menu/caption/digitalcaptionoptions/windowcolor";
const char* const kKeyFontOpacity = "db/menu/caption/digitalcaptionoptions/fontopacity";
const char* const kKeyBgOpacity = "db/menu/caption/digitalcaptionoptions/backgroundopacity";
const char* const kKeyWindowOpacity = "db/menu/caption/digitalcaptionoptions/windowopacity";
const char* const kKeyEdgeType = "db/menu/caption/digitalcaptionoptions/edgetype";
const char* const kKeyEdgeColor = "db/menu/caption/digitalcaptionoptions/edgecolor";
const char* const kKeyDivisionMode = "db/menu/caption/captiondivisionmode";
const char* const kKeyInfoBanner = "memory/tv-viewer/infobanner/ttml";
const char* const kKeySignLang = "memory/menu/system/accessibility/signlanguage";

// Service information key of the current service's identifier.
const int kServiceIdInfo = 12;

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

CTTMLMenu::~CTTMLMenu()
{
    // The key store holds the main loop while keys are watched.
    if (m_bKeysWatched)
        UnregisterVconfKeysForCaption();
}

// --- Keys ---------------------------------------------------------------------

bool CTTMLMenu::m_GetVconfInt(const char* key, int* pValue)
{
    if (!key || !pValue) {
        TTML_WARN("Null pointer!");
        return false;
    }
    if (vconf_get_int(key, pValue) != VCONF_OK) {
        TTML_WARN("Unable to get vconf int value for: [%s]", key);
        return false;
    }
    return true;
}

bool CTTMLMenu::m_GetVconfBool(const char* key, bool* pValue)
{
    if (!key || !pValue) {
        TTML_WARN("Null pointer!");
        return false;
    }
    int value = 0;
    if (vconf_get_bool(key, &value) != VCONF_OK) {
        TTML_WARN("Unable to get vconf bool value for: [%s]", key);
        return false;
    }
    *pValue = value != 0;
    return true;
}

TTMLMenuOption CTTMLMenu::CopyTTMLMenuData()
{
    std::lock_guard<std::recursive_mutex> guard(m_divisionLock);
    return m_menuData;
}

bool CTTMLMenu::ReadMenuData()
{
    std::lock_guard<std::recursive_mutex> guard(m_divisionLock);
    TTMLMenuOption& d = m_menuData;
    m_GetVconfInt(kKeyStatus, &d.status);
    m_GetVconfInt(kKeyLang, &d.lang);
    m_GetVconfInt(kKeySize, &d.size);
    m_GetVconfInt(kKeyFontStyle, &d.fontStyle);
    m_GetVconfInt(kKeyStyle, &d.Style);
    m_GetVconfInt(kKeyFontColor, &d.fontColor);
    m_GetVconfInt(kKeyBgColor, &d.bgColor);
    m_GetVconfInt(kKeyWindowColor, &d.windowColor);
    m_GetVconfInt(kKeyFontOpacity, &d.fontOpacity);
    m_GetVconfInt(kKeyBgOpacity, &d.bgOpacity);
    m_GetVconfInt(kKeyWindowOpacity, &d.windowOpacity);
    m_GetVconfInt(kKeyEdgeColor, &d.edgeColor);
    m_GetVconfInt(kKeyEdgeType, &d.edgeType);
    m_GetVconfInt(kKeyDivisionMode, &d.divisionMode);
    // The flag lands in the field's first byte, as the TV stores it.
    m_GetVconfBool(kKeyInfoBanner, reinterpret_cast<bool*>(&d.ccBannerFlag));
    return m_GetVconfInt(kKeySignLang, &d.signLang);
}

template <const char* const* kKey, int32_t TTMLMenuOption::*kField>
void CTTMLMenu::m_CaptionOptionCb(keynode_t* pNode, void* pUserData)
{
    m_OnKey(pNode, pUserData, *kKey, kField);
}

using Menu = TTMLMenuOption;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionSizeCb = m_CaptionOptionCb<&kKeySize, &Menu::size>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionFontStyleCb = m_CaptionOptionCb<&kKeyFontStyle, &Menu::fontStyle>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionStyleCb = m_CaptionOptionCb<&kKeyStyle, &Menu::Style>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionFontColorCb = m_CaptionOptionCb<&kKeyFontColor, &Menu::fontColor>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionBgColorCb = m_CaptionOptionCb<&kKeyBgColor, &Menu::bgColor>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionWindowColorCb =
    m_CaptionOptionCb<&kKeyWindowColor, &Menu::windowColor>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionFontOpacityCb =
    m_CaptionOptionCb<&kKeyFontOpacity, &Menu::fontOpacity>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionBgOpacityCb = m_CaptionOptionCb<&kKeyBgOpacity, &Menu::bgOpacity>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionWindowOpacityCb =
    m_CaptionOptionCb<&kKeyWindowOpacity, &Menu::windowOpacity>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionEdgeTypeCb = m_CaptionOptionCb<&kKeyEdgeType, &Menu::edgeType>;
const CTTMLMenu::KeyCallback CTTMLMenu::m_CaptionEdgeColorCb = m_CaptionOptionCb<&kKeyEdgeColor, &Menu::edgeColor>;

// Every caption key with the callback that mirrors it.
const CTTMLMenu::KeyWatch CTTMLMenu::m_keyWatches[16] = {
    {kKeyStatus, m_CaptionStatusCb},
    {kKeyLang, m_CaptionLangChangeCb},
    {kKeySize, m_CaptionSizeCb},
    {kKeyFontStyle, m_CaptionFontStyleCb},
    {kKeyStyle, m_CaptionStyleCb},
    {kKeyFontColor, m_CaptionFontColorCb},
    {kKeyBgColor, m_CaptionBgColorCb},
    {kKeyWindowColor, m_CaptionWindowColorCb},
    {kKeyFontOpacity, m_CaptionFontOpacityCb},
    {kKeyBgOpacity, m_CaptionBgOpacityCb},
    {kKeyWindowOpacity, m_CaptionWindowOpacityCb},
    {kKeyEdgeType, m_CaptionEdgeTypeCb},
    {kKeyEdgeColor, m_CaptionEdgeColorCb},
    {kKeyDivisionMode, m_CaptionDivisionModeCb},
    {kKeyInfoBanner, m_CCInfoBannerKeyUpdateCb},
    {kKeySignLang, m_SignLanguageZoomCb},
};

bool CTTMLMenu::m_RegisterVconf(const char* key, void (*callback)(keynode_t*, void*))
{
    if (!key) {
        TTML_WARN("Null pointer!");
        return false;
    }
    if (vconf_notify_key_changed(key, callback, this) != VCONF_OK) {
        TTML_WARN("Unable to register vconf for:[%s]", key);
        return false;
    }
    return true;
}

bool CTTMLMenu::m_UnregisterVconf(const char* key, void (*callback)(keynode_t*, void*))
{
    if (!key) {
        TTML_WARN("Null pointer!");
        return false;
    }
    if (vconf_ignore_key_changed(key, callback) != VCONF_OK) {
        TTML_WARN("Unable to unregister vconf for:[%s]", key);
        return false;
    }
    return true;
}

bool CTTMLMenu::RegisterVconfKeysForCaption()
{
    bool ok = true;
    for (const KeyWatch& k : m_keyWatches)
        ok = m_RegisterVconf(k.key, k.callback) && ok;
    m_bKeysWatched = true;
    return ok;
}

bool CTTMLMenu::UnregisterVconfKeysForCaption()
{
    bool ok = true;
    for (const KeyWatch& k : m_keyWatches)
        ok = m_UnregisterVconf(k.key, k.callback) && ok;
    m_bKeysWatched = false;
    return ok;
}

CTTMLMenu* CTTMLMenu::m_OnKey(keynode_t* pNode, void* pUserData, const char* key, int32_t TTMLMenuOption::*field)
{
    if (!pNode || !pUserData) {
        TTML_WARN("Null pointer");
        return nullptr;
    }
    CTTMLMenu* pMenu = static_cast<CTTMLMenu*>(pUserData);
    std::lock_guard<std::recursive_mutex> guard(pMenu->m_divisionLock);
    pMenu->m_GetVconfInt(key, &(pMenu->m_menuData.*field));
    TTML_INFO("name:[%s] type:[%d] value:[%d]", vconf_keynode_get_name(pNode), vconf_keynode_get_type(pNode),
              vconf_keynode_get_int(pNode));
    return pMenu;
}

void CTTMLMenu::m_CaptionStatusCb(keynode_t* pNode, void* pUserData)
{
    if (!pNode || !pUserData) {
        TTML_WARN("Null pointer");
        return;
    }
    CTTMLMenu* pMenu = static_cast<CTTMLMenu*>(pUserData);
    std::lock_guard<std::recursive_mutex> guard(pMenu->m_divisionLock);
    const bool read = pMenu->m_GetVconfInt(kKeyStatus, &pMenu->m_menuData.status);
    TTML_INFO("name:[%s] type:[%d] value:[%d] vconfGetInt:[%d]", vconf_keynode_get_name(pNode),
              vconf_keynode_get_type(pNode), vconf_keynode_get_int(pNode), read);
}

void CTTMLMenu::m_CaptionDivisionModeCb(keynode_t* pNode, void* pUserData)
{
    if (CTTMLMenu* pMenu = m_OnKey(pNode, pUserData, kKeyDivisionMode, &TTMLMenuOption::divisionMode))
        pMenu->m_UpdateCaptionDivisionMode();
}

void CTTMLMenu::m_CCInfoBannerKeyUpdateCb(keynode_t* pNode, void* pUserData)
{
    if (!pNode || !pUserData) {
        TTML_WARN("Null pointer");
        return;
    }
    CTTMLMenu* pMenu = static_cast<CTTMLMenu*>(pUserData);
    {
        std::lock_guard<std::recursive_mutex> guard(pMenu->m_divisionLock);
        pMenu->m_GetVconfBool(kKeyInfoBanner, reinterpret_cast<bool*>(&pMenu->m_menuData.ccBannerFlag));
        TTML_INFO("name:[%s] type:[%d] value:[%d]", vconf_keynode_get_name(pNode), vconf_keynode_get_type(pNode),
                  vconf_keynode_get_bool(pNode));
    }
    pMenu->m_UpdateCaptionDivisionMode();
}

void CTTMLMenu::m_SignLanguageZoomCb(keynode_t* pNode, void* pUserData)
{
    if (CTTMLMenu* pMenu = m_OnKey(pNode, pUserData, kKeySignLang, &TTMLMenuOption::signLang))
        pMenu->m_UpdateCaptionDivisionMode();
}

// --- Caption division ---------------------------------------------------------

void CTTMLMenu::SetCaptionDivisionMode(bool forcedOff)
{
    {
        std::lock_guard<std::recursive_mutex> guard(m_divisionLock);
        t_forcedOff = forcedOff ? 1 : 0;
    }
    m_UpdateCaptionDivisionMode();
}

void CTTMLMenu::m_UpdateCaptionDivisionMode()
{
    bool changed = false;
    {
        std::lock_guard<std::recursive_mutex> guard(m_divisionLock);
        const TTMLMenuOption& d = m_menuData;
        if (t_forcedOff || d.signLang == 1) {
            TTML_INFO("Setting caption division to default! ForcedOff=%d, signLang=%d", t_forcedOff, d.signLang);
            changed = t_SetCaptionDivisionMode(0);
        } else if (d.divisionMode == 0) {
            changed = t_SetCaptionDivisionMode(0);
        } else if (d.status == 1 && d.ccBannerFlag == 1) {
            changed = t_SetCaptionDivisionMode(d.divisionMode);
        } else {
            TTML_INFO("Not correct state to set caption division mode. ");
            TTML_INFO("Menu Status=[%d], div Mode=[%d], CC Banner Flag=[%d]", d.status, d.divisionMode,
                      d.ccBannerFlag);
        }
    }
    // Outside the lock: a listener may wait for the main loop.
    if (changed)
        m_NotifyMenuChange();
}

// --- Caption language ---------------------------------------------------------

unsigned long long CTTMLMenu::m_GetServiceInfo(int infoKey)
{
    bool bTerminate = false;
    TCServiceUtility::IsTvsTerminated(bTerminate);
    if (bTerminate) {
        TTML_WARN("bTerminate is true!");
        return 0;
    }
    CServiceNavigation* pNavigation = nullptr;
    TVServiceAPI::CreateServiceNavigation(1, 0, &pNavigation);
    if (!pNavigation) {
        TTML_INFO("CreateServiceNavigation failed!");
        return 0;
    }
    TSTvMode tvMode = TV_MODE_NONE;
    if (pNavigation->GetTvMode(tvMode) < 1)
        TTML_WARN("GetTvMode failed");
    else
        TTML_INFO("GetTvMode = %d", static_cast<int>(tvMode));
    TCCriteriaHelper criteria;
    criteria.Fetch(infoKey);
    TCServiceData serviceData;
    unsigned long long infoVal = ~0ULL;
    if (pNavigation->GetCurrentServiceInfo(tvMode, criteria, serviceData) < 1) {
        TTML_WARN("GetCurrentServiceInfo failed!!");
    } else if (!serviceData.Get(infoKey, infoVal)) {
        infoVal = ~0ULL;
    }
    TTML_INFO("infoVal:[%llu]", infoVal);
    TVServiceAPI::Destroy(pNavigation);
    return infoVal;
}

void CTTMLMenu::SetLangInMenu(int sourceMode)
{
    if (!(sourceMode & SUBTITLE_MODE_IMSC1_DEFAULT)) {
        TTML_WARN("Caption Mode is not supported = [%d]", sourceMode);
        return;
    }
    bool bTerminate = false;
    TCServiceUtility::IsTvsTerminated(bTerminate);
    if (bTerminate) {
        TTML_WARN("TVS is down!");
        return;
    }
    const unsigned long long service = m_GetServiceInfo(kServiceIdInfo);
    CServiceDataAux* pServiceDataAux = TVServiceAPI::ServiceDataAux(1, 0);
    if (!pServiceDataAux) {
        TTML_WARN("pServiceDataAux is null!");
        return;
    }
    unsigned int count = 0;
    if (pServiceDataAux->SizeOfCaption(service, count) < 1) {
        TTML_WARN("SizeOfCaption failed!!");
        TVServiceAPI::Destroy(pServiceDataAux);
        return;
    }
    TTML_INFO("SizeOfCaption: [%u]", count);
    unsigned int index = 0;
    if (count == 0) {
        TTML_INFO("No caption found!");
    } else {
        CDataControl* pDataControl = nullptr;
        if (TVServiceAPI::CreateDataControl(1, 0, &pDataControl) != 0 || !pDataControl) {
            TTML_WARN("Failed to create data control");
            TVServiceAPI::Destroy(pDataControl);
            TVServiceAPI::Destroy(pServiceDataAux);
            return;
        }
        TCCaption caption;
        if (pDataControl->GetPreferredCaption(caption, index) >= 1) {
            TTML_INFO("Preferred Caption Data:[ID:%s][LANG:0x%x][index:%u]", caption.id.c_str(), caption.lang, index);
        } else {
            TTML_WARN("GetPreferredCaption failed!!");
            index = 0;
        }
        TVServiceAPI::Destroy(pDataControl);
    }
    TVServiceAPI::Destroy(pServiceDataAux);
    TTML_INFO("Setting vconf for caption language as : [%d]", static_cast<int>(index));
    // The key's own callback then selects the track.
    vconf_set_int(kKeyLang, static_cast<int>(index));
}

void CTTMLMenu::m_CaptionLangChangeCb(keynode_t* pNode, void* pUserData)
{
    if (!pNode || !pUserData) {
        TTML_WARN("Null pointer");
        return;
    }
    CTTMLMenu* pMenu = static_cast<CTTMLMenu*>(pUserData);
    TTML_INFO("name:[%s] type:[%d] value:[0x%x]", vconf_keynode_get_name(pNode), vconf_keynode_get_type(pNode),
              static_cast<unsigned int>(vconf_keynode_get_int(pNode)));
    bool read = false;
    int lang = 0;
    {
        std::lock_guard<std::recursive_mutex> guard(pMenu->m_divisionLock);
        read = pMenu->m_GetVconfInt(kKeyLang, &pMenu->m_menuData.lang);
        lang = pMenu->m_menuData.lang;
    }
    if (!read)
        return;
    const char text[4] = {static_cast<char>((lang >> 16) & 0xff), static_cast<char>((lang >> 8) & 0xff),
                          static_cast<char>(lang & 0xff), '\0'};
    TTML_INFO("Language:[%s]", text);
    pMenu->m_SetLanguage();
}

void CTTMLMenu::m_SetLanguage()
{
    bool bTerminate = false;
    TCServiceUtility::IsTvsTerminated(bTerminate);
    if (bTerminate) {
        TTML_WARN("TVS is terminated");
        return;
    }
    const unsigned long long service = m_GetServiceInfo(kServiceIdInfo);
    CServiceDataAux* pServiceDataAux = TVServiceAPI::ServiceDataAux(1, 0);
    unsigned int count = 0;
    if (!pServiceDataAux)
        TTML_WARN("pServiceDataAux is null!");
    else if (pServiceDataAux->SizeOfCaption(service, count) < 1)
        TTML_WARN("SizeOfCaption failed!");
    const int lang = m_menuData.lang;
    TTML_INFO("SizeOfCaption: [%u]; menuData.lang=[%d]", count, lang);
    // The index is the TV service's business; only an impossible one is refused.
    if (count == 0 || static_cast<long long>(count) < lang) {
        TTML_WARN("Invalid Size!");
        TVServiceAPI::Destroy(pServiceDataAux);
        return;
    }
    CDataControl* pDataControl = nullptr;
    if (TVServiceAPI::CreateDataControl(1, 0, &pDataControl) != 0 || !pDataControl) {
        TTML_WARN("Error in creating DataControl!");
        TVServiceAPI::Destroy(pDataControl);
        TVServiceAPI::Destroy(pServiceDataAux);
        return;
    }
    TCCaption caption;
    unsigned int current = 0;
    bool haveCurrent = false;
    if (pDataControl->GetCurrentCaption(caption, current) < 1) {
        TTML_WARN("GetCurrentCaption failed!!");
    } else {
        haveCurrent = true;
        TTML_INFO("Current Caption Data:[ID:%s][LANG:0x%x][index:%u]", caption.id.c_str(), caption.lang, current);
    }
    if (haveCurrent && static_cast<long long>(current) == lang)
        TTML_INFO("No need to call SetCurrentCaption as selected caption is already set.");
    else if (pDataControl->SetCurrentCaption(static_cast<unsigned int>(lang)) <= 0)
        TTML_WARN("SetCurrentCaption failed.");
    TVServiceAPI::Destroy(pDataControl);
    TVServiceAPI::Destroy(pServiceDataAux);
}

// --- Listeners ----------------------------------------------------------------

void CTTMLMenu::RegisterMenuChangeNotify(MenuChangeCallback fn, void* pUserData)
{
    m_listeners.emplace(fn, pUserData);
}

void* CTTMLMenu::UnRegisterMenuChangeNotify(MenuChangeCallback fn)
{
    auto it = m_listeners.find(fn);
    if (it == m_listeners.end()) {
        TTML_WARN("Callback info not found!");
        return nullptr;
    }
    void* pUserData = it->second;
    m_listeners.erase(it);
    return pUserData;
}

void CTTMLMenu::m_NotifyMenuChange()
{
    for (const auto& listener : m_listeners) {
        if (listener.first) {
            TTML_INFO("Notify menu changes!");
            listener.first(listener.second);
        }
    }
}

}  // namespace TTML
