// ug-host: loads a gadget module the way the TV's gadget framework does and
// plays a subtitle feed through it on a 1920x1080 canvas.
//
//   ug-host [--module PATH] [--feed FILE] [--broadband-only] [--window]
//           [--frames DIR] [--until MS] [--script FILE] [COMMAND...]
//
// The module is opened with dlopen, its UG_TTML_MODULE_INIT fills an
// operation table whose priv is a slot the module keeps its object in, and
// the host calls create (with "service-mode" = "broadbandonly" under
// --broadband-only), start, then the timed commands, then destroy.
//
// A command is "MS:NAME" on the command line or "MS NAME" on a line of the
// script file ('#' starts a comment); MS is host time after start. NAME is
// show, hide, enable, disable (gadget messages), pause, resume (lifecycle
// calls), event:N ("event N" in a file), destroy, or set:KEY=VALUE ("set KEY
// VALUE" in a file), which writes a configuration key (vconf) as the TV's
// menu would: the module sees the change through the shared key store. The
// run ends when the feed is over, at --until MS, or after destroy.
//
// --feed sets the variables the sources read (INTERTITLE_FEED and the
// DVB, ATSC and broadband ones). The host reads the same feed to know the
// media clock the source plays against (from the moment the source's log
// says it started, whichever view started it) and, through the parser, the
// times at which the picture should change.
//
// Every time the canvas changes, the host prints one timeline line: media
// time, host time, how late the change came against the nearest change
// time of the documents, and the texts that appeared and went. With
// --frames DIR it also writes DIR/<media ms>.png for each change,
// DIR/timeline.json and DIR/contact-sheet.png.
//
// Exit status: 0 after a run (or --help), 1 when the feed, the module or
// the canvas fails, 2 for a usage error (a script that cannot be read
// included).

#include "CDocumentParser.h"
#include "CHeadlessCanvas.h"
#include "CSourceFeed.h"
#include "CToolArgs.h"
#include "CSubtitleInfo.h"
#include "CVideoWindow.h"
#include "ITTMLSource.h"
#include "SubRawData.h"
#include "ToolJson.h"
#include "ToolSheet.h"
#include "UgTTMLModule.h"

#include <Ecore.h>
#include <Ecore_Evas.h>
#include <Ecore_Input_Evas.h>
#include <Evas.h>
#include <app_control.h>
#include <dlfcn.h>
#include <vconf.h>
#include <dlog.h>
#include <sys/stat.h>
#include <ui-gadget-module.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

const int kWidth = 1920;
const int kHeight = 1080;
// After the last change time the run waits this long for a late one.
const long long kTailMs = 700;
// The backdrop is the screen outside the TV service's video window.
const int kBackdropGrey = 40;

struct Command {
    long long at = 0;  // host ms after start
    std::string name;
    int arg = 0;       // event number
    std::string key;   // set
    int value = 0;
};

struct Options {
    std::string module;
    std::string feed;
    std::string frames;
    bool broadbandOnly = false;
    bool window = false;
    long long until = -1;
    std::vector<Command> commands;
};

