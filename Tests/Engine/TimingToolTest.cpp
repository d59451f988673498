// ttml-timing as a user runs it, briefly: it runs and prints its
// distribution and its counts. Their values are not judged here: on a busy
// machine intervals may be missed, and tests do not time.

#include "ToolRefusal.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <boost/regex.hpp>

#include <cstdio>
#include <string>

namespace {

#ifdef INTERTITLE_TTML_TIMING

const char kNumber[] = "\\s+-?[0-9]+\\.[0-9]+";

TEST(TimingTool, QuickRunPrintsTheDistribution)
{
    ShellRun run = Shell(std::string("'") + INTERTITLE_TTML_TIMING + "' --seconds 3 2>/dev/null");
    // 1 only reports intervals missed or out of order.
    EXPECT_TRUE(run.status == 0 || run.status == 1) << run.status << "\n" << run.out;
    for (const char* what : {"draw lateness:", "remove lateness:"}) {
        std::string line = std::string("(^|\\n)") + what + "\\s+min" + kNumber + "\\s+median" + kNumber +
                           "\\s+p90" + kNumber + "\\s+p99" + kNumber + "\\s+max" + kNumber + "\\n";
        EXPECT_TRUE(boost::regex_search(run.out, boost::regex(line))) << what << "\n" << run.out;
    }
    for (const char* what : {"missed", "out of order"}) {
        EXPECT_TRUE(boost::regex_search(run.out, boost::regex(std::string("\\n") + what + ": [0-9]+\\n"))) << run.out;
    }
}

const std::string kRun = std::string("'") + INTERTITLE_TTML_TIMING + "' ";

INSTANTIATE_TEST_SUITE_P(Timing, ToolRefusal,
                         ::testing::Values(ToolCase{"Help", kRun + "--help", 0, ""},
                                           ToolCase{"TooShort", kRun + "--seconds 2", 2, "--seconds takes"},
                                           ToolCase{"NotANumber", kRun + "--seconds x", 2, "--seconds takes"},
                                           ToolCase{"NoLength", kRun + "--seconds", 2, "--seconds takes"},
                                           ToolCase{"UnknownOption", kRun + "--bogus", 2, "unknown option --bogus"}),
                         ToolCaseName);

#endif

}  // namespace
