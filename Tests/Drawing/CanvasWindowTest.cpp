// The optional window: it shows what the off-screen canvas draws, follows
// later renders, and its absence changes nothing. Runs against a private
// Xvfb display.
#include "CHeadlessCanvas.h"
#include "LogCapture.h"

#include <Ecore.h>
#include <Evas.h>
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

using namespace TTML;

namespace {

const unsigned int kRed = 0xffff0000u;

// Sets or unsets DISPLAY for one scope.
class ScopedDisplay {
public:
    explicit ScopedDisplay(const char* value)
    {
        const char* old = getenv("DISPLAY");
        m_had = old != nullptr;
        if (old)
            m_old = old;
        if (value)
            setenv("DISPLAY", value, 1);
        else
            unsetenv("DISPLAY");
    }
    ~ScopedDisplay()
    {
        if (m_had)
            setenv("DISPLAY", m_old.c_str(), 1);
        else
            unsetenv("DISPLAY");
    }

private:
    bool m_had = false;
    std::string m_old;
};

bool FileExists(const std::string& path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

class CanvasWindowTest : public ::testing::Test {
protected:
    static void SetUpTestSuite()
    {
        StartXvfb();
        // EFL's X11 engine does not survive a full shutdown and a new init
        // in one process; one reference for the whole suite avoids that.
        // Taken after Xvfb is forked and dropped before it is stopped, so the
        // child's exit never reaches Ecore's signal handler.
        ecore_evas_init();
    }

    static void StartXvfb()
    {
        const char* candidates[] = {"/usr/bin/Xvfb", "/usr/local/bin/Xvfb"};
        const char* xvfb = nullptr;
        for (const char* c : candidates)
            if (FileExists(c))
                xvfb = c;
        if (!xvfb)
            return;
        // A display number of our own so parallel test programs do not meet.
        s_displayNumber = 200 + getpid() % 500;
        std::string display = ":" + std::to_string(s_displayNumber);
        s_xvfb = fork();
        if (s_xvfb == 0) {
            execl(xvfb, "Xvfb", display.c_str(), "-screen", "0", "1920x1080x24", "-nolisten", "tcp",
                  (char*)nullptr);
            _exit(127);
        }
        std::string socket = "/tmp/.X11-unix/X" + std::to_string(s_displayNumber);
        for (int i = 0; i < 100 && !FileExists(socket); ++i)
            usleep(50 * 1000);
        if (FileExists(socket))
            s_display = display;
    }

    static void TearDownTestSuite()
    {
        ecore_evas_shutdown();
        if (s_xvfb > 0) {
            kill(s_xvfb, SIGTERM);
            waitpid(s_xvfb, nullptr, 0);
            s_xvfb = -1;
        }
    }

    // A red square drawn straight on the canvas.
    Evas_Object* AddSquare(CHeadlessCanvas& canvas, int x, int y)
    {
        Evas_Object* pSquare = evas_object_rectangle_add(canvas.GetEvas());
        evas_object_color_set(pSquare, 255, 0, 0, 255);
        evas_object_move(pSquare, x, y);
        evas_object_resize(pSquare, 100, 100);
        evas_object_layer_set(pSquare, 10);
        evas_object_show(pSquare);
        return pSquare;
    }

    // Runs the loop (which renders the canvas and then copies the frame)
    // until the window shows `expected` at (x, y), for at most two seconds.
    static unsigned int SpinUntilShown(CCanvasWindow& window, int x, int y, unsigned int expected)
    {
        for (int i = 0; i < 200 && window.GetShownPixel(x, y) != expected; ++i) {
            ecore_main_loop_iterate();
            usleep(10 * 1000);
        }
        return window.GetShownPixel(x, y);
    }

    static pid_t s_xvfb;
    static int s_displayNumber;
    static std::string s_display;
};

pid_t CanvasWindowTest::s_xvfb = -1;
int CanvasWindowTest::s_displayNumber = 0;
std::string CanvasWindowTest::s_display;

}  // namespace

TEST_F(CanvasWindowTest, WithoutDisplayTheCanvasStaysOffScreenAndDrawsAsBefore)
{
    ScopedDisplay noDisplay(nullptr);
    LogCapture log;
    CHeadlessCanvas canvas;
    ASSERT_TRUE(canvas.Initialize(1920, 1080));
    EXPECT_FALSE(canvas.ShowWindow());
    EXPECT_TRUE(log.Has("No X11 display; the canvas stays off-screen")) << log.Dump();
    EXPECT_FALSE(canvas.GetWindow().IsOpen());
    AddSquare(canvas, 300, 200);
    EXPECT_EQ(kRed, canvas.GetPixel(350, 250));
}

TEST_F(CanvasWindowTest, ShowsTheCanvasAndFollowsLaterRenders)
{
    if (s_display.empty())
        GTEST_SKIP() << "no Xvfb to open a display on (scripts/bootstrap installs it)";
    ScopedDisplay display(s_display.c_str());
    CHeadlessCanvas canvas;
    ASSERT_TRUE(canvas.Initialize(1920, 1080));
    Evas_Object* pSquare = AddSquare(canvas, 300, 200);
    ASSERT_TRUE(canvas.ShowWindow());
    CCanvasWindow& window = canvas.GetWindow();
    ASSERT_TRUE(window.IsOpen());
    int w = 0, h = 0;
    ecore_evas_geometry_get(window.GetWindow(), nullptr, nullptr, &w, &h);
    EXPECT_EQ(1920, w);
    EXPECT_EQ(1080, h);

    EXPECT_EQ(kRed, window.GetShownPixel(350, 250));
    EXPECT_EQ(0u, window.GetShownPixel(1000, 250));

    // Moved on the canvas only: the window follows on the next render.
    evas_object_move(pSquare, 900, 200);
    EXPECT_EQ(kRed, SpinUntilShown(window, 950, 250, kRed));
    EXPECT_EQ(0u, window.GetShownPixel(350, 250));
    EXPECT_EQ(canvas.GetPixel(950, 250), window.GetShownPixel(950, 250));

    canvas.Destroy();
    EXPECT_FALSE(window.IsOpen());
}
