// Inputs the parse fuzz target (Fuzz/FuzzParse.cpp) once failed on, minimised
// and kept in its input format under data/fuzz. Each file is named
// <what>.<result>.fuzz and must give that result code; the fault itself (a
// crash, a leak or a sanitizer report) shows in the sanitizer builds.

#include "../../Fuzz/FuzzParseInput.h"
#include "ParserTestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ParserTest;

namespace {

const std::string kDir = std::string(INTERTITLE_SOURCE_DIR) + "/Tests/Parser/data/fuzz/";

class FuzzRegression : public ::testing::TestWithParam<std::string> {};

TEST_P(FuzzRegression, GivesItsResult)
{
    const std::string name = GetParam();
    const std::string stem = name.substr(0, name.size() - 5);
    const int expected = std::stoi(stem.substr(stem.find_last_of('.') + 1));
    const std::string data = ReadFile(kDir + name);

    int mode = 0;
    TTML::SubRawData* pRecord = TTML::MakeFuzzRecord(reinterpret_cast<const uint8_t*>(data.data()), data.size(), mode);
    ASSERT_NE(nullptr, pRecord) << name << " is too short";
    SyncParser sync(mode);
    EXPECT_EQ(expected, sync.parser.ProcessRecord(pRecord));
    if (TTML::CSubtitleInfo* pInfo = sync.Last()) {
        for (const auto& interval : Intervals(*pInfo))
            ValuesIn(*pInfo, interval);
    }
}

INSTANTIATE_TEST_SUITE_P(Parser, FuzzRegression, ::testing::ValuesIn(SampleFiles(kDir, ".fuzz")),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             std::string id = info.param.substr(0, info.param.find('.'));
                             std::replace_if(id.begin(), id.end(), [](char c) { return !isalnum(c); }, '_');
                             return id;
                         });

}  // namespace
