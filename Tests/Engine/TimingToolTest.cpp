// ttml-timing as a user runs it, briefly: the whole chain must play every
// interval once and in order, and the distribution lines must be there. The
// lateness values themselves are not judged here (tests do not time).

#include "ShellRun.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <boost/regex.hpp>

#include <cstdio>
#include <string>

namespace {

#ifdef INTERTITLE_TTML_TIMING

const char kNumber[] = "\\s+-?[0-9]+\\.[0-9]+";

TEST(TimingTool, QuickRunPlaysEveryIntervalAndPrintsTheDistribution)
{
    ShellRun run = Shell(std::string("'") + INTERTITLE_TTML_TIMING + "' --seconds 3 2>/dev/null");
    EXPECT_EQ(0, run.status) << run.out;
    for (const char* what : {"draw lateness:", "remove lateness:"}) {
        std::string line = std::string("(^|\\n)") + what + "\\s+min" + kNumber + "\\s+median" + kNumber +
                           "\\s+p90" + kNumber + "\\s+p99" + kNumber + "\\s+max" + kNumber + "\\n";
        EXPECT_TRUE(boost::regex_search(run.out, boost::regex(line))) << what << "\n" << run.out;
    }
    EXPECT_NE(std::string::npos, run.out.find("\nmissed: 0\n")) << run.out;
    EXPECT_NE(std::string::npos, run.out.find("\nout of order: 0\n")) << run.out;
}

TEST(TimingTool, RefusesABadLength)
{
    for (const char* args : {"--seconds 2", "--seconds x", "--seconds", "--bogus"}) {
        ShellRun run = Shell(std::string("'") + INTERTITLE_TTML_TIMING + "' " + args + " 2>/dev/null");
        EXPECT_EQ(2, run.status) << args;
    }
}

#endif

}  // namespace
