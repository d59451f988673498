// ttml-timing: plays a generated EBU-TT-D document through the file-fed
// source, the controller, the parser and the engine, in real time on the
// Ecore main loop, and reports how late each interval was drawn and removed
// against the source's media clock.
//
//   ttml-timing [--seconds N] [--each]
//
// N (default 60) is the length of the programme; intervals of 0.3 to 0.5 s,
// some back to back, fill it from 1 s to 0.5 s before its end. --each also
// prints one line per interval. Exit status 0 when every interval was drawn
// and removed once and in order (or after --help), 1 otherwise, 2 for a
// usage error.
//
// The drawing and removal times come from what the graphics component
// shows and gives back (its draw observer): a region shown with "Line N"
// draws interval N, the paragraph "Line N" given back removes it. They are
// stamped on a steady clock and turned into media time with the media
// clock's own origin.

#include "CGraphics.h"
#include "CHeadlessCanvas.h"
#include "CMediaClock.h"
#include "CSourceFeed.h"
#include "CToolArgs.h"
#include "CTTMLSource.h"
#include "ICore.h"
#include "IDrawObserver.h"
#include "ITTMLSource.h"

#include <Ecore.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>
#include <string>
#include <vector>

namespace {


struct Interval {
    unsigned long long begin;
    unsigned long long end;
};

// Back-to-back every third interval; the others leave a gap shorter than
// the engine's usual re-arm so that a late timer would show.
std::vector<Interval> MakeIntervals(int seconds)
{
    std::vector<Interval> intervals;
    const unsigned long long last = static_cast<unsigned long long>(seconds) * 1000 - 500;
    unsigned long long t = 1000;
    for (int i = 0;; ++i) {
        unsigned long long end = t + 300 + static_cast<unsigned long long>(i % 3) * 100;
        if (end > last)
            break;
        intervals.push_back(Interval{t, end});
        t = end + (i % 3 == 2 ? 0 : 130);
    }
    return intervals;
}

std::string Clock(unsigned long long ms)
{
    char buf[32];
    std::snprintf(buf, sizeof(buf), "%02llu:%02llu:%02llu.%03llu", ms / 3600000, ms / 60000 % 60, ms / 1000 % 60,
                  ms % 1000);
    return buf;
}

std::string MakeDocument(const std::vector<Interval>& intervals)
{
    std::string doc =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\"\n"
        "    xmlns:tts=\"http://www.w3.org/ns/ttml#styling\" xmlns:ebuttm=\"urn:ebu:tt:metadata\"\n"
        "    ttp:timeBase=\"media\" xml:lang=\"en\">\n"
        "  <head>\n"
        "    <metadata><ebuttm:documentMetadata>\n"
        "      <ebuttm:conformsToStandard>urn:ebu:tt:distribution:2018-04</ebuttm:conformsToStandard>\n"
        "    </ebuttm:documentMetadata></metadata>\n"
        "    <layout><region xml:id=\"r\" tts:origin=\"10% 70%\" tts:extent=\"80% 20%\"/></layout>\n"
        "  </head>\n"
        "  <body><div region=\"r\">\n";
    for (std::size_t i = 0; i < intervals.size(); ++i) {
        doc += "    <p begin=\"" + Clock(intervals[i].begin) + "\" end=\"" + Clock(intervals[i].end) +
               "\"><span>Line " + std::to_string(i + 1) + "</span></p>\n";
    }
    doc += "  </div></body>\n</tt>\n";
    return doc;
}

// What the component showed and took away, in call order: a drawing is a
// region shown with an interval's text, a removal that paragraph given back.
class Recorder : public TTML::IDrawObserver {
public:
    struct Event {
        bool removal;
        std::string text;
        long long steadyNs;
    };

    void OnDrawEvent(Kind kind, const void* /*object*/, const std::string& text) override
    {
        if (kind != REGION_SHOWN && kind != PARAGRAPH_GONE)
            return;
        const long long now = std::chrono::duration_cast<std::chrono::nanoseconds>(
                                  std::chrono::steady_clock::now().time_since_epoch())
                                  .count();
        std::lock_guard<std::mutex> guard(lock);
        events.push_back(Event{kind == PARAGRAPH_GONE, text, now});
    }

