#include "CRenderer.h"

#include "CImageData.h"
#include "CRegionContext.h"
#include "CRegionSurface.h"
#include "CTTMLMenu.h"
#include "IGraphics.h"
#include "IRootContainer.h"
#include "ITextContext.h"
#include "ITextSurface.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"
#include "TTMLLog.h"
#include "Util.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <optional>

namespace TTML {

namespace {

std::string Attr(const CElementSPTR& element, int attr)
{
    std::string value;
    element->GetAttrValue(attr, value);
    return value;
}

// A stored colour value (code, rgb()/rgba() or a name) over a default colour.
TTMLColor ToColour(std::string value)
{
    TTMLColor colour;
    if (value.empty())
        return colour;
    ConvertColorNameToColorCode(value);
    ConvertDistributionColorType(value, colour);
    return colour;
}

// A copy of the caption menu's record when captions are on, else none.
std::optional<TTMLMenuOption> MenuOn()
{
    TTMLMenuOption menu = CTTMLMenu::GetInstance()->CopyTTMLMenuData();
    if (!menu.status)
        return std::nullopt;
    return menu;
}

// Families drawn with the monospaced factors.
const char* const kMonospaced[] = {"monospace", "monospacesansserif", "Letter Gothic 12 Pitch", "LettrGoth12 BT",
                                   "Noto Sans Mono"};

// Menu font sizes by the size field 1..4.
const char* const kMenuFontSize[] = {"32px", "40px", "52px", "54px"};

struct EdgeType {
    double offsetX;
    double offsetY;
    bool thicknessFromFont;  // thickness = font size / 10
};
// Edge types 1..5 of the caption menu; offsets in percent of the font size.
const EdgeType kEdgeTypes[] = {{-3, -3, false}, {3, 3, false}, {0, 0, true}, {-5, -5, false}, {5, 5, false}};

bool IsVertical(const std::string& writingMode)
{
    return writingMode == "tbrl" || writingMode == "tblr" || writingMode == "tb";
}

}  // namespace

CRenderer::CRenderer(IGraphics* pGraphics, CRegionSurface* pRegionSurface)
    : m_pGraphics(pGraphics), m_pRegionContext(nullptr), m_pRegionSurface(pRegionSurface),
      m_bFlashingEnabled(false), m_bTextVisible(true), m_bBackgroundVisible(true)
{
    if (m_pRegionSurface)
        m_pRegionSurface->AddRef();
}

CRenderer::~CRenderer()
{
    m_imageMap.clear();
}

// ---- Layout -------------------------------------------------------------------

void CRenderer::ProcessElementList(const std::list<CElementSPTR>* pElementList, const TTMLRect<int>& rootRect,
                                   const Size& cellSize, bool fontScaleFlag)
{
    if (!pElementList) {
        TTML_WARN("pElementList pointer null");
        return;
    }
    if (!m_pRegionContext) {
        m_pRegionContext = new (std::nothrow) CRegionContext();
        TTML_ASSERT(m_pRegionContext);
    }
    CElementSPTR currentParent;
    bool haveParagraph = false;
    ITextContext* pContext = nullptr;
    std::string paragraphText;
    std::pair<int, int> inset(0, 0);
    std::string previousBackground;

    for (auto it = pElementList->begin(); it != pElementList->end(); ++it) {
        const CElementSPTR& element = *it;
        if (!element)
            continue;
        const bool lastInList = std::next(it) == pElementList->end();
        const std::string background = Attr(element, ATTR_BACKGROUNDCOLOR);
        TTMLRect<int> area = rootRect;
        // Regions are placed relative to the root container's top-left.
        area.x = 0;
        area.y = 0;
        if (!m_GetRegionArea(element, area)) {
            previousBackground = background;
            continue;
        }
        if (element->IsImageProfile()) {
            TTML_INFO("Image profile");
            m_HandleImage(element, area, cellSize);
            continue;
        }
        const CElementSPTR parent = element->GetParent();
        // A leaf without a paragraph parent is a paragraph of its own.
        const bool sameParagraph = haveParagraph && parent && parent == currentParent;
        if (!sameParagraph)
            pContext = m_HandleNewPElem(element, area, cellSize, inset);
        if (!pContext) {
            TTML_WARN("Text context null");
            previousBackground = background;
            continue;
        }
        const std::pair<double, double> paragraphArea(area.w + inset.first, area.h + inset.second);
        if (!m_SetContextProperties(element, pContext, paragraphArea, cellSize, fontScaleFlag))
            TTML_WARN("Couldn't set properties on TextContext");

        std::string backgroundValue = background;
        std::map<int, std::string> attributes(element->GetAttrMap().begin(), element->GetAttrMap().end());
        const std::string markup = pContext->FormatText(attributes);
        if (sameParagraph) {
            paragraphText += markup;
            if (element->GetType() == ELEM_BR)
                backgroundValue = previousBackground;
        } else {
            paragraphText = markup;
        }
        currentParent = parent;
        haveParagraph = true;

        std::pair<TTMLColor, TTMLColor> colours;
        colours.first = ToColour(backgroundValue);
        m_SetTextAttr(element, cellSize, colours, pContext);
        if (element->GetLastChild() || lastInList || !parent)
            pContext->SetText(paragraphText);
        previousBackground = background;
    }
}

bool CRenderer::m_GetRegionArea(const CElementSPTR& element, TTMLRect<int>& area)
{
    const TTMLRect<int> root = area;
    const std::string extent = Attr(element, ATTR_EXTENT);
    const std::string origin = Attr(element, ATTR_ORIGIN);
    const std::pair<int, int> rootSize(root.w, root.h);
    if (extent != "auto") {
        std::pair<int&, int&> out(area.w, area.h);
        ConvertOriginExtentsType(extent, rootSize, out);
    }
    if (origin != "auto") {
        std::pair<int&, int&> out(area.x, area.y);
        ConvertOriginExtentsType(origin, rootSize, out);
    } else {
        area.x = 0;
        area.y = 0;
    }
    // Negative or oversized boxes cannot be drawn either (the component's
    // limit is 8192 a side).
    const bool usable = area.w > 0 && area.h > 0 && area.w <= 8192 && area.h <= 8192 && area.x >= 0 &&
                        area.y >= 0;
    if (area.w != 0 && area.h != 0 && root.w > area.x && root.h > area.y && usable) {
        if (MenuOn())
            CTTMLMenu::GetInstance()->ApplyCaptionDivToRegion(area);
        return true;
    }
    TTML_WARN("Abnormal region extents: [%d %d] [%d %d %d %d]", root.w, root.h, area.x, area.y, area.w, area.h);
    return false;
}

ITextContext* CRenderer::m_CreateTextContext()
{
    TTML_INFO("Creating Text Context");
    if (!m_pGraphics)
        return nullptr;
    ITextContext* pTextContext = static_cast<ITextContext*>(m_pGraphics->CreateObject(IGraphics::OBJECT_TEXT_CONTEXT));
    TTML_ASSERT(pTextContext);
    if (!pTextContext->Initialize()) {
        TTML_WARN("Creation failed");
        m_pGraphics->DestroyObject(pTextContext);
        return nullptr;
    }
    return pTextContext;
}

ITextContext* CRenderer::m_HandleNewPElem(const CElementSPTR& element, const TTMLRect<int>& area,
                                          const Size& cellSize, std::pair<int, int>& inset)
{
    ITextContext* pContext = m_CreateTextContext();
    if (!pContext) {
        TTML_WARN("Text context creation failed");
        return nullptr;
    }
    const std::string id = Attr(element, ATTR_REGION);
    ITextSurface* pSurface = m_GetRegionSurface(id, element, area, cellSize);
    if (!pSurface) {
        pContext->Deinitialize();
        m_pGraphics->DestroyObject(pContext);
        return nullptr;
    }
    pSurface->GetContentInset(&inset.first, &inset.second);
    m_pRegionContext->AddContext(id, pContext);
    return pContext;
}

ITextSurface* CRenderer::m_GetRegionSurface(const std::string& id, const CElementSPTR& element,
                                            const TTMLRect<int>& area, const Size& cellSize)
{
    ITextSurface* pSurface = m_pRegionSurface->GetTextSurface(id);
    if (pSurface) {
        if (element->GetType() == ELEM_SET)
            m_UpdateTextSurface(element, area, pSurface, cellSize);
        return pSurface;
    }
    pSurface = m_CreateTextSurface(element, area, cellSize);
    if (!pSurface) {
        TTML_WARN("Text surface creation failed");
        return nullptr;
    }
    m_pRegionSurface->Add(id, pSurface);
    return pSurface;
}

ITextSurface* CRenderer::m_CreateTextSurface(const CElementSPTR& element, const TTMLRect<int>& area,
                                             const Size& cellSize)
{
    if (!element) {
        TTML_WARN("Element is NULL");
        return nullptr;
    }
    TTML_INFO("Creating Text Surface");
    if (!m_pGraphics)
        return nullptr;
    ITextSurface* pSurface = static_cast<ITextSurface*>(m_pGraphics->CreateObject(IGraphics::OBJECT_TEXT_SURFACE));
    TTML_ASSERT(pSurface);
    if (!pSurface->Initialize(area.w, area.h, Attr(element, ATTR_WRITINGMODE))) {
        m_pGraphics->DestroyObject(pSurface);
        return nullptr;
    }
    m_UpdateTextSurface(element, area, pSurface, cellSize);
    return pSurface;
}

void CRenderer::m_UpdateTextSurface(const CElementSPTR& element, const TTMLRect<int>& area, ITextSurface* pSurface,
                                    const Size& cellSize)
{
    if (!element || !pSurface) {
        TTML_WARN("Element/TextSurface is NULL");
        return;
    }
    const std::string windowColour = Attr(element, ATTR_REGIONBACKGROUNDCOLOR);
    const std::string showBackground = Attr(element, ATTR_SHOWBACKGROUND);
    const std::string displayAlign = Attr(element, ATTR_DISPLAYALIGN);
    const std::string overflow = Attr(element, ATTR_OVERFLOW);
    const std::string padding = Attr(element, ATTR_PADDING);

    pSurface->SetPosition(area.x, area.y);
    m_SetOpacity(element, pSurface);
    if (overflow == "visible") {
        IRootContainer* pRoot = m_pGraphics->GetRootContainer();
        if (!pRoot) {
            TTML_WARN("pRootContainer is NULL");
            return;
        }
        int rootW = 0;
        int rootH = 0;
        pRoot->GetGeometry(nullptr, nullptr, &rootW, &rootH);
        pSurface->SetOverflowArea(true, area.x, area.y, rootW, rootH);
    }
    TTMLPadding p;
    if (!padding.empty())
        ConvertDistributionPaddingType(padding, cellSize, std::make_pair(area.w, area.h), p);
    pSurface->SetPadding(p.top, p.bottom, p.left, p.right);
    if (showBackground == "always")
        pSurface->SetShowBackgroundAlways(true);

    TTMLColor colour = ToColour(windowColour);
    if (std::optional<TTMLMenuOption> pMenu = MenuOn()) {
        TTML_INFO("Caption menu window color value: %d", pMenu->windowColor);
        if (pMenu->windowColor >= 1 && pMenu->windowColor <= 8)
            CTTMLMenu::GetInstance()->GetTTMLColorByEnum(pMenu->windowColor, colour);
        TTML_INFO("Caption menu window color opacity value: %d", pMenu->windowOpacity);
        m_ApplyMenuOpacity(pMenu->windowOpacity, colour);
        if (pMenu->bgOpacity != 3 && pMenu->bgColor != 0)
            colour.alpha = 0;
    }
    pSurface->SetBackgroundColor(colour.red, colour.green, colour.blue, colour.alpha);
    pSurface->SetDisplayAlign(displayAlign);
}

void CRenderer::m_SetOpacity(const CElementSPTR& element, ITextSurface* pSurface)
{
    const std::string opacity = Attr(element, ATTR_OPACITY);
    if (!opacity.empty())
        pSurface->SetOpacity(std::strtod(opacity.c_str(), nullptr));
}

bool CRenderer::m_SetContextProperties(const CElementSPTR& element, ITextContext* pContext,
                                       const std::pair<double, double>& paragraphArea, const Size& cellSize,
                                       bool fontScaleFlag)
{
    if (!pContext || !element) {
        TTML_WARN("NULL pointer detected");
        return false;
    }
    TTML_INFO("Setting Context properties");
    const std::string direction = Attr(element, ATTR_DIRECTION);
    const std::string textAlign = Attr(element, ATTR_TEXTALIGN);
    const std::string unicodeBidi = Attr(element, ATTR_UNICODEBIDI);
    const std::string wrapOption = Attr(element, ATTR_WRAPOPTION);
    const std::string multiRowAlign = Attr(element, ATTR_MULTIROWALIGN);
    std::string text = Attr(element, ATTR_TEXT);
    const std::string writingMode = Attr(element, ATTR_WRITINGMODE);
    const std::string linePadding = Attr(element, ATTR_LINEPADDING);
    const std::string fillLineGap = Attr(element, ATTR_FILLLINEGAP);
    const std::string displayAlign = Attr(element, ATTR_DISPLAYALIGN);

    m_SetParaBGColor(element, pContext);
    pContext->SetWritingMode(writingMode, false);
    pContext->SetDirection(direction);
    pContext->SetTextAlign(textAlign);
    pContext->SetMultiRowAlign(multiRowAlign);
    if (pContext->ApplyUnicodeBidi(unicodeBidi, text)) {
        element->AddAttrValue(ATTR_TEXT, text);
        if ((writingMode == "rl" || writingMode == "rltb") && direction == "rtl" && unicodeBidi == "bidioverride") {
            pContext->SetWritingMode(writingMode, true);
            pContext->SetTextAlign(textAlign);
            if (ITextSurface* pSurface = m_pRegionSurface->GetTextSurface(Attr(element, ATTR_REGION))) {
                pSurface->SetRightToLeft(true);
                const std::string swapped =
                    displayAlign == "before" ? "after" : displayAlign == "after" ? "before" : displayAlign;
                pSurface->SetDisplayAlign(swapped);
            }
        }
    }
    if (IsVertical(writingMode)) {
        pContext->SetWidth(static_cast<int>(paragraphArea.second));
        pContext->SetHeight(static_cast<int>(paragraphArea.first));
    } else {
        pContext->SetWidth(static_cast<int>(paragraphArea.first));
        if (fontScaleFlag || displayAlign != "after")
            pContext->SetHeight(static_cast<int>(paragraphArea.second));
    }
    FontFactors factors;
    factors.cellSize = cellSize;
    factors.fontScaleFlag = fontScaleFlag;
    m_GetFontFactors(Attr(element, ATTR_FONTFAMILY), fontScaleFlag, factors);
    m_CalculateFontSize(element, pContext, factors);
    m_CalculateLineHeight(element, pContext, factors);
    pContext->SetWrap(wrapOption == "wrap");
    if (linePadding != "0c")
        pContext->SetLinePadding(std::strtod(linePadding.c_str(), nullptr) * cellSize.first);
    if (!fillLineGap.empty())
        pContext->SetFillLineGap(fillLineGap == "true");
    return true;
}

void CRenderer::m_GetFontFactors(const std::string& fontFamily, bool fontScaleFlag, FontFactors& factors)
{
    const bool monospaced = std::find_if(std::begin(kMonospaced), std::end(kMonospaced), [&](const char* name) {
                                return fontFamily == name;
                            }) != std::end(kMonospaced);
    if (monospaced) {
        factors.fontSizeFactor = fontScaleFlag ? 0.8 : 0.83;
        factors.lineHeightFactor = fontScaleFlag ? 0.7 : 0.8;
    } else {
        factors.fontSizeFactor = fontScaleFlag ? 0.9 : 0.91;
        factors.lineHeightFactor = fontScaleFlag ? 0.77 : 0.82;
    }
    TTML_INFO("Font size scale factor[%lf], line height scale factor [%lf]", factors.fontSizeFactor,
              factors.lineHeightFactor);
}

void CRenderer::m_CalculateFontSize(const CElementSPTR& element, ITextContext* pContext, const FontFactors& factors)
{
    if (!pContext) {
        TTML_INFO("Handle to context is null!");
        return;
    }
    const std::string fontSize = Attr(element, ATTR_FONTSIZE);
    if (fontSize.empty()) {
        TTML_WARN("Font size is empty!");
        return;
    }
    double px = 0;
    ConvertLengthType(fontSize, factors.cellSize.second, factors.cellSize.second, px);
    if (!element->GetFontScaleFlag()) {
        px *= factors.fontSizeFactor;
        TTML_INFO("FontSize before scale: [%s] after calc[%lf] scale-factor: [%lf] ", fontSize.c_str(), px,
                  factors.fontSizeFactor);
        char buf[64];
        std::snprintf(buf, sizeof(buf), "%fpx", px);
        element->AddAttrValue(ATTR_FONTSIZE, buf);
        element->SetFontScaleFlag(true);
    }
    pContext->SetFontSize(px);
}

void CRenderer::m_CalculateLineHeight(const CElementSPTR& element, ITextContext* pContext,
                                      const FontFactors& factors)
{
    if (!pContext) {
        TTML_INFO("Handle to context is null!");
        return;
    }
    const double fs = pContext->GetFontSize();
    const double base = factors.fontSizeFactor != 0 ? fs / factors.fontSizeFactor : fs;
    double lineHeight = base * 1.25;
    const std::string value = Attr(element, ATTR_LINEHEIGHT);
    if (value != "normal" && !value.empty())
        ConvertLengthType(value, factors.cellSize.second, base, lineHeight);
    double gap = factors.lineHeightFactor * lineHeight - fs;
    if (!factors.fontScaleFlag && gap < 0)
        gap = 0;
    pContext->SetLineGap(gap);
}

void CRenderer::m_HandleImage(const CElementSPTR& element, const TTMLRect<int>& area, const Size& cellSize)
{
    const std::string id = Attr(element, ATTR_REGION);
    if (!m_GetRegionSurface(id, element, area, cellSize))
        return;
    m_pRegionContext->AddContext(id, nullptr);
    m_imageMap.emplace(id, element->GetImageData());
    // Keep the decoded image only here once the document lets go of it.
    if (element.use_count() < 3)
        element->ResetImageData();
}

bool CRenderer::Clear()
{
    std::list<std::string> ids;
    if (m_pRegionContext)
        m_pRegionContext->GetRegionList(ids);
    if (m_pRegionSurface) {
        for (const std::string& id : ids) {
            if (ITextSurface* pSurface = m_pRegionSurface->GetTextSurface(id)) {
                pSurface->ClearContent();
                pSurface->Hide();
            }
            m_imageMap.erase(id);
        }
    }
    m_imageMap.clear();
    bool destroyed = false;
    if (m_pRegionSurface) {
        if (m_pRegionSurface->Release() == 0) {
            std::list<void*> surfaces;
            m_pRegionSurface->GetTextSurfaceList(surfaces);
            for (void* pObject : surfaces) {
                ITextSurface* pSurface = static_cast<ITextSurface*>(pObject);
                pSurface->Deinitialize();
                m_pGraphics->DestroyObject(pSurface);
            }
            m_pRegionSurface->Clear();
            delete m_pRegionSurface;
            destroyed = true;
        }
        m_pRegionSurface = nullptr;
    }
    if (m_pRegionContext) {
        for (const std::string& id : ids) {
            std::list<void*>* pList = m_pRegionContext->GetContextList(id);
            for (void* pObject : *pList) {
                if (!pObject)
                    continue;
                ITextContext* pContext = static_cast<ITextContext*>(pObject);
                pContext->Deinitialize();
                m_pGraphics->DestroyObject(pContext);
            }
        }
        m_pRegionContext->Clear();
        delete m_pRegionContext;
        m_pRegionContext = nullptr;
    }
    return destroyed;
}

void CRenderer::GetRegions(std::list<RegionView>& regions) const
{
    if (!m_pRegionContext || !m_pRegionSurface)
        return;
    std::list<std::string> ids;
    m_pRegionContext->GetRegionList(ids);
    for (const std::string& id : ids) {
        const std::list<void*>* pList = m_pRegionContext->GetContextList(id);
        regions.push_back(RegionView{id, m_pRegionSurface->GetTextSurface(id), pList ? *pList : std::list<void*>()});
    }
}

// ---- Drawing ------------------------------------------------------------------

int CRenderer::RenderText()
{
    m_HandleCaptionDivisionMode();
    std::list<std::string> ids;
    if (m_pRegionContext)
        m_pRegionContext->GetRegionList(ids);
    if (ids.empty() || !m_pRegionSurface)
        return 1;
    IRootContainer* pRoot = m_pGraphics ? m_pGraphics->GetRootContainer() : nullptr;
    for (const std::string& id : ids) {
        ITextSurface* pSurface = m_pRegionSurface->GetTextSurface(id);
        auto image = m_imageMap.find(id);
        if (image == m_imageMap.end()) {
            if (!m_RenderText(pSurface, m_pRegionContext->GetContextList(id)))
                return 0;
            pSurface->Attach(pRoot);
            continue;
        }
        if (!image->second || !pSurface)
            continue;
        unsigned int size = 0;
        const unsigned char* pBuffer = image->second->GetBuffer(&size);
        pSurface->AttachImage(pRoot, pBuffer, size);
        m_imageMap.erase(image);
    }
    for (const std::string& id : ids) {
        if (ITextSurface* pSurface = m_pRegionSurface->GetTextSurface(id))
            pSurface->Show();
    }
    return 1;
}

void CRenderer::m_HandleCaptionDivisionMode()
{
    std::optional<TTMLMenuOption> pMenu = MenuOn();
    if (!pMenu || pMenu->divisionMode >= 5 || !m_pRegionContext || !m_pRegionSurface)
        return;
    std::list<std::string> ids;
    m_pRegionContext->GetRegionList(ids);
    for (const std::string& id : ids) {
        ITextSurface* pSurface = m_pRegionSurface->GetTextSurface(id);
        if (!pSurface) {
            TTML_WARN("pSurface is null");
            continue;
        }
        TTMLRect<int> rect;
        pSurface->GetPosition(&rect.x, &rect.y);
        if (CTTMLMenu::GetInstance()->ApplyCaptionDivToRegion(rect))
            pSurface->SetPosition(rect.x, rect.y);
    }
}

int CRenderer::m_RenderText(ITextSurface* pSurface, const std::list<void*>* pContexts)
{
    if (!pSurface || !pContexts) {
        TTML_WARN("Null pointer");
        return 0;
    }
    m_bFlashingEnabled = false;
    m_ApplyFontFlashing(pContexts);
    const std::string align = pSurface->GetDisplayAlign();
    for (void* pObject : *pContexts) {
        if (!pObject) {
            TTML_WARN("pContext null.");
            return 0;
        }
    }
    std::vector<ITextContext*> contexts;
    for (void* pObject : *pContexts)
        contexts.push_back(static_cast<ITextContext*>(pObject));
    int w = 0;
    int h = 0;
    if (align == "before") {
        int sum = 0;
        for (std::size_t i = 0; i < contexts.size(); ++i) {
            m_HandleMenuOptions(contexts[i]);
            contexts[i]->RenderOn(pSurface);
            contexts[i]->GetSize(&w, &h);
            TTML_INFO("Surface width height : %d %d", w, h);
            if (i + 1 < contexts.size()) {
                pSurface->MovePen(0, h);
                sum += h;
            }
        }
        pSurface->MovePen(0, -sum);
    } else if (align == "after") {
        int surfaceH = 0;
        pSurface->GetGeometry(nullptr, nullptr, nullptr, &surfaceH);
        TTML_INFO("Surface_h : %d", surfaceH);
        pSurface->MovePen(0, surfaceH);
        int sum = 0;
        bool stopped = false;
        for (auto it = contexts.rbegin(); it != contexts.rend(); ++it) {
            m_HandleMenuOptions(*it);
            (*it)->GetSize(&w, &h);
            TTML_INFO("Surface width height : %d %d", w, h);
            sum += h;
            pSurface->MovePen(0, -h);
            (*it)->RenderOn(pSurface);
            if (sum == surfaceH) {
                stopped = true;
                break;
            }
        }
        if (!stopped)
            pSurface->MovePen(0, sum - surfaceH);
    } else {
        int total = 0;
        for (ITextContext* pContext : contexts) {
            m_HandleMenuOptions(pContext);
            pContext->GetSize(&w, &h);
            TTML_INFO("Surface width height : %d %d", w, h);
            total += h;
        }
        int surfaceH = 0;
        pSurface->GetGeometry(nullptr, nullptr, nullptr, &surfaceH);
        TTML_INFO("Surface_h : %d", surfaceH);
        const int combined = std::min(total, surfaceH);
        pSurface->MovePen(0, (surfaceH - combined) / 2);
        for (ITextContext* pContext : contexts) {
            pContext->GetSize(&w, &h);
            TTML_INFO("Surface width height : %d %d", w, h);
            const int placed = std::min(h, surfaceH);
            pContext->RenderOn(pSurface);
            pSurface->MovePen(0, placed);
            if (placed == surfaceH)
                break;
        }
        TTML_INFO("combined_h: %d", combined);
        pSurface->MovePen(0, -(combined / 2) - surfaceH / 2);
    }
    m_ApplyBGnWinFlashing(pSurface);
    return 1;
}

void CRenderer::m_HandleMenuOptions(ITextContext* pContext)
{
    const TTMLMenuOption menu = CTTMLMenu::GetInstance()->CopyTTMLMenuData();
    const TTMLMenuOption* pMenu = &menu;
    if (!pContext) {
        TTML_WARN("Object is NULL");
        return;
    }
    if (!pMenu->status) {
        TTML_INFO("Menu is off");
        return;
    }
    TTML_INFO("\n############ [status:%d][size:%d][fontStyle:%d][Style:%d][fontColor:%d][bgColor:%d][fontOpacity:%d]"
              "\n############ [bgOpacity:%d][windowColor:%d][windowOpacity:%d][edgeType:%d][edgeColor:%d]",
              pMenu->status, pMenu->size, pMenu->fontStyle, pMenu->Style, pMenu->fontColor, pMenu->bgColor,
              pMenu->fontOpacity, pMenu->bgOpacity, pMenu->windowColor, pMenu->windowOpacity, pMenu->edgeType,
              pMenu->edgeColor);
    std::string markup = pContext->GetText();
    if (pMenu->size >= 1 && pMenu->size <= 4)
        pContext->ReplaceAttribute(markup, ATTR_FONTSIZE, kMenuFontSize[pMenu->size - 1]);
    std::string family;
    if (pMenu->fontStyle != 0 && CTTMLMenu::GetInstance()->GetTTMLFontStyleByEnum(pMenu->fontStyle, family))
        pContext->ReplaceAttribute(markup, ATTR_FONTFAMILY, family);
    TTMLColor colour;
    if (pMenu->fontColor != 0 && CTTMLMenu::GetInstance()->GetTTMLColorByEnum(pMenu->fontColor, colour)) {
        std::string value;
        ConvertColorToStringType(colour, value);
        pContext->ReplaceAttribute(markup, ATTR_COLOR, value);
    }
    if (pMenu->Style == 1)
        pContext->ReplaceAttribute(markup, ATTR_FONTWEIGHT, "bold");
    else if (pMenu->Style == 2)
        pContext->ReplaceAttribute(markup, ATTR_FONTSTYLE, "italic");
    pContext->SetText(markup);
}

void CRenderer::m_SetTextAttr(const CElementSPTR& element, const Size& cellSize,
                              std::pair<TTMLColor, TTMLColor> colours, ITextContext* pContext)
{
    if (!pContext) {
        TTML_WARN("Text context is null");
        return;
    }
    TextOutline outline;
    outline.color = colours.second;
    const std::string text = Attr(element, ATTR_TEXT);
    const std::string decorationValue = Attr(element, ATTR_TEXTDECORATION);
    const std::string visibility = Attr(element, ATTR_VISIBILITY);
    bool decoration = false;
    if (visibility == "hidden") {
        colours.first.alpha = 0;
        colours.second.alpha = 0;
    } else {
        std::optional<TTMLMenuOption> pMenu = MenuOn();
        if (pMenu) {
            TTML_INFO("Caption menu Font FG opacity value: %d", pMenu->fontOpacity);
            m_ApplyMenuOpacity(pMenu->fontOpacity, colours.second);
            if (pMenu->bgColor != 0 && colours.first.alpha != 0) {
                TTML_INFO("XML span BG is ignored since caption BG is ON; value: %d", pMenu->bgColor);
                colours.first.alpha = 0;
            }
            const int fo = pMenu->fontOpacity;
            if ((fo == 2 || fo == 3 || fo == 5 || fo == 6) && pMenu->bgOpacity == 1) {
                TTML_INFO("Caption menu Span BG color is being applied and value: %d", pMenu->bgColor);
                CTTMLMenu::GetInstance()->GetTTMLColorByEnum(pMenu->bgColor, colours.first);
            }
            m_ApplyMenuOpacity(pMenu->fontOpacity, outline.color);
            outline.type = pMenu->edgeType;
        }
        decoration = !decorationValue.empty() && decorationValue != "none" &&
                     (std::strtol(decorationValue.c_str(), nullptr, 10) & 32) != 0;
        m_SetTextOutline(element, cellSize, outline);
        if (pMenu && pMenu->edgeColor >= 1 && pMenu->edgeColor <= 8)
            CTTMLMenu::GetInstance()->GetTTMLColorByEnum(pMenu->edgeColor, outline.color);
    }
    pContext->SetTextStyle(text, decoration, &colours, &outline);
}

void CRenderer::m_SetTextOutline(const CElementSPTR& element, const Size& cellSize, TextOutline& outline)
{
    const std::string textOutline = Attr(element, ATTR_TEXTOUTLINE);
    if (textOutline.empty() && outline.type == 0)
        return;
    double fs = 0;
    ConvertLengthType(Attr(element, ATTR_FONTSIZE), cellSize.second, cellSize.second, fs);
    if (outline.type > 5)
        outline.type = 0;
    if (outline.type != 0) {
        ApplyEdgeType(fs, outline);
        return;
    }
    ConvertOutlineAtrributes(textOutline, cellSize, fs, outline);
    outline.type = 6;
    outline.offsetX = outline.offsetX * fs / 100;
    outline.offsetY = outline.offsetY * fs / 100;
    if (outline.thickness > fs / 10)
        outline.thickness = fs / 10;
}

void CRenderer::ApplyEdgeType(double fontSize, TextOutline& outline)
{
    if (outline.type < 1 || outline.type > 5) {
        outline.type = 0;
        return;
    }
    const EdgeType& edge = kEdgeTypes[outline.type - 1];
    outline.offsetX = edge.offsetX * fontSize / 100;
    outline.offsetY = edge.offsetY * fontSize / 100;
    if (edge.thicknessFromFont)
        outline.thickness = fontSize / 10;
}

void CRenderer::m_SetParaBGColor(const CElementSPTR& element, ITextContext* pContext)
{
    if (!element || !pContext) {
        TTML_WARN("NULL pointer detected");
        return;
    }
    TTMLColor colour = ToColour(Attr(element, ATTR_PARABACKGROUNDCOLOR));
    if (std::optional<TTMLMenuOption> pMenu = MenuOn()) {
        TTML_INFO("Caption menu Para BG color value: %d", pMenu->bgColor);
        if (pMenu->bgColor >= 1 && pMenu->bgColor <= 8)
            CTTMLMenu::GetInstance()->GetTTMLColorByEnum(pMenu->bgColor, colour);
        TTML_INFO("Caption menu Para BG color opacity value: %d", pMenu->bgOpacity);
        m_ApplyMenuOpacity(pMenu->bgOpacity, colour);
    }
    CElementSPTR parent = element->GetParent();
    if (parent && parent->GetType() == ELEM_P && Attr(parent, ATTR_VISIBILITY) == "hidden")
        colour.alpha = 0;
    pContext->SetParaBackgroundColor(colour);
}

void CRenderer::m_ApplyMenuOpacity(int value, TTMLColor& colour)
{
    switch (value) {
    case 2:
        colour.alpha = 32767;
        break;
    case 3:
        colour.alpha = 0;
        break;
    case 5:
        colour.alpha = 49151;
        break;
    case 6:
        colour.alpha = 16383;
        break;
    default:
        // 1 blinks the colour unchanged; 0, 4 and others keep it.
        return;
    }
    colour.defaultOpacity = false;
}

void CRenderer::m_ApplyFontFlashing(const std::list<void*>* pContexts)
{
    std::optional<TTMLMenuOption> pMenu = MenuOn();
    if (!pMenu)
        return;
    m_bTextVisible = !m_bTextVisible;
    if (pMenu->fontOpacity != 1)
        return;
    m_bFlashingEnabled = true;
    for (void* pObject : *pContexts) {
        if (pObject)
            static_cast<ITextContext*>(pObject)->SetTextVisible(m_bTextVisible);
    }
}

void CRenderer::m_ApplyBGnWinFlashing(ITextSurface* pSurface)
{
    if (!pSurface)
        return;
    const TTMLMenuOption menu = CTTMLMenu::GetInstance()->CopyTTMLMenuData();
    const TTMLMenuOption* pMenu = &menu;
    if (!pMenu->status)
        return;
    const bool phase = m_bBackgroundVisible;
    m_bBackgroundVisible = !phase;
    if (pMenu->windowOpacity == 1) {
        m_bFlashingEnabled = true;
        pSurface->SetWindowVisible(!phase);
    }
    if (pMenu->bgOpacity == 1) {
        m_bFlashingEnabled = true;
        pSurface->SetBackgroundVisible(phase);
    }
}

}  // namespace TTML
