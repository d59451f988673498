// The public EBU-TT-D samples through the whole parser path. Most of them
// declare IMSC 1 text after EBU-TT-D, and the last declaration decides, so
// they are walked by the IMSC 1 text rules; each sample also runs once with
// its IMSC 1 declaration removed, which leaves it EBU-TT-D. Both walks must
// give the same hand-checked intervals.

#include "LogCapture.h"
#include "ParserTestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>

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

}  // namespace
