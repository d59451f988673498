// The public EBU-TT-D and IMSC 1 image samples through the whole parser path.
// Most EBU-TT-D samples declare IMSC 1 text after EBU-TT-D, and the last
// declaration decides, so they are walked by the IMSC 1 text rules; each
// sample also runs once with its IMSC 1 declaration removed, which leaves it
// EBU-TT-D. Both walks must give the same hand-checked intervals.

#include "CImageData.h"
#include "CSubSampleBuilder.h"
#include "LogCapture.h"
#include "ParserTestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

using namespace ParserTest;

namespace {

const std::string kSampleDir = std::string(INTERTITLE_TESTDATA) + "/ebu-tt-d/ttml";
const std::string kImscDeclaration =
    "<ebuttm:conformsToStandard>http://www.w3.org/ns/ttml/profile/imsc1/text</ebuttm:conformsToStandard>";

std::string ReadSample(const std::string& name)
{
    return ReadFile(kSampleDir + "/" + name);
}

#define SKIP_WITHOUT_SAMPLES()                                                                      \
    if (SampleFiles(kSampleDir, "").empty())                                                        \
        GTEST_SKIP() << "EBU-TT-D samples not found in " << kSampleDir                              \
                     << " (set INTERTITLE_TESTDATA to the shared test data folder)"

// As delivered: accepted by whichever profile the last declaration names.
TEST(EbuSamples, EveryDocumentAsDelivered)
{
    SKIP_WITHOUT_SAMPLES();
    SyncParser p(1);
    size_t count = 0;
    for (const auto& name : SampleFiles(kSampleDir, "")) {
        std::string xml = ReadSample(name);
        ASSERT_FALSE(xml.empty()) << name;
        LogCapture log;
        int resolved = -2;
        int result = p.Run(xml, -1, &resolved);
        size_t imsc = xml.rfind(kImscDeclaration);
        bool declaresImscLast =
            imsc != std::string::npos && xml.find("<ebuttm:conformsToStandard>", imsc + 1) == std::string::npos;
        EXPECT_EQ(resolved, declaresImscLast ? 0 : 2) << name;
        EXPECT_EQ(result, TTML::ERR_NONE) << name << "\n" << log.Dump();
        ++count;
    }
    EXPECT_EQ(count, p.delivered.Count());
}

// Expected intervals and texts worked out by hand from each document.
struct SampleCase {
    const char* file;
    IntervalList intervals;
    unsigned long long lastEnd;
    TTML::CSubtitleInfo::TimeInterval probe;  // one of the intervals
    std::string texts;                        // texts shown in it, in document order, '|'-joined
};

void PrintTo(const SampleCase& c, std::ostream* os)
{
    *os << c.file;
}

const SampleCase kSamples[] = {
    // Span, line break, span in each paragraph; the first span keeps its
    // single trailing space.
    {"br-in-p-001-ttml.xml", {{10000, 20000}, {22000, 30000}}, 30000, {10000, 20000}, "One |\n|line Subtitle."},
    // Times on the spans only, both in one paragraph.
    {"timing-on-span-002-ttml.xml", {{10000, 20000}, {22000, 30000}}, 30000, {22000, 30000}, "One line Subtitle."},
    // Two divisions shown at once.
    {"content-in-multiple-div-001-ttml.xml", {{10000, 20000}, {22000, 30000}}, 30000, {10000, 20000},
     "A line within one div element.|A line within another div element."},
    // Rows overlapping in two groups: 16-20, 18-22, 20-24 and 28-32, 30-34, 32-36.
    {"cumulative-rows-001-ttml.xml",
     {{16000, 18000}, {18000, 20000}, {20000, 22000}, {22000, 24000},
      {28000, 30000}, {30000, 32000}, {32000, 34000}, {34000, 36000}},
     36000, {20000, 22000}, "This is the second line.|This is the third and last line."},
    // Four regions appearing every 2 s, each shown for 10 s.
    {"multiple-regions-sequence-001-ttml.xml",
     {{10000, 12000}, {12000, 14000}, {14000, 16000}, {16000, 20000},
      {20000, 22000}, {22000, 24000}, {24000, 26000}},
     26000, {16000, 20000}, "start/before|end/before|start/after|end/after"},
    // xml:space="preserve" on the root reaches the text through body, and the
    // blanks between the paragraph's tags are kept as text of their own.
    {"space-preserve-001-ttml.xml", {{10000, 20000}, {22000, 30000}}, 30000, {10000, 20000},
     " |One \nline Subtitle.| "},
};

class EbuSampleIntervals : public ::testing::TestWithParam<SampleCase> {};

// The IMSC 1 declaration removed, a sample is walked as EBU-TT-D.
void ExpectHandDerived(const SampleCase& c, bool asDelivered)
{
    SKIP_WITHOUT_SAMPLES();
    std::string xml = ReadSample(c.file);
    const int expectedProfile = asDelivered && xml.find(kImscDeclaration) != std::string::npos ? 0 : 2;
    for (size_t at; !asDelivered && (at = xml.find(kImscDeclaration)) != std::string::npos;)
        xml.erase(at, kImscDeclaration.size());
    SyncParser p(1);
    int resolved = -2;
    ASSERT_EQ(p.Run(xml, -1, &resolved), TTML::ERR_NONE);
    EXPECT_EQ(resolved, expectedProfile);
    ASSERT_NE(p.Last(), nullptr);
    EXPECT_EQ(Intervals(*p.Last()), c.intervals);
    EXPECT_EQ(p.Last()->GetLastEndTime(), c.lastEnd);
    EXPECT_EQ(TextsIn(*p.Last(), c.probe), c.texts);
}

TEST_P(EbuSampleIntervals, MatchHandDerivedValuesAsEbu)
{
    ExpectHandDerived(GetParam(), false);
}

TEST_P(EbuSampleIntervals, MatchHandDerivedValuesAsDelivered)
{
    ExpectHandDerived(GetParam(), true);
}

INSTANTIATE_TEST_SUITE_P(Parser, EbuSampleIntervals, ::testing::ValuesIn(kSamples),
                         [](const ::testing::TestParamInfo<SampleCase>& info) {
                             std::string n = info.param.file;
                             n = n.substr(0, n.find("-ttml"));
                             std::replace(n.begin(), n.end(), '-', '_');
                             return n;
                         });

// ---- IMSC 1 image documents ----------------------------------------------

const std::filesystem::path kImageDir = std::filesystem::path(INTERTITLE_TESTDATA) / "imsc1" / "ttml";

// Sub-sample data of every PNG beside the document, as a source would send it.
std::string PackedImagesBeside(const std::filesystem::path& document)
{
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(document.parent_path())) {
        if (entry.path().extension() == ".png")
            paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    std::string data;
    EXPECT_TRUE(paths.empty() || TTML::CSubSampleBuilder::BuildFromFiles(paths, data));
    return data;
}

// Hand-checked from the document and the size its PNG header states.
const std::map<std::string, std::string> kImageResults = {
    {"altText/altText1.ttml", "1000-9000 altText1-img.png=160x120; extent=320px 240px aspect="},
    {"aspectRatio/aspectRatio3.ttml", "1000-9000 aspectRatio3-img.png=160x120; extent=160px 120px aspect=4 3"},
    {"aspectRatio/aspectRatio4.ttml", "1000-9000 aspectRatio4-img.png=160x90; extent=160px 90px aspect=16 9"},
    {"aspectRatio/aspectRatio6.ttml", "1000-9000 aspectRatio6-img.png=160x120; extent=160px 120px aspect="},
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
        record->subSampleData = PackedImagesBeside(kImageDir / file);
        int resolved = -2;
        ASSERT_EQ(p.parser.ProcessRecord(record, &resolved), TTML::ERR_NONE) << log.Dump();
        EXPECT_EQ(resolved, 1);
        const TTML::CSubtitleInfo& info = *p.Last();
        std::string shown;
        for (const auto& key : Intervals(info)) {
            std::list<TTML::CElementSPTR> elements;
            info.GetElementListForInterval(key, elements);
            for (const auto& e : elements) {
                std::shared_ptr<TTML::CImageData> image = e->IsImageProfile() ? e->GetImageData() : nullptr;
                shown += std::to_string(key.first) + "-" + std::to_string(key.second) + " " +
                         (image ? image->GetReference() + "=" + std::to_string(image->GetWidth()) + "x" +
                                      std::to_string(image->GetHeight())
                                : "<no image>") +
                         "; ";
            }
        }
        EXPECT_NE(shown, "");
        EXPECT_EQ(shown.find("<no image>"), std::string::npos) << shown;
        if (kImageResults.count(file)) {
            ++known;
            EXPECT_EQ(shown + "extent=" + info.GetTTExtent() + " aspect=" + info.GetAspectRatio(),
                      kImageResults.at(file));
        }
    }
    if (documents == 0)
        GTEST_SKIP() << "IMSC 1 image documents not found in " << kImageDir;
    EXPECT_EQ(known, kImageResults.size());
}

}  // namespace
