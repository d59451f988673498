// The public EBU-TT-D and IMSC 1 image samples through the whole parser path.
// Most EBU-TT-D samples declare IMSC 1 text after EBU-TT-D, and the last
// declaration decides, so they are walked by the IMSC 1 text rules; each
// sample also runs once with its IMSC 1 declaration removed, which leaves it
// EBU-TT-D. Both walks must give the same hand-checked intervals.

#include "CSubSampleBuilder.h"
#include "LogCapture.h"
#include "ParserTestUtil.h"

#include <gtest/gtest.h>

#include <map>

using namespace ParserTest;

namespace {

const std::string kSampleDir = std::string(INTERTITLE_TESTDATA) + "/ebu-tt-d/ttml";
const std::string kImscDeclaration =
    "<ebuttm:conformsToStandard>http://www.w3.org/ns/ttml/profile/imsc1/text</ebuttm:conformsToStandard>";

// Intervals, last end and the texts of one interval, worked out by hand.
struct Known {
    const char* intervals;
    TTML::CSubtitleInfo::TimeInterval probe;
    const char* texts;  // shown in `probe`, in document order, '|'-joined
};

const std::map<std::string, Known> kKnown = {
    // Span, line break, span in each paragraph; the first span keeps its
    // single trailing space.
    {"br-in-p-001-ttml.xml", {"10000-20000 22000-30000 last 30000", {10000, 20000}, "One |\n|line Subtitle."}},
    // Times on the spans only, both in one paragraph.
    {"timing-on-span-002-ttml.xml", {"10000-20000 22000-30000 last 30000", {22000, 30000}, "One line Subtitle."}},
    // Two divisions shown at once.
    {"content-in-multiple-div-001-ttml.xml",
     {"10000-20000 22000-30000 last 30000", {10000, 20000},
      "A line within one div element.|A line within another div element."}},
    // Rows overlapping in two groups: 16-20, 18-22, 20-24 and 28-32, 30-34, 32-36.
    {"cumulative-rows-001-ttml.xml",
     {"16000-18000 18000-20000 20000-22000 22000-24000 28000-30000 30000-32000 32000-34000 34000-36000 last 36000",
      {20000, 22000}, "This is the second line.|This is the third and last line."}},
    // Four regions appearing every 2 s, each shown for 10 s.
    {"multiple-regions-sequence-001-ttml.xml",
     {"10000-12000 12000-14000 14000-16000 16000-20000 20000-22000 22000-24000 24000-26000 last 26000",
      {16000, 20000}, "start/before|end/before|start/after|end/after"}},
    // xml:space="preserve" on the root reaches the text through body, and the
    // blanks between the paragraph's tags are kept as text of their own.
    {"space-preserve-001-ttml.xml",
     {"10000-20000 22000-30000 last 30000", {10000, 20000}, " |One \nline Subtitle.| "}},
};

// As delivered, a sample is accepted by whichever profile its last
// declaration names; with the IMSC 1 declaration removed, as EBU-TT-D.
TEST(EbuSamples, EveryDocumentAsDeliveredAndAsEbu)
{
    const std::vector<std::string> files = SampleFiles(kSampleDir, "");
    if (files.empty())
        GTEST_SKIP() << "EBU-TT-D samples not found in " << kSampleDir
                     << " (set INTERTITLE_TESTDATA to the shared test data folder)";
    // One parser for all: the cached profiles take turns.
    SyncParser p(1);
    size_t known = 0;
    for (const auto& name : files) {
        const std::string delivered = ReadFile(kSampleDir + "/" + name);
        const size_t imsc = delivered.rfind(kImscDeclaration);
        const bool imscLast =
            imsc != std::string::npos && delivered.find("<ebuttm:conformsToStandard>", imsc + 1) == std::string::npos;
        std::string ebu = delivered;
        for (size_t at; (at = ebu.find(kImscDeclaration)) != std::string::npos;)
            ebu.erase(at, kImscDeclaration.size());
        for (bool asEbu : {false, true}) {
            SCOPED_TRACE(name + (asEbu ? " as EBU-TT-D" : " as delivered"));
            LogCapture log;
            int resolved = -2;
            ASSERT_EQ(p.Run(asEbu ? ebu : delivered, -1, &resolved), TTML::ERR_NONE) << log.Dump();
            EXPECT_EQ(resolved, imscLast && !asEbu ? 0 : 2);
            auto k = kKnown.find(name);
            if (k != kKnown.end()) {
                std::string spans;
                for (const auto& i : Intervals(*p.Last()))
                    spans += std::to_string(i.first) + "-" + std::to_string(i.second) + " ";
                EXPECT_EQ(spans + "last " + std::to_string(p.Last()->GetLastEndTime()), k->second.intervals);
                EXPECT_EQ(ValuesIn(*p.Last(), k->second.probe), k->second.texts);
                ++known;
            }
        }
    }
    EXPECT_EQ(known, 2 * kKnown.size());
    EXPECT_EQ(p.delivered.Count(), 2 * files.size());
}

// ---- IMSC 1 image documents ----------------------------------------------

const std::filesystem::path kImageDir = std::filesystem::path(INTERTITLE_TESTDATA) / "imsc1" / "ttml";

// Hand-checked from the document and the size its PNG header states.
const std::map<std::string, std::string> kImageResults = {
    {"altText/altText1.ttml", "1000-9000:altText1-img.png=160x120 extent=320px 240px aspect="},
    {"aspectRatio/aspectRatio3.ttml", "1000-9000:aspectRatio3-img.png=160x120 extent=160px 120px aspect=4 3"},
    {"aspectRatio/aspectRatio4.ttml", "1000-9000:aspectRatio4-img.png=160x90 extent=160px 90px aspect=16 9"},
    {"aspectRatio/aspectRatio6.ttml", "1000-9000:aspectRatio6-img.png=160x120 extent=160px 120px aspect="},
};

// Every image document is accepted as such and everything it shows is a
// decoded image: a div without one would be a walk that lost its reference.
TEST(ImageSamples, EveryDocumentShowsDecodedImages)
{
    size_t documents = 0, known = 0;
    for (const std::string& file : SampleFiles(kImageDir, ".ttml")) {
        const std::string xml = ReadFile(kImageDir / file);
        if (xml.find("ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/image\"") == std::string::npos)
            continue;
        SCOPED_TRACE(file);
        ++documents;
        LogCapture log;
        SyncParser p;
        TTML::SubRawData* record = MakeRecord(xml);
        // Every PNG beside the document, packed as a source sends them.
        const std::filesystem::path dir = (kImageDir / file).parent_path();
        std::vector<std::string> pngs;
        for (const std::string& png : SampleFiles(dir, ".png"))
            pngs.push_back((dir / png).string());
        EXPECT_TRUE(pngs.empty() || TTML::CSubSampleBuilder::BuildFromFiles(pngs, record->subSampleData));
        int resolved = -2;
        ASSERT_EQ(p.parser.ProcessRecord(record, &resolved), TTML::ERR_NONE) << log.Dump();
        EXPECT_EQ(resolved, 1);
        const TTML::CSubtitleInfo& info = *p.Last();
        const std::string shown = ImagesShown(info);
        EXPECT_NE(shown, "");
        EXPECT_EQ(shown.find(":none"), std::string::npos) << shown;
        if (kImageResults.count(file)) {
            ++known;
            EXPECT_EQ(shown + " extent=" + info.GetTTExtent() + " aspect=" + info.GetAspectRatio(),
                      kImageResults.at(file));
        }
    }
    if (documents == 0)
        GTEST_SKIP() << "IMSC 1 image documents not found in " << kImageDir;
    EXPECT_EQ(known, kImageResults.size());
}

}  // namespace
