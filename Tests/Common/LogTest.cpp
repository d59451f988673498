#include "LogCapture.h"
#include "TTMLLog.h"

#include <gtest/gtest.h>

#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

// The exact shape every line of the system has, checked once here so that
// other suites can compare message bodies only. Warnings and errors wrap the
// message in their colour codes; entry lines have an empty one.
TEST(LogFormat, LineHasFileFunctionLineThreadAndMessage)
{
    LogCapture log;
    const int line = __LINE__ + 1;
    TTML_INFO("value=%d", 42);
    TTML_WARN("careful");
    TTML_ERROR("careful");
    TTML_INFO("");
    auto lines = log.Lines();
    ASSERT_EQ(4u, lines.size());
    char name[17] = {0};
    prctl(PR_GET_NAME, name, 0, 0, 0);
    auto expected = [&](int offset, const std::string& body) {
        return "LogTest.cpp: TestBody(" + std::to_string(line + offset) + ") > Thread:[" + name + " " +
               std::to_string(syscall(SYS_gettid)) + "] [" + body + "]";
    };
    const std::string bodies[] = {"value=42", "\033[01;33mcareful\033[0m", "\033[01;31mcareful\033[0m", ""};
    const log_priority prios[] = {DLOG_INFO, DLOG_WARN, DLOG_ERROR, DLOG_INFO};
    const std::string messages[] = {"value=42", "careful", "careful", ""};
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(expected(i, bodies[i]), lines[i].text);
        EXPECT_EQ(prios[i], lines[i].prio) << i;
        EXPECT_EQ(messages[i], lines[i].message);
    }
}

TEST(LogFilter, LinesBelowFilterAreNotFormattedWithoutHook)
{
    setenv("INTERTITLE_LOG", "error", 1);
    dlog_reload_filter();
    EXPECT_FALSE(dlog_is_loggable(DLOG_WARN));
    EXPECT_TRUE(dlog_is_loggable(DLOG_ERROR));
    int calls = 0;
    auto count = [&calls] { return ++calls; };
    TTML_INFO("%d", count());
    EXPECT_EQ(0, calls);
    {
        LogCapture log;  // a hook sees everything, whatever the filter
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

TEST(LogAssert, FailureNamesExpressionAndAborts)
{
    void* m_pEngine = nullptr;
    EXPECT_DEATH(TTML_ASSERT(m_pEngine), "Assertion failed: m_pEngine");
}

}  // namespace
