// Cost of one subtitle interval on the drawing path, as the engine pays it
// per interval: CreateRenderer, RenderText, a render of the canvas and
// DestroyRenderer, on a 1920x1080 headless canvas. "Typical" is a two-line
// bottom subtitle; "Busy" is four regions of three outlined paragraphs.
// Reported as the median over repetitions.

#include "CGraphicsEngine.h"
#include "CHeadlessCanvas.h"
#include "CParser.h"
#include "CSubtitleInfo.h"
#include "IGraphics.h"
#include "SubRawData.h"

#include <benchmark/benchmark.h>
#include <dlog.h>

#include <cstdlib>
#include <list>
#include <set>
#include <string>

namespace {

std::string Document(int regions, int paragraphs, bool outline)
{
    static const char* const kPlaces[] = {"10% 75%", "10% 5%", "5% 40%", "55% 40%"};
    std::string doc =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
        " xmlns:tts=\"http://www.w3.org/ns/ttml#styling\" xmlns:ebuttm=\"urn:ebu:tt:metadata\""
        " ttp:timeBase=\"media\" ttp:cellResolution=\"50 30\" xml:lang=\"en\"><head>"
        "<metadata><ebuttm:documentMetadata><ebuttm:conformsToStandard>urn:ebu:tt:distribution:2018-04"
        "</ebuttm:conformsToStandard></ebuttm:documentMetadata></metadata><styling>"
        "<style xml:id=\"s\" tts:fontFamily=\"proportionalSansSerif\" tts:fontSize=\"100%\" tts:textAlign=\"center\""
        " tts:color=\"#FFFFFF\" tts:backgroundColor=\"#000000C0\"" +
        std::string(outline ? " tts:textOutline=\"#000000 5%\"" : "") + "/></styling><layout>";
    for (int r = 0; r < regions; ++r)
        doc += "<region xml:id=\"r" + std::to_string(r) + "\" tts:origin=\"" + kPlaces[r] +
               "\" tts:extent=\"40% 20%\" tts:displayAlign=\"after\"/>";
    doc += "</layout></head><body style=\"s\">";
    for (int r = 0; r < regions; ++r) {
        doc += "<div region=\"r" + std::to_string(r) + "\">";
        for (int p = 0; p < paragraphs; ++p)
            doc += "<p begin=\"00:00:01.000\" end=\"00:00:05.000\"><span>Paragraph " + std::to_string(p + 1) +
                   " of region " + std::to_string(r + 1) + ", a line of dialogue</span></p>";
        doc += "</div>";
    }
    return doc + "</body></tt>";
}

void Parsed_Cb(int msgId, void* data)
{
    if (msgId == 0 && data) {
        auto* pData = static_cast<TTML::ParserCallbackData*>(data);
        *static_cast<TTML::CSubtitleInfo**>(pData->pUserData) = pData->pSubtitleInfo;
    }
}

void RenderInterval(benchmark::State& state, const std::string& xml)
{
    setenv("INTERTITLE_LOG", "none", 1);
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);
    dlog_reload_filter();
    TTML::CSubtitleInfo* pInfo = nullptr;
    TTML::CParser parser;
    parser.Initialize(1, &Parsed_Cb, &pInfo);
    auto* pRecord = new TTML::SubRawData();
    pRecord->profile = 2;
    pRecord->xmlData = xml;
    parser.ProcessRecord(pRecord, nullptr);
    TTML::CHeadlessCanvas canvas;
    TTML::IGraphics* pGraphics = TTML::IGraphics::Create();
    if (!pInfo || !canvas.Initialize(1920, 1080) || !pGraphics->Initialize(canvas.GetBaseLayout())) {
        state.SkipWithError("no document or no canvas");
    } else {
        TTML::CGraphicsEngine engine(pGraphics);
        engine.CreateRootSurface(pInfo->GetCellResolution(), pInfo->GetTTExtent(), pInfo->GetAspectRatio());
        std::set<TTML::CSubtitleInfo::TimeInterval> keys;
        pInfo->GetUniqueKeys(keys);
        std::list<TTML::CElementSPTR> elements;
        pInfo->GetElementListForInterval(*keys.begin(), elements);
        for (auto _ : state) {
            TTML::CRenderer* pRenderer = engine.CreateRenderer(&elements, false);
            engine.RenderText(pRenderer);
            benchmark::DoNotOptimize(canvas.GetPixel(960, 900));
            engine.DestroyRenderer(pRenderer);
        }
        state.counters["elements"] = static_cast<double>(elements.size());
    }
    pGraphics->Destroy();
    canvas.Destroy();
    delete pInfo;
    parser.Destroy();
}

void BM_TypicalInterval(benchmark::State& state)
{
    RenderInterval(state, Document(1, 2, false));
}

void BM_BusyInterval(benchmark::State& state)
{
    RenderInterval(state, Document(4, 3, true));
}

BENCHMARK(BM_TypicalInterval)->Unit(benchmark::kMillisecond)->Repetitions(9)->ReportAggregatesOnly(true);
BENCHMARK(BM_BusyInterval)->Unit(benchmark::kMillisecond)->Repetitions(9)->ReportAggregatesOnly(true);

}  // namespace

BENCHMARK_MAIN();