// The monotonic clock the sources' media clocks run on.
long long NowUs()
{
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

long long NowMs()
{
    return NowUs() / 1000;
}

bool ParseCommand(const std::string& at, const std::string& name, const std::string& arg, Command& out)
{
    char* rest = nullptr;
    long long ms = std::strtoll(at.c_str(), &rest, 10);
    if (at.empty() || *rest || ms < 0)
        return false;
    static const char* const kNames[] = {"show",   "hide",  "enable",  "disable", "pause",
                                         "resume", "event", "destroy", "set"};
    bool known = false;
    for (const char* n : kNames)
        known = known || name == n;
    const bool takesArg = name == "event" || name == "set";
    if (!known || takesArg == arg.empty())
        return false;
    out.at = ms;
    out.name = name;
    if (name == "set") {
        std::string::size_type eq = arg.find('=');
        if (eq == std::string::npos || eq == 0)
            return false;
        out.key = arg.substr(0, eq);
        std::string v = arg.substr(eq + 1);
        long n = std::strtol(v.c_str(), &rest, 10);
        if (v.empty() || *rest || n < INT_MIN || n > INT_MAX)
            return false;
        out.value = static_cast<int>(n);
    } else if (!arg.empty()) {
        long n = std::strtol(arg.c_str(), &rest, 10);
        if (*rest || n < 0 || n > INT_MAX)
            return false;
        out.arg = static_cast<int>(n);
    }
    return true;
}

// "MS:NAME" or "MS:event:N".
bool ParseCommandArg(const std::string& text, Command& out)
{
    std::vector<std::string> parts;
    std::stringstream ss(text);
    for (std::string p; std::getline(ss, p, ':');)
        parts.push_back(p);
    if (parts.size() < 2 || parts.size() > 3)
        return false;
    return ParseCommand(parts[0], parts[1], parts.size() == 3 ? parts[2] : "", out);
}

// False with the reason in why.
bool LoadScript(const std::string& path, std::vector<Command>& commands, std::string& why)
{
    std::string text;
    if (!TTML::CSourceFeed::ReadFile(path, text, &why)) {
        why = "cannot read " + path + ": " + why;
        return false;
    }
    std::istringstream in(text);
    int lineNo = 0;
    for (std::string line; std::getline(in, line);) {
        ++lineNo;
        line = line.substr(0, line.find('#'));
        std::stringstream ss(line);
        std::string at, name, arg, extra;
        if (!(ss >> at))
            continue;
        ss >> name >> arg;
        if (name == "set" && ss >> extra) {
            arg += "=" + extra;
            extra.clear();
        }
        ss >> extra;
        Command c;
        if (!extra.empty() || !ParseCommand(at, name, arg, c)) {
            why = path + ":" + std::to_string(lineNo) + ": not a command: " + line;
            return false;
        }
        commands.push_back(c);
    }
    return true;
}

const char kUsage[] =
    "usage: ug-host [--module PATH] [--feed FILE] [--broadband-only] [--window] [--frames DIR]\n"
    "               [--until MS] [--script FILE]\n"
    "               [MS:show|hide|enable|disable|pause|resume|destroy|event:N|set:KEY=VALUE ...]\n";

// CToolArgs::kRun to host, otherwise the exit status.
int ParseArgs(int argc, char** argv, Options& opt)
{
    TTML::CToolArgs args("ug-host", kUsage, argc, argv);
    while (args.Next()) {
        std::string v;
        Command c;
        if (args.Is("--module") || args.Is("--feed") || args.Is("--frames")) {
            std::string& target = args.Is("--module") ? opt.module : args.Is("--feed") ? opt.feed : opt.frames;
            if (!args.Value(target) || target.empty())
                return args.Fail(args.Arg() + " takes a path");
        } else if (args.Is("--broadband-only")) {
            opt.broadbandOnly = true;
        } else if (args.Is("--window")) {
            opt.window = true;
        } else if (args.Is("--until")) {
            if (!args.Number(0, LLONG_MAX, opt.until))
                return args.Fail("--until takes a time in ms");
        } else if (args.Is("--script")) {
            std::string why;
            if (!args.Value(v))
                return args.Fail("--script takes a file");
            if (!LoadScript(v, opt.commands, why))
                return args.Fail(why);
        } else if (args.IsHelp()) {
            return args.Help();
        } else if (args.IsOption()) {
            return args.Unknown();
        } else if (!ParseCommandArg(args.Arg(), c)) {
            return args.Fail("not a command: " + args.Arg());
        } else {
            opt.commands.push_back(c);
        }
    }
    std::stable_sort(opt.commands.begin(), opt.commands.end(),
                     [](const Command& x, const Command& y) { return x.at < y.at; });
    return args.Ready(false);
}

// The installed module, else the one of the build tree.
std::string DefaultModule()
{
    char self[4096];
    ssize_t n = readlink("/proc/self/exe", self, sizeof(self) - 1);
    std::string dir = ".";
    if (n > 0) {
        self[n] = '\0';
        dir = self;
        dir = dir.substr(0, dir.rfind('/'));
    }
    std::string installed = dir + "/" + INTERTITLE_INSTALLED_MODULE;
    if (access(installed.c_str(), R_OK) == 0)
        return installed;
    return INTERTITLE_BUILD_MODULE;
}

// The source's media clock replayed from its feed: the clock runs from 0 when
// a view starts the source, and the feed's items move it at their times.
// Times in are microseconds of NowUs; media time out is ms.
class MediaReplica {
public:
    explicit MediaReplica(const std::vector<TTML::SourceFeedItem>& items) : m_items(items) {}

    // Any thread.
    void Restart(long long nowUs) { m_viewStart = nowUs; }
    bool Started() const { return m_viewStart >= 0; }
    long long SinceStart(long long nowUs) const { return (nowUs - m_viewStart) / 1000; }

    // False while the clock stands stopped (or no view has started it).
    bool MediaAt(long long nowUs, long long& media) const
    {
        const long long start = m_viewStart;
        if (start < 0)
            return false;
        const long long t = (nowUs - start) / 1000;
        enum { STOPPED, RUNNING, PAUSED } state = RUNNING;
        long long pos = 0, anchor = 0;
        for (const auto& item : m_items) {
            if (item.at > t)
                break;
            switch (item.msgId) {
            case TTML::TTML_SOURCE_MSG_START:
                if (state == STOPPED) {
                    state = RUNNING;
                    pos = 0;
                    anchor = item.at;
                }
                break;
            case TTML::TTML_SOURCE_MSG_STOP:
                state = STOPPED;
                break;
            case TTML::TTML_SOURCE_MSG_PAUSE:
                if (state == RUNNING) {
                    pos += item.at - anchor;
                    state = PAUSED;
                }
                break;
            case TTML::TTML_SOURCE_MSG_RESUME:
                if (state == PAUSED) {
                    state = RUNNING;
                    anchor = item.at;
                }
                break;
            case TTML::TTML_SOURCE_MSG_SEEK_START:
                if (state != STOPPED && item.position >= 0) {
                    pos = item.position;
                    anchor = item.at;
                }
                break;
            default:
                break;
            }
        }
        if (state == STOPPED)
            return false;
        media = state == RUNNING ? pos + (t - anchor) : pos;
        return true;
    }

private:
    std::vector<TTML::SourceFeedItem> m_items;
    std::atomic<long long> m_viewStart{-1};
};

// The media times at which the documents of the feed change the picture,
// through the same parser the module runs. Runs before the module is loaded.
std::vector<long long> ChangeTimes(const TTML::CSourceFeed& feed)
{
    std::set<long long> times;
    TTML::CDocumentParser parser;
    if (!parser.Initialize(feed.GetMode()))
        return {};
    for (const auto& item : feed.Items()) {
        if (item.msgId != TTML::TTML_SOURCE_MSG_XML_DATA)
            continue;
        auto* pRecord = new TTML::SubRawData();
        pRecord->profile = item.profile;
        pRecord->timeStamp = item.timeStamp;
        pRecord->segmentBegin = item.segmentBegin;
        pRecord->segmentEnd = item.segmentEnd;
        pRecord->url = item.url;
        pRecord->xmlData = item.xmlData;
        pRecord->subSampleData = item.subSampleData;
        if (parser.Parse(pRecord) != 0 || !parser.GetSubtitleInfo())
            continue;
        std::set<TTML::CSubtitleInfo::TimeInterval> keys;
        parser.GetSubtitleInfo()->GetUniqueKeys(keys);
        // Document time is media time plus the time stamp.
        for (const auto& key : keys) {
            times.insert(static_cast<long long>(key.first) - item.timeStamp);
            times.insert(static_cast<long long>(key.second) - item.timeStamp);
        }
        parser.Reset();
    }
    parser.Destroy();
    return std::vector<long long>(times.begin(), times.end());
}

bool IsShown(Evas_Object* pObj)
{
    for (Evas_Object* p = pObj; p; p = evas_object_smart_parent_get(p))
        if (!evas_object_visible_get(p))
            return false;
    for (Evas_Object* c = evas_object_clip_get(pObj); c; c = evas_object_clip_get(c))
        if (!evas_object_visible_get(c))
            return false;
    return true;
}

// The texts of every shown text object under pObj, line breaks as " / ".
void CollectTexts(Evas_Object* pObj, std::set<Evas_Object*>& seen, std::vector<std::string>& out)
{
    if (!seen.insert(pObj).second)
        return;
    const char* type = evas_object_type_get(pObj);
    std::string text;
    if (type && std::strcmp(type, "textblock") == 0 && IsShown(pObj)) {
        const char* markup = evas_object_textblock_text_markup_get(pObj);
        char* utf8 = markup ? evas_textblock_text_markup_to_utf8(pObj, markup) : nullptr;
        if (utf8)
            text = utf8;
        std::free(utf8);
    } else if (type && std::strcmp(type, "text") == 0 && IsShown(pObj)) {
        const char* t = evas_object_text_text_get(pObj);
        text = t ? t : "";
    }
    for (std::string::size_type at; (at = text.find('\n')) != std::string::npos;)
        text.replace(at, 1, " / ");
    // A paragraph may be drawn by more than one text object (its edge effect).
    if (!text.empty() && std::find(out.begin(), out.end(), text) == out.end())
        out.push_back(text);
    // Only groups have members; Evas complains when asked about the others.
    static const char* const kPlain[] = {"rectangle", "image", "text", "textblock", "line", "polygon", "textgrid"};
    for (const char* plain : kPlain)
        if (type && std::strcmp(type, plain) == 0)
            return;
    Eina_List* members = evas_object_smart_members_get(pObj);
    void* data = nullptr;
    Eina_List* l = nullptr;
    EINA_LIST_FOREACH(members, l, data)
    {
        CollectTexts(static_cast<Evas_Object*>(data), seen, out);
    }
    eina_list_free(members);
}

std::string JsonList(const std::vector<std::string>& v)
{
    std::string out = "[";
    for (size_t i = 0; i < v.size(); ++i)
        out += (i ? "," : "") + TTML::JsonQuoted(v[i]);
    return out + "]";
}

struct Change {
    bool hasMedia = false;
    long long media = 0;  // ms
    long long wall = 0;   // host ms after start
    bool hasLate = false;
    long long late = 0;   // ms after the nearest change time of the documents
    std::string cause;    // the command that made the change, when one came closer than any change time
    std::vector<std::string> drawn;
    std::vector<std::string> removed;
    std::string frame;    // file name in the frames folder, empty without one
};

class Host {
public:
    Host(const Options& opt, const TTML::CSourceFeed& feed, std::vector<long long> changeTimes)
        : m_opt(opt), m_replica(feed.Items()), m_changeTimes(std::move(changeTimes))
    {
        for (const auto& item : feed.Items())
            m_lastItemAt = std::max(m_lastItemAt, item.at);
    }

    int Run();

private:
    static void OnRenderPost_Cb(void* data, Evas* e, void* info);
    static void Check_Cb(void* data);
    static Eina_Bool Command_Cb(void* data);
    static Eina_Bool Poll_Cb(void* data);
    static void Result_Cb(ui_gadget_h ug, app_control_h result, void* priv);

    bool m_Load();
    void m_Send(const Command& c);
    void m_Message(const char* cmd);
    void m_Destroy();
    void m_CheckCanvas(long long wallUs);
    void m_WriteTimeline();
    void m_WriteContactSheet();
    bool m_FeedOver(long long nowUs) const;
    static void SourceLog_Cb(log_priority prio, const char* tag, const char* msg, void* user);

    const Options& m_opt;
    MediaReplica m_replica;
    std::vector<long long> m_changeTimes;
    long long m_lastItemAt = 0;

    TTML::CHeadlessCanvas m_canvas;
    TTML::CVideoWindow m_video;  // the TV service's picture, shared with the module
    Evas_Object* m_pWindow = nullptr;  // the gadget window the module builds on
    void* m_pModule = nullptr;
    ug_module_ops m_ops{};
    void* m_slot = nullptr;  // ops.priv points here; the module keeps its object in it
    ui_gadget_s m_ug{};
    bool m_created = false;
    bool m_destroyed = false;

    long long m_t0 = 0;  // host clock at start, ms
    size_t m_nextCommand = 0;
    Ecore_Timer* m_pCommandTimer = nullptr;
    Ecore_Job* m_pCheckJob = nullptr;
    long long m_renderWallUs = 0;
    std::string m_lastCommand;
    long long m_lastCommandWall = 0;
    unsigned long long m_lastHash = 0;
    bool m_haveHash = false;
    std::vector<std::string> m_shown;
    std::vector<Change> m_changes;
};

// A source logs this right after it starts its media clock, on the thread
// that starts it, so the host knows the clock's origin to the microsecond,
// whichever view (re)started it.
void Host::SourceLog_Cb(log_priority /*prio*/, const char* /*tag*/, const char* msg, void* user)
{
    if (msg && std::strstr(msg, "[Source starts: "))
        static_cast<Host*>(user)->m_replica.Restart(NowUs());
}

void Host::Result_Cb(ui_gadget_h /*ug*/, app_control_h result, void* /*priv*/)
{
    char* value = nullptr;
    if (app_control_get_extra_data(result, "caption", &value) == APP_CONTROL_ERROR_NONE)
        std::printf("result from the gadget: caption=%s\n", value);
    std::free(value);
}

bool Host::m_Load()
{
    std::string path = m_opt.module.empty() ? DefaultModule() : m_opt.module;
    m_pModule = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!m_pModule) {
        std::fprintf(stderr, "ug-host: cannot load %s: %s\n", path.c_str(), dlerror());
        return false;
    }
    auto init = reinterpret_cast<ug_module_init_fn>(dlsym(m_pModule, UG_TTML_MODULE_ENTRY));
    if (!init) {
        std::fprintf(stderr, "ug-host: %s has no UG_TTML_MODULE_INIT\n", path.c_str());
        return false;
    }
    m_ops.priv = &m_slot;
    if (init(&m_ops) != 0 || !m_ops.create || !m_ops.start || !m_ops.destroy) {
        std::fprintf(stderr, "ug-host: UG_TTML_MODULE_INIT of %s failed\n", path.c_str());
        return false;
    }
    std::printf("module: %s\n", path.c_str());
    return true;
}

