// The caption menu over the key store: the colour and font tables, the
// listeners, keys changed by another process, the caption language, and the
// caption division (the video window drawn on the canvas, regions moved into
// the band, and when the menu changes the mode).
#include "../Graphics/MainLoopFixture.h"

#include "CCaptionDivision.h"
#include "CTTMLMenu.h"
#include "CTVService.h"
#include "CVideoWindow.h"
#include "LogCapture.h"
#include "RowPrinter.h"
#include "ShellRun.h"

#include <Ecore.h>
#include <gtest/gtest.h>
#include <vconf.h>

#include <cstdlib>
#include <fstream>
#include <string>

using namespace TTML;

namespace {

const std::string kTool = INTERTITLE_VCONFTOOL;

// A fresh caption menu and TV service, the video window drawn on the headless
// canvas, a log capture, and a listener that counts menu change notifications.
class MenuTest : public MainLoopTest {
public:
    void SetUp() override
    {
        MainLoopTest::SetUp();
        CTVService::GetInstance().Reset();
        CTTMLMenu::Destroy();
        ASSERT_TRUE(m_video.Initialize(m_canvas.GetEvas()));
        Menu()->RegisterMenuChangeNotify(Count_Cb, &m_notified);
    }

    void TearDown() override
    {
        CTTMLMenu::Destroy();
        m_video.Destroy();
        MainLoopTest::TearDown();
    }

    static CTTMLMenu* Menu() { return CTTMLMenu::GetInstance(); }

    // Captions on, banner up and the viewer's division mode, read by the menu;
    // then division allowed.
    static void SetDivision(int mode)
    {
        ASSERT_EQ(0, vconf_set_int("db/menu/caption/caption", 1));
        ASSERT_EQ(0, vconf_set_bool("memory/tv-viewer/infobanner/ttml", 1));
        ASSERT_EQ(0, vconf_set_int("db/menu/caption/captiondivisionmode", mode));
        Menu()->ReadMenuData();
        Menu()->SetCaptionDivisionMode(false);
    }

    static void Count_Cb(void* data) { ++*static_cast<int*>(data); }

