#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

#include "CImageData.h"
#include "LogCapture.h"
#include "PngMaker.h"
#include "RowPrinter.h"

using namespace TTML;

namespace {

// The largest side in either direction is still an image.
TEST(ImageDataTest, CompletePngKeepsItsBytesAndSize)
{
    for (auto size : {std::make_pair(5u, 3u), std::make_pair(CImageData::kMaxSide, 1u),
                      std::make_pair(1u, CImageData::kMaxSide)}) {
        std::string png = MakePng(size.first, size.second);
        LogCapture log;
        auto image = CImageData::FromPng("1.png", png.data(), png.size());
        ASSERT_TRUE(image) << log.Dump();
        EXPECT_EQ(size, std::make_pair(image->GetWidth(), image->GetHeight()));
        EXPECT_EQ("1.png", image->GetReference());
        unsigned int bytes = 0;
        const unsigned char* buffer = image->GetBuffer(&bytes);
        ASSERT_EQ(png.size(), bytes);
        EXPECT_EQ(0, std::memcmp(png.data(), buffer, bytes));
        EXPECT_EQ(buffer, image->GetBuffer(nullptr)) << "a null size is allowed";
    }
}

struct RefusedCase {
    const char* name;
    std::function<std::string()> make;
    const char* why;  // expected end of the warning after "refused: "
};

std::string Cut(size_t keep)
{
    return MakePng(4, 4).substr(0, keep);
}

const char* const kCorrupt = "corrupt or truncated PNG";

size_t IendAt()
{
    return FindChunk(MakePng(4, 4), "IEND");
}

class ImageRefusedTest : public ::testing::TestWithParam<RefusedCase> {};

TEST_P(ImageRefusedTest, GivesNoImageAndSaysWhy)
{
    const RefusedCase& c = GetParam();
    std::string bytes = c.make();
    LogCapture log;
    EXPECT_FALSE(CImageData::FromPng("ref7", bytes.data(), bytes.size()));
    EXPECT_EQ(1, log.CountContaining(std::string("Image \"ref7\" refused: ") + c.why, DLOG_WARN)) << log.Dump();
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ImageRefusedTest,
    ::testing::Values(
        RefusedCase{"Empty", [] { return std::string(); }, "no data"},
        RefusedCase{"Text", [] { return std::string("<tt xmlns=\"http://www.w3.org/ns/ttml\"/>"); }, "not a PNG file"},
        RefusedCase{"SignatureOnly", [] { return Cut(8); }, kCorrupt},
        RefusedCase{"CutInPixels", [] { return Cut(IendAt() - 6); }, kCorrupt},
        RefusedCase{"CutInIendChecksum", [] { return Cut(IendAt() + 10); }, kCorrupt},
        RefusedCase{"PixelChecksumWrong", [] { return Flipped(MakePng(4, 4), "IDAT", 9, 0x55); }, kCorrupt},
        RefusedCase{"BadColourType", [] { return Flipped(MakePng(4, 4), "IHDR", 17, 5); }, kCorrupt},
        RefusedCase{"ZeroWidth", [] { return ClaimingSize(0, 4); }, "size 0x4 out of range"},
        RefusedCase{"ZeroHeight", [] { return ClaimingSize(4, 0); }, "size 4x0 out of range"},
        RefusedCase{"TooWide", [] { return ClaimingSize(CImageData::kMaxSide + 1, 4); }, "size 8193x4 out of range"},
        RefusedCase{"TooTall", [] { return ClaimingSize(4, CImageData::kMaxSide + 1); }, "size 4x8193 out of range"},
        RefusedCase{"HugeWidth", [] { return ClaimingSize(0x7fffffff, 4); }, "size 2147483647x4 out of range"}),
    TTMLTest::RowName());

TEST(ImageDataTest, NullAndOversizedBuffersAreRefusedWithoutReading)
{
    LogCapture log;
    EXPECT_FALSE(CImageData::FromPng("a", nullptr, 100));
    EXPECT_TRUE(log.Has("Image \"a\" refused: no data", DLOG_WARN));
    // The size alone decides: the buffer behind it is never touched.
    char one = 0;
    EXPECT_FALSE(CImageData::FromPng("b", &one, CImageData::kMaxBytes + 1));
    EXPECT_TRUE(log.HasContaining("Image \"b\" refused: 33554433 bytes", DLOG_WARN)) << log.Dump();
}

}  // namespace
