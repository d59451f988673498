#ifndef TTML_COMMON_TTMLLIMITS_H
#define TTML_COMMON_TTMLLIMITS_H

#include <cstddef>

namespace TTML {

// What a TV accepts in one document. Anything beyond a limit is refused
// whole, with a warning that names the limit and the value found, before it
// can exhaust memory or time; nothing is cut short silently.
//
// The values leave a margin over every real document seen: a two-hour film
// is about 1,450 cues (7,000 nodes, 3,000 intervals, 0.3 MB), and a
// 50,000-cue document (250,000 nodes, 55,000 intervals, 130,000 interval
// entries, 8.5 to 12 MB) still passes. Real documents use a handful of
// regions and styles and nest fewer than 10 levels.
namespace Limits {

// Bytes of XML read, from memory or file. The DOM alone takes about 14x this.
constexpr int kMaxDocumentBytes = 64 * 1024 * 1024;

// XML levels the walk descends (nested spans included); the walk recurses
// once per level.
constexpr int kMaxNestingDepth = 64;

// Nodes the walk turns into elements (element nodes and text runs),
// counted before it builds anything: kElementAllowance for any document,
// plus one for every kBytesPerElement bytes of it. Each costs about 1 KB
// once built while markup can spend as little as 5 bytes on one (<br/>),
// so a fixed count would let a small document take far more memory than
// 25 times its size plus 50 MB; this one does not. A 50,000-cue document
// (250,000 nodes in 8.5 MB) passes.
constexpr size_t kElementAllowance = 50000;
constexpr size_t kBytesPerElement = 40;

constexpr size_t MaxElements(size_t documentBytes)
{
    return kElementAllowance + documentBytes / kBytesPerElement;
}

// region and style elements in the document. Every paragraph copies the
// attributes of the region and styles it refers to.
constexpr size_t kMaxRegions = 1024;
constexpr size_t kMaxStyles = 4096;

// Split intervals per document (the engine makes a rendering record for
// each), and entries over all of them (an element listed in k intervals is
// k entries). Entries grow with the square of the number of elements shown
// at once, so this bounds many overlapping elements to about 1,000.
constexpr size_t kMaxIntervals = 200000;
constexpr size_t kMaxIntervalEntries = 1000000;

// Decoded size of one image (width x height x 4 bytes): a UHD frame.
constexpr size_t kMaxDecodedImageBytes = 3840u * 2160u * 4u;

// Memory the PNG decoder may take for one ancillary chunk (text, colour
// profiles, unknown chunks), and how many such chunks it keeps. Subtitle
// images need none; a chunk header alone can claim a gigabyte from a file
// of a few hundred bytes.
constexpr size_t kMaxPngChunkBytes = 256u * 1024u;
constexpr unsigned kMaxPngChunks = 64;

// Declarations in an internal DTD subset (entities, elements, attribute
// lists): none, which leaves no entity to expand. Neither EBU-TT-D nor IMSC 1
// needs them, and an internal entity is expanded on every read of the tree,
// past libxml2's own amplification guard. External DTDs and entities are
// never loaded; the predefined entities and character references do not
// amplify.
constexpr int kMaxDtdDeclarations = 0;

}  // namespace Limits

}  // namespace TTML

#endif
