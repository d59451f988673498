#include "CTextMarkup.h"

#include "CFontFamilyMap.h"
#include "TTMLAttr.h"
#include "TTMLLog.h"
#include "Util.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace TTML {

namespace {

const char* const kRunOpen = "<font=";

std::string EscapeText(const std::string& text)
{
    std::string out;
    out.reserve(text.size() + 8);
    for (char c : text) {
        switch (c) {
        case '&': out += "&amp;"; break;
        case '<': out += "&lt;"; break;
        case '>': out += "&gt;"; break;
        case '\n': out += "<br/>"; break;
        case '\t': out += "<tab/>"; break;
        case '\r': break;
        default: out += c;
        }
    }
    return out;
}

// Markup value: family names keep their spaces inside quotes.
std::string QuoteFamily(const std::string& family)
{
    return "'" + family + "'";
}

// Items of a tag's inside ("font='A B' font_size=40"), quotes respected.
CTextMarkup::Items ParseTag(const std::string& inner)
{
    CTextMarkup::Items items;
    size_t i = 0;
    while (i < inner.size()) {
        while (i < inner.size() && inner[i] == ' ')
            ++i;
        if (i >= inner.size())
            break;
        size_t start = i;
        char quote = 0;
        while (i < inner.size() && (quote || inner[i] != ' ')) {
            if (quote && inner[i] == quote)
                quote = 0;
            else if (!quote && (inner[i] == '\'' || inner[i] == '"'))
                quote = inner[i];
            ++i;
        }
        std::string item = inner.substr(start, i - start);
        size_t eq = item.find('=');
        if (eq == std::string::npos)
            items.emplace_back(item, "");
        else
            items.emplace_back(item.substr(0, eq), item.substr(eq + 1));
    }
    return items;
}

std::string JoinTag(const CTextMarkup::Items& items)
{
    std::string out = "<";
    for (size_t i = 0; i < items.size(); ++i) {
        if (i)
            out += ' ';
        out += items[i].first;
        if (!items[i].second.empty())
            out += "=" + items[i].second;
    }
    return out + ">";
}

std::string PxNumber(const std::string& value, bool* ok)
{
    double px = 0;
    *ok = false;
    if (value.size() > 2 && value.compare(value.size() - 2, 2, "px") == 0) {
        char* pEnd = nullptr;
        px = strtod(value.c_str(), &pEnd);
        if (pEnd && std::string(pEnd) == "px" && px > 0)
            *ok = true;
    }
    char buf[32];
    snprintf(buf, sizeof(buf), "%ld", std::lround(px));
    return buf;
}

}  // namespace

bool CTextMarkup::ReadColour(std::string value, TTMLColor& out)
{
    StrTrimLeft(value);
    StrTrimRight(value);
    if (value.empty())
        return false;
    ConvertColorNameToColorCode(value);
    if (value[0] != '#' && value.find('(') == std::string::npos)
        return false;
    ConvertDistributionColorType(value, out);
    return true;
}

std::string CTextMarkup::WriteColour(int r, int g, int b, int a)
{
    char buf[16];
    snprintf(buf, sizeof(buf), "#%02x%02x%02x%02x", r & 0xff, g & 0xff, b & 0xff, a & 0xff);
    return buf;
}

std::string CTextMarkup::WriteColour(const TTMLColor& colour)
{
    return WriteColour(To8(colour.red), To8(colour.green), To8(colour.blue), To8(colour.alpha));
}

std::string CTextMarkup::GetItem(const CTextMarkup::Items& items, const std::string& key)
{
    for (const auto& item : items)
        if (item.first == key)
            return item.second;
    return std::string();
}

void CTextMarkup::SetItem(CTextMarkup::Items& items, const std::string& key, const std::string& value)
{
    for (auto& item : items)
        if (item.first == key) {
            item.second = value;
            return;
        }
    items.emplace_back(key, value);
}

// The lines drawn through and under the text are part of it: a new colour
// or opacity reaches them too.
void CTextMarkup::SetTextColour(CTextMarkup::Items& items, const std::string& colour)
{
    SetItem(items, "color", colour);
    for (const char* line : {"underline_color", "strikethrough_color"})
        if (!GetItem(items, line).empty())
            SetItem(items, line, colour);
}

std::string CTextMarkup::EditRuns(const std::string& markup, const RunEdit& edit)
{
    std::string out;
    out.reserve(markup.size() + 64);
    size_t pos = 0;
    int k = 0;
    while (true) {
        size_t open = markup.find(kRunOpen, pos);
        if (open == std::string::npos)
            break;
        size_t close = open + 1;
        char quote = 0;
        for (; close < markup.size(); ++close) {
            char c = markup[close];
            if (quote) {
                if (c == quote)
                    quote = 0;
            } else if (c == '\'' || c == '"') {
                quote = c;
            } else if (c == '>') {
                break;
            }
        }
        if (close >= markup.size())
            break;  // unterminated tag: leave the rest as it is
        out.append(markup, pos, open - pos);
        CTextMarkup::Items items = ParseTag(markup.substr(open + 1, close - open - 1));
        edit(k++, items);
        out += JoinTag(items);
        pos = close + 1;
    }
    out.append(markup, pos, std::string::npos);
    return out;
}

