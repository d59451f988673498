#ifndef INTERTITLE_TESTS_PARSERTESTUTIL_H
#define INTERTITLE_TESTS_PARSERTESTUTIL_H

#include "CImageData.h"
#include "CParser.h"
#include "CSubtitleInfo.h"
#include "ProfileWalk.h"
#include "SubRawData.h"

#include <pthread.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace ParserTest {

// An EBU-TT-D document assembled from parts; the defaults give a valid
// document with one region and one subtitle from 1 s to 2 s.
struct DocParts {
    std::string rootAttrs = "ttp:timeBase=\"media\"";
    std::string head;  // extra head children, before styling and layout
    std::string styling;
    std::string layout = WalkTest::kRegion;
    std::string body = "<div region=\"r1\"><p begin=\"00:00:01.000\" end=\"00:00:02.000\">"
                       "<span>Hello</span></p></div>";
};

// Files ending in `extension` (any, when empty) below `dir`, as sorted paths relative to it.
inline std::vector<std::string> SampleFiles(const std::filesystem::path& dir, const std::string& extension)
{
    namespace fs = std::filesystem;
    std::vector<std::string> files;
    std::error_code ec;
    for (fs::recursive_directory_iterator it(dir, ec), end; !ec && it != end; it.increment(ec)) {
        if (it->is_regular_file() && (extension.empty() || it->path().extension() == extension))
            files.push_back(fs::relative(it->path(), dir).generic_string());
    }
    std::sort(files.begin(), files.end());
    return files;
}

inline std::string ReadFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

inline std::string MakeDoc(const DocParts& d = DocParts())
{
    return WalkTest::Doc(d.body, d.styling, d.layout, d.rootAttrs, d.head);
}

// conformsToStandard declarations in document metadata, in order.
inline std::string Conforms(const std::vector<std::string>& designators)
{
    std::string s = "<metadata><ebuttm:documentMetadata>";
    for (const auto& d : designators)
        s += "<ebuttm:conformsToStandard>" + d + "</ebuttm:conformsToStandard>";
    return s + "</ebuttm:documentMetadata></metadata>";
}

constexpr const char* kEbu = "urn:ebu:tt:distribution:2014-01";
constexpr const char* kImscText = "http://www.w3.org/ns/ttml/profile/imsc1/text";
constexpr const char* kImscImage = "http://www.w3.org/ns/ttml/profile/imsc1/image";
// Root attributes of an IMSC 1 image document (smpte:backgroundImage on divs).
const std::string kImageRoot = "xmlns:smpte=\"http://www.smpte-ra.org/schemas/2052-1/2010/smpte-tt\" ttp:profile=\"" +
                               std::string(kImscImage) + "\"";

inline TTML::SubRawData* MakeRecord(const std::string& xml, int profile = -1, long long timeStamp = 0)
{
    auto* r = new TTML::SubRawData();
    r->xmlData = xml;
    r->profile = profile;
    r->timeStamp = timeStamp;
    return r;
}

// Takes every delivered document, with the name of the thread it arrived on.
struct Deliveries {
    std::mutex lock;
    std::vector<std::unique_ptr<TTML::CSubtitleInfo>> docs;
    std::vector<std::string> threads;

    size_t Count()
    {
        std::lock_guard<std::mutex> g(lock);
        return docs.size();
    }

    static void Callback(int msgId, void* data)
    {
        auto* d = static_cast<TTML::ParserCallbackData*>(data);
        auto* self = static_cast<Deliveries*>(d->pUserData);
        if (msgId != 0)
            return;
        char name[32] = {0};
        pthread_getname_np(pthread_self(), name, sizeof(name));
        std::lock_guard<std::mutex> g(self->lock);
        self->docs.emplace_back(d->pSubtitleInfo);
        self->threads.push_back(name);
    }
};

using IntervalList = std::vector<std::pair<unsigned long long, unsigned long long>>;

// Split intervals of a document, in map order.
inline IntervalList Intervals(const TTML::CSubtitleInfo& info)
{
    std::set<TTML::CSubtitleInfo::TimeInterval> keys;
    info.GetUniqueKeys(keys);
    return {keys.begin(), keys.end()};
}

// The values of `attr` ("<none>" when absent) of the elements shown in one
// interval, joined with '|'.
inline std::string ValuesIn(const TTML::CSubtitleInfo& info, TTML::CSubtitleInfo::TimeInterval interval,
                            TTML::TTMLAttr attr = TTML::ATTR_TEXT)
{
    std::list<TTML::CElementSPTR> elements;
    info.GetElementListForInterval(interval, elements);
    std::string out;
    for (const auto& e : elements) {
        std::string v;
        out += (&e == &elements.front() ? "" : "|") + (e->GetAttrValue(attr, v) ? v : "<none>");
    }
    return out;
}

// Every listed element as "begin-end:reference=WxH", or "begin-end:none"
// when it carries no image, in interval order.
inline std::string ImagesShown(const TTML::CSubtitleInfo& info)
{
    std::string out;
    for (const auto& key : Intervals(info)) {
        std::list<TTML::CElementSPTR> elements;
        info.GetElementListForInterval(key, elements);
        for (const auto& e : elements) {
            std::shared_ptr<TTML::CImageData> image = e->IsImageProfile() ? e->GetImageData() : nullptr;
            out += (out.empty() ? "" : " ") + std::to_string(key.first) + "-" + std::to_string(key.second) + ":" +
                   (image ? image->GetReference() + "=" + std::to_string(image->GetWidth()) + "x" +
                                std::to_string(image->GetHeight())
                          : "none");
        }
    }
    return out;
}

// An initialised parser whose documents go to `delivered`; Run parses on the
// test's thread, queued records on the parser's.
struct SyncParser {
    Deliveries delivered;
    TTML::CParser parser;

    explicit SyncParser(int mode = 1) { parser.Initialize(mode, &Deliveries::Callback, &delivered); }
    ~SyncParser() { parser.Destroy(); }

    int Run(const std::string& xml, int transport = -1, int* resolved = nullptr)
    {
        return parser.ProcessRecord(MakeRecord(xml, transport), resolved);
    }
    TTML::CSubtitleInfo* Last() { return delivered.docs.empty() ? nullptr : delivered.docs.back().get(); }
};

}  // namespace ParserTest

#endif
