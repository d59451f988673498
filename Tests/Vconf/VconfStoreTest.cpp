// The key store: defaults, refusals, atomic writes, and changes made by
// another process reaching watchers on the main loop.
#include "RowPrinter.h"
#include "ShellRun.h"
#include "ToolRefusal.h"

#include <Ecore.h>
#include <gtest/gtest.h>
#include <vconf.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

namespace {

std::string Tool(const std::string& args)
{
    return std::string(INTERTITLE_VCONFTOOL) + " " + args;
}

// --- Reading and writing --------------------------------------------------------

struct ReadCase {
    const char* name;
    const char* key;
    bool asBool;
    int rc;        // of the read
    int expected;  // the value read; a failed read leaves the target as it was (-7)
};

class Read : public ::testing::TestWithParam<ReadCase> {};

TEST_P(Read, GivesTheStoredOrSchemaValueOrFailsLeavingTheTarget)
{
    const ReadCase& c = GetParam();
    ASSERT_EQ(VCONF_OK, vconf_set_int("test/read/stored", 42));
    ASSERT_EQ(VCONF_OK, vconf_set_bool("test/read/flag", 1));
    int value = -7;
    EXPECT_EQ(c.rc, c.asBool ? vconf_get_bool(c.key, &value) : vconf_get_int(c.key, &value));
    EXPECT_EQ(c.expected, value);
}

INSTANTIATE_TEST_SUITE_P(
    Vconf, Read,
    ::testing::Values(ReadCase{"Stored", "test/read/stored", false, VCONF_OK, 42},
                      ReadCase{"StoredBool", "test/read/flag", true, VCONF_OK, 1},
                      ReadCase{"SchemaDefault", "db/menu/caption/digitalcaptionoptions/size", false, VCONF_OK, 0},
                      ReadCase{"SchemaBoolDefault", "memory/tv-viewer/infobanner/ttml", true, VCONF_OK, 0},
                      ReadCase{"NeverSet", "test/read/never", false, VCONF_ERROR, -7},
                      ReadCase{"IntAsBool", "test/read/stored", true, VCONF_ERROR, -7},
                      ReadCase{"BoolAsInt", "memory/tv-viewer/infobanner/ttml", false, VCONF_ERROR, -7},
                      ReadCase{"Empty", "", false, VCONF_ERROR, -7},
                      ReadCase{"Absolute", "/etc/passwd", false, VCONF_ERROR, -7},
                      ReadCase{"Parent", "test/../../x", false, VCONF_ERROR, -7},
                      ReadCase{"EmptyPart", "test//read/stored", false, VCONF_ERROR, -7}),
    TTMLTest::RowName());

TEST(Vconf, WritesAreRefusedForBadKeysAndAgainstTheSchemaType)
{
    EXPECT_EQ(VCONF_ERROR, vconf_set_int("memory/tv-viewer/infobanner/ttml", 1));
    EXPECT_EQ(VCONF_ERROR, vconf_set_bool("db/menu/caption/caption", 1));
    EXPECT_EQ(VCONF_ERROR, vconf_set_int("test/.hidden", 1));
    EXPECT_EQ(VCONF_ERROR, vconf_set_int(nullptr, 1));
    EXPECT_EQ(VCONF_ERROR, vconf_ignore_key_changed("test/never/watched", [](keynode_t*, void*) {}));
}

TEST(Vconf, AnotherProcessSeesWhatThisOneWroteAndTheOtherWayRound)
{
    ASSERT_EQ(VCONF_OK, vconf_set_int("test/shared/a", 11));
    EXPECT_EQ("test/shared/a = 11 (int)\n", Shell(Tool("get test/shared/a")).out);
    ASSERT_EQ(0, Shell(Tool("set -t bool test/shared/b 1")).status);
    int value = 0;
    EXPECT_EQ(VCONF_OK, vconf_get_bool("test/shared/b", &value));
    EXPECT_EQ(1, value);
    EXPECT_EQ(1, Shell(Tool("get test/shared/never 2>/dev/null")).status);
}

// Two writers here and one in another process; a torn value would be short
// (fewer digits) or unreadable.
TEST(Vconf, ConcurrentWritersNeverGiveATornValue)
{
    const char* key = "test/torn/value";
    ASSERT_EQ(VCONF_OK, vconf_set_int(key, 100000000));
    std::atomic<bool> done{false};
    std::atomic<int> reads{0}, bad{0};
    std::thread reader([&] {
        for (int value = 0; !done; ++reads)
            bad += vconf_get_int(key, &value) != VCONF_OK || value < 100000000;
    });
    std::vector<std::thread> writers;
    for (int w = 1; w <= 2; ++w)
        writers.emplace_back([w, key] {
            for (int n = 0; n < 400; ++n)
                vconf_set_int(key, 100000000 + w * 10000000 + n);
        });
    Shell("for n in 1 2 3 4 5 6 7 8 9 10; do " + Tool(std::string("set -t int ") + key + " 399999999") + "; done");
    for (std::thread& t : writers)
        t.join();
    done = true;
    reader.join();
    EXPECT_EQ(0, bad.load()) << "of " << reads << " reads";
    EXPECT_GT(reads.load(), 0);
}

// --- Watching -------------------------------------------------------------------

// "name type value" per change seen, with where it ran.
std::string g_seen;

void Record_Cb(keynode_t* node, void* quit)
{
    const bool isBool = vconf_keynode_get_type(node) == VCONF_TYPE_BOOL;
    g_seen += std::string(vconf_keynode_get_name(node)) + (isBool ? " bool " : " int ") +
              std::to_string(isBool ? vconf_keynode_get_bool(node) : vconf_keynode_get_int(node)) +
              (eina_main_loop_is() ? " main; " : " elsewhere; ");
    if (quit)
        ecore_main_loop_quit();
}

// Registered on the main loop, or from another thread as the controller does.
class Watch : public ::testing::TestWithParam<bool> {};

// The changes come from vconftool, one process per change, in this order:
// an unwatched key, the watched key, an ignored key, then the stop key.
TEST_P(Watch, ChangesByAnotherProcessReachOnlyTheirCallbacksOnTheMainLoop)
{
    ecore_init();
    g_seen.clear();
    int stop = 1;
    auto watch = [&stop] {
        vconf_notify_key_changed("test/watch/a", Record_Cb, nullptr);
        vconf_notify_key_changed("test/watch/ignored", Record_Cb, nullptr);
        vconf_notify_key_changed("test/other/stop", Record_Cb, &stop);
        vconf_ignore_key_changed("test/watch/ignored", Record_Cb);
    };
    if (GetParam())
        std::thread(watch).join();
    else
        watch();
    ecore_job_add([](void*) {
        Shell(Tool("set -t int test/watch/unwatched 1") + " && " + Tool("set -t int test/watch/a 5") + " && " +
              Tool("set -t int test/watch/ignored 6") + " && " + Tool("set -t bool test/other/stop 1"));
    }, nullptr);
    // Bounded, so that a lost change fails instead of hanging.
    Ecore_Timer* pGuard = ecore_timer_add(20.0, [](void*) -> Eina_Bool {
        ecore_main_loop_quit();
        return ECORE_CALLBACK_RENEW;
    }, nullptr);
    ecore_main_loop_begin();
    ecore_timer_del(pGuard);
    vconf_ignore_key_changed("test/watch/a", Record_Cb);
    vconf_ignore_key_changed("test/other/stop", Record_Cb);
    ecore_shutdown();
    EXPECT_EQ("test/watch/a int 5 main; test/other/stop bool 1 main; ", g_seen);
}

INSTANTIATE_TEST_SUITE_P(Vconf, Watch, ::testing::Bool(), [](const ::testing::TestParamInfo<bool>& i) {
    return i.param ? "FromAnotherThread" : "FromTheMainLoop";
});

INSTANTIATE_TEST_SUITE_P(Vconftool, ToolRefusal,
                         ::testing::Values(ToolCase{"Help", Tool("--help"), 0, ""},
                                           ToolCase{"UnknownCommand", Tool("remove x"), 2, "unknown command remove"},
                                           ToolCase{"SetNotAnInt", Tool("set -t int a/b 1x"), 2, "not an int: 1x"}),
                         ToolCaseName);

}  // namespace
