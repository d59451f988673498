#include "LogCapture.h"
#include "TTMLLog.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace {

// The exact shape every line of the system has, checked once here so that
// other suites can compare message bodies only.
TEST(LogFormat, InfoLineHasFileFunctionLineThreadAndMessage)
{
    LogCapture log;
    int line = __LINE__ + 1;
    TTML_INFO("value=%d", 42);
    auto lines = log.Lines();
    ASSERT_EQ(1u, lines.size());
    char name[17] = {0};
    prctl(PR_GET_NAME, name, 0, 0, 0);
    std::string expected = "LogTest.cpp: TestBody(" + std::to_string(line) + ") > Thread:[" + name + " " +
                           std::to_string(syscall(SYS_gettid)) + "] [value=42]";
    EXPECT_EQ(expected, lines[0].text);
    EXPECT_EQ(DLOG_INFO, lines[0].prio);
    EXPECT_EQ("value=42", lines[0].message);
}

struct ColourCase {
    log_priority prio;
    const char* on;
    const char* name;
};

class LogColour : public ::testing::TestWithParam<ColourCase> {};

TEST_P(LogColour, MessageIsWrappedInItsColourCodes)
{
    LogCapture log;
    const ColourCase& c = GetParam();
    if (c.prio == DLOG_WARN)
        TTML_WARN("careful");
    else if (c.prio == DLOG_ERROR)
        TTML_ERROR("careful");
    else
        TTML_INFO("careful");
    auto lines = log.Lines();
    ASSERT_EQ(1u, lines.size());
    std::string tail = std::string("[") + c.on + "careful" + (c.on[0] ? "\033[0m" : "") + "]";
    ASSERT_GE(lines[0].text.size(), tail.size());
    EXPECT_EQ(tail, lines[0].text.substr(lines[0].text.size() - tail.size()));
    EXPECT_EQ(c.prio, lines[0].prio);
    EXPECT_EQ("careful", lines[0].message);
}

INSTANTIATE_TEST_SUITE_P(Levels, LogColour,
                         ::testing::Values(ColourCase{DLOG_INFO, "", "info"},
                                           ColourCase{DLOG_WARN, "\033[01;33m", "warning"},
                                           ColourCase{DLOG_ERROR, "\033[01;31m", "error"}),
                         TTMLTest::RowName());

TEST(LogFormat, EmptyEntryMessage)
{
    LogCapture log;
    TTML_INFO("");
    ASSERT_EQ(1, log.Count(""));
}

TEST(LogFilter, LinesBelowFilterAreNotFormattedWithoutHook)
{
    setenv("INTERTITLE_LOG", "error", 1);
    dlog_reload_filter();
    EXPECT_FALSE(dlog_is_loggable(DLOG_INFO));
    EXPECT_FALSE(dlog_is_loggable(DLOG_WARN));
    EXPECT_TRUE(dlog_is_loggable(DLOG_ERROR));
    int calls = 0;
    auto count = [&calls]() {
        ++calls;
        return 1;
    };
    TTML_INFO("%d", count());
    EXPECT_EQ(0, calls);
    {
        LogCapture log;  // a hook sees everything, whatever the filter
        EXPECT_TRUE(dlog_is_loggable(DLOG_INFO));
        TTML_INFO("%d", count());
        EXPECT_EQ(1, calls);
    }
    setenv("INTERTITLE_LOG", "none", 1);
    dlog_reload_filter();
    EXPECT_FALSE(dlog_is_loggable(DLOG_ERROR));
    unsetenv("INTERTITLE_LOG");
    dlog_reload_filter();
    EXPECT_TRUE(dlog_is_loggable(DLOG_WARN));
    EXPECT_FALSE(dlog_is_loggable(DLOG_INFO));
}

TEST(LogFilter, PlatformRejectsBadArguments)
{
    EXPECT_EQ(DLOG_ERROR_INVALID_PARAMETER, dlog_print(DLOG_INFO, nullptr, "x"));
    EXPECT_EQ(DLOG_ERROR_INVALID_PARAMETER, dlog_print(DLOG_SILENT, "TTML", "x"));
}

TEST(LogCaptureSplit, MessageOfStripsColourCodes)
{
    EXPECT_EQ("a [b] c", LogCapture::MessageOf("f.cpp: g(1) > Thread:[t 1] [\033[01;33ma [b] c\033[0m]"));
}

TEST(LogAssert, FailureNamesExpressionAndAborts)
{
    void* m_pEngine = nullptr;
    EXPECT_DEATH(TTML_ASSERT(m_pEngine), "Assertion failed: m_pEngine");
}

}  // namespace
