#ifndef TTML_PARSER_PROFILE_TTMLATTR_H
#define TTML_PARSER_PROFILE_TTMLATTR_H

// Attribute numbers, their keys and the result codes of attribute checks and
// document-walk handlers. The keys are the lower-case local names (no
// namespace prefix) that the walker looks up; a profile handler names the
// subset it knows by the rows of its attribute table (TAttrRow).

#include <array>
#include <iterator>

namespace TTML {

enum TTMLAttr {
    ATTR_BEGIN = 0,
    ATTR_DUR,
    ATTR_END,
    ATTR_LINEPADDING,
    ATTR_MULTIROWALIGN,
    ATTR_REGION,
    ATTR_STYLE,
    ATTR_TEXT,  // text content of a text node or line break; has no key
    ATTR_AGENT,
    ATTR_CONFORMSTOSTANDARD,
    ATTR_FRAMERATE,  // 10
    ATTR_FRAMERATEMULTIPLIER,
    ATTR_ROLE,
    ATTR_CELLRESOLUTION,
    ATTR_CLOCKMODE,
    ATTR_DROPMODE,
    ATTR_MARKERMODE,
    ATTR_PIXELASPECTRATIO,
    ATTR_PROFILE,
    ATTR_SUBFRAMERATE,
    ATTR_TICKRATE,  // 20
    ATTR_TIMEBASE,
    ATTR_BACKGROUNDCOLOR,
    ATTR_DIRECTION,
    ATTR_DISPLAY,
    ATTR_DISPLAYALIGN,
    ATTR_EXTENT,
    ATTR_COLOR,
    ATTR_FONTFAMILY,
    ATTR_FONTSIZE,
    ATTR_FONTSTYLE,  // 30
    ATTR_FONTWEIGHT,
    ATTR_LINEHEIGHT,
    ATTR_OPACITY,
    ATTR_ORIGIN,
    ATTR_OVERFLOW,
    ATTR_PADDING,
    ATTR_PARABACKGROUNDCOLOR,
    ATTR_REGIONBACKGROUNDCOLOR,
    ATTR_SHOWBACKGROUND,
    ATTR_TEXTALIGN,  // 40
    ATTR_TEXTDECORATION,
    ATTR_TEXTOUTLINE,
    ATTR_UNICODEBIDI,
    ATTR_VISIBILITY,
    ATTR_WRAPOPTION,
    ATTR_WRITINGMODE,
    ATTR_ZINDEX,
    ATTR_ID,
    ATTR_LANG,
    ATTR_SPACE,  // 50
    ATTR_ALTTEXT,
    ATTR_ASPECTRATIO,
    ATTR_PROGRESSIVELYDECODABLE,
    ATTR_BACKGROUNDIMAGE,
    ATTR_FORCEDDISPLAY,
    ATTR_FILLLINEGAP,
    ATTR_TIMECONTAINER  // 57
};

// Number of attribute numbers (0 .. TTML_ATTR_COUNT - 1).
constexpr int TTML_ATTR_COUNT = ATTR_TIMECONTAINER + 1;

// The key of each attribute number, one row each; "" for ATTR_TEXT, which
// is never read from an XML attribute.
struct TTMLAttrKey {
    TTMLAttr attr;
    const char* key;
};

inline constexpr TTMLAttrKey kTTMLAttrKeyRows[] = {
    {ATTR_BEGIN,                  "begin"},
    {ATTR_DUR,                    "dur"},
    {ATTR_END,                    "end"},
    {ATTR_LINEPADDING,            "linepadding"},
    {ATTR_MULTIROWALIGN,          "multirowalign"},
    {ATTR_REGION,                 "region"},
    {ATTR_STYLE,                  "style"},
    {ATTR_TEXT,                   ""},
    {ATTR_AGENT,                  "agent"},
    {ATTR_CONFORMSTOSTANDARD,     "conformstostandard"},
    {ATTR_FRAMERATE,              "framerate"},
    {ATTR_FRAMERATEMULTIPLIER,    "frameratemultiplier"},
    {ATTR_ROLE,                   "role"},
    {ATTR_CELLRESOLUTION,         "cellresolution"},
    {ATTR_CLOCKMODE,              "clockmode"},
    {ATTR_DROPMODE,               "dropmode"},
    {ATTR_MARKERMODE,             "markermode"},
    {ATTR_PIXELASPECTRATIO,       "pixelaspectratio"},
    {ATTR_PROFILE,                "profile"},
    {ATTR_SUBFRAMERATE,           "subframerate"},
    {ATTR_TICKRATE,               "tickrate"},
    {ATTR_TIMEBASE,               "timebase"},
    {ATTR_BACKGROUNDCOLOR,        "backgroundcolor"},
    {ATTR_DIRECTION,              "direction"},
    {ATTR_DISPLAY,                "display"},
    {ATTR_DISPLAYALIGN,           "displayalign"},
    {ATTR_EXTENT,                 "extent"},
    {ATTR_COLOR,                  "color"},
    {ATTR_FONTFAMILY,             "fontfamily"},
    {ATTR_FONTSIZE,               "fontsize"},
    {ATTR_FONTSTYLE,              "fontstyle"},
    {ATTR_FONTWEIGHT,             "fontweight"},
    {ATTR_LINEHEIGHT,             "lineheight"},
    {ATTR_OPACITY,                "opacity"},
    {ATTR_ORIGIN,                 "origin"},
    {ATTR_OVERFLOW,               "overflow"},
    {ATTR_PADDING,                "padding"},
    {ATTR_PARABACKGROUNDCOLOR,    "parabackgroundcolor"},
    {ATTR_REGIONBACKGROUNDCOLOR,  "regionbackgroundcolor"},
    {ATTR_SHOWBACKGROUND,         "showbackground"},
    {ATTR_TEXTALIGN,              "textalign"},
    {ATTR_TEXTDECORATION,         "textdecoration"},
    {ATTR_TEXTOUTLINE,            "textoutline"},
    {ATTR_UNICODEBIDI,            "unicodebidi"},
    {ATTR_VISIBILITY,             "visibility"},
    {ATTR_WRAPOPTION,             "wrapoption"},
    {ATTR_WRITINGMODE,            "writingmode"},
    {ATTR_ZINDEX,                 "zindex"},
    {ATTR_ID,                     "id"},
    {ATTR_LANG,                   "lang"},
    {ATTR_SPACE,                  "space"},
    {ATTR_ALTTEXT,                "alttext"},
    {ATTR_ASPECTRATIO,            "aspectratio"},
    {ATTR_PROGRESSIVELYDECODABLE, "progressivelydecodable"},
    {ATTR_BACKGROUNDIMAGE,        "backgroundimage"},
    {ATTR_FORCEDDISPLAY,          "forceddisplay"},
    {ATTR_FILLLINEGAP,            "filllinegap"},
    {ATTR_TIMECONTAINER,          "timecontainer"},
};

namespace AttrKeyCheck {

constexpr bool SameText(const char* a, const char* b)
{
    while (*a && *a == *b) {
        ++a;
        ++b;
    }
    return *a == *b;
}

// Row n names number n, and only the text slot goes without a key.
constexpr bool RowsInNumberOrder()
{
    for (int n = 0; n < TTML_ATTR_COUNT; ++n) {
        if (kTTMLAttrKeyRows[n].attr != n || (n == ATTR_TEXT) != (kTTMLAttrKeyRows[n].key[0] == '\0'))
            return false;
    }
    return true;
}

constexpr bool KeysDistinct()
{
    for (int a = 0; a < TTML_ATTR_COUNT; ++a) {
        for (int b = a + 1; b < TTML_ATTR_COUNT; ++b) {
            if (SameText(kTTMLAttrKeyRows[a].key, kTTMLAttrKeyRows[b].key))
                return false;
        }
    }
    return true;
}

constexpr std::array<const char*, TTML_ATTR_COUNT> KeysByNumber()
{
    std::array<const char*, TTML_ATTR_COUNT> keys{};
    for (const TTMLAttrKey& row : kTTMLAttrKeyRows)
        keys[row.attr] = row.key;
    return keys;
}

}  // namespace AttrKeyCheck

static_assert(std::size(kTTMLAttrKeyRows) == TTML_ATTR_COUNT, "one key row per attribute number");
static_assert(AttrKeyCheck::RowsInNumberOrder(), "a key row out of number order, or a key missing");
static_assert(AttrKeyCheck::KeysDistinct(), "two attribute numbers share a key");

// Key by attribute number, taken from the rows.
inline constexpr std::array<const char*, TTML_ATTR_COUNT> kTTMLAttrKeys = AttrKeyCheck::KeysByNumber();

// Results of attribute checks and of the walker's element handlers.
enum TTMLErrorCode {
    ERR_NONE = 0,           // accepted / handled
    ERR_IGNORE = 1,         // attribute dropped silently, element kept
    ERR_SKIP_CHILDREN = 2,  // handler walked the children itself
    ERR_NOT_SUPPORTED = 3,  // no check for this attribute in the profile
    ERR_NO_MATCH = 4,       // base dispatch has no handler for the type
    ERR_INVALID = 5,        // element (and document) refused
    ERR_NULL_POINTER = 6
};

}  // namespace TTML

#endif
