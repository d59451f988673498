#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "CImageData.h"
#include "LogCapture.h"
#include "PngMaker.h"

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

std::string Cut(size_t keep)
{
    return MakePng(4, 4).substr(0, keep);
}

// Each refused input gives no image and one warning that says why.
TEST(ImageDataTest, RefusedInputsGiveNoImageAndSayWhy)
{
    const char* const corrupt = "corrupt or truncated PNG";
    const size_t iend = FindChunk(MakePng(4, 4), "IEND");
    const std::pair<std::string, std::string> inputs[] = {
        {"", "no data"},
        {"<tt xmlns=\"http://www.w3.org/ns/ttml\"/>", "not a PNG file"},
        {Cut(8), corrupt},
        {Cut(iend + 10), corrupt},  // in IEND's checksum
        {Flipped(MakePng(4, 4), "IHDR", 17, 5), corrupt},  // colour type
        {ClaimingSize(0, 4), "size 0x4 out of range"},
        {ClaimingSize(4, 0), "size 4x0 out of range"},
        {ClaimingSize(CImageData::kMaxSide + 1, 4), "size 8193x4 out of range"},
        {ClaimingSize(4, CImageData::kMaxSide + 1), "size 4x8193 out of range"},
    };
    for (const auto& in : inputs) {
        LogCapture log;
        EXPECT_FALSE(CImageData::FromPng("ref7", in.first.data(), in.first.size()));
        EXPECT_EQ(1, log.CountContaining("Image \"ref7\" refused: " + in.second, DLOG_WARN)) << log.Dump();
    }
}

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