void Host::m_Message(const char* cmd)
{
    app_control_h msg = nullptr;
    if (app_control_create(&msg) != APP_CONTROL_ERROR_NONE)
        return;
    app_control_add_extra_data(msg, "cmd", cmd);
    if (m_ops.message)
        m_ops.message(&m_ug, msg, nullptr, m_ops.priv);
    app_control_destroy(msg);
}

void Host::m_Destroy()
{
    if (m_created && !m_destroyed) {
        m_ops.destroy(&m_ug, nullptr, m_ops.priv);
        m_destroyed = true;
    }
}

void Host::m_Send(const Command& c)
{
    long long now = NowMs();
    m_lastCommand = c.name;
    m_lastCommandWall = now;
    std::printf("%7lld ms  command %s", now - m_t0, c.name.c_str());
    if (c.name == "event")
        std::printf(" %d", c.arg);
    if (c.name == "set")
        std::printf(" %s %d", c.key.c_str(), c.value);
    std::printf("\n");
    if (c.name == "pause" && m_ops.pause) {
        m_ops.pause(&m_ug, nullptr, m_ops.priv);
    } else if (c.name == "resume" && m_ops.resume) {
        m_ops.resume(&m_ug, nullptr, m_ops.priv);
    } else if (c.name == "event" && m_ops.event) {
        m_ops.event(&m_ug, static_cast<ug_event>(c.arg), nullptr, m_ops.priv);
    } else if (c.name == "destroy") {
        m_Destroy();
    } else if (c.name == "set") {
        // Bool keys are written as bools, everything else as ints.
        int current = 0;
        bool isBool = vconf_get_int(c.key.c_str(), &current) != 0 && vconf_get_bool(c.key.c_str(), &current) == 0;
        int rc = isBool ? vconf_set_bool(c.key.c_str(), c.value) : vconf_set_int(c.key.c_str(), c.value);
        if (rc != 0)
            std::printf("         cannot set %s\n", c.key.c_str());
    } else {
        m_Message(c.name.c_str());
    }
}

