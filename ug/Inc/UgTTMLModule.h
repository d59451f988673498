/* What a host needs to load the subtitle gadget module (libug-intertitle.so):
 * the name of its one export, to look up with dlsym, and its signature. */
#ifndef TTML_UG_UGTTMLMODULE_H
#define TTML_UG_UGTTMLMODULE_H

#include <ui-gadget-module.h>

#define UG_TTML_MODULE_ENTRY "UG_TTML_MODULE_INIT"

#ifdef __cplusplus
extern "C" {
#endif

/* Fills the callbacks of `ops` and stores the gadget object in the slot that
 * ops->priv points to (which must not be NULL). 0 on success, -1 otherwise. */
__attribute__((visibility("default"))) int UG_TTML_MODULE_INIT(struct ug_module_ops *ops);

#ifdef __cplusplus
}
#endif

#endif
