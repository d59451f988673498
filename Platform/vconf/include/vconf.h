#ifndef VCONF_H
#define VCONF_H

/* The platform's configuration keys.
 *
 * Store: one small file per key under a root folder, VCONF_ROOT when set,
 * else $XDG_RUNTIME_DIR/vconf, else /tmp/vconf-<uid>. Key "a/b/c" is the file
 * <root>/a/b/c. Writes are atomic (temporary file, then rename), so several
 * processes may read and write at once and a reader never sees a torn value.
 * Keys of the shipped schema read their default until first written; any
 * other key that was never set fails to read.
 *
 * Watching: a change made by any process (this one included) calls every
 * callback registered for the key, on the Ecore main loop, with a key node
 * holding the value read at that moment. Registration may happen on any
 * thread; the main loop picks it up. While a key is watched the library
 * holds an Ecore reference, so unregister every watch before the last
 * ecore_shutdown takes effect.
 *
 * Results: 0 (VCONF_OK) on success, -1 (VCONF_ERROR) on failure. */

#ifdef __cplusplus
extern "C" {
#endif

#define VCONF_OK 0
#define VCONF_ERROR -1

enum {
    VCONF_TYPE_NONE = 0,
    VCONF_TYPE_STRING = 40,
    VCONF_TYPE_INT = 41,
    VCONF_TYPE_DOUBLE = 42,
    VCONF_TYPE_BOOL = 43,
    VCONF_TYPE_DIR = 44
};

typedef struct _keynode_t keynode_t;
typedef void (*vconf_callback_fn)(keynode_t* node, void* user_data);

int vconf_get_int(const char* in_key, int* intval);
int vconf_get_bool(const char* in_key, int* boolval);
int vconf_set_int(const char* in_key, const int intval);
int vconf_set_bool(const char* in_key, const int boolval);

/* One registration per (key, callback); registering again replaces the user
 * data. Ignoring an unregistered pair fails. */
int vconf_notify_key_changed(const char* in_key, vconf_callback_fn cb, void* user_data);
int vconf_ignore_key_changed(const char* in_key, vconf_callback_fn cb);

/* Valid only during the callback that received the node. */
char* vconf_keynode_get_name(keynode_t* keynode);
int vconf_keynode_get_type(keynode_t* keynode);
int vconf_keynode_get_int(const keynode_t* keynode);
int vconf_keynode_get_bool(const keynode_t* keynode);

/* Not in the platform's API: the folder this process's store lives in, and
 * each key of the schema with its type (VCONF_TYPE_INT or _BOOL), for tools.
 * vconf_schema_key returns null past the last index. */
const char* vconf_store_root(void);
const char* vconf_schema_key(int index, int* type);

#ifdef __cplusplus
}
#endif

#endif
