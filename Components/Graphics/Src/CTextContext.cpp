#include "CTextContext.h"

#include "CFontFamilyMap.h"
#include "CRootContainer.h"
#include "CTextMarkup.h"
#include "CTextSurface.h"
#include "TTMLLog.h"

#include <Ecore.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace TTML {

namespace {

// Outline offsets below a pixel still show, as one pixel.
int EdgePixels(double v)
{
    if (v == 0)
        return 0;
    int r = (int)std::lround(v);
    if (r == 0)
        r = v < 0 ? -1 : 1;
    return r;
}

const int kDefaultFontPx = 40;

}  // namespace

CTextContext::CTextContext(CRootContainer* root) : m_pRoot(root) {}

CTextContext::~CTextContext()
{
    Deinitialize();
}

bool CTextContext::Initialize()
{
    if (!m_pRoot) {
        TTML_WARN("No root container");
        return false;
    }
    m_bInitialized = true;
    return true;
}

void CTextContext::Deinitialize()
{
    if (m_pSurface) {
        m_pSurface->ForgetContent(this);
        m_pSurface = nullptr;
    }
    m_ReleaseLayers();
    m_bInitialized = false;
}

void CTextContext::SetDirection(const std::string& direction)
{
    m_direction = direction;
    m_bDirty = true;
}

void CTextContext::SetLineGap(double px)
{
    m_lineGap = px;
    m_bDirty = true;
}

void CTextContext::SetWidth(int w)
{
    m_boxW = w > 0 ? w : 0;
    m_bDirty = true;
}

void CTextContext::SetHeight(int h)
{
    m_boxH = h > 0 ? h : 0;
    m_bDirty = true;
}

void CTextContext::SetTextStyle(const std::string& /*text*/, bool decoration, Colours* colours,
                                TextOutline* outline)
{
    // FormatText made the run this styles; without one it styles the first.
    if (m_runs.empty())
        m_runs.emplace_back();
    RunStyle& run = m_runs.back();
    run.bDecoration = decoration;
    if (colours) {
        run.bBackground = true;
        run.background = colours->first;
        if (!colours->second.defaultOpacity) {
            run.bTextAlpha = true;
            run.textAlpha = CTextMarkup::To8(colours->second.alpha);
        }
    }
    if (outline)
        run.outline = *outline;
    m_bDirty = true;
}

void CTextContext::SetParaBackgroundColor(const TTMLColor& colour)
{
    m_paraBackground = colour;
    m_bDirty = true;
}

void CTextContext::SetTextAlign(const std::string& align)
{
    m_textAlign = align;
    m_bDirty = true;
}

bool CTextContext::ApplyUnicodeBidi(const std::string& value, std::string& text)
{
    bool rtl = m_IsRightToLeft();
    const char* pMark;
    if (value == "embed")
        pMark = rtl ? "\xE2\x80\xAB" : "\xE2\x80\xAA";  // RLE / LRE
    else if (value == "bidioverride")
        pMark = rtl ? "\xE2\x80\xAE" : "\xE2\x80\xAD";  // RLO / LRO
    else
        return false;
    // A second call on the same element must not nest another level.
    if (text.compare(0, 3, pMark) == 0)
        return false;
    text = std::string(pMark) + text + "\xE2\x80\xAC";  // ... PDF
    return true;
}

void CTextContext::SetWritingMode(const std::string& value, bool mirrored)
{
    m_writingMode = value;
    m_bMirrored = mirrored;
    m_bDirty = true;
}

void CTextContext::SetWrap(bool wrap)
{
    m_bWrap = wrap;
    m_bDirty = true;
}

void CTextContext::SetMultiRowAlign(const std::string& align)
{
    m_multiRowAlign = align;
    m_bDirty = true;
}

void CTextContext::SetFontSize(double px)
{
    m_fontSize = px;
    m_bDirty = true;
}

double CTextContext::GetFontSize()
{
    return m_fontSize;
}

void CTextContext::SetText(const std::string& markup)
{
    m_markup = markup;
    m_bDirty = true;
}

std::string CTextContext::GetText()
{
    return m_markup;
}

bool CTextContext::GetTextRect(int* x, int* y, int* w, int* h) const
{
    if (!m_pSurface)
        return false;
    *x = m_penX + m_blockX;
    *y = m_penY;
    *w = m_blockW;
    *h = m_lastH;
    return true;
}

std::string CTextContext::FormatText(const std::map<int, std::string>& attributes)
{
    m_runs.emplace_back();
    return CTextMarkup::FormatRun(attributes, m_fontSize);
}

void CTextContext::ReplaceAttribute(std::string& markup, int attribute, const std::string& value)
{
    CTextMarkup::ReplaceAttribute(markup, attribute, value);
}

