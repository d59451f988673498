#ifndef TTML_COMMON_UTIL_H
#define TTML_COMMON_UTIL_H

// Stateless helpers shared by the parser, the validators and the renderer.
// All are safe to call from any thread.

#include "TTMLTypes.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace TTML {

// ---- Strings --------------------------------------------------------------
// The whitespace set is exactly " \t\n\r" (no form feed, no vertical tab).
extern const char* const kWhiteSpaces;

void StrTrimLeft(std::string& str);
void StrTrimRight(std::string& str);
void StrToLower(std::string& str);
// True when no character lies outside "0123456789" (the empty string too).
bool IsDigits(const std::string& str);
// Digits and full stops only, not starting or ending with a full stop after
// a left trim; the empty string is a real number.
bool IsRealNumber(const std::string& str);
// Splits the trimmed text at each occurrence of the whole delimiter (never
// empty). Always at least one piece; pieces are not trimmed.
std::vector<std::string> StrSplit(const std::string& text, const std::string& delimiter);
// Left-trims a copy, splits it before its first character from `chars`.
// Returns false and leaves both outputs alone when none occurs.
bool SplitStrByFindFirstOf(const std::string& text, const std::string& chars, std::string& first,
                           std::string& second);
// Wall clock in ms modulo 2^32; only differences are meaningful.
uint32_t TTMLGetTimeofDay();

// ---- Time expressions -------------------------------------------------------
// A validated begin/end/dur text to ms on the document timeline (truncated).
unsigned long long ConvertTimeExpressionToMS(const std::string& expr, double frameRate, int tickRate);
unsigned long long ConvertClockTimeToMS(const std::vector<std::string>& parts, double frameRate);
unsigned long long ConvertOffsetTimeToMS(const std::string& expr, double frameRate, int tickRate);
// A stored time (decimal ms) back to a number, exactly as strtoull base 10
// reads it.
unsigned long long StoredMsToULL(const std::string& text);

// ---- Colours, lengths, geometry ---------------------------------------------
// Replaces one of the nineteen TTML colour names (case-sensitive) by its
// "#rrggbbaa" code; false and unchanged otherwise.
bool ConvertColorNameToColorCode(std::string& value);
// "#rrggbb[aa]", "rgb(r,g,b)" or "rgba(r,g,b,a)" into 16-bit channels; only
// the four channels of `out` are written.
void ConvertDistributionColorType(const std::string& value, TTMLColor& out);
// Appends "#" and red, green, blue in lower-case hex without zero padding.
void ConvertColorToStringType(const TTMLColor& color, std::string& out);
// One length ("px", "em", "c", "%") to pixels; false and `out` unchanged when
// no length is found.
bool ConvertLengthType(const std::string& expr, double cellFactor, double relativeBase, double& out);
// Two lengths for an origin or an extent, against `reference` (w, h).
void ConvertOriginExtentsType(const std::string& expr, std::pair<int, int> reference,
                              std::pair<int&, int&>& out);
void ConvertDistributionPaddingType(const std::string& expr, const Size& cellSize,
                                    const std::pair<int, int>& regionSize, TTMLPadding& out);
bool ConvertOutlineAtrributes(const std::string& expr, const Size& cellSize, double fontSize, TextOutline& out);
// Black or white text, whichever reads better over `background`.
void ApplyContrastColor(TTMLColor& out, const TTMLColor& background);
void SetContrastColor(TTMLColor& out, const TTMLColor& first, const TTMLColor& second, const TTMLColor& third);

}  // namespace TTML

#endif