Eina_Bool Host::Command_Cb(void* data)
{
    Host* pThis = static_cast<Host*>(data);
    pThis->m_pCommandTimer = nullptr;
    const auto& commands = pThis->m_opt.commands;
    while (pThis->m_nextCommand < commands.size() &&
           commands[pThis->m_nextCommand].at <= NowMs() - pThis->m_t0 && !pThis->m_destroyed)
        pThis->m_Send(commands[pThis->m_nextCommand++]);
    if (pThis->m_nextCommand < commands.size() && !pThis->m_destroyed) {
        double delay = static_cast<double>(commands[pThis->m_nextCommand].at - (NowMs() - pThis->m_t0)) / 1000.0;
        pThis->m_pCommandTimer = ecore_timer_add(std::max(0.0, delay), Command_Cb, pThis);
    }
    return ECORE_CALLBACK_CANCEL;
}

bool Host::m_FeedOver(long long nowUs) const
{
    const long long now = nowUs / 1000;
    if (m_destroyed)
        return true;
    if (m_opt.until >= 0)
        return now - m_t0 >= m_opt.until;
    if (m_nextCommand < m_opt.commands.size())
        return false;
    if (!m_replica.Started())  // nothing will play
        return now - m_t0 >= (m_opt.commands.empty() ? 0 : m_opt.commands.back().at) + kTailMs;
    long long media = 0;
    long long lastChange = m_changeTimes.empty() ? 0 : m_changeTimes.back();
    bool mediaDone = !m_replica.MediaAt(nowUs, media) || media >= lastChange + kTailMs;
    return mediaDone && m_replica.SinceStart(nowUs) >= m_lastItemAt + kTailMs;
}

