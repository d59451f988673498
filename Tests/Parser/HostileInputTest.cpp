// Hostile documents, each made here when the test runs (none is stored), go
// through the parser's whole per-document path: each is either refused with
// the warning that names why, or accepted with the intervals it should have.
// None may crash, run past the watchdog, or need more memory than 25 times
// its size plus 50 MB (peak resident memory of this process).

#include "../Image/PngMaker.h"
#include "CSubSampleBuilder.h"
#include "LogCapture.h"
#include "ParserTestUtil.h"
#include "RowPrinter.h"
#include "TTMLLimits.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>

using namespace ParserTest;
using WalkTest::ClockTime;
namespace Limits = TTML::Limits;

namespace {

struct Input {
    Input(std::string x, std::string s = "") : xml(std::move(x)), subSamples(std::move(s)) {}
    std::string xml;
    std::string subSamples;  // packed images, image profile only
};

struct HostileCase {
    const char* name;
    std::function<Input()> make;  // called when the row runs
    int transport;                // 0 IMSC 1 text, 1 IMSC 1 image, 2 EBU-TT-D
    int result;
    std::string warning;   // a warning containing this, when not empty
    IntervalList intervals;  // of an accepted document
};

std::function<Input()> Doc(const std::string& xml)
{
    return [=] { return Input(xml); };
}

const IntervalList kNone;
const IntervalList kOneToTwo = {{1000, 2000}};

// A document whose div (region r1, `divAttrs`) holds `body`; IMSC 1 text
// when `rootAttrs` declares it.
std::string Div(const std::string& body, const std::string& rootAttrs = "", const std::string& divAttrs = "")
{
    DocParts d;
    d.rootAttrs = "xmlns:foo=\"urn:example:foo\" " + rootAttrs;
    d.body = "<div region=\"r1\" " + divAttrs + ">" + body + "</div>";
    return MakeDoc(d);
}

std::string Imsc(const std::string& body, const std::string& rootAttrs = "", const std::string& divAttrs = "")
{
    return Div(body, "ttp:profile=\"" + std::string(kImscText) + "\" " + rootAttrs, divAttrs);
}

std::string Ebu(const std::string& body)
{
    return Div(body, "ttp:timeBase=\"media\"");
}

const char* const kP = "<p begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p>";

std::string Repeat(const std::string& s, size_t n)
{
    std::string out;
    while (n--)
        out += s;
    return out;
}

std::string WithDoctype(const std::string& doctype, std::string doc = MakeDoc())
{
    return doc.replace(doc.find("<tt "), 0, doctype + "\n");
}

// Every element text reads one internal entity `refs` times, each `size`
// characters long once expanded.
std::string EntityBlowup(size_t size, int refs)
{
    return WithDoctype("<!DOCTYPE tt [<!ENTITY big \"" + std::string(size, 'x') + "\">]>",
                       Ebu("<p begin=\"00:00:01.000\" end=\"00:00:02.000\">" + Repeat("&big;", refs) + "</p>"));
}

std::string BillionLaughs()
{
    std::string dtd = "<!DOCTYPE tt [<!ENTITY l0 \"lol\">";
    for (int i = 1; i < 10; ++i)
        dtd += "<!ENTITY l" + std::to_string(i) + " \"" + Repeat("&l" + std::to_string(i - 1) + ";", 10) + "\">";
    std::string doc = WithDoctype(dtd + "]>");
    return doc.replace(doc.find("Hello"), 5, "&l9;");
}

std::string Nested(int levels)
{
    return Ebu(Repeat("<div>", levels) + kP + Repeat("</div>", levels));
}

// n IMSC paragraphs, the i-th from step*i ms lasting `length` ms, behind a
// comment of `padding` bytes (element budget without elements).
std::string Paragraphs(unsigned n, unsigned step, unsigned length, size_t padding = 0)
{
    std::string ps = padding ? "<!--" + std::string(padding, ' ') + "-->" : "";
    for (unsigned i = 0; i < n; ++i)
        ps += "<p begin=\"" + std::to_string(step * i) + "ms\" end=\"" + std::to_string(step * i + length) +
              "ms\">x</p>";
    return Imsc(ps);
}

// n intervals, the i-th from offset + step*i lasting `length`.
IntervalList Spaced(unsigned n, unsigned long long step, unsigned long long length, unsigned long long offset = 0)
{
    IntervalList v;
    for (unsigned i = 0; i < n; ++i)
        v.emplace_back(offset + step * i, offset + step * i + length);
    return v;
}

// Of Paragraphs(n, 1, 10000): n paragraphs that all overlap, each beginning
// 1 ms after the last and lasting 10 s (about n * n interval entries).
IntervalList StaggeredIntervals(unsigned n)
{
    IntervalList v = Spaced(n - 1, 1, 1);
    v.emplace_back(n - 1, 10000);
    IntervalList tail = Spaced(n - 1, 1, 1, 10000);
    v.insert(v.end(), tail.begin(), tail.end());
    return v;
}

// n one-second EBU-TT-D subtitles two seconds apart (Spaced(n, 2000, 1000,
// 1000)), each in region `regions` cycles through (r0 .. r(regions-1)).
std::string Film(unsigned n, unsigned regions = 1)
{
    DocParts d;
    d.layout.clear();
    for (unsigned r = 0; r < regions; ++r)
        d.layout += "<region xml:id=\"r" + std::to_string(r) + "\" tts:origin=\"10% 10%\" tts:extent=\"80% 80%\"/>";
    d.body = "<div>";
    for (unsigned i = 0; i < n; ++i)
        d.body += "<p region=\"r" + std::to_string(i % regions) + "\" begin=\"" + ClockTime(2000ull * i + 1000) +
                  "\" end=\"" + ClockTime(2000ull * i + 2000) + "\"><span>Subtitle line " + std::to_string(i) +
                  "</span></p>";
    d.body += "</div>";
    return MakeDoc(d);
}

std::string Styles(unsigned n)
{
    DocParts d;
    for (unsigned i = 0; i < n; ++i)
        d.styling += "<style xml:id=\"s" + std::to_string(i) + "\" tts:color=\"white\"/>";
    return MakeDoc(d);
}

std::string TooMany(const char* what, size_t found, size_t limit)
{
    return std::string("Too many ") + what + " in document: " + std::to_string(found) + " (limit " +
           std::to_string(limit) + "); refused";
}

// The image profile: one div from 1 s to 2 s showing `reference`, with
// `png` packed as sub-sample 1 (named 1.png).
Input ImageDoc(const std::string& reference, const std::string& png)
{
    Input in(WalkTest::Doc("<div region=\"r1\" begin=\"1s\" end=\"2s\" smpte:backgroundImage=\"" + reference + "\"/>",
                           "", "<region xml:id=\"r1\" tts:origin=\"0px 0px\" tts:extent=\"1920px 1080px\"/>",
                           kImageRoot + " tts:extent=\"1920px 1080px\""));
    TTML::CSubSampleBuilder::Build({{"1.png", png}}, in.subSamples);
    return in;
}

const char* const kSubset = "Document declares an internal DTD subset: refused";
const char* const kUnreadable = "Unable to create XML DOM!!!";
const char* const kEntries = "Too many interval entries: ";
const int kOk = TTML::ERR_NONE;
const int kRefused = TTML::ERR_INVALID;

const HostileCase kCases[] = {
    // 20 MB of text from a 20 KB document if the entity were expanded.
    {"InternalEntityBlowup", [] { return EntityBlowup(10000, 2000); }, 2, kRefused, kSubset, kNone},
    // libxml2's own guard stops this one while reading.
    {"BillionLaughs", BillionLaughs, 2, kRefused, kUnreadable, kNone},
    {"InternalElementDeclaration", Doc(WithDoctype("<!DOCTYPE tt [<!ELEMENT tt ANY>]>")), 2, kRefused,
     "Document declares an internal DTD subset: refused (1 declarations, limit 0)", kNone},
    {"DoctypeWithoutDeclarations", Doc(WithDoctype("<!DOCTYPE tt []>")), 2, kOk, "", kOneToTwo},
    {"ExternalEntity", Doc(WithDoctype("<!DOCTYPE tt [<!ENTITY x SYSTEM \"file:///etc/passwd\">]>")), 2, kRefused,
     kSubset, kNone},
    // Never loaded: the document reads as if it named none.
    {"ExternalDtd", Doc(WithDoctype("<!DOCTYPE tt SYSTEM \"file:///etc/passwd\">")), 2, kOk, "", kOneToTwo},
    {"XIncludeNotProcessed",
     Doc(Ebu("<p begin=\"00:00:01.000\" end=\"00:00:02.000\"><xi:include xmlns:xi=\"http://www.w3.org/2001/XInclude\""
             " href=\"file:///etc/passwd\" parse=\"text\"/>x</p>")),
     2, kOk, "", kOneToTwo},
    {"MalformedXml", Doc("<tt xmlns=\"http://www.w3.org/ns/ttml\"><body><p begin=\"1s\">x</body>"), 2, kRefused,
     kUnreadable, kNone},
    {"Ucs4Encoding", Doc(std::string("\0\0\0<\0\0\0t\0\0\0t\0\0\0>", 16)), 2, kRefused,
     "xmlEncoding is not supported : ", kNone},
    {"InvalidUtf8", Doc(Ebu("<p begin=\"00:00:01.000\" end=\"00:00:02.000\">\xC3\x28\xFF</p>")), 2, kRefused,
     kUnreadable, kNone},
    {"NestedHundredDeep", Doc(Nested(100)), 2, kRefused, "Document nesting deeper than 64 levels", kNone},
    // libxml2 stops at 256 levels, before the walk sees it.
    {"NestedThousandDeep", Doc(Nested(1000)), 2, kRefused, kUnreadable, kNone},
    {"NestedHundredThousandDeep", [] { return Nested(100000); }, 2, kRefused, kUnreadable, kNone},
    {"OversizedInput",
     [] {
         std::string doc = MakeDoc();
         doc.resize(Limits::kMaxDocumentBytes + 1, ' ');
         return Input(doc);
     },
     2, kRefused,
     "XML data too large: " + std::to_string(Limits::kMaxDocumentBytes + 1) + " bytes (limit " +
         std::to_string(Limits::kMaxDocumentBytes) + ")",
     kNone},
    {"UnknownAttributesEbu", Doc(Ebu("<p foo=\"1\" xml:foo=\"2\" begin=\"00:00:01.000\" end=\"00:00:02.000\">x</p>")),
     2, kOk, "", kOneToTwo},
    {"UnknownAttributesImsc", Doc(Imsc("<p foo:bar=\"1\" unknown=\"2\" begin=\"1s\" end=\"2s\">x</p>")), 0, kOk, "",
     kOneToTwo},
    // 2^64 ms is about 5.1e12 hours.
    {"EbuEndPast2To64Ms", Doc(Ebu("<p begin=\"00:00:01.000\" end=\"99999999999999:00:00.000\">x</p>")), 2, kRefused,
     "Time out of range in end: ", kNone},
    {"ImscBeginPast2To64Ms", Doc(Imsc("<p begin=\"9999999999999h\" end=\"99999999999999h\">x</p>")), 0, kRefused,
     "Time out of range in begin: ", kNone},
    {"ImscTicksPast2To64Ms", Doc(Imsc("<p begin=\"1s\" end=\"99999999999999999999999t\">x</p>")), 0, kRefused,
     "Time out of range in end: ", kNone},
    {"ImscParentPlusChildBeginWraps",
     Doc(Imsc("<p begin=\"3000000000000h\" end=\"3000000000001h\">x</p>", "", "begin=\"3000000000000h\"")), 0,
     kRefused, "Time out of range in begin: parent begin 10800000000000000000 ms", kNone},
    {"ImscLargeParentPlusChildBegin", Doc(Imsc("<p begin=\"1s\" end=\"2s\">x</p>", "", "begin=\"1000000000h\"")), 0,
     kOk, "", {{3600000000001000ULL, 3600000000002000ULL}}},
    // A refused rate leaves the default: 1 tick, 30 frames per second.
    {"ImscTickRateZero", Doc(Imsc("<p begin=\"10t\" end=\"20t\">x</p>", "ttp:tickRate=\"0\"")), 0, kOk,
     "ttp:tickRate out of range (1 to 2147483647 ticks a second): 0; ignored", {{10000, 20000}}},
    {"ImscTickRateNegative", Doc(Imsc("<p begin=\"10t\" end=\"20t\">x</p>", "ttp:tickRate=\"-1\"")), 0, kOk,
     "ttp:tickRate out of range (1 to 2147483647 ticks a second): -1; ignored", {{10000, 20000}}},
    {"ImscTickRateFraction", Doc(Imsc("<p begin=\"10t\" end=\"20t\">x</p>", "ttp:tickRate=\"0.5\"")), 0, kOk,
     "ttp:tickRate out of range (1 to 2147483647 ticks a second): 0.5; ignored", {{10000, 20000}}},
    // The whole number it begins with, as for a rate of 2.
    {"ImscTickRateFractionAboveOne", Doc(Imsc("<p begin=\"10t\" end=\"20t\">x</p>", "ttp:tickRate=\"2.5\"")), 0,
     kOk, "", {{5000, 10000}}},
    {"ImscTickRatePastInt", Doc(Imsc("<p begin=\"10t\" end=\"20t\">x</p>", "ttp:tickRate=\"4294967306\"")), 0, kOk,
     "ttp:tickRate out of range (1 to 2147483647 ticks a second): 4294967306; ignored", {{10000, 20000}}},
    {"ImscFrameRateZero", Doc(Imsc("<p begin=\"45f\" end=\"00:00:02:15\">x</p>", "ttp:frameRate=\"0\"")), 0, kOk,
     "ttp:frameRate must be a whole number above 0: 0; ignored", {{1500, 2500}}},
    {"ImscFrameRateNegative", Doc(Imsc("<p begin=\"45f\" end=\"60f\">x</p>", "ttp:frameRate=\"-25\"")), 0, kOk,
     "ttp:frameRate must be a whole number above 0: -25; ignored", {{1500, 2000}}},
    // Images: refused ones leave the div shown without an image.
    {"PngTruncated", [] { return ImageDoc("1", MakePng(64, 64).substr(0, 100)); }, 1, kOk,
     "Image \"1\" refused: corrupt or truncated PNG", kOneToTwo},
    {"PngCorruptPixels", [] { return ImageDoc("1", Flipped(MakePng(64, 64), "IDAT", 12, 0x55)); }, 1, kOk,
     "Image \"1\" refused: corrupt or truncated PNG", kOneToTwo},
    {"PngHuge", [] { return ImageDoc("1", ClaimingSize(20000, 20000)); }, 1, kOk,
     "Image \"1\" refused: size 20000x20000 out of range", kOneToTwo},
    {"PngDecodedPastLimit", [] { return ImageDoc("1", ClaimingSize(4096, 2160)); }, 1, kOk,
     "Image \"1\" refused: decoded size 35389440 bytes (4096x2160), limit " +
         std::to_string(Limits::kMaxDecodedImageBytes),
     kOneToTwo},
    {"ImageReferenceLeavesPackage", [] { return ImageDoc("../../../etc/passwd", MakePng(4, 4)); }, 1, kOk,
     "Image \"../../../etc/passwd\" not found in the sub-sample data", kOneToTwo},
    // 1,000 x 1,000 entries is the most the split keeps.
    {"OverlappingAtEntryLimit", [] { return Paragraphs(1000, 1, 10000); }, 0, kOk, "", StaggeredIntervals(1000)},
    {"OverlappingPastEntryLimit", [] { return Paragraphs(1001, 1, 10000); }, 0, kRefused, kEntries, kNone},
    {"OverlappingTwentyThousand", [] { return Paragraphs(20000, 1, 10000); }, 0, kRefused, kEntries, kNone},
    // The large valid document, scaled down from 476,000 paragraphs.
    {"LargeValidDocument", [] { return Film(20000); }, 2, kOk, "", Spaced(20000, 2000, 1000, 1000)},
    {"RegionsAtLimit", [] { return Film(Limits::kMaxRegions, Limits::kMaxRegions); }, 2, kOk, "",
     Spaced(Limits::kMaxRegions, 2000, 1000, 1000)},
    {"RegionsPastLimit", [] { return Film(1, Limits::kMaxRegions + 1); }, 2, kRefused,
     TooMany("regions", Limits::kMaxRegions + 1, Limits::kMaxRegions), kNone},
    {"HundredThousandRegions", [] { return Film(100000, 100000); }, 2, kRefused,
     TooMany("regions", 100000, Limits::kMaxRegions), kNone},
    {"StylesPastLimit", [] { return Styles(Limits::kMaxStyles + 1); }, 2, kRefused,
     TooMany("styles", Limits::kMaxStyles + 1, Limits::kMaxStyles), kNone},
    // 8 elements around the line breaks.
    {"LineBreaksPastElementLimit",
     [] { return Ebu("<p begin=\"00:00:01.000\" end=\"00:00:02.000\">" + Repeat("<br/>", 100000) + "</p>"); },
     2, kRefused, "Too many elements in document: 100008 (limit ", kNone},
    {"DenseWithinElementLimit", [] { return Paragraphs(45000, 2, 1); }, 0, kOk, "", Spaced(45000, 2, 1)},
    {"IntervalsPastLimit", [] { return Paragraphs(100001, 2, 3, 4000000); }, 0, kRefused,
     "Too many split intervals: 200001 (limit 200000); refused", kNone},
    {"TwoHundredThousandOverlapping", [] { return Paragraphs(200000, 1, 10000); }, 0, kRefused,
     "Too many elements in document: 400007 (limit ", kNone},
};

// A document that runs away is stopped here, naming its row, instead of
// hanging the suite.
const unsigned kWatchdogSeconds = 60;
char g_watchdogMessage[192];

void OnWatchdog_Cb(int)
{
    (void)!write(STDERR_FILENO, g_watchdogMessage, std::strlen(g_watchdogMessage));
    _exit(3);
}

// Sanitizers multiply heap use (shadow memory, redzones, quarantine), so
// there the bound says nothing; the outcome is still checked.
#ifndef __has_feature
#define __has_feature(x) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || __has_feature(address_sanitizer) || \
    __has_feature(thread_sanitizer)
const bool kMeasureMemory = false;
#else
const bool kMeasureMemory = true;
#endif

long StatusKb(const std::string& key)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.compare(0, key.size(), key) == 0)
            return std::atol(line.c_str() + key.size());
    return -1;
}

