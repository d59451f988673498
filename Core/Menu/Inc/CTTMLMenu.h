#ifndef TTML_MENU_CTTMLMENU_H
#define TTML_MENU_CTTMLMENU_H

#include "CCaptionDivision.h"
#include "TTMLMenuOption.h"
#include "TTMLTypes.h"

#include <map>
#include <string>
#include <vector>

namespace TTML {

// Stand-in until the caption menu lands: records the calls it gets and keeps
// the listener map; reads and watches no configuration key.
//
// The process-wide caption menu singleton. The controller registers and
// unregisters the key watches, forces caption division off while captions are
// hidden, and writes the caption language; the engine registers a listener
// for caption division changes.
//
// Threads: GetInstance and the listener map take no lock (the singleton is
// made on the main loop before any source message can arrive); every other
// operation may be called from the source thread.
class CTTMLMenu : public CCaptionDivision {
public:
    typedef void (*MenuChangeCallback)(void* pUserData);

    // Creates the singleton on first use; never null afterwards.
    static CTTMLMenu* GetInstance();
    // Deletes the singleton; the next GetInstance makes a fresh one.
    static void Destroy();

    // The record itself; the renderer reads it on the main loop.
    TTMLMenuOption* GetTTMLMenuData() { return &m_menuData; }
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
    // without division support).
    void SetCaptionDivisionMode(bool forcedOff);
    // sourceMode: the source's subtitle mode bit set.
    void SetLangInMenu(int sourceMode);

    // Adds a listener for caption division changes; when fn is already
    // registered the first user data stays.
    void RegisterMenuChangeNotify(MenuChangeCallback fn, void* pUserData);
    // The removed listener's user data, or null with a warning when fn is unknown.
    void* UnRegisterMenuChangeNotify(MenuChangeCallback fn);
    // Tests: calls every listener, as a caption division change does. Not
    // recorded. Must not overlap a registration change.
    void NotifyMenuChange();

    // Tests: every call made on any instance since the last TakeCalls, in
    // order, as "Name(argument)" ("Destroy()" included); survives Destroy.
    static std::vector<std::string> TakeCalls();

    CTTMLMenu(const CTTMLMenu&) = delete;
    CTTMLMenu& operator=(const CTTMLMenu&) = delete;

private:
    CTTMLMenu() = default;
    ~CTTMLMenu() override = default;

    static void m_Record(const std::string& call);

    static CTTMLMenu* m_pTTMLMenu;
    TTMLMenuOption m_menuData;
    std::map<MenuChangeCallback, void*> m_listeners;
};

}  // namespace TTML

#endif
