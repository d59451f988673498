#ifndef TTML_GRAPHICS_ITEXTCONTEXT_H
#define TTML_GRAPHICS_ITEXTCONTEXT_H

#include "TTMLTypes.h"

#include <map>
#include <string>
#include <utility>

namespace TTML {

class ITextSurface;

// One paragraph: styled text runs laid out in a box and rendered onto a
// region (ITextSurface). Made with IGraphics::CreateObject(OBJECT_TEXT_CONTEXT),
// given back with Deinitialize() then IGraphics::DestroyObject.
//
// The markup is this component's own format: FormatText makes it from an
// element's attribute map (attribute number -> value as stored by the parser),
// ReplaceAttribute edits one attribute in it, SetText/GetText store it.
// Units: pixels. Thread: as ITextSurface.
class ITextContext {
public:
    // (background, text)
    typedef std::pair<TTMLColor, TTMLColor> Colours;

    virtual ~ITextContext() {}

    virtual bool Initialize() = 0;
    virtual void Deinitialize() = 0;
    virtual void SetDirection(const std::string& direction) = 0;
    virtual void SetLineGap(double px) = 0;
    virtual void SetWidth(int w) = 0;
    virtual void SetHeight(int h) = 0;
    // colours and outline are read during the call; null leaves them unchanged.
    virtual void SetTextStyle(const std::string& text, bool decoration, Colours* colours,
                              TextOutline* outline) = 0;
    virtual void SetParaBackgroundColor(const TTMLColor& colour) = 0;
    virtual void SetTextAlign(const std::string& align) = 0;
    // Rewrites text for the unicodeBidi value; true when it changed text.
    virtual bool ApplyUnicodeBidi(const std::string& value, std::string& text) = 0;
    virtual void SetWritingMode(const std::string& value, bool mirrored) = 0;
    virtual void SetWrap(bool wrap) = 0;
    virtual void SetMultiRowAlign(const std::string& align) = 0;
    virtual void SetFontSize(double px) = 0;
    virtual double GetFontSize() = 0;
    virtual void SetText(const std::string& markup) = 0;
    virtual void RenderOn(ITextSurface* surface) = 0;
    virtual void GetSize(int* w, int* h) = 0;  // null pointers allowed
    virtual std::string FormatText(const std::map<int, std::string>& attributes) = 0;
    virtual void ReplaceAttribute(std::string& markup, int attribute, const std::string& value) = 0;
    virtual std::string GetText() = 0;
    virtual void SetLinePadding(double px) = 0;
    virtual void SetTextVisible(bool visible) = 0;
    virtual void SetFillLineGap(bool fill) = 0;
};

}  // namespace TTML

#endif