std::string CTextContext::GetPlainText() const
{
    std::string plain;
    // Evas turns markup into text without needing a canvas.
    char* pText = evas_textblock_text_markup_to_utf8(nullptr, m_markup.c_str());
    if (pText) {
        plain = pText;
        free(pText);
    }
    return plain;
}

void CTextContext::SetLinePadding(double px)
{
    m_linePadding = px > 0 ? px : 0;
    m_bDirty = true;
}

void CTextContext::SetTextVisible(bool visible)
{
    m_bTextVisible = visible;
    if (eina_main_loop_is())
        ApplyVisibility();
}

void CTextContext::SetFillLineGap(bool fill)
{
    m_bFillLineGap = fill;
    m_bDirty = true;
}

bool CTextContext::m_IsRightToLeft() const
{
    return m_direction == "rtl" || m_bMirrored || m_writingMode == "rl" || m_writingMode == "rltb" ||
           (m_pSurface && m_pSurface->IsRightToLeft());
}

std::string CTextContext::m_EvasAlign(const std::string& align) const
{
    bool rtl = m_IsRightToLeft();
    if (align == "left" || align == "center" || align == "right")
        return align;
    if (align == "end")
        return rtl ? "left" : "right";
    return rtl ? "right" : "left";  // start, justify, auto, unset
}

std::string CTextContext::m_ComposeStyle() const
{
    std::string family = CFontFamilyMap::DefaultFamily();
    std::string escaped;
    for (char c : family) {
        if (c == ' ')
            escaped += '\\';
        escaped += c;
    }
    int size = m_fontSize > 0 ? (int)std::lround(m_fontSize) : kDefaultFontPx;
    bool multiRow = m_boxW > 0 && (m_multiRowAlign == "start" || m_multiRowAlign == "center" ||
                                   m_multiRowAlign == "end");
    std::string align = m_EvasAlign(multiRow ? m_multiRowAlign : m_textAlign);
    int padding = (int)std::lround(m_linePadding);
    char buf[512];
    snprintf(buf, sizeof(buf),
             "DEFAULT='font=%s font_size=%d color=#ffffffff wrap=%s align=%s linegap=%d "
             "left_margin=%d right_margin=%d'",
             escaped.c_str(), size, m_bWrap && m_boxW > 0 ? "word" : "none", align.c_str(),
             m_lineGap > 0 ? (int)std::lround(m_lineGap) : 0, padding, padding);
    return buf;
}

bool CTextContext::m_BuildLayers(size_t edgeCount)
{
    if (m_pText && m_edges.size() == edgeCount)
        return true;
    m_ReleaseLayers();
    Evas_Object* pRootObject = m_pRoot ? m_pRoot->GetEvasObject() : nullptr;
    Evas* pEvas = pRootObject ? evas_object_evas_get(pRootObject) : nullptr;
    if (!pEvas) {
        TTML_WARN("No canvas to draw the paragraph on");
        return false;
    }
    m_pStyle = evas_textblock_style_new();
    auto add = [&](Evas_Object** slot, bool textblock) {
        *slot = textblock ? evas_object_textblock_add(pEvas) : evas_object_rectangle_add(pEvas);
        if (!*slot)
            return;
        CTextSurface::TrackObject(slot);
        evas_object_smart_member_add(*slot, pRootObject);
        evas_object_pass_events_set(*slot, EINA_TRUE);
    };
    add(&m_pParaBg, false);
    add(&m_pBacking, true);
    m_edges.assign(edgeCount, nullptr);  // sized before the slots are tracked
    for (Evas_Object*& pEdge : m_edges)
        add(&pEdge, true);
    add(&m_pText, true);
    return m_pStyle && m_pText;
}

void CTextContext::m_ReleaseLayers()
{
    CTextSurface::DeleteObject(&m_pParaBg);
    CTextSurface::DeleteObject(&m_pBacking);
    for (Evas_Object*& pEdge : m_edges)
        CTextSurface::DeleteObject(&pEdge);
    m_edges.clear();
    CTextSurface::DeleteObject(&m_pText);
    if (m_pStyle) {
        evas_textblock_style_free(m_pStyle);
        m_pStyle = nullptr;
    }
    m_bDirty = true;
}