Eina_Bool Host::Poll_Cb(void* data)
{
    Host* pThis = static_cast<Host*>(data);
    if (pThis->m_FeedOver(NowUs())) {
        ecore_main_loop_quit();
        return ECORE_CALLBACK_CANCEL;
    }
    return ECORE_CALLBACK_RENEW;
}

void Host::OnRenderPost_Cb(void* data, Evas* /*e*/, void* /*info*/)
{
    Host* pThis = static_cast<Host*>(data);
    if (pThis->m_pCheckJob)
        return;
    // The picture changed now; it is read back once the render is over.
    pThis->m_renderWallUs = NowUs();
    pThis->m_pCheckJob = ecore_job_add(Check_Cb, pThis);
}

void Host::Check_Cb(void* data)
{
    Host* pThis = static_cast<Host*>(data);
    pThis->m_pCheckJob = nullptr;
    pThis->m_CheckCanvas(pThis->m_renderWallUs);
}

void Host::m_CheckCanvas(long long wallUs)
{
    const long long wall = wallUs / 1000;
    const unsigned int* pixels =
        static_cast<const unsigned int*>(ecore_evas_buffer_pixels_get(m_canvas.GetEcoreEvas()));
    if (!pixels)
        return;
    unsigned long long hash = 1469598103934665603ULL;
    for (size_t i = 0, n = static_cast<size_t>(kWidth) * kHeight; i < n; ++i)
        hash = (hash ^ pixels[i]) * 1099511628211ULL;
    if (m_haveHash && hash == m_lastHash)
        return;

    Change c;
    c.wall = wall - m_t0;
    c.hasMedia = m_replica.MediaAt(wallUs, c.media);
    // The first picture is the gadget's empty one, not a change of the documents.
    if (c.hasMedia && !m_changeTimes.empty() && m_haveHash) {
        auto it = std::lower_bound(m_changeTimes.begin(), m_changeTimes.end(), c.media);
        long long best = LLONG_MAX;
        if (it != m_changeTimes.end())
            best = *it;
        if (it != m_changeTimes.begin() && (best == LLONG_MAX || c.media - *(it - 1) <= best - c.media))
            best = *(it - 1);
        c.hasLate = true;
        c.late = c.media - best;
    }
    // A gadget command (hide, show, a rebuilt view, a setting) changes the
    // picture off the documents' times.
    if (!m_lastCommand.empty() && (!c.hasLate || std::llabs(c.late) > wall - m_lastCommandWall)) {
        c.hasLate = false;
        c.cause = m_lastCommand;
    }
    std::vector<std::string> texts;
    std::set<Evas_Object*> seen;
    Eina_List* objects = evas_objects_in_rectangle_get(m_canvas.GetEvas(), 0, 0, kWidth, kHeight, EINA_TRUE,
                                                       EINA_FALSE);
    void* obj = nullptr;
    Eina_List* l = nullptr;
    EINA_LIST_FOREACH(objects, l, obj)
    {
        CollectTexts(static_cast<Evas_Object*>(obj), seen, texts);
    }
    eina_list_free(objects);
    for (const auto& t : texts)
        if (std::find(m_shown.begin(), m_shown.end(), t) == m_shown.end())
            c.drawn.push_back(t);
    for (const auto& t : m_shown)
        if (std::find(texts.begin(), texts.end(), t) == texts.end())
            c.removed.push_back(t);
    m_shown = texts;
    m_haveHash = true;
    m_lastHash = hash;

    if (!m_opt.frames.empty()) {
        char name[64];
        long long stamp = c.hasMedia ? c.media : -1;
        std::snprintf(name, sizeof(name), "%08lld.png", stamp);
        std::string file = name;
        for (int n = 1; std::any_of(m_changes.begin(), m_changes.end(),
                                    [&](const Change& x) { return x.frame == file; });
             ++n)
            file = std::string(name, std::strlen(name) - 4) + "-" + std::to_string(n) + ".png";
        if (m_canvas.SavePng(m_opt.frames + "/" + file))
            c.frame = file;
    }

    std::string media = c.hasMedia ? std::to_string(c.media) + " ms" : "-";
    std::string late = c.hasLate ? (c.late >= 0 ? "+" : "") + std::to_string(c.late) + " ms"
                                 : c.cause.empty() ? "-" : "by " + c.cause;
    std::printf("%7lld ms  media %10s  late %8s", c.wall, media.c_str(), late.c_str());
    for (const auto& t : c.drawn)
        std::printf("  drawn \"%s\"", t.c_str());
    for (const auto& t : c.removed)
        std::printf("  removed \"%s\"", t.c_str());
    if (c.drawn.empty() && c.removed.empty())
        std::printf("  %s", texts.empty() ? "(empty picture)" : "(picture changed)");
    if (!c.frame.empty())
        std::printf("  %s", c.frame.c_str());
    std::printf("\n");
    std::fflush(stdout);
    m_changes.push_back(c);
}