    CVideoWindow m_video;
    LogCapture m_log;
    int m_notified = 0;
};

struct EnumCase {
    const char* name;
    int index;
    const char* colour;  // alpha,red,green,blue; null: refused, target unchanged
    const char* font;
    bool warned;  // refused with a warning (index 0 is refused silently)
};

class Enums : public ::testing::TestWithParam<EnumCase> {};

TEST_P(Enums, MapMenuIndicesToColoursAndFonts)
{
    const EnumCase& c = GetParam();
    LogCapture log;
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    TTMLColor colour{1, 2, 3, 4, false};
    std::string font = "untouched";
    EXPECT_EQ(c.colour != nullptr, pMenu->GetTTMLColorByEnum(c.index, colour));
    EXPECT_EQ(c.font != nullptr, pMenu->GetTTMLFontStyleByEnum(c.index, font));
    EXPECT_EQ(c.colour ? c.colour : "1,2,3,4", std::to_string(colour.alpha) + "," + std::to_string(colour.red) + "," +
                                                   std::to_string(colour.green) + "," + std::to_string(colour.blue));
    EXPECT_EQ(c.colour != nullptr, colour.defaultOpacity);
    EXPECT_EQ(c.font ? c.font : "untouched", font);
    EXPECT_EQ(c.warned ? 2 : 0, log.Count("Wrong Color selected.") + log.Count("Wrong Font Style selected."));
    CTTMLMenu::Destroy();
}

INSTANTIATE_TEST_SUITE_P(Menu, Enums,
                         ::testing::Values(EnumCase{"Document", 0, nullptr, nullptr, false},
                                           EnumCase{"White", 1, "65535,65535,65535,65535", "monospaceserif", false},
                                           EnumCase{"Red", 3, "65535,65535,0,0", "Cpf02", false},
                                           EnumCase{"Cyan", 8, "65535,0,65535,65535", "Cpf07", false},
                                           EnumCase{"Nine", 9, nullptr, nullptr, true},
                                           EnumCase{"Negative", -1, nullptr, nullptr, true}),
                         TTMLTest::RowName());

TEST_F(MenuTest, ListenersAreKeptOncePerFunctionWithTheFirstData)
{
    int other = 0;
    Menu()->RegisterMenuChangeNotify(Count_Cb, &other);
    EXPECT_EQ(&m_notified, Menu()->UnRegisterMenuChangeNotify(Count_Cb));
    EXPECT_EQ(nullptr, Menu()->UnRegisterMenuChangeNotify(Count_Cb));
    EXPECT_EQ(1, m_log.Count("Callback info not found!"));
}

// The settings change in another process while the menu watches them: each
// lands in the record on the main loop; only the division calls listeners.
TEST_F(MenuTest, KeysChangedByAnotherProcessReachTheRecordOnTheMainLoop)
{
    ASSERT_TRUE(Menu()->RegisterVconfKeysForCaption());
    ASSERT_TRUE(Menu()->ReadMenuData());
    Menu()->SetCaptionDivisionMode(false);
    ecore_job_add([](void*) {
        Shell(kTool + " set -t int db/menu/caption/digitalcaptionoptions/fontcolor 6 && " + kTool +
              " set -t int db/menu/caption/digitalcaptionoptions/size 3 && " + kTool +
              " set -t int db/menu/caption/digitalcaptionoptions/fontopacity 1 && " + kTool +
              " set -t int db/menu/caption/caption 1 && " + kTool +
              " set -t bool memory/tv-viewer/infobanner/ttml 1 && " + kTool +
              " set -t int db/menu/caption/captiondivisionmode 1");
    }, nullptr);
    ASSERT_TRUE(RunUntil([] { return Menu()->GetCaptionDivisionMode() == 1; })) << m_log.Dump();
    const TTMLMenuOption& d = *Menu()->GetTTMLMenuData();
    EXPECT_EQ(6, d.fontColor);
    EXPECT_EQ(3, d.size);
    EXPECT_EQ(1, d.fontOpacity);
    EXPECT_EQ(1, m_notified) << "the division change alone";

    // Stopped watching: a later change is not seen.
    ASSERT_TRUE(Menu()->UnregisterVconfKeysForCaption());
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/digitalcaptionoptions/fontcolor", 2));
    int stop = 0;
    auto stop_Cb = +[](keynode_t*, void* p) { *static_cast<int*>(p) = 1; };
    ASSERT_EQ(0, vconf_notify_key_changed("test/menu/stop", stop_Cb, &stop));
    ASSERT_EQ(0, vconf_set_int("test/menu/stop", 2));
    ASSERT_TRUE(RunUntil([&] { return stop == 1; }));
    EXPECT_EQ(0, vconf_ignore_key_changed("test/menu/stop", stop_Cb));
    EXPECT_EQ(6, d.fontColor);
}

TEST_F(MenuTest, AnUnreadableKeyKeepsItsFieldAndTheOthersAreStillRead)
{
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/digitalcaptionoptions/size", 2));
    ASSERT_TRUE(Menu()->ReadMenuData());
    ASSERT_EQ(2, Menu()->GetTTMLMenuData()->size);
    std::ofstream(std::string(getenv("VCONF_ROOT")) + "/db/menu/caption/digitalcaptionoptions/size") << "garbage\n";
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/digitalcaptionoptions/edgetype", 5));
    EXPECT_TRUE(Menu()->ReadMenuData());
    EXPECT_EQ(2, Menu()->GetTTMLMenuData()->size);
    EXPECT_EQ(5, Menu()->GetTTMLMenuData()->edgeType);
    EXPECT_TRUE(m_log.Has("Unable to get vconf int value for: [db/menu/caption/digitalcaptionoptions/size]"));
}

// --- Caption language -----------------------------------------------------------

struct LangCase {
    const char* name;
    int sourceMode;
    bool terminated;
    bool tuned;
    int tracks;     // eng, fra, deu, ... the first `tracks` of them
    int preferred;  // -1: none
    int written;    // the language key afterwards; 9 = not written
    const char* log;
};

void ServeTracks(bool tuned, int tracks, int preferred, int current)
{
    const std::vector<CTVService::Track> all = {{"a", "eng"}, {"b", "fra"}, {"c", "deu"}};
    CTVService::GetInstance().SetService(tuned, 77);
    CTVService::GetInstance().SetCaptionTracks(std::vector<CTVService::Track>(all.begin(), all.begin() + tracks),
                                               preferred, current);
}

class SetLang : public MenuTest, public ::testing::WithParamInterface<LangCase> {};

TEST_P(SetLang, WritesThePreferredTrackIntoTheKey)
{
    const LangCase& c = GetParam();
    ServeTracks(c.tuned, c.tracks, c.preferred, 0);
    CTVService::GetInstance().SetTerminated(c.terminated);
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/captionlanguage", 9));
    Menu()->SetLangInMenu(c.sourceMode);
    int lang = -1;
    ASSERT_EQ(0, vconf_get_int("db/menu/caption/captionlanguage", &lang));
    EXPECT_EQ(c.written, lang);
    EXPECT_TRUE(m_log.Has(c.log)) << m_log.Dump();
}

INSTANTIATE_TEST_SUITE_P(
    Menu, SetLang,
    ::testing::Values(
        LangCase{"NoCaptionBit", 0x47, false, true, 3, 2, 9, "Caption Mode is not supported = [71]"},
        LangCase{"ServiceDown", 8, true, true, 3, 2, 9, "TVS is down!"},
        LangCase{"NothingTuned", 8, false, false, 3, 2, 9, "SizeOfCaption failed!!"},
        LangCase{"NoTracks", 8, false, true, 0, -1, 0, "No caption found!"},
        LangCase{"Preferred", 9, false, true, 3, 2, 2, "Preferred Caption Data:[ID:c][LANG:0x646575][index:2]"},
        // A preferred index equal to the track count names no track.
        LangCase{"NoPreferred", 8, false, true, 3, 3, 0, "GetPreferredCaption failed!!"}),
    TTMLTest::RowName());

struct SelectCase {
    const char* name;
    int lang;  // written into the key; the service has three tracks, 0 current
    bool terminated;
    int current;  // the service's current track afterwards
    const char* log;
};

class SelectLang : public MenuTest, public ::testing::WithParamInterface<SelectCase> {};

TEST_P(SelectLang, AChangedKeyMakesTheTrackCurrent)
{
    const SelectCase& c = GetParam();
    ServeTracks(true, 3, 1, 0);
    ASSERT_TRUE(Menu()->RegisterVconfKeysForCaption());
    CTVService::GetInstance().SetTerminated(c.terminated);
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/captionlanguage", c.lang));
    ASSERT_TRUE(RunUntil([this] { return m_log.HasContaining("name:[db/menu/caption/captionlanguage]"); }));
    CTVService::GetInstance().SetTerminated(false);
    TCCaption caption;
    unsigned int current = 99;
    ASSERT_TRUE(CTVService::GetInstance().GetCaption(false, caption, current));
    EXPECT_EQ(static_cast<unsigned int>(c.current), current);
    EXPECT_EQ(c.lang, Menu()->GetTTMLMenuData()->lang);
    EXPECT_TRUE(m_log.Has(c.log)) << m_log.Dump();
}

INSTANTIATE_TEST_SUITE_P(
    Menu, SelectLang,
    ::testing::Values(
        SelectCase{"Other", 2, false, 2, "Current Caption Data:[ID:a][LANG:0x656e67][index:0]"},
        SelectCase{"AlreadyCurrent", 0, false, 0,
                   "No need to call SetCurrentCaption as selected caption is already set."},
        // Not smaller than the count: handed over, and the service refuses it.
        SelectCase{"EqualToCount", 3, false, 0, "SetCurrentCaption failed."},
        SelectCase{"BeyondCount", 4, false, 0, "Invalid Size!"},
        SelectCase{"ServiceDown", 1, true, 0, "TVS is terminated"}),
    TTMLTest::RowName());

TEST(TVService, ReadsItsServiceAndTracksFromAFile)
{
    const std::string path = std::string(getenv("VCONF_ROOT")) + "/tvservice.conf";
    std::ofstream(path) << "# a service with two tracks\nservice 4660\ncaption 10 eng current\ncaption 11 fra preferred\n";
    CTVService& tvs = CTVService::GetInstance();
    ASSERT_TRUE(tvs.LoadConfig(path));
    unsigned int count = 0, preferred = 9, current = 9;
    TCCaption caption;
    EXPECT_TRUE(tvs.GetCaptionCount(4660, count) && tvs.GetCaption(false, caption, current) &&
                tvs.GetCaption(true, caption, preferred));
    EXPECT_EQ(2u, count);
    EXPECT_EQ(0u, current);
    EXPECT_EQ(1u, preferred);
    EXPECT_EQ("11", caption.id);
    EXPECT_EQ(0x667261u, caption.lang);
    EXPECT_FALSE(tvs.IsTerminated());

    std::ofstream(path) << "service 1\ncaption 10 english\n";
    EXPECT_FALSE(tvs.LoadConfig(path)) << "a language is three letters";
    EXPECT_FALSE(tvs.GetCaptionCount(1, count)) << "state reset";
    tvs.Reset();
}

// ---- Caption division ----

std::string Str(const TTMLRect<int>& r)
{
    return std::to_string(r.x) + "," + std::to_string(r.y) + "," + std::to_string(r.w) + "," + std::to_string(r.h);
}

struct DivisionCase {
    const char* name;
    int mode;
    const char* video;      // the TV service's video window, x,y,w,h
    TTMLRect<int> region;   // a region before ...
    const char* moved;      // ... and after ApplyCaptionDivToRegion; null: refused, unchanged
};

class Division : public MenuTest, public ::testing::WithParamInterface<DivisionCase> {};

TEST_P(Division, ShrinksTheVideoAndMovesRegionsIntoTheBand)
{
    const DivisionCase& c = GetParam();
    SetDivision(c.mode);
    ASSERT_EQ(c.mode, Menu()->GetCaptionDivisionMode()) << m_log.Dump();
    EXPECT_EQ(c.video, Str(CTVService::GetInstance().GetVideoRect()));

    TTMLRect<int> region = c.region;
    EXPECT_EQ(c.moved != nullptr, Menu()->ApplyCaptionDivToRegion(region));
    EXPECT_EQ(c.moved ? c.moved : Str(c.region), Str(region));

    // The picture is drawn in the video window; the band below or above is free.
    const TTMLRect<int>& v = CaptionDivisionPos[c.mode];
    EXPECT_NE(0u, m_canvas.GetPixel(v.x + v.w / 2, v.y + v.h / 2));
    const TTMLRect<int>& band = CaptionDivisionArea[c.mode];
    if (c.mode != 0) {
        EXPECT_EQ(0u, m_canvas.GetPixel(band.x + band.w / 2, band.y + band.h / 2));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Menu, Division,
    ::testing::Values(
        DivisionCase{"FullPicture", 0, "0,0,1920,1080", {100, 900, 1700, 100}, nullptr},
        DivisionCase{"BandBelow", 1, "0,0,1920,739", {100, 900, 1700, 100}, "100,767,1700,100"},
        // Ends beyond the band's width: shifted left to end there.
        DivisionCase{"BandBelowShifted", 1, "0,0,1920,739", {500, 800, 1500, 50}, "360,767,1500,50"},
        // Exactly as wide as the band: still shifted, not clipped.
        DivisionCase{"BandWideShifted", 1, "0,0,1920,739", {100, 800, 1860, 50}, "0,767,1860,50"},
        // Wider and taller than the band: clipped to it.
        DivisionCase{"BandAbove", 2, "0,341,1920,739", {0, 0, 1920, 400}, "31,29,1860,284"},
        DivisionCase{"CentredBandBelow", 3, "303,0,1314,739", {10, 100, 200, 300}, "31,767,200,284"},
        DivisionCase{"CentredBandAbove", 4, "303,341,1314,739", {1800, 1000, 60, 20}, "1800,29,60,20"}),
    TTMLTest::RowName());

// What the menu's state makes of a division request.
struct DecisionCase {
    const char* name;
    int startMode;  // in force before
    int status, banner, divisionMode, signLang;
    bool forcedOff;
    bool terminated;  // TV service down
    int mode;         // in force after
    const char* log;  // a line the decision logs
};

class Decision : public MenuTest, public ::testing::WithParamInterface<DecisionCase> {};

TEST_P(Decision, ChangesTheModeOnlyWhenAllowedAndNotifiesOnlyOnChange)
{
    const DecisionCase& c = GetParam();
    SetDivision(c.startMode);
    ASSERT_EQ(c.startMode, Menu()->GetCaptionDivisionMode());
    const int notified = m_notified;
    const int resizes = CTVService::GetInstance().GetResizeCount();
    CTVService::GetInstance().SetTerminated(c.terminated);
    vconf_set_int("db/menu/caption/caption", c.status);
    vconf_set_bool("memory/tv-viewer/infobanner/ttml", c.banner);
    vconf_set_int("db/menu/caption/captiondivisionmode", c.divisionMode);
    vconf_set_int("memory/menu/system/accessibility/signlanguage", c.signLang);
    Menu()->ReadMenuData();
    m_log.Clear();
    Menu()->SetCaptionDivisionMode(c.forcedOff);
    EXPECT_EQ(c.mode, Menu()->GetCaptionDivisionMode());
    const int changes = c.mode != c.startMode;
    EXPECT_EQ(changes, m_notified - notified) << "listeners hear of changes only";
    EXPECT_EQ(changes, CTVService::GetInstance().GetResizeCount() - resizes);
    EXPECT_TRUE(m_log.Has(c.log)) << m_log.Dump();
}

INSTANTIATE_TEST_SUITE_P(
    Menu, Decision,
    ::testing::Values(
        DecisionCase{"ForcedOff", 1, 1, 1, 1, 0, true, false, 0,
                     "Setting caption division to default! ForcedOff=1, signLang=0"},
        DecisionCase{"SignLanguage", 3, 1, 1, 3, 1, false, false, 0,
                     "Setting caption division to default! ForcedOff=0, signLang=1"},
        DecisionCase{"MenuModeZero", 2, 1, 1, 0, 0, false, false, 0, "Resetting video size to default"},
        DecisionCase{"Allowed", 0, 1, 1, 3, 0, false, false, 3, "Resizing video for x=303, y=0, h=739, w=1314"},
        DecisionCase{"BannerDown", 0, 1, 0, 3, 0, false, false, 0, "Not correct state to set caption division mode. "},
        DecisionCase{"CaptionsOff", 0, 0, 1, 2, 0, false, false, 0, "Menu Status=[0], div Mode=[2], CC Banner Flag=[1]"},
        DecisionCase{"SameMode", 1, 1, 1, 1, 0, false, false, 1, "Current caption division mode is same as new =[1]"},
        DecisionCase{"ModeAboveFour", 1, 1, 1, 7, 0, false, false, 0, "Invalid caption division=7"},
        DecisionCase{"TvServiceDown", 0, 1, 1, 2, 0, false, true, 0, "pVideoCtrl is null!"}),
    TTMLTest::RowName());

}  // namespace
