// Every test process gets a key store of its own, so that test programs (and
// cases ctest runs in parallel) never see each other's keys.
#include <cstdlib>
#include <ftw.h>
#include <string>
#include <unistd.h>

namespace {

int Remove_Cb(const char* path, const struct stat*, int, struct FTW*)
{
    return remove(path);
}

struct VconfRoot {
    VconfRoot()
    {
        const char* tmp = getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/intertitle-vconf-XXXXXX";
        if (mkdtemp(&pattern[0])) {
            dir = pattern;
            setenv("VCONF_ROOT", dir.c_str(), 1);
        }
    }
    ~VconfRoot()
    {
        if (!dir.empty())
            nftw(dir.c_str(), Remove_Cb, 16, FTW_DEPTH | FTW_PHYS);
    }
    std::string dir;
};

const VconfRoot g_root;

}  // namespace
