// Every test gets a key store of its own, so that tests (in one process, or
// run by ctest in parallel) never see each other's keys.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ftw.h>
#include <string>
#include <unistd.h>

namespace {

int Remove_Cb(const char* path, const struct stat*, int, struct FTW*)
{
    return remove(path);
}

class VconfRoot : public ::testing::EmptyTestEventListener {
public:
    VconfRoot() { m_Renew(); }
    ~VconfRoot() override { m_Remove(); }

    // A fresh, empty store before each test.
    void OnTestStart(const ::testing::TestInfo&) override { m_Renew(); }

private:
    void m_Renew()
    {
        m_Remove();
        const char* tmp = getenv("TMPDIR");
        std::string pattern = std::string(tmp && *tmp ? tmp : "/tmp") + "/intertitle-vconf-XXXXXX";
        if (mkdtemp(&pattern[0])) {
            m_dir = pattern;
            setenv("VCONF_ROOT", m_dir.c_str(), 1);
        }
    }

    void m_Remove()
    {
        if (!m_dir.empty())
            nftw(m_dir.c_str(), Remove_Cb, 16, FTW_DEPTH | FTW_PHYS);
        m_dir.clear();
    }

    std::string m_dir;
};

// Owned by GoogleTest's listener list once appended; the first store exists
// from static initialisation on, for code that runs before any test.
const bool g_registered = [] {
    ::testing::UnitTest::GetInstance()->listeners().Append(new VconfRoot());
    return true;
}();

}  // namespace
