// ttml-render: shows what a document looks like at chosen media times,
// without waiting in real time. The document is parsed as ttml-dump does,
// and each time is drawn as the engine draws an interval: the graphics
// engine's root surface for the document, one renderer per interval
// (CreateRenderer, RenderText, DestroyRenderer) on a headless canvas.
//
//   ttml-render [--size WxH] [--at MS[,MS...]] [--out DIR] [--background FILE.png|#rrggbb]
//               [--profile N] [--mode M] [--sheet] [--json] FILE
//
// Writes DIR/<ms>.png per time (default: the begin of every interval);
// --sheet adds DIR/sheet.png with every frame as a labelled thumbnail;
// --json prints one JSON object per time: the regions drawn (screen pixels)
// and their paragraphs (text, rectangle, font size, colours). Caption
// settings come from the caption menu record, as on the TV, caption division
// included: the backdrop is the video picture and shrinks with it.
// Exit status: 0 drawn (or --help), 1 the document was refused (with the parser's
// reasons) or a picture could not be written, 2 usage error.

#include "CDocumentParser.h"
#include "CGraphics.h"
#include "CGraphicsEngine.h"
#include "CHeadlessCanvas.h"
#include "CRenderer.h"
#include "CSubtitleInfo.h"
#include "CTTMLMenu.h"
#include "CToolArgs.h"
#include "CTextContext.h"
#include "CTextSurface.h"
#include "CVideoWindow.h"
#include "CWarningCollector.h"
#include "IGraphics.h"
#include "SubRawData.h"
#include "TTMLAttr.h"
#include "ToolImages.h"
#include "ToolJson.h"
#include "ToolSheet.h"

#include <Ecore_Evas.h>
#include <Evas.h>
#include <dlog.h>
#include <sys/stat.h>

#include <boost/regex.hpp>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

using TTML::CElementSPTR;
using TTML::CSubtitleInfo;
using TTML::JsonString;

struct Options {
    int width = 1920;
    int height = 1080;
    std::vector<unsigned long long> times;  // empty: every interval's begin
    std::string out = ".";
    std::string background = "#808080";     // mid-grey: white text and black boxes both show
    int profile = TTML::TTML_PROFILE_NONE;
    int mode = 1;
    bool sheet = false;
    bool json = false;
    std::string file;
};

const char kUsage[] =
    "usage: ttml-render [--size WxH] [--at MS[,MS...]] [--out DIR] [--background FILE.png|#rrggbb]\n"
    "                   [--profile N] [--mode M] [--sheet] [--json] FILE\n";

// CToolArgs::kRun to draw, otherwise the exit status.
int ParseArgs(int argc, char** argv, Options& opt)
{
    TTML::CToolArgs args("ttml-render", kUsage, argc, argv);
    while (args.Next()) {
        std::string v;
        long long n = 0;
        if (args.Is("--size")) {
            const std::string::size_type x = args.Value(v) ? v.find('x') : std::string::npos;
            long long h = 0;
            if (x == std::string::npos || !TTML::ParseWholeNumber(v.substr(0, x), 16, 8192, n) ||
                !TTML::ParseWholeNumber(v.substr(x + 1), 16, 8192, h))
                return args.Fail("--size takes WxH, each 16 to 8192");
            opt.width = static_cast<int>(n);
            opt.height = static_cast<int>(h);
        } else if (args.Is("--at")) {
            if (!args.Value(v))
                return args.Fail("--at takes MS[,MS...]");
            std::stringstream list(v);
            std::string item;
            while (std::getline(list, item, ',')) {
                if (!TTML::ParseWholeNumber(item, 0, 1LL << 53, n))
                    return args.Fail("--at: not a time in ms: \"" + item + "\"");
                opt.times.push_back(static_cast<unsigned long long>(n));
            }
            if (opt.times.empty())
                return args.Fail("--at takes MS[,MS...]");
        } else if (args.Is("--out")) {
            if (!args.Value(opt.out) || opt.out.empty())
                return args.Fail("--out takes a folder");
        } else if (args.Is("--background")) {
            if (!args.Value(opt.background) || opt.background.empty())
                return args.Fail("--background takes FILE.png or #rrggbb");
            if (opt.background[0] == '#' && !boost::regex_match(opt.background, boost::regex("#[0-9a-fA-F]{6}")))
                return args.Fail("--background colour must be #rrggbb");
        } else if (args.Is("--profile") || args.Is("--mode")) {
            if (const int rc = args.ProfileOrMode(opt.profile, opt.mode); rc != TTML::CToolArgs::kRun)
                return rc;
        } else if (args.Is("--sheet")) {
            opt.sheet = true;
        } else if (args.Is("--json")) {
            opt.json = true;
        } else if (args.IsHelp()) {
            return args.Help();
        } else if (args.IsOption()) {
            return args.Unknown();
        } else if (opt.file.empty()) {
            opt.file = args.Arg();
        } else {
            return args.Fail("one FILE only");
        }
    }
    return opt.file.empty() ? args.Fail("no FILE") : args.Ready(true);
}

