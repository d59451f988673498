#ifndef INTERTITLE_TESTS_CAPTIONDIVISIONDRIVER_H
#define INTERTITLE_TESTS_CAPTIONDIVISIONDRIVER_H

#include "CTTMLMenu.h"

#include <vconf.h>

// Drives caption division changes the way the TV does, so that the menu's
// listeners run: the keys say captions on, banner up and division mode 1.

// Writes the keys and has the menu read them.
inline void AllowCaptionDivision()
{
    vconf_set_int("db/menu/caption/caption", 1);
    vconf_set_bool("memory/tv-viewer/infobanner/ttml", 1);
    vconf_set_int("db/menu/caption/captiondivisionmode", 1);
    TTML::CTTMLMenu::GetInstance()->ReadMenuData();
}

// Shows (mode 1) or hides (mode 0) the division, whichever is not in force:
// one change, so every listener is called once.
inline void ToggleCaptionDivision()
{
    TTML::CTTMLMenu* pMenu = TTML::CTTMLMenu::GetInstance();
    pMenu->SetCaptionDivisionMode(pMenu->GetCaptionDivisionMode() != 0);
}

#endif