bool CTextContext::m_Layout()
{
    if (!m_bDirty && m_pText)
        return true;

    // Edge geometry: the widest outline among the runs decides the layers;
    // each run draws in them in its own edge colour (or not at all).
    const TextOutline* pWidest = nullptr;
    for (const RunStyle& run : m_runs) {
        const TextOutline& o = run.outline;
        if (o.type <= 0 || (o.thickness <= 0 && o.offsetX == 0 && o.offsetY == 0))
            continue;
        if (!pWidest || o.thickness > pWidest->thickness)
            pWidest = &o;
    }
    m_edgeOffsets.clear();
    bool outlined = false, soft = false;
    if (pWidest) {
        int ox = EdgePixels(pWidest->offsetX), oy = EdgePixels(pWidest->offsetY);
        int t = (int)std::lround(pWidest->thickness);
        if (pWidest->thickness > 0 && t == 0)
            t = 1;
        soft = pWidest->blur > 0;
        if (t <= 0) {
            m_edgeOffsets.push_back({ox, oy});  // a plain shadow
        } else if (t == 1) {
            outlined = true;
            m_edgeOffsets.push_back({ox, oy});
        } else {
            // Copies around a ring, each with Evas' own 1-pixel outline to
            // close the gaps between them: a solid outline of any thickness.
            outlined = true;
            int n = t <= 3 ? 8 : 16;
            double r = t - 1;
            for (int i = 0; i < n; ++i) {
                double a = 2 * M_PI * i / n;
                m_edgeOffsets.push_back(
                    {ox + (int)std::lround(r * std::cos(a)), oy + (int)std::lround(r * std::sin(a))});
            }
        }
    }
    if (!m_BuildLayers(m_edgeOffsets.size()))
        return false;

    // Text layer: text colours (menu alpha applied), no backgrounds.
    std::string text = CTextMarkup::EditRuns(m_markup, [&](int k, CTextMarkup::Items& items) {
        if (k < (int)m_runs.size() && m_runs[k].bTextAlpha) {
            TTMLColor c;
            if (CTextMarkup::ReadColour(CTextMarkup::GetItem(items, "color"), c)) {
                c.alpha = static_cast<uint16_t>(m_runs[k].textAlpha * 257);
                CTextMarkup::SetTextColour(items, CTextMarkup::WriteColour(c));
            }
        }
        CTextMarkup::SetItem(items, "backing", "off");
    });
    // Backing layer: backgrounds only.
    std::string backing = CTextMarkup::EditRuns(m_markup, [&](int k, CTextMarkup::Items& items) {
        CTextMarkup::SetItem(items, "color", "#00000000");
        CTextMarkup::SetItem(items, "underline", "off");
        CTextMarkup::SetItem(items, "strikethrough", "off");
        if (k < (int)m_runs.size() && m_runs[k].bBackground) {
            const TTMLColor& bg = m_runs[k].background;
            CTextMarkup::SetItem(items, "backing", bg.alpha ? "on" : "off");
            CTextMarkup::SetItem(items, "backing_color", CTextMarkup::WriteColour(bg));
        }
    });
    // Edge layers: the text in its edge colour.
    std::string edge = CTextMarkup::EditRuns(text, [&](int k, CTextMarkup::Items& items) {
        std::string colour = "#00000000";
        if (k < (int)m_runs.size() && m_runs[k].outline.type > 0) {
            const TextOutline& o = m_runs[k].outline;
            TTMLColor c;
            c.alpha = 65535;
            CTextMarkup::ReadColour(CTextMarkup::GetItem(items, "color"), c);
            if (o.color.alpha > 0)
                colour = CTextMarkup::WriteColour(o.color);
            else if (o.type == 6)
                colour = CTextMarkup::WriteColour(c);
            else
                colour = CTextMarkup::WriteColour(0, 0, 0, CTextMarkup::To8(c.alpha));
        }
        CTextMarkup::SetItem(items, "color", colour);
        CTextMarkup::SetItem(items, "underline", "off");
        CTextMarkup::SetItem(items, "strikethrough", "off");
        if (outlined) {
            CTextMarkup::SetItem(items, "style", soft ? "soft_outline" : "outline");
            CTextMarkup::SetItem(items, "outline_color", colour);
        }
    });

    evas_textblock_style_set(m_pStyle, m_ComposeStyle().c_str());
    Evas_BiDi_Direction dir = m_IsRightToLeft() ? EVAS_BIDI_DIRECTION_RTL : EVAS_BIDI_DIRECTION_LTR;
    auto setup = [&](Evas_Object* pBlock, const std::string& markup) {
        evas_object_textblock_style_set(pBlock, m_pStyle);
        evas_object_paragraph_direction_set(pBlock, dir);
        evas_object_textblock_text_markup_set(pBlock, markup.c_str());
    };
    setup(m_pText, text);
    setup(m_pBacking, backing);
    for (Evas_Object* pEdge : m_edges)
        setup(pEdge, edge);

    // Lay out at the box width (or unbounded without one) and measure.
    const int kUnbounded = 100000;
    int layoutW = m_boxW > 0 ? m_boxW : kUnbounded;
    evas_object_resize(m_pText, layoutW, kUnbounded);
    Evas_Coord fw = 0, fh = 0;
    evas_object_textblock_size_formatted_get(m_pText, &fw, &fh);
    m_blockX = 0;
    m_blockW = m_boxW > 0 ? m_boxW : fw;
    bool multiRow = m_boxW > 0 && (m_multiRowAlign == "start" || m_multiRowAlign == "center" ||
                                   m_multiRowAlign == "end");
    if (multiRow && fw < m_boxW) {
        // Lines aligned among themselves in a block as wide as the widest,
        // the block placed in the box by the text alignment.
        m_blockW = fw + 2;
        std::string placed = m_EvasAlign(m_textAlign);
        if (placed == "center")
            m_blockX = (m_boxW - m_blockW) / 2;
        else if (placed == "right")
            m_blockX = m_boxW - m_blockW;
    }
    m_lastW = m_boxW > 0 ? m_boxW : fw;
    m_lastH = fh;
    int blockH = fh + 2;
    evas_object_resize(m_pText, m_blockW, blockH);
    evas_object_resize(m_pBacking, m_blockW, blockH);
    for (Evas_Object* pEdge : m_edges)
        evas_object_resize(pEdge, m_blockW, blockH);
    if (m_pParaBg) {
        TTMLColor c = m_paraBackground;
        int a = CTextMarkup::To8(c.alpha);
        // Rectangles take premultiplied colour.
        evas_object_color_set(m_pParaBg, CTextMarkup::To8(c.red) * a / 255, CTextMarkup::To8(c.green) * a / 255,
                              CTextMarkup::To8(c.blue) * a / 255, a);
        evas_object_resize(m_pParaBg, m_lastW, m_lastH);
    }
    m_bDirty = false;
    return true;
}

