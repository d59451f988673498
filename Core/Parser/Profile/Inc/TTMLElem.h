#ifndef TTML_PARSER_PROFILE_TTMLELEM_H
#define TTML_PARSER_PROFILE_TTMLELEM_H

namespace TTML {

// Element types. An XML text node is typed ELEM_SPAN by the walker; names
// outside the table (and the empty name) are ELEM_UNKNOWN.
enum TTMLElem {
    ELEM_ACTOR = 0,
    ELEM_AGENT,
    ELEM_BODY,
    ELEM_BR,
    ELEM_COPYRIGHT,
    ELEM_DESC,
    ELEM_DIV,
    ELEM_DOCUMENTEBUTTVERSION,
    ELEM_DOCUMENTMETADATA,
    ELEM_HEAD,
    ELEM_LAYOUT,  // 10
    ELEM_METADATA,
    ELEM_NAME,
    ELEM_P,
    ELEM_REGION,
    ELEM_SPAN,
    ELEM_STYLE,
    ELEM_STYLING,
    ELEM_TITLE,
    ELEM_TT,
    ELEM_SET,  // 20
    ELEM_UNKNOWN
};

// Number of known element types (the columns of the applies-to table).
constexpr int TTML_ELEM_COUNT = ELEM_SET + 1;

// The names as documents write them, indexed by TTMLElem; the walker
// matches them without regard to case.
inline constexpr const char* kTTMLElemNames[TTML_ELEM_COUNT] = {
    "actor",   "agent", "body", "br",  "copyright", "desc", "div", "documentEbuttVersion", "documentMetadata", "head",
    "layout",  "metadata", "name", "p", "region",   "span", "style", "styling",            "title",            "tt",
    "set",
};
static_assert(kTTMLElemNames[ELEM_SET] != nullptr, "one name per element type");

}  // namespace TTML

#endif
