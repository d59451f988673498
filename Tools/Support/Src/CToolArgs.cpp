#include "CToolArgs.h"

#include <dlog.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

namespace TTML {

bool ParseWholeNumber(const std::string& text, long long low, long long high, long long& out)
{
    if (text.empty())
        return false;
    errno = 0;
    char* rest = nullptr;
    const long long value = std::strtoll(text.c_str(), &rest, 10);
    if (errno != 0 || *rest != '\0' || value < low || value > high)
        return false;
    out = value;
    return true;
}

CToolArgs::CToolArgs(const char* tool, const char* usage, int argc, char** argv)
    : m_tool(tool), m_usage(usage), m_argc(argc), m_argv(argv)
{
}

bool CToolArgs::Next()
{
    if (m_next >= m_argc)
        return false;
    m_arg = m_argv[m_next++];
    return true;
}

bool CToolArgs::Value(std::string& out)
{
    if (m_next >= m_argc)
        return false;
    out = m_argv[m_next++];
    return true;
}

bool CToolArgs::Number(long long low, long long high, long long& out)
{
    std::string text;
    return Value(text) && ParseWholeNumber(text, low, high, out);
}

int CToolArgs::ProfileOrMode(int& profile, int& mode)
{
    long long n = 0;
    if (Is("--profile")) {
        if (!Number(TTML_PROFILE_NONE, TTML_PROFILE_EBUTTD, n))
            return Fail("--profile takes -1, 0, 1 or 2");
        profile = static_cast<int>(n);
    } else {
        if (!Number(0, INT_MAX, n))
            return Fail("--mode takes a bit set from 0 to 2147483647");
        mode = static_cast<int>(n);
    }
    return kRun;
}

void CToolArgs::SetUpRun(bool quietLog)
{
    setenv("ECORE_NO_SYSTEM_MODULES", "1", 0);
    setenv("EINA_LOG_BACKTRACE", "0", 0);
    if (quietLog) {
        setenv("INTERTITLE_LOG", "none", 0);
        dlog_reload_filter();
    }
}

int CToolArgs::Help() const
{
    std::fputs(m_usage, stdout);
    return TOOL_EXIT_OK;
}

int CToolArgs::Fail(const std::string& problem) const
{
    std::fprintf(stderr, "%s: %s\n", m_tool, problem.c_str());
    std::fputs(m_usage, stderr);
    return TOOL_EXIT_USAGE;
}

}  // namespace TTML