void Host::m_WriteTimeline()
{
    std::ofstream out(m_opt.frames + "/timeline.json");
    out << "[\n";
    for (size_t i = 0; i < m_changes.size(); ++i) {
        const Change& c = m_changes[i];
        out << "  {\"media\":" << (c.hasMedia ? std::to_string(c.media) : "null") << ",\"wall\":" << c.wall
            << ",\"late\":" << (c.hasLate ? std::to_string(c.late) : "null")
            << ",\"cause\":" << (c.cause.empty() ? "null" : TTML::JsonQuoted(c.cause)) << ",\"drawn\":" << JsonList(c.drawn)
            << ",\"removed\":" << JsonList(c.removed) << ",\"frame\":" << TTML::JsonQuoted(c.frame) << "}"
            << (i + 1 < m_changes.size() ? "," : "") << "\n";
    }
    out << "]\n";
}

// Every frame scaled to a fifth, four to a row, each with its media time.
void Host::m_WriteContactSheet()
{
    std::vector<TTML::SheetFrame> frames;
    for (const auto& c : m_changes)
        if (!c.frame.empty())
            frames.push_back(TTML::SheetFrame{m_opt.frames + "/" + c.frame,
                                              c.hasMedia ? std::to_string(c.media) + " ms" : "no media time"});
    if (TTML::WriteContactSheet(frames, kWidth, kHeight, kWidth / 5, m_opt.frames + "/contact-sheet.png"))
        std::printf("contact sheet: %s/contact-sheet.png (%zu frames)\n", m_opt.frames.c_str(), frames.size());
}

