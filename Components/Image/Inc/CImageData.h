#ifndef TTML_IMAGE_CIMAGEDATA_H
#define TTML_IMAGE_CIMAGEDATA_H

#include <cstddef>
#include <memory>
#include <string>

namespace TTML {

// One checked subtitle image: the bytes of a complete, decodable PNG file
// and its size in pixels. Made only through FromPng, so a CImageData that
// exists always holds an image the graphics component can attach.
//
// Immutable once made: shared between elements and read from any thread
// (the parser thread makes it, the renderer reads it on the main loop).
class CImageData {
public:
    // Largest accepted side in pixels and largest PNG file; the text
    // surface refuses anything bigger, so it is refused here already.
    static constexpr unsigned int kMaxSide = 8192;
    static constexpr size_t kMaxBytes = 32u * 1024u * 1024u;

    // Decodes `data` (not owned, copied on success) as a whole PNG file:
    // signature, every chunk up to IEND with its checksum, all pixel rows.
    // Empty pointer and the warning
    //   Image "<reference>" refused: <why>
    // when it is null, empty, too big, not a PNG, truncated or corrupt, or
    // has a side of 0 or above kMaxSide, or would decode to more than
    // Limits::kMaxDecodedImageBytes. `reference` names the image in logs.
    static std::shared_ptr<CImageData> FromPng(const std::string& reference, const void* data, size_t size);

    // The PNG file's bytes, what ITextSurface::AttachImage takes; owned by
    // this object and valid while it lives. `size` (may be null) receives
    // the length in bytes.
    const unsigned char* GetBuffer(unsigned int* size) const;

    unsigned int GetWidth() const { return m_width; }
    unsigned int GetHeight() const { return m_height; }
    // The reference the image was asked for ("3", "1.png", ...).
    const std::string& GetReference() const { return m_reference; }

private:
    CImageData(const std::string& reference, std::string bytes, unsigned int width, unsigned int height);
    // False, with the warning, when width x height x 4 is above the limit.
    static bool m_IsDecodable(const char* ref, unsigned int width, unsigned int height);

    std::string m_reference;
    std::string m_bytes;
    unsigned int m_width;
    unsigned int m_height;
};

}  // namespace TTML

#endif
