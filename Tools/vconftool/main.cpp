// vconftool: reads, changes and watches configuration keys from a shell,
// in the store of VCONF_ROOT (see vconf.h). Exit status 0 done (or --help),
// 1 a key that cannot be read or written, 2 for a usage error.
#include "CToolArgs.h"

#include <vconf.h>

#include <Ecore.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const char kUsage[] =
    "usage: vconftool get KEY\n"
    "       vconftool set -t int|bool KEY VALUE\n"
    "       vconftool watch KEY      (one line per change until interrupted)\n"
    "       vconftool list           (the schema's keys and their values)\n";

// "int 3" or "bool 1"; false when the key cannot be read as either.
bool Describe(const char* key, std::string& out)
{
    int value = 0;
    if (vconf_get_int(key, &value) == VCONF_OK) {
        out = std::to_string(value) + " (int)";
        return true;
    }
    if (vconf_get_bool(key, &value) == VCONF_OK) {
        out = std::to_string(value) + " (bool)";
        return true;
    }
    return false;
}

void OnChange_Cb(keynode_t* node, void*)
{
    const int type = vconf_keynode_get_type(node);
    const int value = type == VCONF_TYPE_BOOL ? vconf_keynode_get_bool(node) : vconf_keynode_get_int(node);
    std::printf("%s = %d (%s)\n", vconf_keynode_get_name(node), value, type == VCONF_TYPE_BOOL ? "bool" : "int");
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv)
{
    TTML::CToolArgs args("vconftool", kUsage, argc, argv);
    if (!args.Next())
        return args.Fail("no command");
    if (args.IsHelp())
        return args.Help();
    const std::string cmd = args.Arg();
    if (cmd == "get" && argc == 3) {
        std::string text;
        if (!Describe(argv[2], text)) {
            std::fprintf(stderr, "vconftool: %s: no such key\n", argv[2]);
            return 1;
        }
        std::printf("%s = %s\n", argv[2], text.c_str());
        return 0;
    }
    if (cmd == "set" && argc == 6 && std::strcmp(argv[2], "-t") == 0) {
        const std::string type = argv[3];
        char* end = nullptr;
        errno = 0;
        const long value = std::strtol(argv[5], &end, 0);
        if (type != "int" && type != "bool")
            return args.Fail("set -t takes int or bool");
        if (!*argv[5] || *end || errno || value < INT_MIN || value > INT_MAX)
            return args.Fail(std::string("not an int: ") + argv[5]);
        const int rc = type == "int" ? vconf_set_int(argv[4], static_cast<int>(value))
                                     : vconf_set_bool(argv[4], value != 0);
        if (rc != VCONF_OK) {
            std::fprintf(stderr, "vconftool: cannot set %s as %s\n", argv[4], type.c_str());
            return 1;
        }
        return 0;
    }
    if (cmd == "watch" && argc == 3) {
        TTML::CToolArgs::SetUpRun(false);
        ecore_init();
        if (vconf_notify_key_changed(argv[2], OnChange_Cb, nullptr) != VCONF_OK) {
            std::fprintf(stderr, "vconftool: cannot watch %s\n", argv[2]);
            ecore_shutdown();
            return 1;
        }
        std::printf("watching %s in %s\n", argv[2], vconf_store_root());
        std::fflush(stdout);
        ecore_main_loop_begin();
        vconf_ignore_key_changed(argv[2], OnChange_Cb);
        ecore_shutdown();
        return 0;
    }
    if (cmd == "list" && argc == 2) {
        int type = 0;
        for (int i = 0; const char* key = vconf_schema_key(i, &type); ++i) {
            std::string text;
            std::printf("%s = %s\n", key, Describe(key, text) ? text.c_str() : "?");
        }
        return 0;
    }
    if (cmd != "get" && cmd != "set" && cmd != "watch" && cmd != "list")
        return args.Fail("unknown command " + cmd);
    return args.Fail("wrong arguments for " + cmd);
}
