// The parse path as a source's document travels it: a SubRawData through
// profile resolution, the walk and the split, then the queries the engine
// makes of the finished document. Input format: FuzzParseInput.h.
//
// CParser::ProcessRecord is called on the fuzzer's thread: it is the very
// function the parser thread runs per queued record, minus the queue hop,
// which would only add a thread switch per input.
#include "CParser.h"
#include "CSubtitleInfo.h"
#include "FuzzParseInput.h"

#include <cstdint>
#include <cstdlib>
#include <list>
#include <set>
#include <string>

using namespace TTML;

namespace {

// The parser reads only bit value 8 of the mode, so one parser per value of
// that bit covers every mode.
CParser* g_pParsers[2];

void Deliver_Cb(int, void* data)
{
    CSubtitleInfo* pInfo = static_cast<ParserCallbackData*>(data)->pSubtitleInfo;
    std::set<CSubtitleInfo::TimeInterval> keys;
    pInfo->GetUniqueKeys(keys);
    for (const CSubtitleInfo::TimeInterval& key : keys) {
        std::list<CElementSPTR> elements;
        pInfo->GetElementListForInterval(key, elements);
    }
    delete pInfo;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    // Thousands of warning lines a second would only slow the search down.
    setenv("INTERTITLE_LOG", "none", 0);
    const int modes[2] = {1, 9};
    for (int i = 0; i < 2; ++i) {
        g_pParsers[i] = new CParser();
        if (!g_pParsers[i]->Initialize(modes[i], Deliver_Cb, nullptr))
            abort();
    }
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    int mode = 0;
    SubRawData* pRecord = MakeFuzzRecord(data, size, mode);
    if (!pRecord)
        return 0;
    g_pParsers[(mode & 8) ? 1 : 0]->ProcessRecord(pRecord);
    return 0;
}
