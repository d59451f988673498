#define _GNU_SOURCE
#include "dlog.h"

#include <pthread.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

#define LINE_MAX_BYTES 4096

static atomic_int s_minPrio = -1;          /* -1: not read yet */
static pthread_mutex_t s_hookLock = PTHREAD_MUTEX_INITIALIZER;
static dlog_hook_cb s_hook;
static void *s_hookUser;
static atomic_int s_hookSet;

static int parse_filter(const char *v)
{
    static const struct { const char *name; int prio; } table[] = {
        { "verbose", DLOG_VERBOSE }, { "debug", DLOG_DEBUG }, { "info", DLOG_INFO },
        { "warn", DLOG_WARN }, { "warning", DLOG_WARN }, { "error", DLOG_ERROR },
        { "fatal", DLOG_FATAL }, { "none", DLOG_SILENT }, { "silent", DLOG_SILENT },
    };
    if (v) {
        for (size_t i = 0; i < sizeof(table) / sizeof(table[0]); ++i)
            if (strcasecmp(v, table[i].name) == 0)
                return table[i].prio;
    }
    return DLOG_WARN;
}

static int min_prio(void)
{
    int p = atomic_load(&s_minPrio);
    if (p < 0) {
        p = parse_filter(getenv("INTERTITLE_LOG"));
        atomic_store(&s_minPrio, p);
    }
    return p;
}

void dlog_reload_filter(void)
{
    atomic_store(&s_minPrio, -1);
}

void dlog_set_hook(dlog_hook_cb cb, void *user)
{
    pthread_mutex_lock(&s_hookLock);
    s_hook = cb;
    s_hookUser = user;
    atomic_store(&s_hookSet, cb != NULL);
    pthread_mutex_unlock(&s_hookLock);
}

int dlog_is_loggable(log_priority prio)
{
    if (prio <= DLOG_DEFAULT || prio >= DLOG_SILENT)
        return 0;
    return atomic_load(&s_hookSet) || (int)prio >= min_prio();
}

static char prio_letter(log_priority prio)
{
    static const char letters[] = "??VDIWEFS";
    return (prio > 0 && prio < DLOG_PRIO_MAX) ? letters[prio] : '?';
}

int dlog_vprint(log_priority prio, const char *tag, const char *fmt, va_list ap)
{
    if (!tag || !fmt || prio <= DLOG_DEFAULT || prio >= DLOG_SILENT)
        return DLOG_ERROR_INVALID_PARAMETER;
    if (!dlog_is_loggable(prio))
        return 0;

    char msg[LINE_MAX_BYTES];
    vsnprintf(msg, sizeof(msg), fmt, ap);

    if (atomic_load(&s_hookSet)) {
        pthread_mutex_lock(&s_hookLock);
        if (s_hook)
            s_hook(prio, tag, msg, s_hookUser);
        pthread_mutex_unlock(&s_hookLock);
    }
    if ((int)prio < min_prio())
        return 0;
    /* One write per line so lines from several threads never interleave. */
    char line[LINE_MAX_BYTES + 64];
    int n = snprintf(line, sizeof(line), "%c/%s(%5d): %s\n", prio_letter(prio), tag, (int)getpid(), msg);
    if (n < 0)
        return DLOG_ERROR_NOT_PERMITTED;
    if ((size_t)n >= sizeof(line)) {
        n = (int)sizeof(line) - 1;
        line[n - 1] = '\n';
    }
    ssize_t w = write(STDERR_FILENO, line, (size_t)n);
    return w < 0 ? DLOG_ERROR_NOT_PERMITTED : (int)w;
}

int dlog_print(log_priority prio, const char *tag, const char *fmt, ...)
{
    va_list ap;
    va_start(ap, fmt);
    int r = dlog_vprint(prio, tag, fmt, ap);
    va_end(ap);
    return r;
}
