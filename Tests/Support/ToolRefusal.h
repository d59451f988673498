#ifndef INTERTITLE_TESTS_SUPPORT_TOOLREFUSAL_H
#define INTERTITLE_TESTS_SUPPORT_TOOLREFUSAL_H

// How every command-line tool answers its arguments, one table row a case:
// --help gives the usage on standard output and exit 0; a usage error gives
// one line naming the fault and the usage on standard error and exit 2; a
// FILE that cannot be used says why and exits 1. A test program includes
// this once and instantiates ToolRefusal with its tool's rows.

#include "ShellRun.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <string>

struct ToolCase {
    const char* name;
    std::string command;  // tool and arguments, as a shell reads them
    int status;
    std::string line;  // expected on standard error ("usage:" on standard output for status 0)
};

inline void PrintTo(const ToolCase& c, std::ostream* os) { *os << c.name; }

class ToolRefusal : public ::testing::TestWithParam<ToolCase> {};

TEST_P(ToolRefusal, SaysWhyWithTheRightStatus)
{
    const ToolCase& c = GetParam();
    const std::string errFile = ::testing::TempDir() + "tool-stderr-" + std::to_string(getpid());
    ShellRun r = Shell(c.command + " 2>'" + errFile + "'");
    std::stringstream err;
    err << std::ifstream(errFile).rdbuf();
    unlink(errFile.c_str());
    EXPECT_EQ(c.status, r.status) << err.str();
    if (c.status == 0) {
        EXPECT_EQ(0u, r.out.find("usage:")) << r.out;
        EXPECT_EQ("", err.str());
        return;
    }
    EXPECT_NE(std::string::npos, err.str().find(c.line)) << err.str();
    // The usage goes with a usage error only, and never to standard output.
    EXPECT_EQ(c.status == 2, err.str().find("usage:") != std::string::npos) << err.str();
    EXPECT_EQ(std::string::npos, r.out.find("usage:")) << r.out;
    EXPECT_EQ(std::string::npos, err.str().find("ERR<")) << "EFL noise:\n" << err.str();
}

inline std::string ToolCaseName(const ::testing::TestParamInfo<ToolCase>& info) { return info.param.name; }

#endif