// First value of a markup item (" color=#rrggbbaa"), empty when absent.
std::string MarkupItem(const std::string& markup, const char* item)
{
    const boost::regex pattern(std::string("[<\\s]") + item + "=(#[0-9a-fA-F]{6,8})");
    boost::smatch match;
    return boost::regex_search(markup, match, pattern) ? match[1].str() : std::string();
}

void Rect(std::ostream& os, int x, int y, int w, int h)
{
    os << "\"x\":" << x << ",\"y\":" << y << ",\"w\":" << w << ",\"h\":" << h;
}

// What one drawing put on screen, as one JSON line.
std::string Describe(unsigned long long time, const TTML::CRenderer* pRenderer, bool shown)
{
    std::ostringstream os;
    os << "{\"time\":" << time << ",\"regions\":[";
    std::list<TTML::CRenderer::RegionView> regions;
    if (pRenderer && shown)
        pRenderer->GetRegions(regions);
    bool firstRegion = true;
    for (const TTML::CRenderer::RegionView& region : regions) {
        auto* pSurface = dynamic_cast<TTML::CTextSurface*>(region.pSurface);
        if (!pSurface)
            continue;
        int x = 0, y = 0, w = 0, h = 0;
        pSurface->GetScreenRect(&x, &y, &w, &h);
        os << (firstRegion ? "" : ",") << "{\"id\":";
        firstRegion = false;
        JsonString(os, region.id);
        os << ",";
        Rect(os, x, y, w, h);
        os << ",\"paragraphs\":[";
        bool firstParagraph = true;
        for (void* pObject : region.contexts) {
            auto* pContext = pObject ? dynamic_cast<TTML::CTextContext*>(static_cast<TTML::ITextContext*>(pObject))
                                     : nullptr;
            if (!pContext || !pContext->GetTextRect(&x, &y, &w, &h))
                continue;
            const std::string markup = pContext->GetText();
            os << (firstParagraph ? "" : ",") << "{\"text\":";
            firstParagraph = false;
            JsonString(os, pContext->GetPlainText());
            os << ",";
            Rect(os, x, y, w, h);
            char size[32];
            std::snprintf(size, sizeof(size), "%.2f", pContext->GetFontSize());
            os << ",\"fontSize\":" << size << ",\"color\":";
            JsonString(os, MarkupItem(markup, "color"));
            os << ",\"background\":";
            JsonString(os, MarkupItem(markup, "backing_color"));
            os << "}";
        }
        os << "]}";
    }
    os << "]}";
    return os.str();
}

