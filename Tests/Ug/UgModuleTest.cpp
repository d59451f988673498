// The gadget module as the framework sees it: loaded with dlopen, driven
// through the operation table its entry fills, observed through the log,
// the window's canvas and the platform's system information.

#include "../Graphics/MainLoopFixture.h"
#include "LogCapture.h"
#include "ShellRun.h"
#include "RowPrinter.h"

#include <Ecore.h>
#include <Evas.h>
#include <app_control.h>
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <ui-gadget-module.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

namespace {

const std::string kSample = std::string(INTERTITLE_SOURCE_DIR) + "/samples/ebu-tt-d-sample.xml";

ug_module_init_fn ModuleEntry()
{
    static void* handle = dlopen(INTERTITLE_UG_MODULE, RTLD_NOW | RTLD_LOCAL);
    return handle ? reinterpret_cast<ug_module_init_fn>(dlsym(handle, "UG_TTML_MODULE_INIT")) : nullptr;
}

// A canvas with a gadget window, the module's operation table and one gadget.
class UgTest : public MainLoopTest {
public:
    void SetUp() override
    {
        setenv("INTERTITLE_FEED", kSample.c_str(), 1);
        MainLoopTest::SetUp();
        DestroyGraphics();
        m_canvas.DeleteBaseLayout();
        m_pWindow = evas_object_rectangle_add(m_canvas.GetEvas());
        evas_object_move(m_pWindow, 0, 0);
        evas_object_resize(m_pWindow, 1920, 1080);
        evas_object_show(m_pWindow);
        ug_set_window(m_pWindow);
        ASSERT_NE(nullptr, ModuleEntry()) << dlerror();
        m_ops.priv = &m_slot;
        ASSERT_EQ(0, ModuleEntry()(&m_ops));
        ASSERT_NE(nullptr, m_slot);
        m_ug.name = "intertitle";
    }

    void TearDown() override
    {
        if (m_slot)
            m_ops.destroy(&m_ug, nullptr, m_ops.priv);
        ug_set_window(nullptr);
        for (const char* v : {"SYSTEM_INFO_KEY_604", "SYSTEM_INFO_KEY_333", "INTERTITLE_FEED"})
            unsetenv(v);
        MainLoopTest::TearDown();
    }

    Evas_Object* Create(const char* serviceMode = nullptr)
    {
        app_control_h ac = nullptr;
        app_control_create(&ac);
        if (serviceMode)
            app_control_add_extra_data(ac, "service-mode", serviceMode);
        void* layout = m_ops.create(&m_ug, UG_MODE_FRAMEVIEW, ac, m_ops.priv);
        app_control_destroy(ac);
        return static_cast<Evas_Object*>(layout);
    }

    void Start(const char* serviceMode = nullptr)
    {
        ASSERT_NE(nullptr, Create(serviceMode));
        m_ops.start(&m_ug, nullptr, m_ops.priv);
    }

    // A message with the command as its "cmd" (none when null).
    void Message(const char* cmd)
    {
        app_control_h msg = nullptr;
        app_control_create(&msg);
        if (cmd)
            app_control_add_extra_data(msg, "cmd", cmd);
        m_ops.message(&m_ug, msg, nullptr, m_ops.priv);
        app_control_destroy(msg);
    }

    // Runs the main loop until `count` lines carry `message`; the source
    // thread delivers show and hide on its own time.
    bool WaitFor(const std::string& message, int count = 1)
    {
        return RunUntil([&] { return m_log.Count(message) >= count; });
    }

