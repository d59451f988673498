// The public IMSC 1 image documents through the whole parser path, their
// PNG files packed as the sub-samples a source would send with them.

#include "CImageData.h"
#include "CSubSampleBuilder.h"
#include "LogCapture.h"
#include "ParserTestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

using namespace ParserTest;

namespace {

namespace fs = std::filesystem;

const fs::path kSampleDir = fs::path(INTERTITLE_TESTDATA) / "imsc1" / "ttml";
const char kImageDeclaration[] = "ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/image\"";

// Documents declaring the image profile, as paths relative to kSampleDir.
std::vector<std::string> ImageDocuments()
{
    std::vector<std::string> found;
    for (const std::string& file : SampleFiles(kSampleDir, ".ttml"))
        if (ReadFile(kSampleDir / file).find(kImageDeclaration) != std::string::npos)
            found.push_back(file);
    return found;
}

// Sub-sample data of every PNG beside the document.
std::string PackedImagesBeside(const fs::path& document)
{
    std::vector<std::string> paths;
    for (const auto& entry : fs::directory_iterator(document.parent_path())) {
        if (entry.path().extension() == ".png")
            paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    std::string data;
    EXPECT_TRUE(paths.empty() || TTML::CSubSampleBuilder::BuildFromFiles(paths, data));
    return data;
}

struct Parsed : SyncParser {
    int result = -1;
    int resolved = -2;

    explicit Parsed(const std::string& relative)
    {
        TTML::SubRawData* record = MakeRecord(ReadFile(kSampleDir / relative));
        record->subSampleData = PackedImagesBeside(kSampleDir / relative);
        result = parser.ProcessRecord(record, &resolved);
    }
};

#define SKIP_WITHOUT_SAMPLES()                                                                    \
    if (ImageDocuments().empty())                                                                 \
        GTEST_SKIP() << "IMSC 1 image documents not found in " << kSampleDir                      \
                     << " (set INTERTITLE_TESTDATA to the shared test data folder)"

// Every image document is accepted as such and everything it shows is an
// image: a div without one would be a walk that lost its reference.
TEST(ImageSamples, EveryDocumentShowsDecodedImages)
{
    SKIP_WITHOUT_SAMPLES();
    for (const auto& name : ImageDocuments()) {
        SCOPED_TRACE(name);
        LogCapture log;
        Parsed p(name);
        EXPECT_EQ(p.resolved, 1);
        ASSERT_EQ(p.result, TTML::ERR_NONE) << log.Dump();
        size_t shown = 0;
        for (const auto& key : Intervals(*p.Last())) {
            std::list<TTML::CElementSPTR> elements;
            p.Last()->GetElementListForInterval(key, elements);
            for (const auto& e : elements) {
                EXPECT_TRUE(e->IsImageProfile());
                ++shown;
            }
        }
        EXPECT_GT(shown, 0u);
    }
}

// Hand-checked from each document and the size its PNG header states.
struct SampleCase {
    const char* file;
    TTML::CSubtitleInfo::TimeInterval interval;
    std::string image;  // reference=WxH
    std::string extent;
    std::string aspectRatio;
};

void PrintTo(const SampleCase& c, std::ostream* os)
{
    *os << c.file;
}

const SampleCase kSamples[] = {
    {"altText/altText1.ttml", {1000, 9000}, "altText1-img.png=160x120", "320px 240px", ""},
    {"aspectRatio/aspectRatio3.ttml", {1000, 9000}, "aspectRatio3-img.png=160x120", "160px 120px", "4 3"},
    {"aspectRatio/aspectRatio4.ttml", {1000, 9000}, "aspectRatio4-img.png=160x90", "160px 90px", "16 9"},
    {"aspectRatio/aspectRatio6.ttml", {1000, 9000}, "aspectRatio6-img.png=160x120", "160px 120px", ""},
};

class ImageSampleResult : public ::testing::TestWithParam<SampleCase> {};

TEST_P(ImageSampleResult, MatchesHandDerivedValues)
{
    SKIP_WITHOUT_SAMPLES();
    const SampleCase& c = GetParam();
    Parsed p(c.file);
    ASSERT_EQ(p.result, TTML::ERR_NONE);
    const TTML::CSubtitleInfo& info = *p.Last();
    EXPECT_EQ(Intervals(info), IntervalList{c.interval});
    EXPECT_EQ(info.GetTTExtent(), c.extent);
    EXPECT_EQ(info.GetAspectRatio(), c.aspectRatio);
    std::list<TTML::CElementSPTR> elements;
    info.GetElementListForInterval(c.interval, elements);
    ASSERT_EQ(elements.size(), 1u);
    std::shared_ptr<TTML::CImageData> image = elements.front()->GetImageData();
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->GetReference() + "=" + std::to_string(image->GetWidth()) + "x" +
                  std::to_string(image->GetHeight()),
              c.image);
}

INSTANTIATE_TEST_SUITE_P(Parser, ImageSampleResult, ::testing::ValuesIn(kSamples),
                         [](const ::testing::TestParamInfo<SampleCase>& info) {
                             return fs::path(info.param.file).stem().string();
                         });

}  // namespace