// The backdrop is the video picture: a colour or a picture filling the TV
// service's video window, which caption division shrinks; the screen around
// it is black, as on the TV.
bool AddBackdrop(TTML::CHeadlessCanvas& canvas, const std::string& background, TTML::CVideoWindow& video)
{
    Evas* pEvas = canvas.GetEvas();
    Evas_Object* pScreen = evas_object_rectangle_add(pEvas);
    evas_object_color_set(pScreen, 0, 0, 0, 255);
    evas_object_resize(pScreen, canvas.GetWidth(), canvas.GetHeight());
    evas_object_layer_set(pScreen, 0);
    evas_object_show(pScreen);
    Evas_Object* pBackdrop = nullptr;
    if (background[0] == '#') {
        const unsigned long rgb = std::strtoul(background.c_str() + 1, nullptr, 16);
        pBackdrop = evas_object_rectangle_add(pEvas);
        evas_object_color_set(pBackdrop, static_cast<int>((rgb >> 16) & 0xff), static_cast<int>((rgb >> 8) & 0xff),
                              static_cast<int>(rgb & 0xff), 255);
    } else {
        pBackdrop = evas_object_image_filled_add(pEvas);
        evas_object_image_file_set(pBackdrop, background.c_str(), nullptr);
        if (evas_object_image_load_error_get(pBackdrop) != EVAS_LOAD_ERROR_NONE) {
            evas_object_del(pBackdrop);
            std::fprintf(stderr, "ttml-render: cannot load the background picture %s\n", background.c_str());
            return false;
        }
    }
    evas_object_show(pBackdrop);
    return video.Initialize(pEvas, canvas.GetWidth(), canvas.GetHeight(), pBackdrop);
}

std::string Clock(unsigned long long ms)
{
    char buf[40];
    std::snprintf(buf, sizeof(buf), "%02llu:%02llu:%02llu.%03llu  (%llu ms)", ms / 3600000, ms / 60000 % 60,
                  ms / 1000 % 60, ms % 1000, ms);
    return buf;
}

}  // namespace

