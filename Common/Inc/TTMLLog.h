#ifndef TTML_COMMON_TTMLLOG_H
#define TTML_COMMON_TTMLLOG_H

#include <dlog.h>

// Logging for the whole system. Every line goes to the platform log with the
// tag "TTML" as "<file>: <function>(<line>) > Thread:[<name> <tid>] [<message>]".
// Warnings and errors carry their colour codes inside the brackets.
// Lines below the active filter are not formatted at all.

#define TTML_LOG_TAG "TTML"

namespace TTML {

// Formats and writes one line; use the macros below instead.
void LogPrint(log_priority prio, const char* file, const char* func, int line, const char* fmt, ...)
    __attribute__((format(printf, 5, 6)));

// Logs the failed expression as an error and aborts: used for allocation
// failures and broken invariants that the system cannot recover from.
[[noreturn]] void AssertFail(const char* expr, const char* file, const char* func, int line);

}  // namespace TTML

#define TTML_LOG_AT(prio, ...)                                                  \
    do {                                                                        \
        if (dlog_is_loggable(prio))                                             \
            ::TTML::LogPrint(prio, __FILE__, __func__, __LINE__, __VA_ARGS__);  \
    } while (0)

#define TTML_INFO(...) TTML_LOG_AT(DLOG_INFO, __VA_ARGS__)
#define TTML_WARN(...) TTML_LOG_AT(DLOG_WARN, __VA_ARGS__)
#define TTML_ERROR(...) TTML_LOG_AT(DLOG_ERROR, __VA_ARGS__)

// TTML_ASSERT(m_pEngine) logs "Assertion failed: m_pEngine" and aborts.
#define TTML_ASSERT(expr) \
    ((expr) ? (void)0 : ::TTML::AssertFail(#expr, __FILE__, __func__, __LINE__))

#endif
