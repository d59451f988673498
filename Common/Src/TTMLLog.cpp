#include "TTMLLog.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace TTML {

namespace {

const char kWarnOn[] = "\033[01;33m";
const char kErrorOn[] = "\033[01;31m";
const char kColourOff[] = "\033[0m";

const char* BaseName(const char* path)
{
    const char* slash = std::strrchr(path, '/');
    return slash ? slash + 1 : path;
}

void WriteLine(log_priority prio, const char* file, const char* func, int line, const char* fmt, va_list ap)
{
    char message[3072];
    std::vsnprintf(message, sizeof(message), fmt, ap);

    // Read the name each time: a worker logs before and after it is named.
    char threadName[17] = {0};
    prctl(PR_GET_NAME, threadName, 0, 0, 0);
    unsigned long tid = static_cast<unsigned long>(syscall(SYS_gettid));

    const char* on = "";
    const char* off = "";
    if (prio == DLOG_WARN) {
        on = kWarnOn;
        off = kColourOff;
    } else if (prio >= DLOG_ERROR) {
        on = kErrorOn;
        off = kColourOff;
    }
    dlog_print(prio, TTML_LOG_TAG, "%s: %s(%d) > Thread:[%s %lu] [%s%s%s]", BaseName(file), func, line,
               threadName, tid, on, message, off);
}

}  // namespace

void LogPrint(log_priority prio, const char* file, const char* func, int line, const char* fmt, ...)
{
    va_list ap;
    va_start(ap, fmt);
    WriteLine(prio, file, func, line, fmt, ap);
    va_end(ap);
}

void AssertFail(const char* expr, const char* file, const char* func, int line)
{
    LogPrint(DLOG_FATAL, file, func, line, "Assertion failed: %s", expr);
    std::fprintf(stderr, "Intertitle assertion failed: %s (%s:%d %s)\n", expr, file, line, func);
    std::abort();
}

}  // namespace TTML
