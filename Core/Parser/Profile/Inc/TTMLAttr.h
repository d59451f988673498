#ifndef TTML_PARSER_PROFILE_TTMLATTR_H
#define TTML_PARSER_PROFILE_TTMLATTR_H

// Attribute numbers, their keys and the result codes of attribute checks and
// document-walk handlers. The keys are the lower-case local names (no
// namespace prefix) that the walker looks up; a profile handler names the
// subset it knows by picking numbers from kTTMLAttrKeys.

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

// Key of each attribute number; "" for ATTR_TEXT, which is never read from
// an XML attribute.
inline constexpr const char* kTTMLAttrKeys[TTML_ATTR_COUNT] = {
    "begin",               "dur",
    "end",                 "linepadding",
    "multirowalign",       "region",
    "style",               "",
    "agent",               "conformstostandard",
    "framerate",           "frameratemultiplier",
    "role",                "cellresolution",
    "clockmode",           "dropmode",
    "markermode",          "pixelaspectratio",
    "profile",             "subframerate",
    "tickrate",            "timebase",
    "backgroundcolor",     "direction",
    "display",             "displayalign",
    "extent",              "color",
    "fontfamily",          "fontsize",
    "fontstyle",           "fontweight",
    "lineheight",          "opacity",
    "origin",              "overflow",
    "padding",             "parabackgroundcolor",
    "regionbackgroundcolor", "showbackground",
    "textalign",           "textdecoration",
    "textoutline",         "unicodebidi",
    "visibility",          "wrapoption",
    "writingmode",         "zindex",
    "id",                  "lang",
    "space",               "alttext",
    "aspectratio",         "progressivelydecodable",
    "backgroundimage",     "forceddisplay",
    "filllinegap",         "timecontainer",
};

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
