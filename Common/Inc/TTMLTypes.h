#ifndef TTML_COMMON_TTMLTYPES_H
#define TTML_COMMON_TTMLTYPES_H

#include <cstdint>
#include <utility>

namespace TTML {

// A colour as the graphics component takes it: 16-bit channels, alpha first.
// Default: transparent black with defaultOpacity set. 8-bit c maps to c * 257.
struct TTMLColor {
    uint16_t alpha = 0;
    uint16_t red = 0;
    uint16_t green = 0;
    uint16_t blue = 0;
    // Cleared by the renderer when a caption-menu opacity replaces the alpha.
    bool defaultOpacity = true;
};

// Screen rectangle in pixels, origin at the top-left of the root container.
template <typename T = int>
struct TTMLRect {
    T x = 0;
    T y = 0;
    T w = 0;
    T h = 0;
};

// first = horizontal, second = vertical (cell sizes, paragraph areas).
using Size = std::pair<double, double>;

// Pixels, in this order: top, left, bottom, right.
struct TTMLPadding {
    double top = 0;
    double left = 0;
    double bottom = 0;
    double right = 0;
};

// Text outline or caption-menu edge.
struct TextOutline {
    // 0 none chosen yet; 1..5 caption-menu edge types; 6 from tts:textOutline.
    int type = 0;
    double offsetX = 0;  // percent of the font size until the renderer converts it
    double offsetY = 0;
    double thickness = 0;  // pixels
    double blur = 0;       // pixels
    TTMLColor color;
};

}  // namespace TTML

#endif
