// Whole-document parse against a bare libxml2 read of the same bytes, for
// EBU-TT-D and IMSC 1 text documents.
// BM_FullParse runs the parser's per-document path (read, profile walk with
// validation, interval split, profile and reader reset; the finished
// document is freed untimed, as the engine frees it later);
// BM_BareLibxml2Read only reads and frees the tree with the same options.
// scripts/bench-parse prints the ratio.
//
//   parse_bench --peak=full|bare,ebu|imsc,PARAGRAPHS
// instead reads and frees one document once, then prints the process's
// resident high-water mark in kB (a fresh process per measurement).

#include "CEBUProfile.h"
#include "CIMSCProfile.h"
#include "CProfile.h"
#include "CSubtitleInfo.h"
#include "CXmlParser.h"

#include <benchmark/benchmark.h>
#include <dlog.h>
#include <libxml/parser.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <sstream>
#include <string>

namespace {

// The reader's options for documents handed over in memory.
const int kReadOptions = XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA;

// The profile numbers the parser task resolves for each kind.
const int kImscTextProfile = 0;
const int kEbuProfile = 2;

const std::string& Corpus(const std::string& kind, int paragraphs)
{
    static std::map<std::string, std::string> cache;
    const std::string path =
        std::string(INTERTITLE_BENCH_CORPUS) + "/" + kind + "-" + std::to_string(paragraphs) + ".xml";
    auto it = cache.find(path);
    if (it != cache.end())
        return it->second;
    std::ifstream in(path, std::ios::binary);
    std::ostringstream ss;
    ss << in.rdbuf();
    return cache[path] = ss.str();
}

std::unique_ptr<TTML::CProfile> MakeProfile(const std::string& kind)
{
    std::unique_ptr<TTML::CProfile> profile;
    if (kind == "imsc")
        profile.reset(new TTML::CIMSCProfile());
    else
        profile.reset(new TTML::CEBUProfile());
    profile->Initialize();
    profile->SetProfile(kind == "imsc" ? kImscTextProfile : kEbuProfile);
    return profile;
}

bool BareRead(const std::string& doc)
{
    xmlDocPtr d = xmlReadMemory(doc.data(), static_cast<int>(doc.size()), "", nullptr, kReadOptions);
    if (!d)
        return false;
    xmlFreeDoc(d);
    return true;
}

// One document through the parser task's steps; the finished document is
// handed back so that the caller decides when to free it.
int FullParse(TTML::CXmlParser& reader, TTML::CProfile& profile, const std::string& doc,
              std::unique_ptr<TTML::CSubtitleInfo>& info)
{
    if (!reader.ReadMemory(doc.data(), static_cast<int>(doc.size())))
        return -1;
    info.reset(new TTML::CSubtitleInfo());
    TTML::CProfile::TTMLProfileData data;
    data.pXmlParser = &reader;
    data.pSubtitleInfo = info.get();
    data.pSubRawData = nullptr;
    int result = profile.ProcessSubtitles(&data);
    profile.Reset();
    reader.Reset();
    return result;
}

void BM_BareLibxml2Read(benchmark::State& state, const char* kind)
{
    const std::string& doc = Corpus(kind, static_cast<int>(state.range(0)));
    if (doc.empty()) {
        state.SkipWithError("benchmark document missing: build the parse_bench_corpus target");
        return;
    }
    for (auto _ : state) {
        if (!BareRead(doc)) {
            state.SkipWithError("libxml2 refused the document");
            return;
        }
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}

void BM_FullParse(benchmark::State& state, const char* kind)
{
    const std::string& doc = Corpus(kind, static_cast<int>(state.range(0)));
    if (doc.empty()) {
        state.SkipWithError("benchmark document missing: build the parse_bench_corpus target");
        return;
    }
    TTML::CXmlParser reader;
    std::unique_ptr<TTML::CProfile> profile = MakeProfile(kind);
    for (auto _ : state) {
        std::unique_ptr<TTML::CSubtitleInfo> info;
        int result = FullParse(reader, *profile, doc, info);
        // The finished document goes to the engine, which frees it later:
        // not part of the parser's cost.
        state.PauseTiming();
        info.reset();
        state.ResumeTiming();
        if (result != 0) {
            state.SkipWithError("the document was refused");
            break;
        }
    }
    profile->Destroy();
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(doc.size()));
}

void Sizes(benchmark::internal::Benchmark* b)
{
    for (int n : {1000, 5000, 10000, 50000})
        b->Arg(n);
    b->Unit(benchmark::kMillisecond);
}

BENCHMARK_CAPTURE(BM_BareLibxml2Read, ebu, "ebu")->Apply(Sizes);
BENCHMARK_CAPTURE(BM_FullParse, ebu, "ebu")->Apply(Sizes);
BENCHMARK_CAPTURE(BM_BareLibxml2Read, imsc, "imsc")->Apply(Sizes);
BENCHMARK_CAPTURE(BM_FullParse, imsc, "imsc")->Apply(Sizes);

// --peak=MODE,KIND,PARAGRAPHS: parse once, free everything, print the
// resident high-water mark. Returns the exit status.
int MeasurePeak(const char* request)
{
    char mode[8] = {};
    char kind[8] = {};
    int paragraphs = 0;
    if (std::sscanf(request, "%7[a-z],%7[a-z],%d", mode, kind, &paragraphs) != 3 ||
        (std::strcmp(mode, "full") != 0 && std::strcmp(mode, "bare") != 0) ||
        (std::strcmp(kind, "ebu") != 0 && std::strcmp(kind, "imsc") != 0)) {
        std::fprintf(stderr, "parse_bench: --peak=full|bare,ebu|imsc,PARAGRAPHS\n");
        return 2;
    }
    const std::string& doc = Corpus(kind, paragraphs);
    if (doc.empty()) {
        std::fprintf(stderr, "parse_bench: no %s document of %d paragraphs\n", kind, paragraphs);
        return 1;
    }
    bool ok;
    if (std::strcmp(mode, "bare") == 0) {
        ok = BareRead(doc);
    } else {
        TTML::CXmlParser reader;
        std::unique_ptr<TTML::CProfile> profile = MakeProfile(kind);
        std::unique_ptr<TTML::CSubtitleInfo> info;
        ok = FullParse(reader, *profile, doc, info) == 0;
        info.reset();
        profile->Destroy();
    }
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%ld\n", usage.ru_maxrss);
    return ok ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv)
{
    // Timing the walk, not the log: nothing below errors is formatted.
    setenv("INTERTITLE_LOG", "error", 0);
    dlog_reload_filter();
    xmlInitParser();
    if (argc == 2 && std::strncmp(argv[1], "--peak=", 7) == 0)
        return MeasurePeak(argv[1] + 7);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
