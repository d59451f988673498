#ifndef TTML_GRAPHICS_IDRAWOBSERVER_H
#define TTML_GRAPHICS_IDRAWOBSERVER_H

#include <string>

namespace TTML {

// Sees what the graphics component puts on screen and takes off, for tests
// and tools that watch a core whose graphics object they cannot reach (the
// controller makes its own). Nothing in the system registers one.
//
// One observer per process (CGraphics::SetDrawObserver). It is called on
// the thread making the graphics call, with the component's observer lock
// held: it must be thread-safe, quick, and must not call back into the
// graphics component. Texts are the paragraphs' plain text (markup
// removed, line breaks as "\n"); a region's paragraphs are joined by "\n".
class IDrawObserver {
public:
    enum Kind {
        PARAGRAPH_MADE,  // CreateObject of a text context; text empty
        PARAGRAPH_GONE,  // DestroyObject of a text context; text: its text
        REGION_SHOWN,    // ITextSurface::Show; text: the paragraphs on it
        REGION_CLEARED   // ITextSurface::ClearContent; text: what was taken off
    };

    // object: the text context or text surface, as handed out by CreateObject.
    virtual void OnDrawEvent(Kind kind, const void* object, const std::string& text) = 0;

protected:
    ~IDrawObserver() = default;
};

}  // namespace TTML

#endif
