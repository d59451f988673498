#ifndef TTML_MENU_CTTMLMENU_H
#define TTML_MENU_CTTMLMENU_H

#include "CCaptionDivision.h"
#include "TTMLMenuOption.h"
#include "TTMLTypes.h"

#include <map>
#include <mutex>
#include <string>

typedef struct _keynode_t keynode_t;

namespace TTML {

// The process-wide caption menu singleton: mirrors the viewer's caption
// settings (vconf keys) in one record and watches them. The controller
// registers and unregisters the key watches, forces caption division off while
// captions are hidden, and writes the caption language; the engine registers a
// listener for caption division changes; the renderer reads the record.
//
// Threads: GetInstance and the listener map take no lock (the singleton is
// made on the main loop before any source message can arrive); every other
// operation may be called from the source thread. Key callbacks run on the
// main loop. Division decisions are serialised by one lock, never held while
// listeners run; listeners run on the thread that changed the division.
// The record is written under that lock by the key callbacks (main loop) and
// ReadMenuData (the controller's thread, when the source asks, normally
// before anything is drawn); the renderer reads a copy (CopyTTMLMenuData).
class CTTMLMenu : public CCaptionDivision {
public:
    typedef void (*MenuChangeCallback)(void* pUserData);

    // Creates the singleton on first use; never null afterwards.
    static CTTMLMenu* GetInstance();
    // Deletes the singleton; the next GetInstance makes a fresh one.
    static void Destroy();

    // The record itself, for the thread that writes it (and tests).
    TTMLMenuOption* GetTTMLMenuData() { return &m_menuData; }
    // A copy taken under the record's lock: the renderer reads the settings on
    // the engine thread (when it lays an interval out) as well as the main loop.
    TTMLMenuOption CopyTTMLMenuData();
    // Menu colour index 1..8 to a colour; 0 gives false with out unchanged,
    // anything else false with a warning.
    bool GetTTMLColorByEnum(int index, TTMLColor& out) const;
    // Menu font index 1..8 to a font family name; the same rule.
    bool GetTTMLFontStyleByEnum(int index, std::string& out) const;

    // Reads every caption key into the menu record. The result of the last read.
    bool ReadMenuData();
    // Start and stop watching the caption keys; true when every key succeeded.
    bool RegisterVconfKeysForCaption();
    bool UnregisterVconfKeysForCaption();

    // forcedOff: keep caption division off (captions hidden, or a source
    // without division support). Resizes the video and calls the listeners
    // when the division mode changes.
    void SetCaptionDivisionMode(bool forcedOff);
    // sourceMode: the source's subtitle mode bit set. Writes the TV service's
    // preferred caption track into the caption language key.
    void SetLangInMenu(int sourceMode);

    // Adds a listener for caption division changes; when fn is already
    // registered the first user data stays.
    void RegisterMenuChangeNotify(MenuChangeCallback fn, void* pUserData);
    // The removed listener's user data, or null with a warning when fn is unknown.
    void* UnRegisterMenuChangeNotify(MenuChangeCallback fn);
    CTTMLMenu(const CTTMLMenu&) = delete;
    CTTMLMenu& operator=(const CTTMLMenu&) = delete;

private:
    CTTMLMenu() = default;
    ~CTTMLMenu() override;

    bool m_GetVconfInt(const char* key, int* pValue);
    bool m_GetVconfBool(const char* key, bool* pValue);
    bool m_RegisterVconf(const char* key, void (*callback)(keynode_t*, void*));
    bool m_UnregisterVconf(const char* key, void (*callback)(keynode_t*, void*));
    // Re-reads the key of node into field, under the division lock.
    static CTTMLMenu* m_OnKey(keynode_t* pNode, void* pUserData, const char* key, int32_t TTMLMenuOption::*field);

    void m_UpdateCaptionDivisionMode();
    void m_NotifyMenuChange();
    void m_SetLanguage();
    unsigned long long m_GetServiceInfo(int infoKey);

    static void m_CaptionStatusCb(keynode_t* pNode, void* pUserData);
    static void m_CaptionLangChangeCb(keynode_t* pNode, void* pUserData);
    // The callback of a key that is only re-read into its field (size,
    // font style, style, the colours, opacities and edge settings); the
    // named callbacks below are its instances.
    template <const char* const* kKey, int32_t TTMLMenuOption::*kField>
    static void m_CaptionOptionCb(keynode_t* pNode, void* pUserData);
    using KeyCallback = void (*)(keynode_t*, void*);
    static const KeyCallback m_CaptionSizeCb, m_CaptionFontStyleCb, m_CaptionStyleCb, m_CaptionFontColorCb,
        m_CaptionBgColorCb, m_CaptionFontOpacityCb, m_CaptionBgOpacityCb, m_CaptionWindowColorCb,
        m_CaptionWindowOpacityCb, m_CaptionEdgeColorCb, m_CaptionEdgeTypeCb;
    static void m_CaptionDivisionModeCb(keynode_t* pNode, void* pUserData);
    static void m_CCInfoBannerKeyUpdateCb(keynode_t* pNode, void* pUserData);
    static void m_SignLanguageZoomCb(keynode_t* pNode, void* pUserData);

    struct KeyWatch {
        const char* key;
        void (*callback)(keynode_t*, void*);
    };
    static const KeyWatch m_keyWatches[16];

    static CTTMLMenu* m_pTTMLMenu;
    TTMLMenuOption m_menuData;
    std::map<MenuChangeCallback, void*> m_listeners;
    std::recursive_mutex m_divisionLock;  // record writes and division decisions
    bool m_bKeysWatched = false;
};

}  // namespace TTML

#endif
