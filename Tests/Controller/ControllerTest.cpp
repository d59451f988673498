#include "ControllerFixture.h"
#include "../Engine/DocumentLedger.h"

#include "LogCapture.h"
#include "RowPrinter.h"
#include "SeekNotifyData.h"
#include "StartNotifyData.h"
#include "SubRawData.h"

#include <gtest/gtest.h>
#include <vconf.h>


using namespace TTML;

namespace {

// Index of the first line at or after `from` whose text contains `part`; -1 if none.
int LineIndex(const LogCapture& log, const std::string& part, int from = 0)
{
    std::vector<LogCapture::Line> lines = log.Lines();
    for (int i = from; i < static_cast<int>(lines.size()); ++i)
        if (lines[i].text.find(part) != std::string::npos)
            return i;
    return -1;
}

// Lines containing each part, in this order.
::testing::AssertionResult InOrder(const LogCapture& log, const std::vector<std::string>& parts)
{
    int at = -1;
    for (const std::string& part : parts) {
        if ((at = LineIndex(log, part, at + 1)) < 0)
            return ::testing::AssertionFailure() << "no \"" << part << "\" after the one before\n" << log.Dump();
    }
    return ::testing::AssertionSuccess();
}

class Controller : public ControllerTest {
public:
    // An initialised core listening to m_source.
    void Start(int mode = 0)
    {
        m_source.mode = mode;
        ASSERT_TRUE(Core()->Initialize(&m_source, Parent()));
    }

