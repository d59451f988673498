#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "CSubSampleBuilder.h"
#include "CSubSampleImageUtil.h"
#include "LogCapture.h"
#include "PngMaker.h"

using namespace TTML;

namespace {

const std::string kSourceData = INTERTITLE_SOURCE_DIR "/Tests/Source/data";

std::string Bytes(const std::shared_ptr<CImageData>& image)
{
    unsigned int size = 0;
    const unsigned char* buffer = image->GetBuffer(&size);
    return std::string(reinterpret_cast<const char*>(buffer), size);
}

// Three entries: two good images of different sizes and one corrupt one.
class SubSampleImageUtilTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_first = MakePng(2, 3);
        m_second = MakePng(7, 5);
        std::string broken = m_second.substr(0, m_second.size() / 2);
        ASSERT_TRUE(CSubSampleBuilder::Build({{"a.png", m_first}, {"b.png", m_second}, {"c.png", broken}}, m_data));
    }

    std::string m_first;
    std::string m_second;
    std::string m_data;
};

// Sub-samples count from 1; a folder in the document's reference is ignored,
// the name is matched exactly.
TEST_F(SubSampleImageUtilTest, FindsImagesByPositionAndByName)
{
    std::string copy = m_data;
    CSubSampleImageUtil util(m_data);
    EXPECT_EQ(copy, m_data) << "the caller's data is left as it was";
    ASSERT_EQ(3u, util.GetCount());
    EXPECT_EQ("/b.png/", util.GetName(0) + "/" + util.GetName(2) + "/" + util.GetName(4)) << "names count from 1";

    const std::pair<const char*, const std::string*> lookups[] = {
        {"1", &m_first}, {"2", &m_second}, {"002", &m_second}, {"a.png", &m_first}, {"images/b.png", &m_second},
        {"0", nullptr}, {"4", nullptr}, {"4294967297", nullptr}, {"#img1", nullptr}, {"", nullptr},
        {"d.png", nullptr}, {"a.png/", nullptr}, {"A.PNG", nullptr}};
    for (const auto& l : lookups) {
        LogCapture log;
        auto image = util.GetImage(l.first);
        EXPECT_EQ(l.second ? *l.second : "<none>", image ? Bytes(image) : "<none>") << l.first;
        EXPECT_EQ(!l.second, log.Has(std::string("Image \"") + l.first + "\" not found in the sub-sample data"))
            << l.first << "\n" << log.Dump();
    }
}

TEST_F(SubSampleImageUtilTest, CorruptEntryIsRefusedOnceAndStaysEmpty)
{
    CSubSampleImageUtil util(m_data);
    LogCapture log;
    EXPECT_FALSE(util.GetImage("3"));
    EXPECT_EQ(1, log.CountContaining("Image \"3\" refused: corrupt or truncated PNG", DLOG_WARN)) << log.Dump();
    EXPECT_FALSE(util.GetImage("c.png"));
    EXPECT_EQ(1, log.CountContaining("refused")) << "the verdict is kept";
    EXPECT_TRUE(util.GetImage("1")) << "a bad entry does not spoil the others";
}

TEST_F(SubSampleImageUtilTest, RepeatedLookupsShareOneImageUntilReleased)
{
    CSubSampleImageUtil util(m_data);
    auto first = util.GetImage("2");
    ASSERT_TRUE(first);
    EXPECT_EQ(first, util.GetImage("b.png"));
    EXPECT_EQ(2, first.use_count()) << "the util keeps one reference";
    util.ReleaseImages();
    EXPECT_EQ(1, first.use_count());
    auto again = util.GetImage("2");
    ASSERT_TRUE(again);
    EXPECT_NE(first, again) << "decoded afresh";
    util.Clear();
    EXPECT_EQ(0u, util.GetCount());
    EXPECT_FALSE(util.GetImage("1"));
    EXPECT_EQ(m_second + m_second, Bytes(first) + Bytes(again)) << "holders keep their images past the data";
    util.ReleaseImages();  // both are safe on an emptied util
    util.Clear();
    // No data at all is no images, without a complaint.
    std::string none;
    LogCapture log;
    EXPECT_EQ(0u, CSubSampleImageUtil(none).GetCount());
    EXPECT_FALSE(log.HasContaining("refused"));
}

void PutU32(std::string& data, size_t pos, size_t value)
{
    for (int i = 0; i < 4; ++i)
        data[pos + i] = static_cast<char>((value >> (8 * i)) & 0xff);
}

