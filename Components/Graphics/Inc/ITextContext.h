#ifndef TTML_GRAPHICS_ITEXTCONTEXT_H
#define TTML_GRAPHICS_ITEXTCONTEXT_H

#include "TTMLTypes.h"

#include <map>
#include <string>
#include <utility>

namespace TTML {

class ITextSurface;

// One paragraph: styled text runs laid out in a box and rendered onto a
// region (ITextSurface) at the region's pen. Made with
// IGraphics::CreateObject(OBJECT_TEXT_CONTEXT), given back with Deinitialize()
// then IGraphics::DestroyObject.
//
// Markup is Evas textblock markup. FormatText makes exactly one run per call,
// "<font='Family' font_size=N color=#rrggbbaa ...>text</>", and the caller
// joins runs in order and hands the paragraph to SetText. Attributes are
// keyed by TTMLAttr number with values as the parser stores them.
// Styling given by SetTextStyle belongs to the run made by the FormatText
// call before it, and is applied to the k-th run of the markup when drawing,
// so it survives GetText/ReplaceAttribute/SetText cycles.
//
// Units: pixels. Thread: as ITextSurface (RenderOn and GetSize lay out and
// draw, on the main loop; the rest records state).
class ITextContext {
public:
    // (background, text)
    typedef std::pair<TTMLColor, TTMLColor> Colours;

    virtual ~ITextContext() {}

    virtual bool Initialize() = 0;
    virtual void Deinitialize() = 0;
    // "ltr" or "rtl" (paragraph direction; start/end alignment follows it).
    virtual void SetDirection(const std::string& direction) = 0;
    // Extra space between lines; negative values are drawn as 0.
    virtual void SetLineGap(double px) = 0;
    // Box the paragraph wraps and aligns in; 0 width: as wide as its text.
    virtual void SetWidth(int w) = 0;
    virtual void SetHeight(int h) = 0;
    // Style of the run the last FormatText made (text is that run's text).
    // colours: background becomes the run's background (alpha 0: none);
    // the text colour's alpha replaces the run's only when defaultOpacity is
    // false (a caption-menu opacity). outline: type 0 none; 1..5 edges and 6
    // document outline, offsets and thickness in pixels; an outline colour of
    // alpha 0 means black for edges, the run's text colour for type 6.
    // decoration (the overline bit) is recorded, not drawn: Evas has no
    // overline. Null pointers leave those parts unchanged.
    virtual void SetTextStyle(const std::string& text, bool decoration, Colours* colours,
                              TextOutline* outline) = 0;
    // Drawn behind the paragraph's lines across the box width.
    virtual void SetParaBackgroundColor(const TTMLColor& colour) = 0;
    // "left", "center", "right", "start", "end" ("justify" draws as start).
    virtual void SetTextAlign(const std::string& align) = 0;
    // "embed" and "bidioverride" wrap text in the Unicode embedding or
    // override marks for the direction; true when it changed text.
    virtual bool ApplyUnicodeBidi(const std::string& value, std::string& text) = 0;
    // Recorded; "rl"/"rltb" or mirrored make the paragraph right-to-left.
    // Vertical modes are laid out horizontally.
    virtual void SetWritingMode(const std::string& value, bool mirrored) = 0;
    virtual void SetWrap(bool wrap) = 0;
    // "start", "center", "end": lines aligned among themselves, the block
    // placed by the text alignment; "auto" or empty: as the text alignment.
    virtual void SetMultiRowAlign(const std::string& align) = 0;
    // Size for runs whose markup gives none.
    virtual void SetFontSize(double px) = 0;
    virtual double GetFontSize() = 0;
    virtual void SetText(const std::string& markup) = 0;
    // Places the paragraph at surface's pen (null: warning). Main loop.
    virtual void RenderOn(ITextSurface* surface) = 0;
    // Box width (or text width when no width was set) and the height of the
    // laid-out lines. Main loop; elsewhere the last size laid out.
    virtual void GetSize(int* w, int* h) = 0;  // null pointers allowed
    // One run (see above). Read: ATTR_TEXT ("\n" is a line break),
    // ATTR_FONTFAMILY (a family list), ATTR_FONTSIZE (pixels, "NNpx"; other
    // units use SetFontSize's size), ATTR_COLOR (default white),
    // ATTR_FONTWEIGHT, ATTR_FONTSTYLE, ATTR_TEXTDECORATION (the stored flag
    // mask: 2 underline, 8 line-through), ATTR_BACKGROUNDCOLOR and
    // ATTR_VISIBILITY ("hidden": nothing drawn).
    virtual std::string FormatText(const std::map<int, std::string>& attributes) = 0;
    // Sets one attribute in every run of markup: ATTR_FONTSIZE ("52px"),
    // ATTR_FONTFAMILY, ATTR_COLOR ("#ffff00"; each run keeps its alpha),
    // ATTR_FONTWEIGHT, ATTR_FONTSTYLE, ATTR_BACKGROUNDCOLOR. Others: warning,
    // markup unchanged.
    virtual void ReplaceAttribute(std::string& markup, int attribute, const std::string& value) = 0;
    virtual std::string GetText() = 0;
    // Space added at the start and end of each line.
    virtual void SetLinePadding(double px) = 0;
    // Hides the text and its outline, not the backgrounds (flashing).
    virtual void SetTextVisible(bool visible) = 0;
    // Backgrounds of runs also cover the gap between lines.
    virtual void SetFillLineGap(bool fill) = 0;
};

}  // namespace TTML

#endif
