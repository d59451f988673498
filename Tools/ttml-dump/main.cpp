// ttml-dump: feeds TTML files through the parser task's own per-document
// path and prints what the engine would receive.
//
//   ttml-dump [--profile N] [--mode M] [--timestamp MS] [--segment BEGIN,END] [--json] FILE...
//
// Exit status 0 when every file was accepted (or after --help), 1 when any
// was refused or unreadable (a folder, a missing file: said why), 2 for a
// usage error (an unknown option, a value out of range, no FILE). With --json, one JSON object per file, one
// object per line (JSON Lines). The log filter defaults to "none" here; the
// warnings of a refused document are printed as its reasons instead.
//
// A document declaring the IMSC 1 image profile is sent with transport
// profile 1 unless --profile says otherwise. For a document sent with profile
// 1, images named by smpte:backgroundImage on its divs that lie beside the
// document are packed into the record's sub-sample data, as a source would
// send them, and each reference is printed with its decoded size or why it
// has none; each image element shows the image it carries.

#include "CDocumentParser.h"
#include "CElement.h"
#include "CToolArgs.h"
#include "CImageData.h"
#include "CSubSampleImageUtil.h"
#include "CSubtitleInfo.h"
#include "CWarningCollector.h"
#include "SubRawData.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"
#include "ToolImages.h"
#include "ToolJson.h"

#include <dlog.h>

#include <climits>
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
    int profile = TTML::TTML_PROFILE_NONE;
    int mode = 1;
    long long timeStamp = 0;
    unsigned long long segmentBegin = 0;
    unsigned long long segmentEnd = 0;
    bool json = false;
    std::vector<std::string> files;
};

const char* ElemName(int type)
{
    return (type >= 0 && type < TTML::TTML_ELEM_COUNT) ? TTML::kTTMLElemNames[type] : "unknown";
}

const char* ProfileName(int number)
{
    switch (number) {
    case TTML::TTML_PROFILE_IMSC1_TEXT: return "IMSC 1 text";
    case TTML::TTML_PROFILE_IMSC1_IMAGE: return "IMSC 1 image";
    case TTML::TTML_PROFILE_EBUTTD: return "EBU-TT-D";
    default: return "none";
    }
}

const char* ResultName(int code)
{
    switch (code) {
    case TTML::ERR_NONE: return "accepted";
    case TTML::ERR_IGNORE: return "ignored";
    case TTML::ERR_SKIP_CHILDREN: return "children skipped";
    case TTML::ERR_NOT_SUPPORTED: return "profile not supported";
    case TTML::ERR_NO_MATCH: return "no handler";
    case TTML::ERR_INVALID: return "invalid document";
    case TTML::ERR_NULL_POINTER: return "null pointer";
    default: return "unreadable file";
    }
}

const char kUsage[] =
    "usage: ttml-dump [--profile N] [--mode M] [--timestamp MS] [--segment BEGIN,END] [--json] FILE...\n"
    "  --profile N     transport profile: -1 none (default; 1 for documents declaring IMSC 1 image),\n"
    "                  0 IMSC 1 text, 1 IMSC 1 image, 2 EBU-TT-D\n"
    "  --mode M        subtitle mode bit set (default 1; 8 makes IMSC 1 text the default profile)\n"
    "  --timestamp MS  time stamp handed with the document\n"
    "  --segment B,E   segment begin and end in ms (begins are raised to B)\n"
    "  --json          one JSON object per file, one per line\n";

