#include "ui-gadget-module.h"

#include <stdatomic.h>
#include <stddef.h>

static _Atomic(void *) s_window;

void ug_set_window(void *win)
{
    atomic_store(&s_window, win);
}

void *ug_get_window(void)
{
    return atomic_load(&s_window);
}

int ug_send_result(ui_gadget_h ug, app_control_h send)
{
    if (!ug || !send)
        return -1;
    if (ug->result_cb)
        ug->result_cb(ug, send, ug->cb_priv);
    return 0;
}
