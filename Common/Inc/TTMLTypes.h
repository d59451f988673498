#ifndef TTML_COMMON_TTMLTYPES_H
#define TTML_COMMON_TTMLTYPES_H

#include <cstdint>
#include <utility>

namespace TTML {

// Profile numbers: what a transport announces in a document's record and
// what the parser resolves a document to.
enum TTMLProfile {
    TTML_PROFILE_NONE = -1,
    TTML_PROFILE_IMSC1_TEXT = 0,
    TTML_PROFILE_IMSC1_IMAGE = 1,
    TTML_PROFILE_EBUTTD = 2,
};

// Profiles a document can be walked by (the numbers from 0).
constexpr int TTML_PROFILE_COUNT = TTML_PROFILE_EBUTTD + 1;

// What a document declares for each profile: the EBU-TT-D URN is matched
// anywhere in the value, the IMSC 1 designators whole.
inline constexpr char kEbuTtdDesignator[] = "urn:ebu:tt:distribution";
inline constexpr char kImsc1ImageDesignator[] = "http://www.w3.org/ns/ttml/profile/imsc1/image";
inline constexpr char kImsc1TextDesignator[] = "http://www.w3.org/ns/ttml/profile/imsc1/text";

// Bit values of a source's subtitle mode.
enum TTMLSubtitleMode {
    // Handed to every renderer creation as its font-scale flag.
    SUBTITLE_MODE_FONT_SCALE = 2,
    // IMSC 1 text is the default profile; caption division is allowed; the
    // language selection asks the TV service.
    SUBTITLE_MODE_IMSC1_DEFAULT = 8,
    // Every timer expiry first resynchronises with the media time.
    SUBTITLE_MODE_RESYNC = 64,
};

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
