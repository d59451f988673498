#ifndef INTERTITLE_TESTS_SUPPORT_SHELLRUN_H
#define INTERTITLE_TESTS_SUPPORT_SHELLRUN_H

#include <sys/wait.h>

#include <cstdio>
#include <string>

// Runs a shell command and returns its exit status (-1 when it did not exit
// normally or could not start) and its standard output. For tool tests.
struct ShellRun {
    int status = -1;
    std::string out;
};

inline ShellRun Shell(const std::string& cmd)
{
    ShellRun r;
    FILE* f = popen(cmd.c_str(), "r");
    if (!f)
        return r;
    char buf[4096];
    size_t n;
    while ((n = fread(buf, 1, sizeof(buf), f)) > 0)
        r.out.append(buf, n);
    int st = pclose(f);
    r.status = WIFEXITED(st) ? WEXITSTATUS(st) : -1;
    return r;
}

#endif