void CTextContext::m_Place()
{
    int x = m_penX + m_blockX, y = m_penY;
    if (m_pParaBg)
        evas_object_move(m_pParaBg, m_penX, m_penY);
    if (m_pBacking)
        evas_object_move(m_pBacking, x, y);
    for (size_t i = 0; i < m_edges.size(); ++i)
        if (m_edges[i])
            evas_object_move(m_edges[i], x + m_edgeOffsets[i].dx, y + m_edgeOffsets[i].dy);
    if (m_pText)
        evas_object_move(m_pText, x, y);
}

void CTextContext::RenderOn(ITextSurface* surface)
{
    if (!surface) {
        TTML_WARN("pSurface is null");
        return;
    }
    if (!eina_main_loop_is()) {
        TTML_WARN("RenderOn runs on the main loop");
        return;
    }
    CTextSurface* pSurface = dynamic_cast<CTextSurface*>(surface);
    if (!pSurface || !m_bInitialized) {
        TTML_WARN("RenderOn: not a surface of this component or not initialized");
        return;
    }
    if (m_pSurface && m_pSurface != pSurface)
        m_pSurface->ForgetContent(this);
    bool wasRtl = m_IsRightToLeft();
    m_pSurface = pSurface;
    if (wasRtl != m_IsRightToLeft())
        m_bDirty = true;
    Evas_Object* pClip = nullptr;
    if (!m_Layout() || !pSurface->PlaceContent(this, &m_penX, &m_penY, &pClip)) {
        m_pSurface = nullptr;
        return;
    }
    evas_object_clip_set(m_pParaBg, pClip);
    evas_object_clip_set(m_pBacking, pClip);
    for (Evas_Object* pEdge : m_edges)
        evas_object_clip_set(pEdge, pClip);
    evas_object_clip_set(m_pText, pClip);
    RaiseLayers();
    m_Place();
    ApplyVisibility();
}

void CTextContext::RaiseLayers()
{
    auto raise = [](Evas_Object* pObject) {
        if (pObject)
            evas_object_raise(pObject);
    };
    raise(m_pParaBg);
    raise(m_pBacking);
    for (Evas_Object* pEdge : m_edges)
        raise(pEdge);
    raise(m_pText);
}

void CTextContext::GetSize(int* w, int* h)
{
    if (eina_main_loop_is())
        m_Layout();
    else
        TTML_WARN("GetSize off the main loop: last laid-out size");
    if (w)
        *w = m_lastW;
    if (h)
        *h = m_lastH;
}

void CTextContext::DetachFromSurface()
{
    m_pSurface = nullptr;
    ApplyVisibility();
}

void CTextContext::ApplyVisibility()
{
    bool on = m_pSurface != nullptr;
    bool text = on && m_bTextVisible;
    bool backgrounds = on && m_pSurface->IsBackgroundVisible();
    CTextSurface::ShowIf(m_pParaBg, backgrounds && m_paraBackground.alpha > 0);
    CTextSurface::ShowIf(m_pBacking, backgrounds);
    for (Evas_Object* pEdge : m_edges)
        CTextSurface::ShowIf(pEdge, text);
    CTextSurface::ShowIf(m_pText, text);
}

}  // namespace TTML