    ScriptedSource m_source;
};

// --- Initialisation ----------------------------------------------------------

TEST_F(Controller, InitializeNeedsASourceCreatesEverythingAndRunsOnce)
{
    LogCapture log;
    EXPECT_FALSE(Core()->Initialize(nullptr, Parent()));
    EXPECT_TRUE(log.Has("pSource NULL pointer error", DLOG_ERROR));
    EXPECT_EQ(nullptr, RootObject());
    EXPECT_EQ(nullptr, CMainThreadUtils::GetInstance());

    Start(66);
    EXPECT_EQ(1, m_source.registrations);
    EXPECT_EQ(Core(), m_source.UserData());
    EXPECT_EQ(1, m_source.modeReads) << "read once for engine and parser";
    EXPECT_NE(nullptr, RootObject());
    EXPECT_NE(nullptr, CMainThreadUtils::GetInstance());

    ScriptedSource other;
    EXPECT_FALSE(Core()->Initialize(&other, Parent()));
    EXPECT_TRUE(log.Has("Already initialized", DLOG_WARN));
    EXPECT_EQ(0, other.registrations);
    long long t = 0;
    m_source.mediaTime = 42;
    EXPECT_TRUE(Core()->GetVideoCurrentTime(&t));
    EXPECT_EQ(42, t);
}

// A parser's Initialize fails only when run twice, which the controller
// never does: its unwinding is not reachable from outside.
struct InitFailureCase {
    const char* name;
    bool engineFails;                // a rival engine exists; otherwise the graphics have no parent
    std::vector<std::string> lines;  // logged in this order
};

class InitFailure : public Controller, public ::testing::WithParamInterface<InitFailureCase> {};

TEST_P(InitFailure, UnwindsInReverseAndLeavesNothingBehind)
{
    const InitFailureCase& c = GetParam();
    IGraphics* pRivalGraphics = c.engineFails ? IGraphics::Create() : nullptr;
    CEngine* pRival = c.engineFails ? new CEngine(pRivalGraphics) : nullptr;
    if (pRival) {
        ASSERT_TRUE(pRival->Initialize(0));
    }

    LogCapture log;
    EXPECT_FALSE(Core()->Initialize(&m_source, c.engineFails ? Parent() : nullptr));
    EXPECT_TRUE(InOrder(log, c.lines));

    // Nothing is left: no graphics, no live engine, no listening.
    EXPECT_EQ(nullptr, RootObject());
    EXPECT_EQ(nullptr, CMainThreadUtils::GetInstance());
    EXPECT_EQ(0, m_source.registrations);
    EXPECT_EQ(-1, LineIndex(log, "CEngine.cpp: Destroy(")) << "no engine was left to destroy";
    if (pRival) {
        pRival->Destroy();
        delete pRival;
        pRivalGraphics->Destroy();
    }

    // The same core can be initialised once the cause is gone.
    EXPECT_TRUE(Core()->Initialize(&m_source, Parent()));
    EXPECT_EQ(1, m_source.registrations);
}

INSTANTIATE_TEST_SUITE_P(
    Controller, InitFailure,
    ::testing::Values(InitFailureCase{"Graphics", false,
                                      {"pParent is null", "Unable to create graphics", "graphics not created!"}},
                      InitFailureCase{"Engine", true,
                                      {"Already created", "Error in m_pEngine->Initialize", "engine not created!"}}),
    TTMLTest::RowName());

// --- Bad payloads and unknown ids ---------------------------------------------

struct PayloadCase {
    const char* name;
    int msgId;
    bool withoutCore;     // a record naming no core; otherwise no payload at all
    const char* warning;  // null: none expected
    bool readsMenu;       // the menu re-reads its keys
};

class BadPayload : public Controller, public ::testing::WithParamInterface<PayloadCase> {};

TEST_P(BadPayload, IsRefusedWithItsWarningAndReachesNothing)
{
    const PayloadCase& c = GetParam();
    Start();
    // Keys watched and read once; a later change is seen only by a new read.
    ASSERT_TRUE(m_source.Send(TTML_SOURCE_MSG_MENU_REGISTER, nullptr));
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/digitalcaptionoptions/size", 3));
    StartNotifyData start;
    SeekNotifyData seek;
    void* pPayload = nullptr;
    if (c.withoutCore)  // the XML record is freed by the controller (the address sanitizer sees a leak otherwise)
        pPayload = c.msgId == TTML_SOURCE_MSG_XML_DATA ? static_cast<void*>(new SubRawData())
                   : c.msgId == TTML_SOURCE_MSG_START  ? static_cast<void*>(&start)
                                                       : static_cast<void*>(&seek);
    LogCapture log;
    ASSERT_TRUE(m_source.Send(c.msgId, pPayload));
    int warnings = 0;
    for (const LogCapture::Line& line : log.Lines())
        warnings += line.prio == DLOG_WARN;
    EXPECT_EQ(c.warning ? 1 : 0, warnings) << log.Dump();
    EXPECT_TRUE(!c.warning || log.Has(c.warning, DLOG_WARN)) << c.warning;
    EXPECT_EQ(c.readsMenu ? 3 : 0, CTTMLMenu::GetInstance()->GetTTMLMenuData()->size);
    EXPECT_EQ(-1, LineIndex(log, "CEngine.cpp:")) << "nothing reached the engine\n" << log.Dump();
    EXPECT_TRUE(RootVisible()) << "neither shown nor hidden";
    EXPECT_EQ(0, m_source.unregistrations);
}

INSTANTIATE_TEST_SUITE_P(
    Controller, BadPayload,
    ::testing::Values(PayloadCase{"XmlData", 0, false, "Invalid pData", false},
                      PayloadCase{"XmlDataWithoutCore", 0, true, "Invalid controller/parser object", false},
                      PayloadCase{"Start", 1, false, "Invalid pData", false},
                      PayloadCase{"StartWithoutCore", 1, true, "Invalid user data", false},
                      PayloadCase{"Stop", 2, false, "Invalid user param: pData", false},
                      PayloadCase{"SeekStart", 6, false, "Invalid pData", false},
                      PayloadCase{"SeekStartWithoutCore", 6, true, "Invalid user data", false},
                      // The menu messages ignore their payload.
                      PayloadCase{"MenuRegister", 8, false, nullptr, true},
                      PayloadCase{"MenuUnregister", 9, false, nullptr, false},
                      PayloadCase{"MenuLang", 10, false, "null pointer error !", false},
                      PayloadCase{"Show", 11, false, "Error: null pointer", false},
                      PayloadCase{"Fourteen", 14, false, "Invalid message", false},
                      PayloadCase{"Negative", -1, false, "Invalid message", false}),
    TTMLTest::RowName());

// --- Documents ------------------------------------------------------------------

// The source's text is parsed on the parser's thread and handed to the
// engine through the controller; a broken twin goes no further.
TEST_F(Controller, ParsedXmlReachesTheEngineAndBrokenXmlIsDropped)
{
    Start();
    SendStart(m_source, false);
    LogCapture log;
    for (const std::string& xml : {kEbuDocument, kEbuDocument.substr(0, kEbuDocument.size() / 2), kEbuDocument}) {
        SubRawData* pRaw = new SubRawData();
        pRaw->profile = 2;
        pRaw->xmlData = xml;
        pRaw->pCore = Core();
        ASSERT_TRUE(m_source.Send(TTML_SOURCE_MSG_XML_DATA, pRaw));
    }
    // Each document the engine reads logs its time base.
    auto dropped = [&] {
        return log.Count("Unable to create XML DOM!!!", DLOG_WARN) +
               log.CountContaining("Error in processing XML DOM. Error code =", DLOG_WARN);
    };
    ASSERT_TRUE(RunUntil([&] { return log.CountContaining("timeBase=") >= 2 && dropped() >= 1; }));
    EXPECT_EQ(2, log.CountContaining("timeBase=")) << log.Dump();
    EXPECT_EQ(1, dropped());
}

TEST_F(Controller, TheEngineOwnsQueuedDocumentsAndNullIsRefused)
{
    Start();
    LogCapture log;
    DocumentLedger ledger;
    EXPECT_TRUE(Core()->AddSubtitleInfo(MakeDocument(ledger, {})));
    // Null would end the engine thread: refused, and the warning says so.
    EXPECT_FALSE(Core()->AddSubtitleInfo(nullptr));
    EXPECT_TRUE(log.Has("Error in adding subtitle info into engine queue", DLOG_WARN));
    DestroyCore();
    EXPECT_EQ(std::vector<int>{1}, ledger.Counts()) << "the engine owned it and freed it once";
}

// --- Playback notifications ---------------------------------------------------

struct PlaybackCase {
    const char* name;
    std::vector<bool> startBandModes;  // one start each, in order
    std::vector<int> messages;         // then these, with their payloads
    int seeks;                         // seek start and completed that reach the engine
    bool reset;                        // parser and engine reset
    int pauses;                        // pauses and resumes that reach the engine
    int resumes;
};

class Playback : public Controller, public ::testing::WithParamInterface<PlaybackCase> {};

TEST_P(Playback, ReachesTheEngineOrResetsIt)
{
    const PlaybackCase& c = GetParam();
    Start();
    for (bool band : c.startBandModes)
        SendStart(m_source, band);

    LogCapture log;
    SeekNotifyData seek;
    seek.position = 90061001;
    seek.pCore = Core();
    for (int id : c.messages)
        ASSERT_TRUE(m_source.Send(id, id == TTML_SOURCE_MSG_SEEK_START ? static_cast<void*>(&seek) : Core()));
    RunUntilIdle();

    EXPECT_EQ(c.seeks, log.Count("milliseconds=90061001"));
    EXPECT_EQ(c.seeks, log.Count("Enter for message Id:5"));
    EXPECT_EQ(c.seeks, log.Count("Enter for message Id:6"));
    EXPECT_EQ(c.reset ? 1 : 0, log.Count("Engine reset done"));
    EXPECT_EQ(c.reset, log.Has("Reset is done"));
    // Nothing is armed: the timer manager remembers a pause for the next timer.
    EXPECT_EQ(c.pauses, log.Count("No timer; the next one starts paused")) << log.Dump();
    EXPECT_EQ(c.resumes, log.Count("No timer to resume"));
    // Reset or not, the engine is still there for the next start.
    SendStart(m_source, false);
    EXPECT_TRUE(log.Has("bandMode=0"));
}

const std::vector<int> kSeek = {TTML_SOURCE_MSG_SEEK_START, TTML_SOURCE_MSG_SEEK_COMPLETED};

INSTANTIATE_TEST_SUITE_P(
    Controller, Playback,
    ::testing::Values(PlaybackCase{"SeekOutOfBand", {false}, kSeek, 1, false, 0, 0},
                      PlaybackCase{"SeekInBandResets", {true}, kSeek, 0, true, 0, 0},
                      PlaybackCase{"BandModeEndsAtNextStart", {true, false}, kSeek, 1, false, 0, 0},
                      PlaybackCase{"Stop", {false}, {TTML_SOURCE_MSG_STOP}, 0, true, 0, 0},
                      PlaybackCase{"PauseResume", {false},
                                   {TTML_SOURCE_MSG_PAUSE, TTML_SOURCE_MSG_PAUSE, TTML_SOURCE_MSG_RESUME}, 0, false, 2, 1}),
    TTMLTest::RowName());

// --- Show, hide and the menu ------------------------------------------------------

struct ShowCase {
    const char* name;
    int mode;
    int divisionOnShow;  // caption division mode in force while shown
};

class ShowHide : public Controller, public ::testing::WithParamInterface<ShowCase> {};

TEST_P(ShowHide, DivisionIsForcedOffUnlessTheModeAllowsItAndHideAlwaysForcesIt)
{
    const ShowCase& c = GetParam();
    // The viewer asked for division mode 1, with captions on and the banner up.
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/caption", 1));
    ASSERT_EQ(0, vconf_set_bool("memory/tv-viewer/infobanner/ttml", 1));
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/captiondivisionmode", 1));
    Start(c.mode);
    ASSERT_TRUE(m_source.Send(TTML_SOURCE_MSG_MENU_REGISTER, Core()));
    CTTMLMenu* pMenu = CTTMLMenu::GetInstance();
    for (int show : {0, 1, 0}) {
        ASSERT_TRUE(m_source.Send(show ? TTML_SOURCE_MSG_SHOW : TTML_SOURCE_MSG_HIDE, Core()));
        EXPECT_EQ(show != 0, RootVisible());
        EXPECT_EQ(show ? c.divisionOnShow : 0, pMenu->GetCaptionDivisionMode()) << show;
    }
    EXPECT_EQ(1080, CTVService::GetInstance().GetVideoRect().h) << "full picture after hide";
}

INSTANTIATE_TEST_SUITE_P(Controller, ShowHide,
                         ::testing::Values(ShowCase{"ModeZero", 0, 0}, ShowCase{"ModeTwo", 2, 0},
                                           ShowCase{"ModeEight", 8, 1}, ShowCase{"ModeNine", 9, 1},
                                           ShowCase{"ModeAllButEight", ~8, 0}),
                         TTMLTest::RowName());

// --- With and without the source ----------------------------------------------

TEST_F(Controller, AfterInvalidateOnlySourceRequestsFailAndTheRestLivesOn)
{
    CTVService::GetInstance().SetService(true, 7);
    CTVService::GetInstance().SetCaptionTracks({{"1", "eng"}, {"2", "deu"}}, 1, 0);
    Start(72);
    m_source.fonts = {"a.ttf", "b.ttf"};
    long long t = -1;
    m_source.mediaTime = 1234;
    ASSERT_TRUE(Core()->GetVideoCurrentTime(&t));
    EXPECT_EQ(1234, t);
    // The language from the source's mode, the font errors from the source.
    LogCapture log;
    ASSERT_TRUE(m_source.Send(TTML_SOURCE_MSG_MENU_LANG, Core()));
    int lang = -1;
    EXPECT_EQ(0, vconf_get_int("db/menu/caption/captionlanguage", &lang));
    EXPECT_EQ(1, lang) << "the preferred track";
    ASSERT_TRUE(m_source.Send(TTML_SOURCE_MSG_FONT_ERROR, Core()));
    EXPECT_EQ(1, m_source.fontListReads);
    EXPECT_EQ(0, log.Count("Error: null pointer"));
    ASSERT_EQ(0, vconf_set_int("db/menu/caption/captionlanguage", 0));

    ASSERT_TRUE(m_source.Send(TTML_SOURCE_MSG_INVALIDATE, Core()));
    EXPECT_EQ(1, m_source.unregistrations);
    log.Clear();
    t = -1;
    EXPECT_FALSE(Core()->GetVideoCurrentTime(&t));
    EXPECT_EQ(-1, t);
    EXPECT_EQ(1, log.Count("pSource is null", DLOG_WARN));
    EXPECT_FALSE(m_source.Send(TTML_SOURCE_MSG_PAUSE, Core())) << "no longer registered";

    // Late messages: whatever needs the source warns, the rest still works.
    log.Clear();
    m_source.SendLate(TTML_SOURCE_MSG_MENU_LANG, Core());
    m_source.SendLate(TTML_SOURCE_MSG_FONT_ERROR, Core());
    m_source.SendLate(TTML_SOURCE_MSG_HIDE, Core());
    m_source.SendLate(TTML_SOURCE_MSG_SHOW, Core());
    EXPECT_EQ(3, log.Count("pSource is null", DLOG_WARN)) << log.Dump();
    EXPECT_EQ(1, m_source.fontListReads);
    EXPECT_TRUE(RootVisible());
    EXPECT_EQ(0, vconf_get_int("db/menu/caption/captionlanguage", &lang));
    EXPECT_EQ(0, lang) << "the language request never reached the menu";
    m_source.SendLate(TTML_SOURCE_MSG_PAUSE, Core());
    EXPECT_EQ(1, log.Count("Enter for message Id:3"));
}

// --- Destroy ------------------------------------------------------------------

TEST_F(Controller, DestroyTearsDownInOrder)
{
    Start();
    LogCapture log;
    DestroyCore();

    // The source is told right after hide, so no message reaches a half-destroyed core.
    EXPECT_TRUE(InOrder(log, {"] [Hide]", "source unregistered", "Destroy is done", "CEngine.cpp: Destroy(",
                              "CGraphics.cpp: Destroy(", "CTTMLMenu.cpp: Destroy("}));
    EXPECT_EQ(1, m_source.unregistrations);
    EXPECT_EQ(nullptr, RootObject());
    EXPECT_EQ(nullptr, CMainThreadUtils::GetInstance());
}

TEST_F(Controller, AfterDestroyGetInstanceGivesAFreshController)
{
    Start();
    DestroyCore();

    LogCapture log;
    CController* pFresh = Core();
    EXPECT_EQ(pFresh, ICore::GetInstance()) << "one instance until destroyed";
    long long t = 0;
    EXPECT_FALSE(pFresh->GetVideoCurrentTime(&t));
    EXPECT_TRUE(log.Has("pSource is null"));
    DocumentLedger ledger;
    CSubtitleInfo* pInfo = MakeDocument(ledger, {});
    EXPECT_FALSE(pFresh->AddSubtitleInfo(pInfo));
    EXPECT_TRUE(log.Has("m_pEngine nullptr", DLOG_WARN));
    EXPECT_EQ(std::vector<int>{0}, ledger.Counts()) << "refused: still ours";
    delete pInfo;
    // Destroying it uninitialised only warns.
    DestroyCore();
    for (const char* warning : {"Graphics handle is null", "Parser is null", "m_pEngine is null", "m_pGraphics is null"})
        EXPECT_TRUE(log.Has(warning, DLOG_WARN)) << warning << "\n" << log.Dump();

    EXPECT_TRUE(Core()->Initialize(&m_source, Parent()));
    EXPECT_EQ(2, m_source.registrations);
}

}  // namespace