    std::mutex lock;
    std::vector<Event> events;
};

struct Run {
    TTML::CTTMLSource* pSource = nullptr;
    long long quitAt = 0;  // media ms
    bool timedOut = false;
};

Eina_Bool Poll_Cb(void* data)
{
    Run* pRun = static_cast<Run*>(data);
    long long now = 0;
    if (pRun->pSource->GetMediaTime(&now) == 0 && now >= pRun->quitAt) {
        ecore_main_loop_quit();
        return ECORE_CALLBACK_CANCEL;
    }
    return ECORE_CALLBACK_RENEW;
}

Eina_Bool Limit_Cb(void* data)
{
    static_cast<Run*>(data)->timedOut = true;
    ecore_main_loop_quit();
    return ECORE_CALLBACK_CANCEL;
}

// The media clock's origin on the monotonic clock, in ms: media time is
// MonotonicMs() - origin while it runs. Read until both clock readings fall
// in the same millisecond, so the origin is exact.
bool MediaOrigin(TTML::CTTMLSource* pSource, long long& origin)
{
    for (int attempt = 0; attempt < 1000; ++attempt) {
        long long before = TTML::CMediaClock::MonotonicMs();
        long long media = 0;
        if (pSource->GetMediaTime(&media) != 0)
            return false;
        if (TTML::CMediaClock::MonotonicMs() == before) {
            origin = before - media;
            return true;
        }
    }
    return false;
}

double Percentile(const std::vector<double>& sorted, double p)
{
    // Nearest rank.
    std::size_t rank = static_cast<std::size_t>(p / 100.0 * static_cast<double>(sorted.size()) + 0.999999);
    rank = std::max<std::size_t>(1, std::min(rank, sorted.size()));
    return sorted[rank - 1];
}

void PrintDistribution(const char* what, std::vector<double> values)
{
    if (values.empty()) {
        std::printf("%-22s none\n", what);
        return;
    }
    std::sort(values.begin(), values.end());
    std::printf("%-22s min %7.2f  median %7.2f  p90 %7.2f  p99 %7.2f  max %7.2f\n", what, values.front(),
                Percentile(values, 50), Percentile(values, 90), Percentile(values, 99), values.back());
}

const char kUsage[] = "usage: ttml-timing [--seconds N] [--each]   (N from 3 to 3600, default 60)\n";

// CToolArgs::kRun to play, otherwise the exit status.
int ParseArgs(int argc, char** argv, int& seconds, bool& each)
{
    TTML::CToolArgs args("ttml-timing", kUsage, argc, argv);
    while (args.Next()) {
        long long n = 0;
        if (args.Is("--seconds")) {
            if (!args.Number(3, 3600, n))
                return args.Fail("--seconds takes a whole number from 3 to 3600");
            seconds = static_cast<int>(n);
        } else if (args.Is("--each")) {
            each = true;
        } else if (args.IsHelp()) {
            return args.Help();
        } else if (args.IsOption()) {
            return args.Unknown();
        } else {
            return args.Fail("no operands: " + args.Arg());
        }
    }
    return args.Ready(false);
}

}  // namespace

