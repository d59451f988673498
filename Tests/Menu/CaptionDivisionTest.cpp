// Caption division: the video window per mode (drawn on the canvas), regions
// moved into the band, and when the menu changes the mode.
#include "MenuFixture.h"

#include "CCaptionDivision.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

using namespace TTML;

namespace {

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
    EXPECT_EQ(c.video, Str(CaptionDivisionPos[c.mode]));

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
