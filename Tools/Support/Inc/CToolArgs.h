// Command-line handling shared by the tools, so that they all answer alike:
// --help (or -h) prints the usage on standard output and exits 0; a usage
// error prints "TOOL: what is wrong" and the usage on standard error and
// exits 2; a FILE that is a folder or cannot be read is named with the
// reason. Light enough for vconftool to link too.
#pragma once

#include "TTMLTypes.h"

#include <string>

namespace TTML {

// Exit statuses of every tool.
enum ToolExit { TOOL_EXIT_OK = 0, TOOL_EXIT_FAILED = 1, TOOL_EXIT_USAGE = 2 };

class CToolArgs {
public:
    // What a tool's argument parsing returns to go on running; any other
    // value is the exit status to end with.
    static constexpr int kRun = -1;

    // tool: the program name in messages; usage: the usage text, ending in
    // a newline. Both outlive this object.
    CToolArgs(const char* tool, const char* usage, int argc, char** argv);

    // Steps to the next argument; false after the last.
    bool Next();
    const std::string& Arg() const { return m_arg; }
    bool Is(const char* option) const { return m_arg == option; }
    bool IsHelp() const { return m_arg == "--help" || m_arg == "-h"; }
    // "-x..." (a lone "-" is an operand).
    bool IsOption() const { return m_arg.size() > 1 && m_arg[0] == '-'; }

    // The current option's value, the next argument; false when there is none.
    bool Value(std::string& out);
    // The value as a whole decimal number from low to high; false when it is
    // missing, not a number or out of range.
    bool Number(long long low, long long high, long long& out);

    // Usage on standard output; TOOL_EXIT_OK.
    int Help() const;
    // "TOOL: problem" and the usage on standard error; TOOL_EXIT_USAGE.
    int Fail(const std::string& problem) const;
    // Fail for the current argument as an unknown option.
    int Unknown() const { return Fail("unknown option " + m_arg); }

    // The environment every tool runs in, set before any library starts: no
    // D-Bus services to look for (headless), EFL's complaints one line each.
    // quietLog turns the system's log off unless INTERTITLE_LOG asks for it,
    // for tools that print the reasons that matter themselves.
    static void SetUpRun(bool quietLog);
    // The end of a good parse: SetUpRun, then kRun.
    int Ready(bool quietLog) const
    {
        SetUpRun(quietLog);
        return kRun;
    }

    // The current argument, --profile or --mode, and its value: a transport
    // profile (TTMLProfile) into profile, or a subtitle mode (a non-negative
    // bit set) into mode. kRun, or the usage error for a value out of range.
    int ProfileOrMode(int& profile, int& mode);

private:
    const char* m_tool;
    const char* m_usage;
    int m_argc;
    char** m_argv;
    int m_next = 1;
    std::string m_arg;
};

// A whole decimal number from low to high (shared by options and the tools'
// own list parsing); false for anything else.
bool ParseWholeNumber(const std::string& text, long long low, long long high, long long& out);

}  // namespace TTML
