#define _GNU_SOURCE
#include "system_info.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#define VALUE_MAX 64

static const struct {
    system_info_key_e key;
    const char *value;
} kDefaults[] = {
    { SYSTEM_INFO_KEY_DTV_TYPE, "1" },        /* a DVB set */
    { SYSTEM_INFO_KEY_ATSC3_SUPPORTED, "0" },
};

static void trim(char *s)
{
    size_t n = strlen(s);
    while (n > 0 && strchr(" \t\r\n", s[n - 1]))
        s[--n] = '\0';
    size_t lead = strspn(s, " \t");
    memmove(s, s + lead, n - lead + 1);
}

static int from_file(system_info_key_e key, char *out)
{
    const char *path = getenv("SYSTEM_INFO_FILE");
    FILE *f = path && *path ? fopen(path, "r") : NULL;
    if (!f)
        return 0;
    char line[256];
    int found = 0;
    while (!found && fgets(line, sizeof(line), f)) {
        char *hash = strchr(line, '#');
        if (hash)
            *hash = '\0';
        char *eq = strchr(line, '=');
        if (!eq)
            continue;
        *eq = '\0';
        char *end = NULL;
        long k = strtol(line, &end, 10);
        while (end && (*end == ' ' || *end == '\t'))
            ++end;
        if (end == line || !end || *end || k != (long)key)
            continue;
        snprintf(out, VALUE_MAX, "%s", eq + 1);
        trim(out);
        found = 1;
    }
    fclose(f);
    return found;
}

/* The raw text of a key, or SYSTEM_INFO_ERROR_NOT_SUPPORTED. */
static int lookup(system_info_key_e key, char *out)
{
    char name[48];
    snprintf(name, sizeof(name), "SYSTEM_INFO_KEY_%d", (int)key);
    const char *env = getenv(name);
    if (env) {
        snprintf(out, VALUE_MAX, "%s", env);
        trim(out);
    } else if (!from_file(key, out)) {
        size_t i = 0;
        for (; i < sizeof(kDefaults) / sizeof(kDefaults[0]) && kDefaults[i].key != key; ++i) {
        }
        if (i == sizeof(kDefaults) / sizeof(kDefaults[0]))
            return SYSTEM_INFO_ERROR_NOT_SUPPORTED;
        snprintf(out, VALUE_MAX, "%s", kDefaults[i].value);
    }
    return strcmp(out, "fail") == 0 ? SYSTEM_INFO_ERROR_IO_ERROR : SYSTEM_INFO_ERROR_NONE;
}

/* What a getter reads: the key's text, once the getter has somewhere to
 * put its value. */
static int lookup_for(system_info_key_e key, const void *value, char *out)
{
    return value ? lookup(key, out) : SYSTEM_INFO_ERROR_INVALID_PARAMETER;
}

int system_info_get_value_bool(system_info_key_e key, bool *value)
{
    char text[VALUE_MAX];
    int rc = lookup_for(key, value, text);
    if (rc != SYSTEM_INFO_ERROR_NONE)
        return rc;
    if (strcmp(text, "1") == 0 || strcasecmp(text, "true") == 0)
        *value = true;
    else if (strcmp(text, "0") == 0 || strcasecmp(text, "false") == 0)
        *value = false;
    else
        return SYSTEM_INFO_ERROR_INVALID_PARAMETER;
    return SYSTEM_INFO_ERROR_NONE;
}

int system_info_get_value_int(system_info_key_e key, int *value)
{
    char text[VALUE_MAX];
    int rc = lookup_for(key, value, text);
    if (rc != SYSTEM_INFO_ERROR_NONE)
        return rc;
    char *end = NULL;
    long v = strtol(text, &end, 10);
    if (end == text || *end)
        return SYSTEM_INFO_ERROR_INVALID_PARAMETER;
    *value = (int)v;
    return SYSTEM_INFO_ERROR_NONE;
}