// CToolArgs::kRun to run, otherwise the exit status.
int ParseArgs(int argc, char** argv, Options& opt)
{
    TTML::CToolArgs args("ttml-dump", kUsage, argc, argv);
    while (args.Next()) {
        std::string v;
        if (args.Is("--json")) {
            opt.json = true;
        } else if (args.IsHelp()) {
            return args.Help();
        } else if (args.Is("--profile") || args.Is("--mode")) {
            if (const int rc = args.ProfileOrMode(opt.profile, opt.mode); rc != TTML::CToolArgs::kRun)
                return rc;
        } else if (args.Is("--timestamp")) {
            if (!args.Number(LLONG_MIN, LLONG_MAX, opt.timeStamp))
                return args.Fail("--timestamp takes a whole number of ms");
        } else if (args.Is("--segment")) {
            long long begin = 0;
            long long end = 0;
            const size_t comma = args.Value(v) ? v.find(',') : std::string::npos;
            if (comma == std::string::npos || !TTML::ParseWholeNumber(v.substr(0, comma), 0, LLONG_MAX, begin) ||
                !TTML::ParseWholeNumber(v.substr(comma + 1), 0, LLONG_MAX, end))
                return args.Fail("--segment takes BEGIN,END in ms");
            opt.segmentBegin = static_cast<unsigned long long>(begin);
            opt.segmentEnd = static_cast<unsigned long long>(end);
        } else if (args.IsOption()) {
            return args.Unknown();
        } else {
            opt.files.push_back(args.Arg());
        }
    }
    return opt.files.empty() ? args.Fail("no FILE") : args.Ready(true);
}

// One smpte:backgroundImage reference of the document and what it gave.
struct ImageResult {
    std::string reference;
    unsigned int width = 0;   // 0: no image
    unsigned int height = 0;
    std::string problem;      // why there is no image
};

struct FileResult {
    std::string file;
    bool readable = false;
    std::string unreadable;  // why the file could not be read
    int result = -1;
    int profile = TTML::TTML_PROFILE_NONE;
    CSubtitleInfo* pInfo = nullptr;  // not owned
    std::vector<std::string> warnings;
    std::vector<ImageResult> images;
};

// What the image profile asks the image component for: the part after the
// last colon of a "urn:" value, any other value as it is.
std::string LookupKey(const std::string& reference)
{
    if (reference.compare(0, 4, "urn:") == 0)
        return reference.substr(reference.rfind(':') + 1);
    return reference;
}

// Looks every reference up the way the image profile does, keeping the
// warning that explains a missing image.
std::vector<ImageResult> CheckImages(const std::vector<std::string>& refs, std::string& subSampleData)
{
    std::vector<ImageResult> results;
    TTML::CSubSampleImageUtil util(subSampleData);
    for (const auto& ref : refs) {
        ImageResult r;
        r.reference = ref;
        TTML::CWarningCollector collector;
        std::shared_ptr<TTML::CImageData> image = util.GetImage(LookupKey(ref));
        if (image) {
            r.width = image->GetWidth();
            r.height = image->GetHeight();
        } else {
            std::vector<std::string> why = collector.Take();
            r.problem = why.empty() ? "no image" : why.back();
        }
        results.push_back(r);
    }
    return results;
}

std::string TextOf(const CElementSPTR& e)
{
    std::string text;
    e->GetAttrValue(TTML::ATTR_TEXT, text);
    return text;
}

// An element's image: the reference it names and, when decoded, its size.
struct ElementImage {
    bool named = false;  // the element refers to an image
    std::string reference;
    std::shared_ptr<TTML::CImageData> image;
};

ElementImage ImageOf(const CElementSPTR& e)
{
    ElementImage r;
    r.named = e->GetAttrValue(TTML::ATTR_BACKGROUNDIMAGE, r.reference);
    if (e->IsImageProfile()) {
        r.image = e->GetImageData();
        r.named = true;
        if (r.reference.empty() && r.image)
            r.reference = r.image->GetReference();
    }
    return r;
}

std::string FormatDouble(double v)
{
    char buf[64];
    std::snprintf(buf, sizeof(buf), "%.17g", v);
    return buf;
}