    LogCapture m_log;
    Evas_Object* m_pWindow = nullptr;
    ug_module_ops m_ops{};
    void* m_slot = nullptr;
    ui_gadget_s m_ug{};
};

TEST(UgModuleSymbols, OnlyTheEntryIsExported)
{
    ShellRun r = Shell(std::string("nm -D --defined-only ") + INTERTITLE_UG_MODULE + " | awk '{print $NF}'");
    ASSERT_EQ(0, r.status);
    EXPECT_EQ("UG_TTML_MODULE_INIT\n", r.out);
    // The TV service is the system's one, shared with the host, not a copy inside.
    r = Shell(std::string("readelf -d ") + INTERTITLE_UG_MODULE + " | grep -c 'NEEDED.*libtvservice.so'");
    EXPECT_EQ("1\n", r.out);
}

TEST(UgModuleEntry, NullTableOrSlotIsRefused)
{
    ASSERT_NE(nullptr, ModuleEntry());
    LogCapture log;
    ug_module_ops ops{};
    EXPECT_EQ(-1, ModuleEntry()(nullptr));
    EXPECT_EQ(-1, ModuleEntry()(&ops));
    EXPECT_EQ(2, log.Count("ops/ops->priv is/are null", DLOG_WARN));
    EXPECT_EQ(2, log.Count("Initialize failed.", DLOG_WARN));
    EXPECT_EQ(nullptr, ops.create);
}

TEST_F(UgTest, BaseLayoutIsABoxOnLayerSixOverTheWindowAndMadeOnce)
{
    evas_object_move(m_pWindow, 10, 20);
    evas_object_resize(m_pWindow, 1280, 720);
    Evas_Object* pLayout = Create();
    ASSERT_NE(nullptr, pLayout);
    int x, y, w, h;
    evas_object_geometry_get(pLayout, &x, &y, &w, &h);
    EXPECT_EQ((std::vector<int>{10, 20, 1280, 720}), (std::vector<int>{x, y, w, h}));
    EXPECT_EQ(6, evas_object_layer_get(pLayout));
    EXPECT_STREQ("Evas_Object_Box", evas_object_type_get(pLayout));
    EXPECT_TRUE(m_log.Has("Ug win size: x=10, y=20, w=1280, h=720"));
    EXPECT_EQ(pLayout, Create());
    EXPECT_TRUE(m_log.Has("m_pBaseLayout is already created. Check this!!!", DLOG_WARN));
    // Resizes reach the core once there is a view; a second start keeps it.
    m_ops.start(&m_ug, nullptr, m_ops.priv);
    evas_object_resize(pLayout, 960, 540);
    EXPECT_TRUE(m_log.Has("New Width height: [960][540]"));
    m_ops.start(&m_ug, nullptr, m_ops.priv);
    EXPECT_TRUE(m_log.Has("Error: Core must be null", DLOG_WARN));
    EXPECT_EQ(1, m_log.Count("Core initialized successfully"));
    Message("show");
    EXPECT_TRUE(WaitFor("Show"));
}

struct SourceCase {
    const char* name;
    const char* atsc3;    // SYSTEM_INFO_KEY_604, null: the default
    const char* dtvType;  // SYSTEM_INFO_KEY_333, null: the default
    const char* feedLine; // the source's own line; null: no source
    const char* warning;  // null: none expected
    const char* file = nullptr;  // SYSTEM_INFO_FILE contents, null: no file
};

class UgSourceChoice : public UgTest, public ::testing::WithParamInterface<SourceCase> {};

TEST_P(UgSourceChoice, FollowsTheSetsCapabilities)
{
    const SourceCase& c = GetParam();
    if (c.atsc3)
        setenv("SYSTEM_INFO_KEY_604", c.atsc3, 1);
    if (c.dtvType)
        setenv("SYSTEM_INFO_KEY_333", c.dtvType, 1);
    // One file per process: ctest runs rows side by side.
    const std::string file = ::testing::TempDir() + "system-info-" + std::to_string(getpid());
    if (c.file) {
        std::ofstream(file) << c.file;
        setenv("SYSTEM_INFO_FILE", file.c_str(), 1);
    }
    Start();
    unsetenv("SYSTEM_INFO_FILE");
    std::remove(file.c_str());
    EXPECT_EQ(c.feedLine ? 1 : 0, m_log.CountContaining("source feed: "));
    EXPECT_EQ(c.feedLine ? 1 : 0, m_log.Count("Core initialized successfully"));
    if (c.feedLine) {
        EXPECT_EQ(1, m_log.Count(c.feedLine + kSample)) << m_log.Dump();
    } else {
        EXPECT_TRUE(m_log.Has("TTML not supported by system.", DLOG_WARN));
        EXPECT_TRUE(m_log.HasContaining("Source/BaseLayout should not be null! src:[(nil)]", DLOG_WARN));
    }
    EXPECT_TRUE(!c.warning || m_log.Has(c.warning, DLOG_WARN)) << m_log.Dump();
}

INSTANTIATE_TEST_SUITE_P(
    Ug, UgSourceChoice,
    ::testing::Values(SourceCase{"DefaultIsDvb", nullptr, nullptr, "DVB source feed: ", nullptr},
                      SourceCase{"Atsc3WinsOverDvb", "1", "1", "ATSC source feed: ", nullptr},
                      SourceCase{"OtherDtvType", "0", "2", nullptr, nullptr},
                      SourceCase{"Atsc3QueryFails", "fail", "1", "DVB source feed: ",
                                 "system_info_get_value_bool SYSTEM_INFO_KEY_ATSC3_SUPPORTED failed"},
                      SourceCase{"DtvQueryFails", "0", "fail", nullptr, "system_info_get_value_int failed!"},
                      SourceCase{"Atsc3FromFile", nullptr, nullptr, "ATSC source feed: ", nullptr,
                                 "# an ATSC 3.0 set\n333=4\n 604 = 1 \n"},
                      SourceCase{"EnvironmentBeforeFile", "0", nullptr, nullptr, nullptr, "604=1\n333=4\n"}),
    TTMLTest::RowName());

struct CommandCase {
    const char* cmd;
    int shows;  // "Show" lines of the core
    int hides;  // "Hide" lines before the marker's
};

class UgCommand : public UgTest, public ::testing::WithParamInterface<CommandCase> {};

// A "hide" sent after the command marks where its effects end: the source
// delivers show and hide in the order they were asked for.
TEST_P(UgCommand, IsRecognisedByItsBeginning)
{
    const CommandCase& c = GetParam();
    Start();
    Message(c.cmd);
    Message("hide");
    ASSERT_TRUE(WaitFor("Hide", c.hides + 1)) << m_log.Dump();
    EXPECT_EQ(c.shows, m_log.Count("Show"));
    EXPECT_TRUE(m_log.Has(c.cmd));
}

INSTANTIATE_TEST_SUITE_P(Ug, UgCommand,
                         ::testing::Values(CommandCase{"show", 1, 0}, CommandCase{"showing", 1, 0},
                                           CommandCase{"sho", 0, 0}, CommandCase{"hidenow", 0, 1},
                                           CommandCase{"hidden", 0, 0}, CommandCase{"SHOW", 0, 0}),
                         [](const ::testing::TestParamInfo<CommandCase>& info) {
                             return std::string(info.param.cmd) + "_" + std::to_string(info.index);
                         });

struct ModeCase {
    const char* name;
    const char* serviceMode;
    std::vector<const char*> commands;  // after create and start
    int views;               // "Core initialized successfully"
    int broadcastDestroys;   // "Calling BroadcastSource Destroy"
    int broadcastSources;    // DVB sources made
    int destroyed;           // "TTML destroyed"
};

class UgMode : public UgTest, public ::testing::WithParamInterface<ModeCase> {};

TEST_P(UgMode, EnableAndDisableRebuildTheView)
{
    const ModeCase& c = GetParam();
    Start(c.serviceMode);
    const bool bbOnly = c.serviceMode && std::string(c.serviceMode).rfind("broadbandonly", 0) == 0;
    EXPECT_TRUE(m_log.Has(bbOnly ? "######################## IBB/HBBTV Broadband only #######################"
                                 : "######################## ATSC/DVB Broadcast #######################"));
    EXPECT_TRUE(m_log.Has(bbOnly ? "isBBOnlyMode=1" : "isBBOnlyMode=0"));
    for (const char* cmd : c.commands)
        Message(cmd);
    EXPECT_EQ(c.views, m_log.Count("Core initialized successfully")) << m_log.Dump();
    EXPECT_EQ(c.broadcastDestroys, m_log.Count("Calling BroadcastSource Destroy"));
    // Views over no new broadcast source are over the shared broadband one.
    EXPECT_EQ(c.broadcastSources, m_log.Count("DVB source feed: " + kSample));
    EXPECT_EQ(c.destroyed, m_log.Count("TTML destroyed"));
}

INSTANTIATE_TEST_SUITE_P(
    Ug, UgMode,
    ::testing::Values(ModeCase{"BroadcastStartMakesAView", nullptr, {}, 1, 0, 1, 0},
                      ModeCase{"BroadbandOnlyByPrefix", "broadbandonly-hbbtv", {}, 0, 0, 0, 0},
                      ModeCase{"EnableMovesBroadcastToBroadband", nullptr, {"enable"}, 2, 1, 1, 1},
                      ModeCase{"DisableBringsBroadcastBack", nullptr, {"enable", "disable"}, 3, 1, 2, 2},
                      ModeCase{"DisableInBroadcastRebuildsIt", nullptr, {"disable"}, 2, 1, 2, 1},
                      ModeCase{"BroadbandOnlyEnableMakesTheView", "broadbandonly", {"enable"}, 1, 0, 0, 0},
                      ModeCase{"BroadbandOnlyDisableLeavesNone", "broadbandonly", {"enable", "disable"}, 1, 0, 0, 1}),
    TTMLTest::RowName());

TEST_F(UgTest, BroadbandWithoutSharedSourceOnlyLogs)
{
    unsetenv("INTERTITLE_FEED");
    Start("broadbandonly");
    // The module's shared source lives as long as the process (ctest runs each test alone).
    if (!m_log.Has("m_pSource is null!"))
        GTEST_SKIP() << "an earlier test in this process made the shared broadband source";
    Message("enable");
    EXPECT_TRUE(m_log.Has("m_pSource is null!", DLOG_ERROR));
    EXPECT_TRUE(m_log.Has("dynamic_cast failed for ITTMLSourceControl", DLOG_WARN));
    m_ops.pause(&m_ug, nullptr, m_ops.priv);
    EXPECT_EQ(2, m_log.Count("dynamic_cast failed for ITTMLSourceControl"));
    EXPECT_EQ(0, m_log.Count("Core initialized successfully"));
}

// Null arguments, no window and a message without a command end the
// callback and change nothing; after destroy every callback with the same
// priv finds the slot empty.
TEST_F(UgTest, RefusedCallbacksChangeNothing)
{
    m_ops.start(&m_ug, nullptr, nullptr);
    m_ops.pause(&m_ug, nullptr, nullptr);
    EXPECT_EQ(2, m_log.Count("pData is null !", DLOG_WARN));
    EXPECT_EQ(nullptr, m_ops.create(nullptr, UG_MODE_FRAMEVIEW, nullptr, m_ops.priv));
    EXPECT_TRUE(m_log.Has("UG/pData is null", DLOG_WARN));
    m_ops.event(nullptr, UG_EVENT_LOW_MEMORY, nullptr, m_ops.priv);
    m_ops.event(&m_ug, UG_EVENT_LANG_CHANGE, nullptr, m_ops.priv);
    EXPECT_EQ(1, m_log.Count("Null arguments", DLOG_WARN));
    ug_set_window(nullptr);
    EXPECT_EQ(nullptr, Create());
    EXPECT_TRUE(m_log.Has("pUgWin is null", DLOG_WARN));
    ug_set_window(m_pWindow);
    Start();
    Message(nullptr);
    EXPECT_TRUE(m_log.Has("service get extra data failed", DLOG_WARN));
    EXPECT_EQ(1, m_log.Count("Core initialized successfully"));

    m_ops.destroy(&m_ug, nullptr, m_ops.priv);
    EXPECT_EQ(nullptr, m_slot);
    EXPECT_TRUE(m_log.Has("Ug destroyed"));
    EXPECT_TRUE(m_log.Has("TTML destroyed"));
    m_log.Clear();
    m_ops.start(&m_ug, nullptr, m_ops.priv);
    m_ops.pause(&m_ug, nullptr, m_ops.priv);
    m_ops.resume(&m_ug, nullptr, m_ops.priv);
    Message("show");
    m_ops.destroy(&m_ug, nullptr, m_ops.priv);
    EXPECT_EQ(5, m_log.Count("pUG is null", DLOG_WARN));
    EXPECT_EQ(nullptr, Create());
    EXPECT_TRUE(m_log.Has("Return coz pUG is null", DLOG_WARN));
}

// Views come and go while documents flow: no crash, leak (address sanitizer)
// or deadlock (the main loop fixture's watchdog).
TEST_F(UgTest, LifecycleStorm)
{
    const int kRounds = 12;
    static const char* const kSteps[] = {"show", "hide", "enable", "pause", "resume", "disable", "show"};
    for (int round = 0; round < kRounds; ++round) {
        if (!m_slot) {
            ASSERT_EQ(0, ModuleEntry()(&m_ops));
        }
        Start(round % 3 == 2 ? "broadbandonly" : nullptr);
        for (const char* step : kSteps) {
            if (std::string(step) == "pause")
                m_ops.pause(&m_ug, nullptr, m_ops.priv);
            else if (std::string(step) == "resume")
                m_ops.resume(&m_ug, nullptr, m_ops.priv);
            else
                Message(step);
            // Let the source deliver, the parser and engine work and the main loop draw.
            for (int i = 0; i < 5 + round; ++i) {
                ecore_main_loop_iterate();
                std::this_thread::sleep_for(std::chrono::milliseconds(2));
            }
        }
        m_ops.destroy(&m_ug, nullptr, m_ops.priv);
        ASSERT_EQ(nullptr, m_slot);
    }
    EXPECT_EQ(kRounds, m_log.Count("Ug destroyed"));
    EXPECT_EQ(0, m_log.CountContaining("Assertion failed"));
}

}  // namespace