int Host::Run()
{
    if (!m_opt.frames.empty())
        mkdir(m_opt.frames.c_str(), 0755);
    if (!m_canvas.Initialize(kWidth, kHeight)) {
        std::fprintf(stderr, "ug-host: no canvas\n");
        return 1;
    }
    // The gadget builds its own layout over the window.
    m_canvas.DeleteBaseLayout();
    Evas* e = m_canvas.GetEvas();
    Evas_Object* backdrop = evas_object_rectangle_add(e);
    evas_object_color_set(backdrop, kBackdropGrey, kBackdropGrey, kBackdropGrey, 255);
    evas_object_resize(backdrop, kWidth, kHeight);
    evas_object_layer_set(backdrop, -1);
    evas_object_show(backdrop);
    if (!m_video.Initialize(e, kWidth, kHeight))
        std::fprintf(stderr, "ug-host: no video window; subtitles are drawn over the backdrop\n");
    m_pWindow = evas_object_rectangle_add(e);
    evas_object_color_set(m_pWindow, 0, 0, 0, 0);
    evas_object_resize(m_pWindow, kWidth, kHeight);
    evas_object_show(m_pWindow);
    ug_set_window(m_pWindow);
    if (m_opt.window && !m_canvas.ShowWindow())
        std::fprintf(stderr, "ug-host: no window (no display?); frames are still drawn off-screen\n");
    evas_event_callback_add(e, EVAS_CALLBACK_RENDER_POST, OnRenderPost_Cb, this);

    int status = 1;
    dlog_set_hook(SourceLog_Cb, this);
    if (m_Load()) {
        m_ug.name = "intertitle";
        m_ug.mode = UG_MODE_FRAMEVIEW;
        m_ug.result_cb = Result_Cb;
        app_control_h ac = nullptr;
        app_control_create(&ac);
        if (m_opt.broadbandOnly)
            app_control_add_extra_data(ac, "service-mode", "broadbandonly");
        void* layout = m_ops.create(&m_ug, UG_MODE_FRAMEVIEW, ac, m_ops.priv);
        m_created = true;
        std::printf("create: layout %s\n", layout ? "made" : "missing");
        m_ops.start(&m_ug, ac, m_ops.priv);
        app_control_destroy(ac);
        m_t0 = NowMs();
        m_lastCommand = "start";
        m_lastCommandWall = m_t0;
        std::printf("   host      media            late\n");
        Command_Cb(this);
        Ecore_Timer* pPoll = ecore_timer_add(0.02, Poll_Cb, this);
        ecore_main_loop_begin();
        (void)pPoll;  // cancelled itself when it quit the loop
        if (m_pCommandTimer)
            ecore_timer_del(m_pCommandTimer);
        m_Destroy();
        status = 0;
    }
    dlog_set_hook(nullptr, nullptr);
    evas_event_callback_del_full(e, EVAS_CALLBACK_RENDER_POST, OnRenderPost_Cb, this);
    if (m_pCheckJob)
        ecore_job_del(m_pCheckJob);
    ug_set_window(nullptr);
    m_video.Destroy();
    m_canvas.Destroy();
    if (status == 0 && !m_opt.frames.empty()) {
        m_WriteTimeline();
        m_WriteContactSheet();
        std::printf("frames: %s (%zu changes, timeline.json)\n", m_opt.frames.c_str(), m_changes.size());
    }
    // The module stays loaded, as the framework keeps it: its graphics register
    // an Evas class once per process, which must outlive the module's code.
    return status;
}

}  // namespace

