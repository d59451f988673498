/* Stand-in for the platform logger: one line per call on standard error. */
#ifndef INTERTITLE_DLOG_H
#define INTERTITLE_DLOG_H

#include <stdarg.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    DLOG_UNKNOWN = 0,
    DLOG_DEFAULT,
    DLOG_VERBOSE,
    DLOG_DEBUG,
    DLOG_INFO,
    DLOG_WARN,
    DLOG_ERROR,
    DLOG_FATAL,
    DLOG_SILENT,
    DLOG_PRIO_MAX
} log_priority;

typedef enum {
    DLOG_ERROR_NONE = 0,
    DLOG_ERROR_INVALID_PARAMETER = -22,
    DLOG_ERROR_NOT_PERMITTED = -1
} dlog_error_e;

/* Returns the number of bytes written, 0 when the line was filtered out,
 * or a negative dlog_error_e. */
int dlog_print(log_priority prio, const char *tag, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));
int dlog_vprint(log_priority prio, const char *tag, const char *fmt, va_list ap)
    __attribute__((format(printf, 3, 0)));

/* ---- Stand-in extensions (not part of the platform API) ----------------
 * INTERTITLE_LOG=verbose|debug|info|warn|error|none sets the lowest priority
 * printed on standard error (default: warn). It is read on first use and
 * again after dlog_reload_filter(). */
void dlog_reload_filter(void);

/* A hook sees every line, whatever the filter, with its formatted message.
 * Tests install one to assert on log texts. It is called on the logging
 * thread and must be thread-safe. Pass NULL to remove it. */
typedef void (*dlog_hook_cb)(log_priority prio, const char *tag, const char *msg, void *user);
void dlog_set_hook(dlog_hook_cb cb, void *user);

/* True when a line of this priority would be printed or hooked, so callers
 * can skip formatting lines nobody will see. */
int dlog_is_loggable(log_priority prio);

#ifdef __cplusplus
}
#endif

#endif
