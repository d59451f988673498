// The common conversion helpers the validators and the renderer share:
// time expressions, colours, lengths, origins and extents, paddings and
// outlines, plus the string helpers they build on.
//
// Input: byte 0 the frame rate (1..256), byte 1 the tick rate (1..256, times
// 1000 when byte 2 is odd), byte 2 the cell size and font size; the rest is
// the attribute value, given to every helper. Rates stay positive because
// the documents' own rates of 0 or less are refused before any conversion.
#include "Util.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>

using namespace TTML;

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    setenv("INTERTITLE_LOG", "none", 0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 3)
        return 0;
    const double frameRate = 1.0 + data[0];
    const int tickRate = (1 + data[1]) * ((data[2] & 1) ? 1000 : 1);
    const double cell = 1.0 + (data[2] >> 1);
    const std::string value(reinterpret_cast<const char*>(data + 3), size - 3);

    ConvertTimeExpressionToMS(value, frameRate, tickRate);
    ConvertClockTimeToMS(StrSplit(value, ":"), frameRate);
    ConvertOffsetTimeToMS(value, frameRate, tickRate);

    std::string color = value;
    ConvertColorNameToColorCode(color);
    TTMLColor rgba;
    ConvertDistributionColorType(color, rgba);
    std::string text;
    ConvertColorToStringType(rgba, text);
    TTMLColor contrast;
    ApplyContrastColor(contrast, rgba);

    double length = 0;
    ConvertLengthType(value, cell, 1080.0, length);
    int x = 0;
    int y = 0;
    std::pair<int&, int&> origin(x, y);
    ConvertOriginExtentsType(value, std::make_pair(1920, 1080), origin);
    TTMLPadding padding;
    ConvertDistributionPaddingType(value, Size(1920.0 / cell, 1080.0 / cell), std::make_pair(1920, 1080), padding);
    TextOutline outline;
    ConvertOutlineAtrributes(value, Size(cell, cell), cell * 2, outline);

    std::string copy = value;
    StrTrimLeft(copy);
    StrTrimRight(copy);
    StrToLower(copy);
    IsDigits(value);
    IsRealNumber(value);
    std::string first;
    std::string second;
    SplitStrByFindFirstOf(value, " ,", first, second);
    return 0;
}
