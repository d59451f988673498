// A feed played by the real source through the controller and the real
// parser, with the Ecore main loop running, down to the engine's queue.
#include "ControllerFixture.h"

#include "CTTMLSource.h"
#include "LogCapture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace TTML;

namespace {

const std::string kData = INTERTITLE_SOURCE_DIR "/Tests/Controller/data";

struct FeedCase {
    const char* name;
    const char* feed;
    int documents;  // well-formed documents in the feed
    int broken;     // documents the parser must drop
    bool bandMode;
    int seekStarts;
    int engineResets;
    std::vector<std::string> menuCalls;
    bool visibleAtEnd;
};

void PrintTo(const FeedCase& c, std::ostream* os)
{
    *os << c.name;
}

class Feed : public ControllerTest, public ::testing::WithParamInterface<FeedCase> {
public:
    // Main loop: quits once the source is gone and the documents arrived.
    static Eina_Bool Poll_Cb(void* data)
    {
        Feed* self = static_cast<Feed*>(data);
        long long t = 0;
        bool sourceGone = !self->Core()->GetVideoCurrentTime(&t) && self->m_log.Has("pSource is null");
        // Each document the engine reads logs its time base.
        if (sourceGone && self->m_log.CountContaining("timeBase=") >= self->GetParam().documents) {
            ecore_main_loop_quit();
            return ECORE_CALLBACK_CANCEL;
        }
        return ECORE_CALLBACK_RENEW;
    }

    LogCapture m_log;
};

TEST_P(Feed, EveryParsedDocumentReachesTheEngineAndIsFreed)
{
    const FeedCase& c = GetParam();
    CTTMLSource* pSource = new CTTMLSource();
    ASSERT_TRUE(pSource->LoadFeed(kData + "/" + c.feed)) << m_log.Dump();
    ASSERT_TRUE(Core()->Initialize(pSource, Parent()));
    CTTMLMenu::TakeCalls();
    ASSERT_TRUE(pSource->Start());

    Ecore_Timer* pPoll = ecore_timer_add(0.01, Poll_Cb, this);
    bool quit = RunLoop(20.0);
    if (!quit)
        ecore_timer_del(pPoll);
    EXPECT_TRUE(quit) << m_log.Dump();
    EXPECT_EQ(c.visibleAtEnd, RootVisible());

    // The view's order: the source goes first, then the core.
    pSource->Stop();
    pSource->Destroy();
    DestroyCore();
    if (!quit)
        return;

    int dropped = m_log.Count("Unable to create XML DOM!!!", DLOG_WARN) +
                  m_log.CountContaining("Error in processing XML DOM. Error code =", DLOG_WARN);
    EXPECT_EQ(c.broken, dropped) << m_log.Dump();

    EXPECT_EQ(1, m_log.Count(c.bandMode ? "bandMode=1" : "bandMode=0"));
    EXPECT_EQ(c.seekStarts, m_log.CountContaining("milliseconds="));
    EXPECT_EQ(c.seekStarts, m_log.Count("Enter for message Id:6"));
    EXPECT_EQ(c.engineResets, m_log.Count("Engine reset done"));

    // Destroy adds its own hide and the menu's end.
    std::vector<std::string> expected = c.menuCalls;
    for (const char* call : {"SetCaptionDivisionMode(1)", "UnRegisterMenuChangeNotify()", "Destroy()"})
        expected.push_back(call);
    EXPECT_EQ(expected, CTTMLMenu::TakeCalls());
}

INSTANTIATE_TEST_SUITE_P(
    Controller, Feed,
    ::testing::Values(
        FeedCase{"OutOfBand", "outofband.feed", 3, 2, false, 1, 0,
                 {"RegisterVconfKeysForCaption()", "ReadMenuData()", "SetLangInMenu(0)", "SetCaptionDivisionMode(1)",
                  "SetCaptionDivisionMode(1)"},
                 false},
        FeedCase{"InBand", "inband.feed", 2, 0, true, 0, 2, {"SetCaptionDivisionMode(0)"}, true}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
