// End to end on the real main loop: a document played through the file-fed
// source and the controller shows its text on the canvas from the
// interval's begin and takes it off at its end, against the media clock.

#include "RenderFixture.h"

#include "CSourceFeed.h"
#include "CTTMLSource.h"
#include "ICore.h"
#include "ITTMLSource.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace TTML;

namespace {

class PlaybackPixels : public MainLoopTest {
public:
    struct Sample {
        long long media;
        bool ink;
    };

    static Eina_Bool Poll_Cb(void* data)
    {
        PlaybackPixels* pSelf = static_cast<PlaybackPixels*>(data);
        long long now = 0;
        if (pSelf->m_pSource->GetMediaTime(&now) != 0)
            return ECORE_CALLBACK_RENEW;
        const unsigned int* pPixels = pSelf->m_canvas.RenderPixels();
        bool ink = false;
        for (int i = 0; i < 1920 * 1080 && !ink; i += 3)
            ink = pPixels[i] != 0;
        pSelf->m_samples.push_back(Sample{now, ink});
        if (now >= 1100) {
            Quit();
            return ECORE_CALLBACK_CANCEL;
        }
        return ECORE_CALLBACK_RENEW;
    }

    CTTMLSource* m_pSource = nullptr;
    std::vector<Sample> m_samples;
};

TEST_F(PlaybackPixels, TextIsOnTheCanvasFromBeginToEnd)
{
    DestroyGraphics();  // the controller makes its own
    SourceFeedItem start;
    start.msgId = TTML_SOURCE_MSG_START;
    SourceFeedItem document;
    document.msgId = TTML_SOURCE_MSG_XML_DATA;
    document.profile = 2;
    document.url = "played.ttml";
    document.xmlData = Ebu("<style xml:id=\"s\" tts:color=\"#FFFFFF\" tts:backgroundColor=\"#000000\"/>",
                           "<region xml:id=\"r\" tts:origin=\"10% 70%\" tts:extent=\"80% 20%\"/>",
                           "<div region=\"r\"><p begin=\"00:00:00.400\" end=\"00:00:00.700\" style=\"s\">"
                           "Shown from 400 to 700 ms</p></div>");
    CSourceFeed feed;
    feed.Add(start);
    feed.Add(document);
    m_pSource = new CTTMLSource();
    ICore* pCore = ICore::GetInstance();
    ASSERT_TRUE(m_pSource->SetFeed(feed));
    ASSERT_TRUE(pCore->Initialize(m_pSource, m_canvas.GetBaseLayout()));
    ASSERT_TRUE(m_pSource->Start());
    ecore_timer_add(0.02, Poll_Cb, this);
    const bool quit = RunLoop(10.0);
    pCore->Destroy();
    m_pSource->Stop();
    m_pSource->Destroy();
    ASSERT_TRUE(quit);

    int shown = 0;
    for (const Sample& s : m_samples) {
        if (s.media < 350 || s.media >= 800) {
            EXPECT_FALSE(s.ink) << "ink at media time " << s.media;
        }
        if (s.media >= 500 && s.media < 650)
            shown += s.ink ? 1 : 0;
    }
    EXPECT_GT(shown, 0) << "the text was never seen inside its interval";
}

}  // namespace