int main(int argc, char** argv)
{
    Options opt;
    if (const int rc = ParseArgs(argc, argv, opt); rc != TTML::CToolArgs::kRun)
        return rc;

    // Parse exactly as ttml-dump does.
    std::string unreadable;
    TTML::SubRawData* pRecord = TTML::CDocumentParser::NewRecord(opt.file, opt.profile, &unreadable);
    if (!pRecord) {
        std::fprintf(stderr, "ttml-render: cannot read %s: %s\n", opt.file.c_str(), unreadable.c_str());
        return TTML::TOOL_EXIT_FAILED;
    }
    TTML::PackImages(opt.file, TTML::BackgroundImages(pRecord->xmlData, false), pRecord->subSampleData);
    TTML::CDocumentParser parser;
    if (!parser.Initialize(opt.mode)) {
        delete pRecord;
        std::fprintf(stderr, "ttml-render: the parser did not start\n");
        return 1;
    }
    std::vector<std::string> reasons;
    const int result = parser.Parse(pRecord, nullptr, &reasons);
    CSubtitleInfo* pInfo = result == TTML::ERR_NONE ? parser.GetSubtitleInfo() : nullptr;
    if (!pInfo) {
        std::fprintf(stderr, "ttml-render: %s refused: result %d\n", opt.file.c_str(), result);
        for (const std::string& reason : reasons)
            std::fprintf(stderr, "  reason: %s\n", reason.c_str());
        parser.Destroy();
        return 1;
    }

    // What the parser let through but had to change or drop (elements it
    // does not draw, such as metadata, are skipped without a word).
    std::set<std::string> said;
    for (const std::string& reason : reasons)
        if (reason.compare(0, 25, "No matching element found") != 0 && said.insert(reason).second)
            std::fprintf(stderr, "ttml-render: %s: %s\n", opt.file.c_str(), reason.c_str());

    std::set<CSubtitleInfo::TimeInterval> intervals;
    pInfo->GetUniqueKeys(intervals);
    std::vector<unsigned long long> times = opt.times;
    if (times.empty())
        for (const CSubtitleInfo::TimeInterval& interval : intervals)
            if (times.empty() || times.back() != interval.first)
                times.push_back(interval.first);
    mkdir(opt.out.c_str(), 0777);

    TTML::CHeadlessCanvas canvas;
    TTML::CVideoWindow video;
    TTML::IGraphics* pGraphics = nullptr;
    bool ok = canvas.Initialize(opt.width, opt.height);
    // EFL's own complaints (at its shutdown) are not the document's problems.
    if (ok && !getenv("EINA_LOG_LEVEL"))
        eina_log_print_cb_set([](const Eina_Log_Domain*, Eina_Log_Level, const char*, const char*, int, const char*,
                                 void*, va_list) {},
                              nullptr);
    ok = ok && AddBackdrop(canvas, opt.background, video);
    if (ok) {
        pGraphics = TTML::IGraphics::Create();
        ok = pGraphics && pGraphics->Initialize(canvas.GetBaseLayout());
    }
    if (!ok) {
        std::fprintf(stderr, "ttml-render: no canvas to draw on\n");
        if (pGraphics)
            pGraphics->Destroy();
        parser.Destroy();
        return 1;
    }
    // The viewer's caption settings apply as on the TV.
    TTML::CTTMLMenu* pMenu = TTML::CTTMLMenu::GetInstance();
    pMenu->RegisterVconfKeysForCaption();
    pMenu->ReadMenuData();
    // Shown by a source that allows caption division: the menu decides.
    pMenu->SetCaptionDivisionMode(false);

    TTML::CGraphicsEngine engine(pGraphics);
    engine.CreateRootSurface(pInfo->GetCellResolution(), pInfo->GetTTExtent(), pInfo->GetAspectRatio());
    std::vector<TTML::SheetFrame> frames;
    bool written = true;
    for (unsigned long long time : times) {
        std::list<CElementSPTR> elements;
        for (const CSubtitleInfo::TimeInterval& interval : intervals) {
            if (interval.first <= time && time < interval.second) {
                pInfo->GetElementListForInterval(interval, elements);
                break;
            }
        }
        TTML::CWarningCollector collector;
        TTML::CRenderer* pRenderer = elements.empty() ? nullptr : engine.CreateRenderer(&elements, (opt.mode & TTML::SUBTITLE_MODE_FONT_SCALE) != 0);
        const bool drawn = pRenderer && engine.RenderText(pRenderer) == 1;
        if (pRenderer && !drawn)
            std::fprintf(stderr, "ttml-render: %llu ms: a region could not be drawn\n", time);
        if (opt.json)
            std::printf("%s\n", Describe(time, pRenderer, drawn).c_str());
        const std::string path = opt.out + "/" + std::to_string(time) + ".png";
        // A region that failed is taken off before the picture: no half-drawn frame.
        if (pRenderer && !drawn) {
            engine.DestroyRenderer(pRenderer);
            pRenderer = nullptr;
        }
        if (canvas.SavePng(path)) {
            frames.push_back(TTML::SheetFrame{path, Clock(time)});
        } else {
            std::fprintf(stderr, "ttml-render: cannot write %s\n", path.c_str());
            written = false;
        }
        if (pRenderer)
            engine.DestroyRenderer(pRenderer);
        std::set<std::string> said;
        for (const std::string& warning : collector.Take())
            if (said.insert(warning).second)
                std::fprintf(stderr, "ttml-render: %llu ms: %s\n", time, warning.c_str());
    }
    if (opt.sheet && !frames.empty() && !TTML::WriteContactSheet(frames, opt.width, opt.height, 480, opt.out + "/sheet.png")) {
        std::fprintf(stderr, "ttml-render: cannot write %s/sheet.png\n", opt.out.c_str());
        written = false;
    }

    pMenu->UnregisterVconfKeysForCaption();
    TTML::CTTMLMenu::Destroy();
    pGraphics->Destroy();
    video.Destroy();
    canvas.Destroy();
    parser.Destroy();
    return written ? 0 : 1;
}
