#ifndef INTERTITLE_TESTS_IMAGE_PNGMAKER_H
#define INTERTITLE_TESTS_IMAGE_PNGMAKER_H

#include <png.h>

#include <string>
#include <vector>

// A w x h RGBA PNG file in memory, of one colour `argb` when given, else a
// gradient (so rows differ); an empty string when libpng cannot write it.
inline std::string MakePng(unsigned int w, unsigned int h, unsigned int argb = 0)
{
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = w;
    image.height = h;
    image.format = PNG_FORMAT_RGBA;
    std::vector<unsigned char> pixels(static_cast<size_t>(w) * h * 4);
    for (size_t i = 0; i < pixels.size(); ++i)
        pixels[i] = static_cast<unsigned char>(argb ? argb >> (i % 4 == 3 ? 24 : 16 - 8 * (i % 4)) : i * 7);
    png_alloc_size_t size = 0;
    png_image_write_to_memory(&image, nullptr, &size, 0, pixels.data(), 0, nullptr);
    std::string out(size, '\0');
    if (!size || !png_image_write_to_memory(&image, &out[0], &size, 0, pixels.data(), 0, nullptr))
        return std::string();
    out.resize(size);
    return out;
}

// Offset of the first chunk of `type` in a PNG file (its length field), or
// npos.
inline size_t FindChunk(const std::string& png, const char* type)
{
    for (size_t pos = 8; pos + 8 <= png.size();) {
        if (png.compare(pos + 4, 4, type) == 0)
            return pos;
        const unsigned char* p = reinterpret_cast<const unsigned char*>(png.data()) + pos;
        pos += 12 + ((size_t(p[0]) << 24) | (size_t(p[1]) << 16) | (size_t(p[2]) << 8) | size_t(p[3]));
    }
    return std::string::npos;
}

// `png` with the byte at `offset` of its first `chunk` (from the length field)
// xor-ed with `bits`; its checksum no longer matches.
inline std::string Flipped(std::string png, const char* chunk, size_t offset, char bits)
{
    png[FindChunk(png, chunk) + offset] ^= bits;
    return png;
}

// A 4 x 4 PNG whose header claims w x h, its checksum left as it was: only a
// size check made before any decoding can name the size.
inline std::string ClaimingSize(unsigned int w, unsigned int h)
{
    std::string png = MakePng(4, 4);
    for (int i = 0; i < 4; ++i) {
        png[16 + i] = static_cast<char>(w >> (24 - 8 * i));
        png[20 + i] = static_cast<char>(h >> (24 - 8 * i));
    }
    return png;
}

#endif
