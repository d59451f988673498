// Linked into the test programs that bring up EFL. EFL is not built with the
// sanitizers, and it loses a few records of its own on every init/shutdown
// cycle (its module list, engine method tables, the
// copy-on-write pools of the canvas classes, the pools and hash an alpha
// buffer canvas leaves behind when it is freed). Fontconfig keeps its
// configuration for the process. They are EFL's and fontconfig's, not ours;
// only those functions are named here.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:eina_module_new\n"
           "leak:_evas_module_engine_inherit\n"
           "leak:ecore_evas_init\n"
           "leak:eina_cow_add\n"
           "leak:eina_mempool_add\n"
           "leak:eina_hash_new\n"
           "leak:FcInitLoadConfigAndFonts\n"
           "leak:libfontconfig.so\n";
}
