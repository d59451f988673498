#include "CImageData.h"

#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <utility>

#include "TTMLLimits.h"
#include "TTMLLog.h"

namespace TTML {

namespace {

// Everything the libpng callbacks touch lives here, outside the frame that
// calls setjmp, so nothing with a destructor is skipped by a longjmp.
struct PngReadState {
    const unsigned char* data;
    size_t size;
    size_t pos;
    png_bytep row;
    char error[160];
};

void ReadData_Cb(png_structp png, png_bytep out, png_size_t length)
{
    PngReadState* state = static_cast<PngReadState*>(png_get_io_ptr(png));
    if (length > state->size - state->pos)
        png_error(png, "truncated");
    std::memcpy(out, state->data + state->pos, length);
    state->pos += length;
}

void Error_Cb(png_structp png, png_const_charp message)
{
    PngReadState* state = static_cast<PngReadState*>(png_get_error_ptr(png));
    std::snprintf(state->error, sizeof(state->error), "%s", message ? message : "decoding failed");
    png_longjmp(png, 1);
}

// Ancillary-chunk complaints do not make the image unusable.
void Warning_Cb(png_structp, png_const_charp) {}

// Decodes every row into one reused row buffer: the whole image is checked
// without holding its pixels. False with state.error set on any fault.
bool DecodePng(PngReadState& state, png_uint_32* width, png_uint_32* height)
{
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &state, Error_Cb, Warning_Cb);
    if (!png) {
        std::snprintf(state.error, sizeof(state.error), "out of memory");
        return false;
    }
    png_infop info = png_create_info_struct(png);
    if (!info) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        std::snprintf(state.error, sizeof(state.error), "out of memory");
        return false;
    }
    if (setjmp(png_jmpbuf(png))) {
        if (state.row)
            png_free(png, state.row);
        state.row = nullptr;
        png_destroy_read_struct(&png, &info, nullptr);
        return false;
    }
    png_set_read_fn(png, &state, ReadData_Cb);
    // libpng refuses oversized images before allocating anything for them.
    png_set_user_limits(png, CImageData::kMaxSide, CImageData::kMaxSide);
    // Only the chunks that make the pixels are read. Text, profiles and the
    // rest are skipped unread: libpng allocates a chunk's declared length
    // before reading it and only warns when that passes the chunk limit.
    static const png_byte kPixelChunks[] = "tRNS";
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_AS_DEFAULT, kPixelChunks, 1);
    png_set_chunk_malloc_max(png, Limits::kMaxPngChunkBytes);
    png_set_chunk_cache_max(png, Limits::kMaxPngChunks);
    png_read_info(png, info);
    *width = png_get_image_width(png, info);
    *height = png_get_image_height(png, info);
    int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    state.row = static_cast<png_bytep>(png_malloc(png, png_get_rowbytes(png, info)));
    for (int pass = 0; pass < passes; ++pass) {
        for (png_uint_32 y = 0; y < *height; ++y)
            png_read_row(png, state.row, nullptr);
    }
    // Reads up to IEND, so a file cut after its pixel data is refused too.
    png_read_end(png, nullptr);
    png_free(png, state.row);
    state.row = nullptr;
    png_destroy_read_struct(&png, &info, nullptr);
    return true;
}

}  // namespace

CImageData::CImageData(const std::string& reference, std::string bytes, unsigned int width, unsigned int height)
    : m_reference(reference), m_bytes(std::move(bytes)), m_width(width), m_height(height)
{
}

std::shared_ptr<CImageData> CImageData::FromPng(const std::string& reference, const void* data, size_t size)
{
    const char* ref = reference.c_str();
    if (!data || size == 0) {
        TTML_WARN("Image \"%s\" refused: no data", ref);
        return nullptr;
    }
    if (size > kMaxBytes) {
        TTML_WARN("Image \"%s\" refused: %zu bytes, more than %zu", ref, size, kMaxBytes);
        return nullptr;
    }
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    if (size < 8 || png_sig_cmp(bytes, 0, 8) != 0) {
        TTML_WARN("Image \"%s\" refused: not a PNG file", ref);
        return nullptr;
    }

    // The size is judged from IHDR first, so an oversized image gets its own
    // reason instead of libpng's user-limit error.
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    if (size >= 24 && std::memcmp(bytes + 12, "IHDR", 4) == 0) {
        width = png_get_uint_32(bytes + 16);
        height = png_get_uint_32(bytes + 20);
        if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide) {
            TTML_WARN("Image \"%s\" refused: size %ux%u out of range", ref, static_cast<unsigned>(width),
                      static_cast<unsigned>(height));
            return nullptr;
        }
        if (!m_IsDecodable(ref, width, height))
            return nullptr;
    }

    PngReadState state{bytes, size, 0, nullptr, {0}};
    if (!DecodePng(state, &width, &height)) {
        TTML_WARN("Image \"%s\" refused: corrupt or truncated PNG (%s)", ref, state.error);
        return nullptr;
    }
    // libpng already rejects 0 and user-limit overflows; kept so the rule
    // does not depend on its build options.
    if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide) {
        TTML_WARN("Image \"%s\" refused: size %ux%u out of range", ref, static_cast<unsigned>(width),
                  static_cast<unsigned>(height));
        return nullptr;
    }
    if (!m_IsDecodable(ref, width, height))
        return nullptr;

    std::shared_ptr<CImageData> image(new (std::nothrow) CImageData(
        reference, std::string(reinterpret_cast<const char*>(bytes), size), width, height));
    TTML_ASSERT(image);
    return image;
}

bool CImageData::m_IsDecodable(const char* ref, unsigned int width, unsigned int height)
{
    // The graphics component holds every shown image decoded, 4 bytes a pixel.
    const unsigned long long decoded = 4ull * width * height;
    if (decoded <= Limits::kMaxDecodedImageBytes)
        return true;
    TTML_WARN("Image \"%s\" refused: decoded size %llu bytes (%ux%u), limit %zu", ref, decoded, width, height,
              Limits::kMaxDecodedImageBytes);
    return false;
}

const unsigned char* CImageData::GetBuffer(unsigned int* size) const
{
    if (size)
        *size = static_cast<unsigned int>(m_bytes.size());
    return reinterpret_cast<const unsigned char*>(m_bytes.data());
}

}  // namespace TTML
