// Whole-document parse against a bare libxml2 read of the same bytes.
// BM_FullParse runs the parser's per-document path (read, EBU-TT-D walk with
// validation, interval split, profile and reader reset; the finished
// document is freed untimed, as the engine frees it later);
// BM_BareLibxml2Read only reads and frees the tree with the same options.
// scripts/bench-parse prints the ratio.

#include "CEBUProfile.h"
#include "CProfile.h"
#include "CSubtitleInfo.h"
#include "CXmlParser.h"

#include <benchmark/benchmark.h>
#include <dlog.h>
#include <libxml/parser.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace {

const std::string& Corpus(int paragraphs)
{
    static std::map<int, std::string> cache;
    auto it = cache.find(paragraphs);
    if (it != cache.end())
        return it->second;
    std::string path = std::string(INTERTITLE_BENCH_CORPUS) + "/ebu-" + std::to_string(paragraphs) + ".xml";
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return cache[paragraphs] = ss.str();
}

bool HaveCorpus(benchmark::State& state, const std::string& doc)
{
    if (!doc.empty())
        return true;
    state.SkipWithError("benchmark document missing: build the parse_bench_corpus target");
    return false;
}

void BM_BareLibxml2Read(benchmark::State& state)
{
    const std::string& doc = Corpus(static_cast<int>(state.range(0)));
    if (!HaveCorpus(state, doc))
        return;
    for (auto _ : state) {
        xmlDocPtr d = xmlReadMemory(doc.data(), static_cast<int>(doc.size()), "", nullptr,
                                    XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA);
        if (!d) {
            state.SkipWithError("libxml2 refused the document");
            return;
        }
        xmlFreeDoc(d);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}

void BM_FullParse(benchmark::State& state)
{
    const std::string& doc = Corpus(static_cast<int>(state.range(0)));
    if (!HaveCorpus(state, doc))
        return;
    TTML::CXmlParser reader;
    TTML::CEBUProfile profile;
    profile.Initialize();
    profile.SetProfile(2);
    for (auto _ : state) {
        if (!reader.ReadMemory(doc.data(), static_cast<int>(doc.size()))) {
            state.SkipWithError("ReadMemory failed");
            break;
        }
        auto* info = new TTML::CSubtitleInfo();
        TTML::CProfile::TTMLProfileData data;
        data.pXmlParser = &reader;
        data.pSubtitleInfo = info;
        data.pSubRawData = nullptr;
        int result = profile.ProcessSubtitles(&data);
        profile.Reset();
        reader.Reset();
        // The finished document goes to the engine, which frees it later:
        // not part of the parser's cost.
        state.PauseTiming();
        delete info;
        state.ResumeTiming();
        if (result != 0) {
            state.SkipWithError("the profile refused the document");
            break;
        }
    }
    profile.Destroy();
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}

void Sizes(benchmark::internal::Benchmark* b)
{
    for (int n : {100, 1000, 5000, 10000, 50000})
        b->Arg(n);
    b->Unit(benchmark::kMillisecond);
}

BENCHMARK(BM_BareLibxml2Read)->Apply(Sizes);
BENCHMARK(BM_FullParse)->Apply(Sizes);

}  // namespace

int main(int argc, char** argv)
{
    // Timing the walk, not the log: nothing below errors is formatted.
    setenv("INTERTITLE_LOG", "error", 0);
    dlog_reload_filter();
    xmlInitParser();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
