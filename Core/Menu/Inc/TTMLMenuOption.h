#ifndef TTML_MENU_TTMLMENUOPTION_H
#define TTML_MENU_TTMLMENUOPTION_H

#include <cstdint>

namespace TTML {

// The viewer's caption settings as the TV menu stores them. All zero means
// captions off and no override: the document's own styling is drawn.
// Written under the menu's lock by the key callbacks and ReadMenuData; the
// renderer reads copies (CTTMLMenu::CopyTTMLMenuData).
struct TTMLMenuOption {
    int32_t status = 0;         // caption switch; 0 off, every override inactive
    int32_t lang = 0;           // selected caption track
    int32_t size = 0;           // 1..4 font size, 0 document
    int32_t fontStyle = 0;      // font table index, 0 document
    int32_t Style = 0;          // 1 bold, 2 italic, else document
    int32_t fontColor = 0;      // colour table index, 0 document
    int32_t bgColor = 0;        // colour table index, 0 document
    int32_t windowColor = 0;    // colour table index, 0 document
    int32_t fontOpacity = 0;    // opacity value
    int32_t bgOpacity = 0;      // opacity value
    int32_t windowOpacity = 0;  // opacity value
    int32_t edgeType = 0;       // 0..5
    int32_t edgeColor = 0;      // colour table index, 0 document
    int32_t divisionMode = 0;   // caption division mode 0..4
    int32_t ccBannerFlag = 0;   // bool, stored in the first byte
    int32_t signLang = 0;       // 1: sign-language view active
};

}  // namespace TTML

#endif
