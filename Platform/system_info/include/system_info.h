/* Stand-in for the platform's system information: what the set is.
 *
 * Values come, in this order, from the environment variable
 * SYSTEM_INFO_KEY_<number> (e.g. SYSTEM_INFO_KEY_604=1), from the key=value
 * file named by SYSTEM_INFO_FILE (one "<number>=<value>" per line, '#'
 * starts a comment), and from the defaults of a DVB set: DTV type 1, no
 * ATSC 3.0. Read on every query, so a test can change them between calls.
 * The value "fail" makes the query fail with SYSTEM_INFO_ERROR_IO_ERROR. */
#ifndef INTERTITLE_SYSTEM_INFO_H
#define INTERTITLE_SYSTEM_INFO_H

#include <errno.h>
#include <stdbool.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    SYSTEM_INFO_ERROR_NONE = 0,
    SYSTEM_INFO_ERROR_INVALID_PARAMETER = -EINVAL,
    SYSTEM_INFO_ERROR_OUT_OF_MEMORY = -ENOMEM,
    SYSTEM_INFO_ERROR_IO_ERROR = -EIO,
    SYSTEM_INFO_ERROR_PERMISSION_DENIED = -EACCES,
    SYSTEM_INFO_ERROR_NOT_SUPPORTED = -0x3FFFFFFE  /* no value for the key */
} system_info_error_e;

typedef enum {
    SYSTEM_INFO_KEY_DTV_TYPE = 333,          /* int: the set's digital TV type; 1 is DVB */
    SYSTEM_INFO_KEY_ATSC3_SUPPORTED = 604    /* bool: ATSC 3.0 reception */
} system_info_key_e;

int system_info_get_value_bool(system_info_key_e key, bool *value);
int system_info_get_value_int(system_info_key_e key, int *value);

#ifdef __cplusplus
}
#endif

#endif
