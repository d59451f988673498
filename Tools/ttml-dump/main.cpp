// ttml-dump: feeds TTML files through the parser task's own per-document
// path and prints what the engine would receive.
//
//   ttml-dump [--profile N] [--mode M] [--timestamp MS] [--segment BEGIN,END] [--json] FILE...
//
// Exit status 0 when every file was accepted, 1 when any was refused or
// unreadable, 2 for a usage error. With --json, one JSON object per file, one
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

#include <cerrno>
#include <cinttypes>
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
    int profile = -1;
    int mode = 1;
    long long timeStamp = 0;
    unsigned long long segmentBegin = 0;
    unsigned long long segmentEnd = 0;
    bool json = false;
    std::vector<std::string> files;
};

// Indexed by TTMLElem; the names as written in documents.
const char* const kElemNames[TTML::TTML_ELEM_COUNT] = {
    "actor", "agent",    "body",  "br",     "copyright", "desc",    "div",
    "documentEbuttVersion", "documentMetadata", "head", "layout", "metadata",
    "name",  "p",        "region", "span",  "style",     "styling", "title",
    "tt",    "set",
};

const char kImageDesignator[] = "http://www.w3.org/ns/ttml/profile/imsc1/image";

const char* ElemName(int type)
{
    return (type >= 0 && type < TTML::TTML_ELEM_COUNT) ? kElemNames[type] : "unknown";
}

const char* ProfileName(int number)
{
    switch (number) {
    case 0: return "IMSC 1 text";
    case 1: return "IMSC 1 image";
    case 2: return "EBU-TT-D";
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

void Usage(FILE* out)
{
    std::fprintf(out,
                 "usage: ttml-dump [--profile N] [--mode M] [--timestamp MS] [--segment BEGIN,END] [--json] FILE...\n"
                 "  --profile N     transport profile: -1 none (default; 1 for documents declaring IMSC 1 image),\n"
                 "                  0 IMSC 1 text, 1 IMSC 1 image, 2 EBU-TT-D\n"
                 "  --mode M        subtitle mode bit set (default 1; 8 makes IMSC 1 text the default profile)\n"
                 "  --timestamp MS  time stamp handed with the document\n"
                 "  --segment B,E   segment begin and end in ms (begins are raised to B)\n"
                 "  --json          one JSON object per file, one per line\n");
}

bool ParseLongLong(const char* text, long long& out)
{
    errno = 0;
    char* end = nullptr;
    long long v = std::strtoll(text, &end, 10);
    if (errno != 0 || end == text || *end != '\0')
        return false;
    out = v;
    return true;
}

bool ParseUnsigned(const std::string& text, unsigned long long& out)
{
    if (text.empty() || text[0] == '-')
        return false;
    errno = 0;
    char* end = nullptr;
    unsigned long long v = std::strtoull(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0')
        return false;
    out = v;
    return true;
}

// 0 to run, 2 for a usage error, -1 after --help.
int ParseArgs(int argc, char** argv, Options& opt)
{
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        auto value = [&](const char*& out) {
            if (i + 1 >= argc)
                return false;
            out = argv[++i];
            return true;
        };
        const char* v = nullptr;
        long long n = 0;
        if (arg == "--json") {
            opt.json = true;
        } else if (arg == "--help" || arg == "-h") {
            Usage(stdout);
            return -1;
        } else if (arg == "--profile" || arg == "--mode" || arg == "--timestamp") {
            if (!value(v) || !ParseLongLong(v, n)) {
                std::fprintf(stderr, "ttml-dump: %s needs an integer\n", arg.c_str());
                return 2;
            }
            if (arg == "--timestamp")
                opt.timeStamp = n;
            else if (n < INT32_MIN || n > INT32_MAX)
                return std::fprintf(stderr, "ttml-dump: %s out of range\n", arg.c_str()), 2;
            else if (arg == "--profile")
                opt.profile = static_cast<int>(n);
            else
                opt.mode = static_cast<int>(n);
        } else if (arg == "--segment") {
            std::string s;
            size_t comma = std::string::npos;
            if (value(v)) {
                s = v;
                comma = s.find(',');
            }
            if (comma == std::string::npos || !ParseUnsigned(s.substr(0, comma), opt.segmentBegin) ||
                !ParseUnsigned(s.substr(comma + 1), opt.segmentEnd)) {
                std::fprintf(stderr, "ttml-dump: --segment needs BEGIN,END in ms\n");
                return 2;
            }
        } else if (arg.size() > 1 && arg[0] == '-') {
            std::fprintf(stderr, "ttml-dump: unknown option %s\n", arg.c_str());
            return 2;
        } else {
            opt.files.push_back(arg);
        }
    }
    if (opt.files.empty()) {
        Usage(stderr);
        return 2;
    }
    return 0;
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
    int result = -1;
    int profile = -1;
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
            std::printf("refused: cannot read the file\n\n");
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
    int rc = ParseArgs(argc, argv, opt);
    if (rc != 0)
        return rc < 0 ? 0 : rc;

    // Refusal reasons are printed by the tool itself; INTERTITLE_LOG still
    // shows the log when set.
    setenv("INTERTITLE_LOG", "none", 0);
    dlog_reload_filter();

    TTML::CDocumentParser parser;
    if (!parser.Initialize(opt.mode)) {
        std::fprintf(stderr, "ttml-dump: the parser did not start\n");
        return 1;
    }

    bool allAccepted = true;
    for (const auto& file : opt.files) {
        FileResult r;
        r.file = file;
        TTML::SubRawData* pRecord = TTML::CDocumentParser::NewRecord(file, opt.profile);
        r.readable = pRecord != nullptr;
        if (r.readable) {
            pRecord->timeStamp = opt.timeStamp;
            pRecord->segmentBegin = opt.segmentBegin;
            pRecord->segmentEnd = opt.segmentEnd;
            // Only the image profile reads image references.
            if (pRecord->profile == 1) {
                std::vector<std::string> refs = TTML::BackgroundImages(pRecord->xmlData, true);
                if (!refs.empty()) {
                    TTML::PackImages(file, refs, pRecord->subSampleData);
                    r.images = CheckImages(refs, pRecord->subSampleData);
                }
            }
            r.result = parser.Parse(pRecord, &r.profile, &r.warnings);
        } else {
            std::fprintf(stderr, "ttml-dump: cannot read %s\n", file.c_str());
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
