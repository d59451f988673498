// The key store's value files: whatever bytes another process, a crash
// mid-write or a full disk leaves in a key's file, reading the key must
// fail or give a value, never more.
//
// Input: byte 0 picks a key of the shipped schema (or one outside it); the
// rest is written as that key's file under a private VCONF_ROOT, then read
// back both ways.
#include "vconf.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::string g_root;
int g_keyCount = 0;

void MakeParents(const std::string& path)
{
    for (size_t at = path.find('/', g_root.size() + 1); at != std::string::npos; at = path.find('/', at + 1))
        mkdir(path.substr(0, at).c_str(), 0755);
}

int Remove_Cb(const char* path, const struct stat*, int, struct FTW*)
{
    return remove(path);
}

void RemoveRoot()
{
    nftw(g_root.c_str(), Remove_Cb, 16, FTW_DEPTH | FTW_PHYS);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    setenv("INTERTITLE_LOG", "none", 0);
    const char* tmp = getenv("TMPDIR");
    std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/intertitle-fuzz-vconf-XXXXXX";
    if (!mkdtemp(&pattern[0]))
        abort();
    g_root = pattern;
    setenv("VCONF_ROOT", g_root.c_str(), 1);
    atexit(RemoveRoot);
    int type = 0;
    while (vconf_schema_key(g_keyCount, &type))
        ++g_keyCount;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size < 1 || g_keyCount == 0)
        return 0;
    int type = 0;
    const int index = data[0] % (g_keyCount + 1);
    const char* schemaKey = vconf_schema_key(index, &type);
    const std::string key = schemaKey ? schemaKey : "memory/fuzz/unknown";
    const std::string path = g_root + "/" + key;
    MakeParents(path);
    FILE* f = fopen(path.c_str(), "wb");
    if (!f)
        abort();
    fwrite(data + 1, 1, size - 1, f);
    fclose(f);

    int value = 0;
    vconf_get_int(key.c_str(), &value);
    vconf_get_bool(key.c_str(), &value);
    unlink(path.c_str());
    return 0;
}