std::string CTextMarkup::FormatRun(const std::map<int, std::string>& attributes, double fontSizePx)
{
    auto get = [&](int key) {
        auto it = attributes.find(key);
        return it == attributes.end() ? std::string() : it->second;
    };
    Items items;
    std::string family = get(ATTR_FONTFAMILY);
    items.emplace_back("font", QuoteFamily(family.empty() ? CFontFamilyMap::DefaultFamily()
                                                          : CFontFamilyMap::Resolve(family)));
    bool ok = false;
    std::string size = PxNumber(get(ATTR_FONTSIZE), &ok);
    if (!ok && fontSizePx > 0)
        size = PxNumber(std::to_string(fontSizePx) + "px", &ok);
    if (ok)
        items.emplace_back("font_size", size);

    bool hidden = get(ATTR_VISIBILITY) == "hidden";
    TTMLColor colour;
    colour.alpha = colour.red = colour.green = colour.blue = 65535;
    ReadColour(get(ATTR_COLOR), colour);
    if (hidden)
        colour.alpha = 0;
    items.emplace_back("color", WriteColour(colour));

    if (get(ATTR_FONTWEIGHT) == "bold")
        items.emplace_back("font_weight", "bold");
    std::string style = get(ATTR_FONTSTYLE);
    if (style == "italic" || style == "oblique")
        items.emplace_back("font_style", style);

    std::string decoration = get(ATTR_TEXTDECORATION);
    if (!hidden && !decoration.empty() && decoration != "none" && IsDigits(decoration)) {
        long mask = strtol(decoration.c_str(), nullptr, 10);
        if (mask & 2) {
            items.emplace_back("underline", "on");
            items.emplace_back("underline_color", WriteColour(colour));
        }
        if (mask & 8) {
            items.emplace_back("strikethrough", "on");
            items.emplace_back("strikethrough_color", WriteColour(colour));
        }
    }
    TTMLColor background;
    if (!hidden && ReadColour(get(ATTR_BACKGROUNDCOLOR), background) && background.alpha > 0) {
        items.emplace_back("backing", "on");
        items.emplace_back("backing_color", WriteColour(background));
    }
    return JoinTag(items) + EscapeText(get(ATTR_TEXT)) + "</>";
}

void CTextMarkup::ReplaceAttribute(std::string& markup, int attribute, const std::string& value)
{
    switch (attribute) {
    case ATTR_FONTSIZE: {
        bool ok = false;
        std::string size = PxNumber(value, &ok);
        if (!ok) {
            TTML_WARN("Font size [%s] is not in pixels", value.c_str());
            return;
        }
        markup = EditRuns(markup, [&](int, Items& items) { SetItem(items, "font_size", size); });
        return;
    }
    case ATTR_FONTFAMILY: {
        std::string family = QuoteFamily(CFontFamilyMap::Resolve(value));
        markup = EditRuns(markup, [&](int, Items& items) { SetItem(items, "font", family); });
        return;
    }
    case ATTR_COLOR:
    case ATTR_BACKGROUNDCOLOR: {
        TTMLColor colour;
        if (!ReadColour(value, colour)) {
            TTML_WARN("Invalid colour [%s]", value.c_str());
            return;
        }
        bool text = attribute == ATTR_COLOR;
        markup = EditRuns(markup, [&](int, Items& items) {
            if (text) {
                // Each run keeps its alpha: hidden text stays hidden.
                TTMLColor old = colour;
                ReadColour(GetItem(items, "color"), old);
                SetTextColour(items, WriteColour(To8(colour.red), To8(colour.green), To8(colour.blue), To8(old.alpha)));
            } else {
                SetItem(items, "backing", colour.alpha ? "on" : "off");
                SetItem(items, "backing_color", WriteColour(colour));
            }
        });
        return;
    }
    case ATTR_FONTWEIGHT:
        markup = EditRuns(markup, [&](int, Items& items) {
            SetItem(items, "font_weight", value == "bold" ? "bold" : "normal");
        });
        return;
    case ATTR_FONTSTYLE:
        markup = EditRuns(markup, [&](int, Items& items) {
            SetItem(items, "font_style", value == "italic" || value == "oblique" ? value : "normal");
        });
        return;
    default:
        TTML_WARN("Attribute %d cannot be replaced in markup", attribute);
    }
}

}  // namespace TTML
