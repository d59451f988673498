#ifndef INTERTITLE_TESTS_SUPPORT_PIXELBOX_H
#define INTERTITLE_TESTS_SUPPORT_PIXELBOX_H

#include <algorithm>
#include <cstddef>

// The bounding box of the pixels of a 1920x1080 canvas buffer (0xAARRGGBB,
// premultiplied) for which match(pixel) holds, within (x, y, w, h).
struct PixelBox {
    int x0 = 1 << 30, y0 = 1 << 30, x1 = -1, y1 = -1;  // inclusive; empty when x1 < x0
    int count = 0;
    bool Empty() const { return count == 0; }
    int CentreX() const { return (x0 + x1) / 2; }

    template <typename F>
    static PixelBox Find(const unsigned int* pPixels, F match, int x, int y, int w, int h)
    {
        PixelBox box;
        for (int j = std::max(0, y); j < std::min(1080, y + h); ++j)
            for (int i = std::max(0, x); i < std::min(1920, x + w); ++i)
                if (match(pPixels[static_cast<std::size_t>(j) * 1920 + static_cast<std::size_t>(i)])) {
                    box.x0 = std::min(box.x0, i);
                    box.y0 = std::min(box.y0, j);
                    box.x1 = std::max(box.x1, i);
                    box.y1 = std::max(box.y1, j);
                    ++box.count;
                }
        return box;
    }
};

#endif