void PrintJson(const FileResult& r)
{
    std::ostringstream os;
    const CSubtitleInfo* info = r.pInfo;
    os << "{\"file\":";
    JsonString(os, r.file);
    os << ",\"accepted\":" << (info ? "true" : "false");
    os << ",\"result\":" << r.result;
    os << ",\"profile\":" << r.profile;
    os << ",\"timeBase\":";
    JsonString(os, info ? info->GetTimeBase() : "");
    os << ",\"cellResolution\":";
    JsonString(os, info ? info->GetCellResolution() : "");
    os << ",\"extent\":";
    JsonString(os, info ? info->GetTTExtent() : "");
    os << ",\"aspectRatio\":";
    JsonString(os, info ? info->GetAspectRatio() : "");
    os << ",\"frameRate\":" << FormatDouble(info ? info->GetEffectiveFrameRate() : 0);
    os << ",\"tickRate\":" << (info ? info->GetTickRate() : 0);
    os << ",\"lastEndTime\":" << (info ? info->GetLastEndTime() : 0ULL);
    if (!r.images.empty()) {
        os << ",\"images\":[";
        for (size_t i = 0; i < r.images.size(); ++i) {
            const ImageResult& im = r.images[i];
            os << (i ? "," : "") << "{\"reference\":";
            JsonString(os, im.reference);
            os << ",\"width\":" << im.width << ",\"height\":" << im.height << ",\"problem\":";
            JsonString(os, im.problem);
            os << '}';
        }
        os << ']';
    }
    os << ",\"intervals\":[";
    if (info) {
        std::set<CSubtitleInfo::TimeInterval> keys;
        info->GetUniqueKeys(keys);
        bool firstInterval = true;
        for (const auto& key : keys) {
            os << (firstInterval ? "" : ",") << "{\"begin\":" << key.first << ",\"end\":" << key.second
               << ",\"elements\":[";
            firstInterval = false;
            std::list<CElementSPTR> elements;
            info->GetElementListForInterval(key, elements);
            bool firstElement = true;
            for (const auto& e : elements) {
                os << (firstElement ? "" : ",") << "{\"type\":";
                firstElement = false;
                JsonString(os, ElemName(e->GetType()));
                os << ",\"text\":";
                JsonString(os, TextOf(e));
                os << ",\"attributes\":{";
                bool firstAttr = true;
                for (const auto& kv : e->GetAttrMap()) {
                    if (kv.first == TTML::ATTR_TEXT)
                        continue;
                    os << (firstAttr ? "" : ",");
                    firstAttr = false;
                    JsonString(os, TTML::kTTMLAttrKeys[kv.first]);
                    os << ':';
                    JsonString(os, kv.second);
                }
                os << '}';
                ElementImage im = ImageOf(e);
                if (im.named) {
                    os << ",\"image\":";
                    if (im.image) {
                        os << "{\"ref\":";
                        JsonString(os, im.reference);
                        os << ",\"width\":" << im.image->GetWidth() << ",\"height\":" << im.image->GetHeight()
                           << '}';
                    } else {
                        os << "null";
                    }
                }
                os << '}';
            }
            os << "]}";
        }
    }
    os << "]}\n";
    std::fputs(os.str().c_str(), stdout);
}

