#ifndef TTML_GRAPHICS_CTEXTMARKUP_H
#define TTML_GRAPHICS_CTEXTMARKUP_H

#include "TTMLTypes.h"

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace TTML {

// The textblock markup a paragraph is drawn from, read and written here:
// each styled run is one tag and its text,
// "<font='Family' font_size=40 color=#rrggbbaa [font_weight=bold] ...>text</>".
// Colours in it are "#rrggbbaa" with 8-bit channels; colour values are read
// by the common colour helpers only.
// Thread: any; no state.
class CTextMarkup {
public:
    // A tag's items in order: key and value ("font", "'DejaVu Sans'").
    typedef std::vector<std::pair<std::string, std::string>> Items;
    // Edits the items of the k-th run tag (k from 0).
    typedef std::function<void(int k, Items& items)> RunEdit;

    // One run from the parser's attributes (TTMLAttr keys, values as
    // validated). fontSizePx: used when the attributes give no pixel size;
    // 0 or less leaves the size out.
    static std::string FormatRun(const std::map<int, std::string>& attributes, double fontSizePx);
    // Sets one attribute in every run of the markup: font size (pixels),
    // family, colour (each run keeps its alpha), background colour, weight
    // or style. Other attributes and unreadable values warn and change nothing.
    static void ReplaceAttribute(std::string& markup, int attribute, const std::string& value);
    // The markup with `edit` applied to each run tag; text and anything
    // after an unterminated tag stay as they are.
    static std::string EditRuns(const std::string& markup, const RunEdit& edit);

    // "" when the key is absent.
    static std::string GetItem(const Items& items, const std::string& key);
    // Replaces the key's value, or appends the item.
    static void SetItem(Items& items, const std::string& key, const std::string& value);
    // The text's colour together with the lines drawn under and through it.
    static void SetTextColour(Items& items, const std::string& colour);

    // A colour code, rgb()/rgba() or colour name (blanks around allowed);
    // false and `out` unchanged when the value is none of these.
    static bool ReadColour(std::string value, TTMLColor& out);
    // "#rrggbbaa" from 8-bit channels, or from a colour's 16-bit ones.
    static std::string WriteColour(int r, int g, int b, int a);
    static std::string WriteColour(const TTMLColor& colour);
    static int To8(uint16_t channel) { return channel / 257; }
};

}  // namespace TTML

#endif