// Makes the resident high-water mark the current resident size.
bool ResetPeak()
{
    return static_cast<bool>(std::ofstream("/proc/self/clear_refs") << "5" << std::flush);
}

class HostileInput : public ::testing::TestWithParam<HostileCase> {};

TEST_P(HostileInput, RefusedWithReasonOrAcceptedWithIntervalsInBoundedMemory)
{
    const HostileCase& c = GetParam();
    std::snprintf(g_watchdogMessage, sizeof(g_watchdogMessage), "watchdog: hostile input ran past a minute: %s\n",
                  c.name);
    signal(SIGALRM, OnWatchdog_Cb);
    alarm(kWatchdogSeconds);

    Input in = c.make();
    const size_t size = in.xml.size() + in.subSamples.size();
    LogCapture log;
    IntervalList got;
    int result = -1;
    const bool peakReset = kMeasureMemory && ResetPeak();
    const long before = StatusKb("VmRSS:");
    {
        SyncParser p(1);
        TTML::SubRawData* record = MakeRecord(in.xml, c.transport);
        record->subSampleData = std::move(in.subSamples);
        in = Input("");
        result = p.parser.ProcessRecord(record, nullptr);
        if (p.Last())
            got = Intervals(*p.Last());
        EXPECT_EQ(p.delivered.Count(), c.result == TTML::ERR_NONE ? 1u : 0u);
    }
    const long peak = StatusKb("VmHWM:");
    alarm(0);

    EXPECT_EQ(result, c.result) << log.Dump();
    EXPECT_EQ(got, c.intervals);
    if (!c.warning.empty()) {
        EXPECT_TRUE(log.HasContaining(c.warning, DLOG_WARN)) << log.Dump();
    }
    // A read document leaves no reset of an empty reader behind, not even
    // when the parser goes away.
    if (!log.Has(kUnreadable)) {
        EXPECT_FALSE(log.HasContaining("m_xmlDoc is NULL")) << log.Dump();
    }
    if (peakReset) {
        const double usedMb = (peak - before) / 1024.0;
        const double boundMb = 25.0 * size / (1024.0 * 1024.0) + 50.0;
        std::printf("[ memory ] %-28s %10zu bytes, peak +%7.1f MB (bound %7.1f MB)\n", c.name, size, usedMb,
                    boundMb);
        EXPECT_LE(usedMb, boundMb);
    }
}

INSTANTIATE_TEST_SUITE_P(Parser, HostileInput, ::testing::ValuesIn(kCases), TTMLTest::RowName());

}  // namespace