int main(int argc, char** argv)
{
    Options opt;
    if (const int rc = ParseArgs(argc, argv, opt); rc != TTML::CToolArgs::kRun)
        return rc;

    TTML::CSourceFeed feed;
    if (!opt.feed.empty()) {
        // A folder is a feed of its documents; any other path must be readable.
        std::error_code ec;
        std::string text, why;
        if (!std::filesystem::is_directory(opt.feed, ec) && !TTML::CSourceFeed::ReadFile(opt.feed, text, &why)) {
            std::fprintf(stderr, "ug-host: cannot read the feed %s: %s\n", opt.feed.c_str(), why.c_str());
            return TTML::TOOL_EXIT_FAILED;
        }
        if (!feed.Load(opt.feed)) {
            std::fprintf(stderr, "ug-host: cannot use the feed %s\n", opt.feed.c_str());
            return TTML::TOOL_EXIT_FAILED;
        }
        for (const char* var : {"INTERTITLE_FEED", "INTERTITLE_DVB_FEED", "INTERTITLE_ATSC_FEED",
                                "INTERTITLE_BROADBAND_FEED"})
            setenv(var, opt.feed.c_str(), 1);
    } else if (const char* env = std::getenv("INTERTITLE_FEED")) {
        feed.Load(env);
    }
    // Buffer canvases unregister from the input-event table when freed; without
    // it EFL reports a missing table at every canvas teardown.
    ecore_evas_init();
    ecore_event_evas_init();
    int status = Host(opt, feed, ChangeTimes(feed)).Run();
    ecore_event_evas_shutdown();
    ecore_evas_shutdown();
    return status;
}
