#include "app_control.h"

#include <stdlib.h>
#include <string.h>

typedef struct extra_s {
    char *key;
    char **values;
    int length;
    int is_array;
    struct extra_s *next;
} extra_s;

struct app_control_s {
    extra_s *extras;
};

static const char kReservedPrefix[] = "__APP_SVC_";

static void extra_free(extra_s *e)
{
    for (int i = 0; i < e->length; ++i)
        free(e->values[i]);
    free(e->values);
    free(e->key);
    free(e);
}

static extra_s *extra_find(app_control_h ac, const char *key)
{
    for (extra_s *e = ac->extras; e; e = e->next)
        if (strcmp(e->key, key) == 0)
            return e;
    return NULL;
}

static int extra_unlink(app_control_h ac, const char *key)
{
    for (extra_s **pp = &ac->extras; *pp; pp = &(*pp)->next) {
        if (strcmp((*pp)->key, key) == 0) {
            extra_s *e = *pp;
            *pp = e->next;
            extra_free(e);
            return 1;
        }
    }
    return 0;
}

static int key_check(app_control_h ac, const char *key)
{
    if (!ac || !key || !*key)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    if (strncmp(key, kReservedPrefix, sizeof(kReservedPrefix) - 1) == 0)
        return APP_CONTROL_ERROR_KEY_REJECTED;
    return APP_CONTROL_ERROR_NONE;
}

/* Replaces whatever the key held; the copy is complete before anything changes. */
static int extra_put(app_control_h ac, const char *key, const char **values, int length, int is_array)
{
    extra_s *e = calloc(1, sizeof(*e));
    if (!e)
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    e->key = strdup(key);
    e->values = calloc(length > 0 ? (size_t)length : 1, sizeof(char *));
    e->is_array = is_array;
    if (!e->key || !e->values) {
        extra_free(e);
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    }
    for (; e->length < length; ++e->length) {
        e->values[e->length] = strdup(values[e->length]);
        if (!e->values[e->length]) {
            extra_free(e);
            return APP_CONTROL_ERROR_OUT_OF_MEMORY;
        }
    }
    extra_unlink(ac, key);
    e->next = ac->extras;
    ac->extras = e;
    return APP_CONTROL_ERROR_NONE;
}

int app_control_create(app_control_h *app_control)
{
    if (!app_control)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    *app_control = calloc(1, sizeof(struct app_control_s));
    return *app_control ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_OUT_OF_MEMORY;
}

int app_control_destroy(app_control_h app_control)
{
    if (!app_control)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    while (app_control->extras) {
        extra_s *e = app_control->extras;
        app_control->extras = e->next;
        extra_free(e);
    }
    free(app_control);
    return APP_CONTROL_ERROR_NONE;
}

int app_control_add_extra_data(app_control_h app_control, const char *key, const char *value)
{
    int rc = key_check(app_control, key);
    if (rc != APP_CONTROL_ERROR_NONE)
        return rc;
    if (!value)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return extra_put(app_control, key, &value, 1, 0);
}

int app_control_get_extra_data(app_control_h app_control, const char *key, char **value)
{
    if (!app_control || !key || !*key || !value)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    const extra_s *e = extra_find(app_control, key);
    if (!e)
        return APP_CONTROL_ERROR_KEY_NOT_FOUND;
    if (e->is_array)
        return APP_CONTROL_ERROR_INVALID_DATA_TYPE;
    *value = strdup(e->values[0]);
    return *value ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_OUT_OF_MEMORY;
}

int app_control_add_extra_data_array(app_control_h app_control, const char *key, const char *value[], int length)
{
    int rc = key_check(app_control, key);
    if (rc != APP_CONTROL_ERROR_NONE)
        return rc;
    if (!value || length < 0)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    for (int i = 0; i < length; ++i)
        if (!value[i])
            return APP_CONTROL_ERROR_INVALID_PARAMETER;
    return extra_put(app_control, key, value, length, 1);
}

int app_control_get_extra_data_array(app_control_h app_control, const char *key, char ***value, int *length)
{
    if (!app_control || !key || !*key || !value || !length)
        return APP_CONTROL_ERROR_INVALID_PARAMETER;
    const extra_s *e = extra_find(app_control, key);
    if (!e)
        return APP_CONTROL_ERROR_KEY_NOT_FOUND;
    if (!e->is_array)
        return APP_CONTROL_ERROR_INVALID_DATA_TYPE;
    char **copy = calloc(e->length > 0 ? (size_t)e->length : 1, sizeof(char *));
    if (!copy)
        return APP_CONTROL_ERROR_OUT_OF_MEMORY;
    for (int i = 0; i < e->length; ++i) {
        copy[i] = strdup(e->values[i]);
        if (!copy[i]) {
            while (i-- > 0)
                free(copy[i]);
            free(copy);
            return APP_CONTROL_ERROR_OUT_OF_MEMORY;
        }
    }
    *value = copy;
    *length = e->length;
    return APP_CONTROL_ERROR_NONE;
}

int app_control_remove_extra_data(app_control_h app_control, const char *key)
{
    int rc = key_check(app_control, key);
    if (rc != APP_CONTROL_ERROR_NONE)
        return rc;
    return extra_unlink(app_control, key) ? APP_CONTROL_ERROR_NONE : APP_CONTROL_ERROR_KEY_NOT_FOUND;
}
