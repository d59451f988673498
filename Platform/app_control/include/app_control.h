/* Stand-in for the platform's app control: a bag of extra data (strings and
 * string arrays by key) that a gadget and its caller hand each other. */
#ifndef INTERTITLE_APP_CONTROL_H
#define INTERTITLE_APP_CONTROL_H

#include <errno.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct app_control_s *app_control_h;

typedef enum {
    APP_CONTROL_ERROR_NONE = 0,
    APP_CONTROL_ERROR_INVALID_PARAMETER = -EINVAL,
    APP_CONTROL_ERROR_OUT_OF_MEMORY = -ENOMEM,
    APP_CONTROL_ERROR_KEY_NOT_FOUND = -0x3FFFFEFF,     /* no extra data under the key */
    APP_CONTROL_ERROR_KEY_REJECTED = -0x3FFFFEFE,      /* a reserved key ("__APP_SVC_" prefix) */
    APP_CONTROL_ERROR_INVALID_DATA_TYPE = -0x3FFFFEDE  /* string asked of an array or the reverse */
} app_control_error_e;

/* A new, empty app control; free it with app_control_destroy. */
int app_control_create(app_control_h *app_control);
int app_control_destroy(app_control_h app_control);

/* Adds or replaces a string value; key and value are copied. */
int app_control_add_extra_data(app_control_h app_control, const char *key, const char *value);
/* *value: a malloc'd copy the caller frees. */
int app_control_get_extra_data(app_control_h app_control, const char *key, char **value);
/* Adds or replaces a string array of `length` entries (each non-null). */
int app_control_add_extra_data_array(app_control_h app_control, const char *key, const char *value[], int length);
/* *value: a malloc'd array of malloc'd strings; the caller frees each entry
 * and the array. */
int app_control_get_extra_data_array(app_control_h app_control, const char *key, char ***value, int *length);
int app_control_remove_extra_data(app_control_h app_control, const char *key);

#ifdef __cplusplus
}
#endif

#endif
