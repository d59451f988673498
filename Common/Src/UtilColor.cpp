#include "TTMLLog.h"
#include "Util.h"

#include <boost/regex.hpp>

#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <locale.h>

namespace TTML {

namespace {

struct NamedColor {
    const char* name;
    const char* code;  // #rrggbbaa
};

const NamedColor kNamedColors[] = {
    {"transparent", "#00000000"}, {"black", "#000000ff"},  {"silver", "#c0c0c0ff"}, {"gray", "#808080ff"},
    {"white", "#ffffffff"},       {"maroon", "#800000ff"}, {"red", "#ff0000ff"},    {"purple", "#800080ff"},
    {"fuchsia", "#ff00ffff"},     {"magenta", "#ff00ffff"}, {"green", "#008000ff"}, {"lime", "#00ff00ff"},
    {"olive", "#808000ff"},       {"yellow", "#ffff00ff"}, {"navy", "#000080ff"},   {"blue", "#0000ffff"},
    {"teal", "#008080ff"},        {"aqua", "#00ffffff"},   {"cyan", "#00ffffff"},
};

uint16_t To16(long c8)
{
    return static_cast<uint16_t>(c8 * 65535 / 255);
}

int HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Two hex digits at `pos`; a piece that is missing or has any other
// character reads as 0.
long HexPair(const std::string& hex, std::string::size_type pos)
{
    if (pos + 2 > hex.size())
        return 0;
    const int hi = HexDigit(hex[pos]);
    const int lo = HexDigit(hex[pos + 1]);
    if (hi < 0 || lo < 0)
        return 0;
    return hi * 16 + lo;
}

// One decimal component of rgb(...)/rgba(...). Blanks around the number are
// allowed; anything else means the piece is not a number.
bool DecimalComponent(const std::string& piece, long& out)
{
    const char* begin = piece.c_str();
    char* end = nullptr;
    long value = std::strtol(begin, &end, 10);
    if (end == begin || std::strspn(end, kWhiteSpaces) != std::strlen(end))
        return false;
    // Out-of-range components clamp to the 8-bit scale instead of wrapping.
    if (value > 255)
        value = 255;
    if (value < 0)
        value = 0;
    out = value;
    return true;
}

locale_t CLocale()
{
    static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    return c;
}

// Truncation toward zero, saturating instead of overflowing an int.
int ToInt(double value)
{
    if (value >= static_cast<double>(INT_MAX))
        return INT_MAX;
    if (value <= static_cast<double>(INT_MIN))
        return INT_MIN;
    return static_cast<int>(value);
}

}  // namespace

bool ConvertColorNameToColorCode(std::string& value)
{
    for (const NamedColor& named : kNamedColors) {
        if (value == named.name) {
            value = named.code;
            return true;
        }
    }
    return false;
}

void ConvertDistributionColorType(const std::string& value, TTMLColor& out)
{
    if (value.empty()) {
        TTML_INFO("Color value is empty!");
        return;
    }
    long red = 0;
    long green = 0;
    long blue = 0;
    long alpha = 255;
    const std::string::size_type open = value.find('(');
    if (open != std::string::npos) {
        // Everything up to the last character, which closes the form.
        const std::string::size_type last = value.size() - 1;
        const std::string inner = open < last ? value.substr(open + 1, last - open - 1) : std::string();
        const std::vector<std::string> pieces = StrSplit(inner, ",");
        // A missing or non-numeric component leaves the colour as it was:
        // guessing a channel would show a wrong colour.
        if (pieces.size() < 3 || !DecimalComponent(pieces[0], red) || !DecimalComponent(pieces[1], green) ||
            !DecimalComponent(pieces[2], blue))
            return;
        if (pieces.size() == 4 && !DecimalComponent(pieces[3], alpha))
            return;
    } else {
        const std::string hex = value.substr(1);
        red = HexPair(hex, 0);
        green = HexPair(hex, 2);
        blue = HexPair(hex, 4);
        if (hex.size() == 8)
            alpha = HexPair(hex, 6);
    }
    out.red = To16(red);
    out.green = To16(green);
    out.blue = To16(blue);
    out.alpha = To16(alpha);
}

void ConvertColorToStringType(const TTMLColor& color, std::string& out)
{
    out += '#';
    for (uint16_t channel : {color.red, color.green, color.blue}) {
        if (channel == 0) {
            out += "00";
            continue;
        }
        char buf[8];
        std::snprintf(buf, sizeof(buf), "%x", static_cast<unsigned>(channel) * 255u / 65535u);
        out += buf;
    }
}

bool ConvertLengthType(const std::string& expr, double cellFactor, double relativeBase, double& out)
{
    static const boost::regex kLength("(([+])?\\d+(\\.\\d+)?)(px|em|c|%)", boost::regex::perl);
    boost::smatch match;
    if (!boost::regex_search(expr, match, kLength)) {
        TTML_WARN("Seems like invalid format of value=%s", expr.c_str());
        return false;
    }
    const std::string number = match[1].str();
    const double value = strtof_l(number.c_str(), nullptr, CLocale());
    const std::string unit = match[4].str();
    if (unit == "px")
        out = value;
    else if (unit == "em")
        out = value * relativeBase;
    else if (unit == "c")
        out = value * cellFactor;
    else
        out = value * relativeBase / 100;
    return true;
}

void ConvertOriginExtentsType(const std::string& expr, std::pair<int, int> reference,
                              std::pair<int&, int&>& out)
{
    if (expr.empty())
        return;
    const std::vector<std::string> pieces = StrSplit(expr, " ");
    // A single length names only one axis; validation refuses it, and
    // keeping the previous geometry is safer than inventing the other axis.
    if (pieces.size() < 2)
        return;
    double length = 0;
    if (ConvertLengthType(pieces[0], 1.0, reference.first, length))
        out.first = ToInt(length);
    if (ConvertLengthType(pieces[1], 1.0, reference.second, length))
        out.second = ToInt(length);
}

void ConvertDistributionPaddingType(const std::string& expr, const Size& cellSize,
                                    const std::pair<int, int>& regionSize, TTMLPadding& out)
{
    std::vector<std::string> pieces = StrSplit(expr, " ");
    // A blank value splits into one empty piece; it has no sides at all.
    if (pieces.size() == 1 && pieces[0].empty())
        pieces.clear();
    if (pieces.empty() || pieces.size() > 4) {
        TTML_WARN("empty padding values");
        return;
    }
    // Before, end, after, start map to top, right, bottom, left.
    const std::string& top = pieces[0];
    const std::string& right = pieces.size() >= 2 ? pieces[1] : top;
    const std::string& bottom = pieces.size() >= 3 ? pieces[2] : top;
    const std::string& left = pieces.size() == 4 ? pieces[3] : right;
    ConvertLengthType(top, cellSize.second, regionSize.second, out.top);
    ConvertLengthType(right, cellSize.first, regionSize.first, out.right);
    ConvertLengthType(bottom, cellSize.second, regionSize.second, out.bottom);
    ConvertLengthType(left, cellSize.first, regionSize.first, out.left);
}

bool ConvertOutlineAtrributes(const std::string& expr, const Size& cellSize, double fontSize, TextOutline& out)
{
    const std::vector<std::string> pieces = StrSplit(expr, " ");
    const double cell = cellSize.second;
    switch (pieces.size()) {
    case 1:
        if (pieces[0] != "none")
            ConvertLengthType(pieces[0], cell, fontSize, out.thickness);
        return true;
    case 2:
        if (!expr.empty() && expr[0] == '#') {
            ConvertDistributionColorType(pieces[0], out.color);
            ConvertLengthType(pieces[1], cell, fontSize, out.thickness);
        } else {
            ConvertLengthType(pieces[0], cell, fontSize, out.thickness);
            ConvertLengthType(pieces[1], cell, fontSize, out.blur);
        }
        return true;
    case 3:
        ConvertDistributionColorType(pieces[0], out.color);
        ConvertLengthType(pieces[1], cell, fontSize, out.thickness);
        ConvertLengthType(pieces[2], cell, fontSize, out.blur);
        return true;
    default:
        return false;
    }
}

void ApplyContrastColor(TTMLColor& out, const TTMLColor& background)
{
    const double red = background.red / 65535.0 * 255;
    const double green = background.green / 65535.0 * 255;
    const double blue = background.blue / 65535.0 * 255;
    const double luminance = 0.299 * red + 0.587 * green + 0.114 * blue;
    const uint16_t channel = (1 - luminance / 255) < 0.5 ? 0 : 65535;
    out.red = channel;
    out.green = channel;
    out.blue = channel;
}

void SetContrastColor(TTMLColor& out, const TTMLColor& first, const TTMLColor& second, const TTMLColor& third)
{
    // Copies, so that `out` may also be one of the backgrounds.
    const TTMLColor backgrounds[] = {first, second, third};
    out.alpha = 65535;
    for (const TTMLColor& background : backgrounds) {
        if (background.alpha != 0) {
            ApplyContrastColor(out, background);
            return;
        }
    }
    out.red = 65535;
    out.green = 65535;
    out.blue = 65535;
}

}  // namespace TTML
