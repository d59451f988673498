// The caption menu over the key store: the colour and font tables, the
// listeners, keys changed by another process, and the caption language.
#include "MenuFixture.h"

#include "ShellRun.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

using namespace TTML;

namespace {

const std::string kTool = INTERTITLE_VCONFTOOL;

struct EnumCase {
    int index;
    const char* colour;  // alpha,red,green,blue; null: refused, target unchanged
    const char* font;
    const char* warning;  // for refused indices other than 0
};

void PrintTo(const EnumCase& c, std::ostream* os)
{
    *os << "index " << c.index;
}

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
    char text[64];
    std::snprintf(text, sizeof text, "%u,%u,%u,%u", colour.alpha, colour.red, colour.green, colour.blue);
    EXPECT_EQ(c.colour ? c.colour : "1,2,3,4", std::string(text));
    EXPECT_EQ(c.colour != nullptr, colour.defaultOpacity);
    EXPECT_EQ(c.font ? c.font : "untouched", font);
    EXPECT_EQ(c.warning ? 2 : 0, log.Count("Wrong Color selected.") + log.Count("Wrong Font Style selected."));
    CTTMLMenu::Destroy();
}

INSTANTIATE_TEST_SUITE_P(Menu, Enums,
                         ::testing::Values(EnumCase{0, nullptr, nullptr, nullptr},
                                           EnumCase{1, "65535,65535,65535,65535", "monospaceserif", nullptr},
                                           EnumCase{3, "65535,65535,0,0", "Cpf02", nullptr},
                                           EnumCase{8, "65535,0,65535,65535", "Cpf07", nullptr},
                                           EnumCase{9, nullptr, nullptr, "wrong"},
                                           EnumCase{-1, nullptr, nullptr, "wrong"}));

TEST_F(MenuTest, ListenersAreKeptOncePerFunctionWithTheFirstData)
{
    int other = 0;
    Menu()->RegisterMenuChangeNotify(Count_Cb, &other);
    EXPECT_EQ(&m_notified, Menu()->UnRegisterMenuChangeNotify(Count_Cb));
    EXPECT_EQ(nullptr, Menu()->UnRegisterMenuChangeNotify(Count_Cb));
    EXPECT_EQ(1, m_log.Count("Callback info not found!"));
}

void Stop_Cb(keynode_t*, void* p)
{
    *static_cast<int*>(p) = 1;
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
              " set -t int db/menu/caption/caption 1 && " + kTool +
              " set -t bool memory/tv-viewer/infobanner/ttml 1 && " + kTool +
              " set -t int db/menu/caption/captiondivisionmode 1");
    }, nullptr);
    ASSERT_TRUE(RunUntil([] { return Menu()->GetCaptionDivisionMode() == 1; })) << m_log.Dump();
    const TTMLMenuOption& d = *Menu()->GetTTMLMenuData();
    EXPECT_EQ(6, d.fontColor);
    EXPECT_EQ(3, d.size);
    EXPECT_EQ(1, d.status);
    EXPECT_EQ(1, d.ccBannerFlag);
    EXPECT_EQ(1, m_notified) << "the division change alone";
    EXPECT_EQ(739, CTVService::GetInstance().GetVideoRect().h);
    EXPECT_EQ(0u, m_canvas.GetPixel(960, 900)) << "the band below the picture is free";

    // Stopped watching: a later change is not seen.
    ASSERT_TRUE(Menu()->UnregisterVconfKeysForCaption());
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/digitalcaptionoptions/fontcolor", 2));
    int stop = 0;
    ASSERT_EQ(0, vconf_notify_key_changed("test/menu/stop", Stop_Cb, &stop));
    ASSERT_EQ(0, vconf_set_int("test/menu/stop", 2));
    ASSERT_TRUE(RunUntil([&] { return stop == 1; }));
    EXPECT_EQ(0, vconf_ignore_key_changed("test/menu/stop", Stop_Cb));
    EXPECT_EQ(6, d.fontColor);
}

TEST_F(MenuTest, AnUnreadableKeyKeepsItsFieldAndTheOthersAreStillRead)
{
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/digitalcaptionoptions/size", 2));
    ASSERT_TRUE(Menu()->ReadMenuData());
    ASSERT_EQ(2, Menu()->GetTTMLMenuData()->size);
    FILE* f = std::fopen((std::string(getenv("VCONF_ROOT")) + "/db/menu/caption/digitalcaptionoptions/size").c_str(), "w");
    ASSERT_NE(nullptr, f);
    std::fputs("garbage\n", f);
    std::fclose(f);
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
        LangCase{"NoPreferred", 8, false, true, 3, -1, 0, "GetPreferredCaption failed!!"}),
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
    FILE* f = std::fopen(path.c_str(), "w");
    ASSERT_NE(nullptr, f);
    std::fputs("# a service with two tracks\nservice 4660\ncaption 10 eng current\ncaption 11 fra preferred\n", f);
    std::fclose(f);
    CTVService& tvs = CTVService::GetInstance();
    ASSERT_TRUE(tvs.LoadConfig(path));
    unsigned int count = 0;
    EXPECT_TRUE(tvs.GetCaptionCount(4660, count));
    EXPECT_EQ(2u, count);
    TCCaption caption;
    unsigned int index = 0;
    ASSERT_TRUE(tvs.GetCaption(true, caption, index));
    EXPECT_EQ("11", caption.id);
    EXPECT_EQ(0x667261u, caption.lang);
    EXPECT_EQ(1u, index);
    ASSERT_TRUE(tvs.GetCaption(false, caption, index));
    EXPECT_EQ(0u, index);
    EXPECT_FALSE(tvs.IsTerminated());

    f = std::fopen(path.c_str(), "w");
    std::fputs("service 1\ncaption 10 english\n", f);
    std::fclose(f);
    EXPECT_FALSE(tvs.LoadConfig(path)) << "a language is three letters";
    EXPECT_FALSE(tvs.GetCaptionCount(1, count)) << "state reset";
    tvs.Reset();
}

}  // namespace
