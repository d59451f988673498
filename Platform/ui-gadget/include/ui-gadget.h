/* Stand-in for the platform's UI gadget framework, the caller side. A host
 * that loads gadget modules (see Tools/ug-host) sets the window and makes
 * the gadget handles it passes to the module's callbacks. */
#ifndef INTERTITLE_UI_GADGET_H
#define INTERTITLE_UI_GADGET_H

#include <app_control.h>

#ifdef __cplusplus
extern "C" {
#endif

enum ug_mode {
    UG_MODE_FULLVIEW,
    UG_MODE_FRAMEVIEW,
    UG_MODE_INVALID
};

enum ug_event {
    UG_EVENT_NONE = 0x00,
    UG_EVENT_LOW_MEMORY,
    UG_EVENT_LOW_BATTERY,
    UG_EVENT_LANG_CHANGE,
    UG_EVENT_ROTATE_PORTRAIT,
    UG_EVENT_ROTATE_PORTRAIT_UPSIDEDOWN,
    UG_EVENT_ROTATE_LANDSCAPE,
    UG_EVENT_ROTATE_LANDSCAPE_UPSIDEDOWN,
    UG_EVENT_REGION_CHANGE,
    UG_EVENT_MAX
};

enum ug_key_event {
    UG_KEY_EVENT_NONE = 0x00,
    UG_KEY_EVENT_END,
    UG_KEY_EVENT_MAX
};

enum ug_option {
    UG_OPT_INDICATOR_ENABLE = 0x00,
    UG_OPT_INDICATOR_PORTRAIT_ONLY = 0x01,
    UG_OPT_INDICATOR_LANDSCAPE_ONLY = 0x02,
    UG_OPT_INDICATOR_DISABLE = 0x03,
    UG_OPT_MAX
};

typedef struct ui_gadget_s *ui_gadget_h;

/* Receives what the gadget sends with ug_send_result; `result` is valid
 * during the call only. */
typedef void (*ug_result_cb)(ui_gadget_h ug, app_control_h result, void *priv);

/* One loaded gadget as the framework knows it. */
struct ui_gadget_s {
    const char *name;       /* not owned */
    enum ug_mode mode;
    ug_result_cb result_cb;  /* may be NULL: results are dropped */
    void *cb_priv;
};

/* ---- Stand-in extensions (the real framework sets these in ug_init) ---- */

/* The window ug_get_window returns from now on (an Evas_Object*, not owned;
 * NULL forgets it). */
void ug_set_window(void *win);

#ifdef __cplusplus
}
#endif

#endif