int main(int argc, char** argv)
{
    int seconds = 60;
    bool each = false;
    if (const int rc = ParseArgs(argc, argv, seconds, each); rc != TTML::CToolArgs::kRun)
        return rc;

    const std::vector<Interval> intervals = MakeIntervals(seconds);
    TTML::SourceFeedItem start;
    start.msgId = TTML::TTML_SOURCE_MSG_START;
    TTML::SourceFeedItem document;
    document.msgId = TTML::TTML_SOURCE_MSG_XML_DATA;
    document.profile = TTML::TTML_PROFILE_EBUTTD;
    document.url = "generated.ttml";
    document.xmlData = MakeDocument(intervals);
    TTML::CSourceFeed feed;
    feed.Add(start);
    feed.Add(document);

    TTML::CHeadlessCanvas canvas;
    if (!canvas.Initialize(1920, 1080)) {
        std::fprintf(stderr, "ttml-timing: no canvas\n");
        return 1;
    }
    Recorder recorder;
    TTML::CGraphics::SetDrawObserver(&recorder);
    TTML::CTTMLSource* pSource = new TTML::CTTMLSource();
    TTML::ICore* pCore = TTML::ICore::GetInstance();
    long long origin = 0;
    Run run;
    run.pSource = pSource;
    run.quitAt = static_cast<long long>(intervals.empty() ? 1000 : intervals.back().end) + 300;
    bool started = pSource->SetFeed(feed) && pCore->Initialize(pSource, canvas.GetBaseLayout()) &&
                   pSource->Start() && MediaOrigin(pSource, origin);
    if (started) {
        Ecore_Timer* pPoll = ecore_timer_add(0.05, Poll_Cb, &run);
        Ecore_Timer* pLimit = ecore_timer_add(seconds + 10.0, Limit_Cb, &run);
        ecore_main_loop_begin();
        if (run.timedOut)
            ecore_timer_del(pPoll);
        else
            ecore_timer_del(pLimit);
    }
    // The core stops listening to the source before the source goes away.
    pCore->Destroy();
    pSource->Stop();
    pSource->Destroy();
    TTML::CGraphics::SetDrawObserver(nullptr);
    canvas.Destroy();
    if (!started) {
        std::fprintf(stderr, "ttml-timing: the source, controller or media clock did not start\n");
        return 1;
    }

    // Everything the engine did before the loop quit; the teardown's own
    // removals come after quitAt and are not the programme's.
    std::map<std::string, std::size_t> byText;
    for (std::size_t i = 0; i < intervals.size(); ++i)
        byText["Line " + std::to_string(i + 1)] = i;
    const long long quitNs = (origin + run.quitAt) * 1000000;
    std::vector<double> drawLate(intervals.size(), 0.0);
    std::vector<double> removeLate(intervals.size(), 0.0);
    std::vector<int> draws(intervals.size(), 0);
    std::vector<int> removals(intervals.size(), 0);
    int outOfOrder = 0;
    int unknown = 0;
    std::string unknownExample;
    std::size_t highest = 0;  // 2 * index + (removal), of the latest event so far
    bool any = false;
    {
        std::lock_guard<std::mutex> guard(recorder.lock);
        for (const Recorder::Event& event : recorder.events) {
            if (event.steadyNs > quitNs)
                break;
            auto it = byText.find(event.text);
            if (it == byText.end()) {
                if (unknown++ == 0)
                    unknownExample = "\"" + event.text + "\"";
                continue;
            }
            const std::size_t index = it->second;
            const bool removal = event.removal;
            const double media = static_cast<double>(event.steadyNs) / 1e6 - static_cast<double>(origin);
            const std::size_t key = 2 * index + (removal ? 1 : 0);
            // A repeat or anything earlier in the programme than what was
            // already done is out of order.
            if (any && key <= highest)
                ++outOfOrder;
            highest = std::max(highest, key);
            any = true;
            if (removal) {
                if (removals[index]++ == 0)
                    removeLate[index] = media - static_cast<double>(intervals[index].end);
            } else {
                if (draws[index]++ == 0)
                    drawLate[index] = media - static_cast<double>(intervals[index].begin);
            }
        }
    }

    std::vector<double> drawValues;
    std::vector<double> removeValues;
    int missed = 0;
    for (std::size_t i = 0; i < intervals.size(); ++i) {
        if (draws[i] == 0 || removals[i] == 0)
            ++missed;
        if (draws[i] > 0)
            drawValues.push_back(drawLate[i]);
        if (removals[i] > 0)
            removeValues.push_back(removeLate[i]);
        if (each) {
            std::printf("interval %3zu [%6llu, %6llu] ms  draw ", i + 1, intervals[i].begin, intervals[i].end);
            if (draws[i])
                std::printf("%+7.2f", drawLate[i]);
            else
                std::printf("%7s", "missed");
            std::printf("  remove ");
            if (removals[i])
                std::printf("%+7.2f\n", removeLate[i]);
            else
                std::printf("%7s\n", "missed");
        }
    }

    std::printf("intervals: %zu over %d s; drawn %zu, removed %zu\n", intervals.size(), seconds,
                drawValues.size(), removeValues.size());
    std::printf("lateness against the media clock, ms (negative: early)\n");
    PrintDistribution("draw lateness:", drawValues);
    PrintDistribution("remove lateness:", removeValues);
    std::printf("missed: %d\nout of order: %d\n", missed, outOfOrder);
    if (unknown)
        std::printf("calls for no generated interval: %d (the first for %s)\n", unknown,
                    unknownExample.c_str());
    if (run.timedOut)
        std::printf("the media clock did not reach %lld ms in time\n", run.quitAt);
    return (missed || outOfOrder || unknown || run.timedOut) ? 1 : 0;
}
