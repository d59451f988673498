/* Stand-in for the platform's UI gadget framework, the module side: the
 * operation table a gadget module's entry fills, and the calls a module
 * makes back into the framework. */
#ifndef INTERTITLE_UI_GADGET_MODULE_H
#define INTERTITLE_UI_GADGET_MODULE_H

#include "ui-gadget.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Filled by the module's entry; the framework passes `priv` back to every
 * callback. Members the module leaves alone keep what the framework set. */
struct ug_module_ops {
    /* Returns the gadget's layout (an Evas_Object*) or NULL on failure. */
    void *(*create)(ui_gadget_h ug, enum ug_mode mode, app_control_h app_control, void *priv);
    void (*start)(ui_gadget_h ug, app_control_h app_control, void *priv);
    void (*pause)(ui_gadget_h ug, app_control_h app_control, void *priv);
    void (*resume)(ui_gadget_h ug, app_control_h app_control, void *priv);
    void (*destroy)(ui_gadget_h ug, app_control_h app_control, void *priv);
    void (*message)(ui_gadget_h ug, app_control_h msg, app_control_h app_control, void *priv);
    void (*event)(ui_gadget_h ug, enum ug_event event, app_control_h app_control, void *priv);
    void (*key_event)(ui_gadget_h ug, enum ug_key_event event, app_control_h app_control, void *priv);
    void (*destroying)(ui_gadget_h ug, app_control_h app_control, void *priv);
    void *reserved[3];
    void *priv;
    enum ug_option opt;
};

/* The entry a module exports under its own name; 0 on success. */
typedef int (*ug_module_init_fn)(struct ug_module_ops *ops);

/* The window the framework shows gadgets in (an Evas_Object*), or NULL
 * before the framework set one. */
void *ug_get_window(void);

/* Hands `send` to the caller's result callback, during this call. 0 on
 * success, -1 for a null gadget or result. */
int ug_send_result(ui_gadget_h ug, app_control_h send);

#ifdef __cplusplus
}
#endif

#endif