void PrintText(const FileResult& r, long long timeStamp)
{
    std::printf("== %s\n", r.file.c_str());
    for (const auto& im : r.images) {
        if (im.width)
            std::printf("image %s: %ux%u\n", im.reference.c_str(), im.width, im.height);
        else
            std::printf("image %s: none (%s)\n", im.reference.c_str(), im.problem.c_str());
    }
    if (!r.pInfo) {
        if (!r.readable) {
            std::printf("refused: cannot read the file: %s\n\n", r.unreadable.c_str());
            return;
        }
        std::printf("profile: %d (%s)\n", r.profile, ProfileName(r.profile));
        std::printf("refused: result %d (%s)\n", r.result, ResultName(r.result));
        for (const auto& w : r.warnings)
            std::printf("  reason: %s\n", w.c_str());
        std::printf("\n");
        return;
    }
    const CSubtitleInfo* info = r.pInfo;
    std::printf("profile: %d (%s)\n", r.profile, ProfileName(r.profile));
    std::printf("timeBase: %s\n", info->GetTimeBase().c_str());
    std::printf("cellResolution: %s\n", info->GetCellResolution().c_str());
    std::printf("extent: %s\n", info->GetTTExtent().c_str());
    std::printf("aspectRatio: %s\n", info->GetAspectRatio().c_str());
    std::printf("frameRate: %g\n", info->GetEffectiveFrameRate());
    std::printf("tickRate: %d\n", info->GetTickRate());
    std::printf("timeStamp: %lld\n", timeStamp);

    std::set<CSubtitleInfo::TimeInterval> keys;
    info->GetUniqueKeys(keys);
    for (const auto& key : keys) {
        std::printf("interval %llu..%llu ms\n", key.first, key.second);
        std::list<CElementSPTR> elements;
        info->GetElementListForInterval(key, elements);
        for (const auto& e : elements) {
            std::string text = TextOf(e);
            if (text == "\n")
                text = "\\n";
            std::printf("  %s \"%s\"\n", ElemName(e->GetType()), text.c_str());
            std::string line;
            for (const auto& kv : e->GetAttrMap()) {
                if (kv.first == TTML::ATTR_TEXT)
                    continue;
                line += std::string(line.empty() ? "" : " ") + TTML::kTTMLAttrKeys[kv.first] + "=" + kv.second;
            }
            std::printf("    %s\n", line.c_str());
            ElementImage im = ImageOf(e);
            if (im.named && im.image)
                std::printf("    image %s: %ux%u\n", im.reference.c_str(), im.image->GetWidth(),
                            im.image->GetHeight());
            else if (im.named)
                std::printf("    image %s: not decoded\n", im.reference.c_str());
        }
    }
    std::printf("lastEndTime: %llu\n\n", info->GetLastEndTime());
}

}  // namespace

int main(int argc, char** argv)
{
    Options opt;
    if (const int rc = ParseArgs(argc, argv, opt); rc != TTML::CToolArgs::kRun)
        return rc;

    TTML::CDocumentParser parser;
    if (!parser.Initialize(opt.mode)) {
        std::fprintf(stderr, "ttml-dump: the parser did not start\n");
        return 1;
    }

    bool allAccepted = true;
    for (const auto& file : opt.files) {
        FileResult r;
        r.file = file;
        TTML::SubRawData* pRecord = TTML::CDocumentParser::NewRecord(file, opt.profile, &r.unreadable);
        r.readable = pRecord != nullptr;
        if (r.readable) {
            pRecord->timeStamp = opt.timeStamp;
            pRecord->segmentBegin = opt.segmentBegin;
            pRecord->segmentEnd = opt.segmentEnd;
            // Only the image profile reads image references.
            if (pRecord->profile == TTML::TTML_PROFILE_IMSC1_IMAGE) {
                std::vector<std::string> refs = TTML::BackgroundImages(pRecord->xmlData, true);
                if (!refs.empty()) {
                    TTML::PackImages(file, refs, pRecord->subSampleData);
                    r.images = CheckImages(refs, pRecord->subSampleData);
                }
            }
            r.result = parser.Parse(pRecord, &r.profile, &r.warnings);
        } else {
            std::fprintf(stderr, "ttml-dump: cannot read %s: %s\n", file.c_str(), r.unreadable.c_str());
        }
        r.pInfo = (r.readable && r.result == TTML::ERR_NONE) ? parser.GetSubtitleInfo() : nullptr;
        if (!r.pInfo)
            allAccepted = false;

        if (opt.json) {
            PrintJson(r);
            if (r.readable && !r.pInfo) {
                std::fprintf(stderr, "ttml-dump: %s refused: result %d (%s)\n", file.c_str(), r.result,
                             ResultName(r.result));
                for (const auto& w : r.warnings)
                    std::fprintf(stderr, "  reason: %s\n", w.c_str());
            }
        } else
            PrintText(r, opt.timeStamp);
        std::fflush(stdout);

        parser.Reset();
    }

    parser.Destroy();
    return allAccepted ? 0 : 1;
}
