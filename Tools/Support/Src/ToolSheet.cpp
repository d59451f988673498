#include "ToolSheet.h"

#include "CHeadlessCanvas.h"

#include <Evas.h>

namespace TTML {

bool WriteContactSheet(const std::vector<SheetFrame>& frames, int frameWidth, int frameHeight, int thumbWidth,
                       const std::string& path)
{
    const int kColumns = 4;
    const int kGap = 12;
    const int kLabel = 30;
    const int columns = frames.size() < kColumns ? static_cast<int>(frames.size()) : kColumns;
    const int rows = static_cast<int>((frames.size() + kColumns - 1) / kColumns);
    const int thumbHeight = frameWidth > 0 ? thumbWidth * frameHeight / frameWidth : 0;
    TTML::CHeadlessCanvas sheet;
    if (columns == 0 || thumbHeight <= 0 ||
        !sheet.Initialize(kGap + columns * (thumbWidth + kGap), kGap + rows * (thumbHeight + kLabel + kGap)))
        return false;
    Evas* pEvas = sheet.GetEvas();
    Evas_Object* pBack = evas_object_rectangle_add(pEvas);
    evas_object_color_set(pBack, 24, 24, 24, 255);
    evas_object_resize(pBack, sheet.GetWidth(), sheet.GetHeight());
    evas_object_show(pBack);
    for (std::size_t i = 0; i < frames.size(); ++i) {
        const int x = kGap + static_cast<int>(i % kColumns) * (thumbWidth + kGap);
        const int y = kGap + static_cast<int>(i / kColumns) * (thumbHeight + kLabel + kGap);
        Evas_Object* pThumb = evas_object_image_filled_add(pEvas);
        evas_object_image_file_set(pThumb, frames[i].path.c_str(), nullptr);
        evas_object_image_smooth_scale_set(pThumb, EINA_TRUE);
        evas_object_move(pThumb, x, y);
        evas_object_resize(pThumb, thumbWidth, thumbHeight);
        evas_object_show(pThumb);
        Evas_Object* pText = evas_object_text_add(pEvas);
        evas_object_text_font_set(pText, "DejaVu Sans", 18);
        evas_object_text_text_set(pText, frames[i].label.c_str());
        evas_object_color_set(pText, 230, 230, 230, 255);
        evas_object_move(pText, x, y + thumbHeight + 4);
        evas_object_show(pText);
    }
    return sheet.SavePng(path);
}

}  // namespace TTML