// Hostile data: each edit of a valid two-entry string is refused whole, with
// one warning. Layout: header 12, entry 1 name length at 12, name "a.png" at
// 16, image length at 21, image at 25, entry 2 from 25 + the first's length.
TEST(SubSampleHostileTest, IsRefusedWholeWithAWarning)
{
    const std::string first = MakePng(2, 2), second = MakePng(3, 3);
    std::string valid;
    ASSERT_TRUE(CSubSampleBuilder::Build({{"a.png", first}, {"b.png", second}}, valid));
    using Edit = std::function<void(std::string&)>;
    const std::pair<Edit, const char*> edits[] = {
        {[](std::string& d) { d[0] = 'J'; }, "no ISSD header"},
        {[](std::string& d) { d = MakePng(2, 2); }, "no ISSD header"},
        {[](std::string& d) { d.resize(11); }, "no ISSD header"},
        {[](std::string& d) { PutU32(d, 4, 2); }, "version 2"},
        {[](std::string& d) { PutU32(d, 8, 0xffffffffu); }, "4294967295 entries"},
        {[](std::string& d) { PutU32(d, 8, 3); }, "entry 3 truncated"},
        {[](std::string& d) { PutU32(d, 8, 1); }, "bytes after the last entry"},
        {[](std::string& d) { d.push_back('\0'); }, "1 bytes after the last entry"},
        {[](std::string& d) { PutU32(d, 12, 0xfffffffcu); }, "entry 1 name length"},
        {[](std::string& d) { d.resize(18); }, "entry 1 name length"},
        {[](std::string& d) { PutU32(d, 21, 0xffffffffu); }, "entry 1 image length"},
        {[](std::string& d) { PutU32(d, 21, d.size() - 21 - 3); }, "entry 1 image length"},  // one past the end
        {[&](std::string& d) { d.resize(25 + first.size() + 2); }, "entry 2 truncated"},
        {[](std::string& d) { d.pop_back(); }, "entry 2 image length"},
    };
    for (const auto& edit : edits) {
        std::string data = valid;
        edit.first(data);
        // A copy sized exactly, so a read past the end is caught by the sanitizer.
        std::string exact(data.begin(), data.end());
        exact.shrink_to_fit();
        LogCapture log;
        CSubSampleImageUtil util(exact);
        EXPECT_EQ(1, log.CountContaining("Sub-sample data refused: ", DLOG_WARN)) << log.Dump();
        EXPECT_TRUE(log.HasContaining(edit.second, DLOG_WARN)) << log.Dump();
        EXPECT_EQ(0u, util.GetCount());
        EXPECT_FALSE(util.GetImage("1") || util.GetImage("a.png"));
    }
}

TEST(SubSampleBuilderTest, RefusesWhatTheReaderWouldRefuse)
{
    std::string data = "left over";
    LogCapture log;
    EXPECT_FALSE(CSubSampleBuilder::BuildFromFiles({kSourceData + "/img1.png", kSourceData + "/nothere.png"}, data));
    EXPECT_TRUE(log.Has("Cannot read image file " + kSourceData + "/nothere.png", DLOG_WARN)) << log.Dump();
    EXPECT_TRUE(data.empty());

    std::string longName(CSubSampleImageUtil::kMaxNameLength + 1, 'n');
    EXPECT_FALSE(CSubSampleBuilder::Build({{longName, "x"}}, data));
    EXPECT_TRUE(log.HasContaining("Sub-sample image name too long", DLOG_WARN));

    std::vector<CSubSampleBuilder::Entry> many(CSubSampleImageUtil::kMaxEntries + 1);
    EXPECT_FALSE(CSubSampleBuilder::Build(many, data));
    EXPECT_TRUE(log.Has("Too many sub-sample images: 4097", DLOG_WARN));

    // The limits themselves are fine, and empty entries survive the trip.
    std::vector<CSubSampleBuilder::Entry> most(CSubSampleImageUtil::kMaxEntries);
    most.back().name = std::string(CSubSampleImageUtil::kMaxNameLength, 'z');
    ASSERT_TRUE(CSubSampleBuilder::Build(most, data));
    CSubSampleImageUtil util(data);
    EXPECT_EQ(CSubSampleImageUtil::kMaxEntries, util.GetCount());
    EXPECT_EQ(most.back().name, util.GetName(CSubSampleImageUtil::kMaxEntries));
    EXPECT_FALSE(util.GetImage("1"));
    EXPECT_TRUE(log.Has("Image \"1\" refused: no data", DLOG_WARN));
}

}  // namespace
