#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <ostream>
#include <string>

#include "CImageData.h"
#include "LogCapture.h"
#include "PngMaker.h"
#include "RowPrinter.h"

using namespace TTML;

namespace {

TEST(ImageDataTest, CompletePngKeepsItsBytesAndSize)
{
    std::string png = MakePng(5, 3);
    ASSERT_FALSE(png.empty());
    LogCapture log;
    auto image = CImageData::FromPng("1.png", png.data(), png.size());
    ASSERT_TRUE(image) << log.Dump();
    EXPECT_EQ(5u, image->GetWidth());
    EXPECT_EQ(3u, image->GetHeight());
    EXPECT_EQ("1.png", image->GetReference());
    unsigned int size = 0;
    const unsigned char* buffer = image->GetBuffer(&size);
    ASSERT_EQ(png.size(), size);
    EXPECT_EQ(0, std::memcmp(png.data(), buffer, size));
    EXPECT_EQ(buffer, image->GetBuffer(nullptr)) << "a null size is allowed";
    EXPECT_FALSE(log.HasContaining("refused"));
}

TEST(ImageDataTest, LargestSideIsAccepted)
{
    std::string png = MakePng(CImageData::kMaxSide, 1);
    ASSERT_FALSE(png.empty());
    auto image = CImageData::FromPng("wide", png.data(), png.size());
    ASSERT_TRUE(image);
    EXPECT_EQ(CImageData::kMaxSide, image->GetWidth());
}

struct RefusedCase {
    const char* name;
    std::function<std::string()> make;
    const char* why;  // expected end of the warning after "refused: "
};

void PrintTo(const RefusedCase& c, std::ostream* os) { *os << c.name; }

std::string Cut(size_t keep)
{
    std::string png = MakePng(4, 4);
    return png.substr(0, keep);
}

std::string Patched(const char* chunk, size_t offset, char flip)
{
    std::string png = MakePng(4, 4);
    size_t at = FindChunk(png, chunk);
    if (at == std::string::npos)
        return std::string();
    png[at + offset] = static_cast<char>(png[at + offset] ^ flip);
    return png;
}

// Writes a width into IHDR without fixing its checksum: the size check
// must come before libpng's own complaint.
std::string WithWidth(unsigned int width)
{
    std::string png = MakePng(4, 4);
    size_t at = FindChunk(png, "IHDR");
    for (int i = 0; i < 4; ++i)
        png[at + 8 + i] = static_cast<char>((width >> (24 - 8 * i)) & 0xff);
    return png;
}

class ImageRefusedTest : public ::testing::TestWithParam<RefusedCase> {};

TEST_P(ImageRefusedTest, GivesNoImageAndSaysWhy)
{
    const RefusedCase& c = GetParam();
    std::string bytes = c.make();
    LogCapture log;
    auto image = CImageData::FromPng("ref7", bytes.data(), bytes.size());
    EXPECT_FALSE(image);
    EXPECT_EQ(1, log.CountContaining(std::string("Image \"ref7\" refused: ") + c.why, DLOG_WARN)) << log.Dump();
}

size_t IendAt() { return FindChunk(MakePng(4, 4), "IEND"); }

INSTANTIATE_TEST_SUITE_P(
    Cases, ImageRefusedTest,
    ::testing::Values(
        RefusedCase{"Empty", [] { return std::string(); }, "no data"},
        RefusedCase{"Text", [] { return std::string("<tt xmlns=\"http://www.w3.org/ns/ttml\"/>"); }, "not a PNG file"},
        RefusedCase{"SignatureOnly", [] { return Cut(8); }, "corrupt or truncated PNG"},
        RefusedCase{"CutInIhdr", [] { return Cut(20); }, "corrupt or truncated PNG"},
        RefusedCase{"CutInPixels", [] { return Cut(IendAt() - 6); }, "corrupt or truncated PNG"},
        RefusedCase{"CutBeforeIend", [] { return Cut(IendAt()); }, "corrupt or truncated PNG"},
        RefusedCase{"CutInIendChecksum", [] { return Cut(IendAt() + 10); }, "corrupt or truncated PNG"},
        RefusedCase{"PixelChecksumWrong", [] { return Patched("IDAT", 9, 0x55); }, "corrupt or truncated PNG"},
        RefusedCase{"BadColourType", [] { return Patched("IHDR", 17, 5); }, "corrupt or truncated PNG"},
        RefusedCase{"ZeroWidth", [] { return WithWidth(0); }, "size 0x4 out of range"},
        RefusedCase{"TooWide", [] { return WithWidth(CImageData::kMaxSide + 1); }, "size 8193x4 out of range"},
        RefusedCase{"HugeWidth", [] { return WithWidth(0x7fffffff); }, "size 2147483647x4 out of range"}),
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
