// Inputs the parse fuzz target (Fuzz/FuzzParse.cpp) once failed on, minimised
// and kept in its input format under data/fuzz. Each file is named
// <what>.<result>.fuzz and must give that result code; the fault itself (a
// crash, a leak or a sanitizer report) shows in the sanitizer builds.

#include "../../Fuzz/FuzzParseInput.h"
#include "ParserTestUtil.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <dirent.h>
#include <fstream>
#include <sstream>

using namespace ParserTest;

namespace {

const std::string kDir = std::string(INTERTITLE_SOURCE_DIR) + "/Tests/Parser/data/fuzz/";

std::vector<std::string> Inputs()
{
    std::vector<std::string> names;
    if (DIR* dir = opendir(kDir.c_str())) {
        while (dirent* entry = readdir(dir)) {
            const std::string name = entry->d_name;
            if (name.size() > 5 && name.compare(name.size() - 5, 5, ".fuzz") == 0)
                names.push_back(name);
        }
        closedir(dir);
    }
    std::sort(names.begin(), names.end());
    return names;
}

class FuzzRegression : public ::testing::TestWithParam<std::string> {};

TEST_P(FuzzRegression, GivesItsResult)
{
    const std::string name = GetParam();
    const std::string stem = name.substr(0, name.size() - 5);
    const int expected = std::stoi(stem.substr(stem.find_last_of('.') + 1));
    std::ifstream in(kDir + name, std::ios::binary);
    std::stringstream bytes;
    bytes << in.rdbuf();
    const std::string data = bytes.str();

    int mode = 0;
    TTML::SubRawData* pRecord = TTML::MakeFuzzRecord(reinterpret_cast<const uint8_t*>(data.data()), data.size(), mode);
    ASSERT_NE(nullptr, pRecord) << name << " is too short";
    SyncParser sync(mode);
    EXPECT_EQ(expected, sync.parser.ProcessRecord(pRecord));
    if (TTML::CSubtitleInfo* pInfo = sync.Last()) {
        for (const auto& interval : Intervals(*pInfo))
            TextsIn(*pInfo, interval);
    }
}

INSTANTIATE_TEST_SUITE_P(Parser, FuzzRegression, ::testing::ValuesIn(Inputs()),
                         [](const ::testing::TestParamInfo<std::string>& info) {
                             std::string id = info.param.substr(0, info.param.find('.'));
                             std::replace_if(id.begin(), id.end(), [](char c) { return !isalnum(c); }, '_');
                             return id;
                         });

}  // namespace
