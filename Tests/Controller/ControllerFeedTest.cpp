// A feed played by the real source through the controller and the real
// parser, with the Ecore main loop running, down to the engine's queue.
#include "ControllerFixture.h"

#include "CTTMLSource.h"
#include "LogCapture.h"
#include "RowPrinter.h"

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
    int divisionCalls;  // show and hide, the core's own hide at destroy included
    int forcedOff;      // of which forced division off
    bool visibleAtEnd;
};

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

    // Captions are off in a fresh key store: every division request keeps mode 0.
    EXPECT_EQ(c.divisionCalls, m_log.Count("Current caption division mode is same as new =[0]")) << m_log.Dump();
    EXPECT_EQ(c.forcedOff, m_log.Count("Setting caption division to default! ForcedOff=1, signLang=0"));
}

INSTANTIATE_TEST_SUITE_P(
    Controller, Feed,
    ::testing::Values(
        FeedCase{"OutOfBand", "outofband.feed", 3, 2, false, 1, 0, 3, 3, false},
        FeedCase{"InBand", "inband.feed", 2, 0, true, 0, 2, 2, 1, true}),
    TTMLTest::RowName());

}  // namespace
