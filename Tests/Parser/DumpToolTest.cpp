// ttml-dump as a user runs it: the JSON for the bundled sample, checked
// field by field after Python's json module has read it (so it must be valid
// JSON), and the exit status and reasons of a refused document.

#include "ToolRefusal.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <string>

namespace {

#ifdef INTERTITLE_TTML_DUMP

const std::string kTool = INTERTITLE_TTML_DUMP;
const std::string kSample = std::string(INTERTITLE_SOURCE_DIR) + "/samples/ebu-tt-d-sample.xml";

// Flattens each JSON line to "path=value" lines; "#keys=" lists each object's
// keys in order. Fails (non-zero exit) on invalid JSON.
const char kFlatten[] = R"PY(
import json, sys
def walk(path, v, out):
    if isinstance(v, dict):
        out.append(path + "#keys=" + ",".join(v.keys()))
        for k, x in v.items():
            walk(path + "." + k if path else k, x, out)
    elif isinstance(v, list):
        out.append(path + "#len=" + str(len(v)))
        for i, x in enumerate(v):
            walk(path + "." + str(i), x, out)
    else:
        out.append(path + "=" + json.dumps(v, ensure_ascii=False))
for n, line in enumerate(open(sys.argv[1], encoding="utf-8")):
    out = []
    walk(str(n), json.loads(line), out)
    print("\n".join(out))
)PY";

std::string TempPath(const char* tag)
{
    return ::testing::TempDir() + "ttml-dump-" + tag + "-" + std::to_string(getpid());
}

std::map<std::string, std::string> Flatten(const std::string& jsonFile)
{
    std::string script = TempPath("flatten.py");
    std::ofstream(script) << kFlatten;
    ShellRun r = Shell("python3 '" + script + "' '" + jsonFile + "'");
    std::remove(script.c_str());
    std::map<std::string, std::string> fields;
    EXPECT_EQ(r.status, 0) << "not valid JSON lines:\n" << r.out;
    size_t start = 0;
    while (start < r.out.size()) {
        size_t end = r.out.find('\n', start);
        if (end == std::string::npos)
            end = r.out.size();
        std::string line = r.out.substr(start, end - start);
        size_t eq = line.find('=');
        if (eq != std::string::npos)
            fields[line.substr(0, eq)] = line.substr(eq + 1);
        start = end + 1;
    }
    return fields;
}

TEST(DumpTool, JsonOfTheSample)
{
    std::string json = TempPath("sample.json");
    ShellRun r = Shell("'" + kTool + "' --json '" + kSample + "' > '" + json + "'");
    ASSERT_EQ(r.status, 0);
    auto f = Flatten(json);
    std::remove(json.c_str());

    EXPECT_EQ(f["0#keys"], "file,accepted,result,profile,timeBase,cellResolution,extent,aspectRatio,frameRate,"
                           "tickRate,lastEndTime,intervals");
    EXPECT_EQ(f["0.file"], "\"" + kSample + "\"");
    EXPECT_EQ(f["0.accepted"], "true");
    EXPECT_EQ(f["0.result"], "0");
    EXPECT_EQ(f["0.profile"], "2");
    EXPECT_EQ(f["0.timeBase"], "\"media\"");
    EXPECT_EQ(f["0.cellResolution"], "\"50 30\"");
    EXPECT_EQ(f["0.extent"], "\"\"");
    EXPECT_EQ(f["0.aspectRatio"], "\"\"");
    EXPECT_EQ(f["0.frameRate"], "0");
    EXPECT_EQ(f["0.tickRate"], "0");
    EXPECT_EQ(f["0.lastEndTime"], "9000");

    // s1 1-4 s, s2 4-7.5 s, s3 6-9 s: s1 and s2 touch, s2 and s3 overlap.
    const std::pair<const char*, const char*> bounds[] = {
        {"1000", "4000"}, {"4000", "6000"}, {"6000", "7500"}, {"7500", "9000"}};
    ASSERT_EQ(f["0.intervals#len"], "4");
    for (int i = 0; i < 4; ++i) {
        std::string at = "0.intervals." + std::to_string(i);
        EXPECT_EQ(f[at + ".begin"], bounds[i].first) << at;
        EXPECT_EQ(f[at + ".end"], bounds[i].second) << at;
    }

    const std::string s1 = "0.intervals.0.elements";
    EXPECT_EQ(f[s1 + "#len"], "3");
    EXPECT_EQ(f[s1 + ".0#keys"], "type,text,attributes") << "text elements name no image";
    EXPECT_EQ(f[s1 + ".0.type"], "\"span\"");
    EXPECT_EQ(f[s1 + ".0.text"], "\"Bonjour à tous,\"");
    EXPECT_EQ(f[s1 + ".1.type"], "\"br\"");
    EXPECT_EQ(f[s1 + ".1.text"], "\"\\n\"");
    EXPECT_EQ(f[s1 + ".2.text"], "\"et bienvenue à Noël !\"");
    EXPECT_EQ(f.count(s1 + ".0.attributes.text"), 0u);
    EXPECT_EQ(f[s1 + ".0.attributes.begin"], "\"1000\"");
    EXPECT_EQ(f[s1 + ".0.attributes.end"], "\"4000\"");
    EXPECT_EQ(f[s1 + ".0.attributes.lang"], "\"fr\"");
    EXPECT_EQ(f[s1 + ".0.attributes.region"], "\"bottom\"");
    EXPECT_EQ(f[s1 + ".0.attributes.origin"], "\"10% 70%\"");
    EXPECT_EQ(f[s1 + ".0.attributes.textalign"], "\"center\"");
    // The paragraph's background is a line background, not a region one.
    EXPECT_EQ(f.count(s1 + ".0.attributes.backgroundcolor"), 0u);
    EXPECT_NE(f[s1 + ".0.attributes.parabackgroundcolor"], "");
    // The second span's own style wins over the paragraph's.
    EXPECT_NE(f[s1 + ".2.attributes.color"], f[s1 + ".0.attributes.color"]);

    const std::string s2 = "0.intervals.1.elements";
    EXPECT_EQ(f[s2 + "#len"], "1");
    EXPECT_EQ(f[s2 + ".0.text"], "\"Où est passée la clé ?\"");
    EXPECT_EQ(f[s2 + ".0.attributes.role"], "\"dialog\"");
    EXPECT_EQ(f[s2 + ".0.attributes.fontstyle"], "\"italic\"");

    const std::string both = "0.intervals.2.elements";
    EXPECT_EQ(f[both + "#len"], "2");
    EXPECT_EQ(f[both + ".0.text"], "\"Où est passée la clé ?\"");
    EXPECT_EQ(f[both + ".1.text"], "\"Plus tard, à Montréal…\"");
    EXPECT_EQ(f[both + ".1.attributes.textdecoration"], "\"2\"");
    EXPECT_EQ(f[both + ".1.attributes.region"], "\"top\"");
    EXPECT_EQ(f[both + ".1.attributes.fontweight"], "\"bold\"");

    EXPECT_EQ(f["0.intervals.3.elements#len"], "1");
}

TEST(DumpTool, RefusedDocumentFailsWithItsReason)
{
    std::string doc = TempPath("refused.xml");
    std::ofstream(doc) << "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
                          " ttp:timeBase=\"smpte\"><body><div><p begin=\"00:00:01.000\" end=\"00:00:02.000\">x"
                          "</p></div></body></tt>";
    ShellRun text = Shell("'" + kTool + "' '" + doc + "' 2>/dev/null");
    EXPECT_EQ(text.status, 1);
    EXPECT_NE(text.out.find("refused: result 5"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("reason: Error in processing XML DOM. Error code = 5"), std::string::npos) << text.out;

    // With a good file beside it: one JSON line each, status still 1.
    std::string json = TempPath("two.json");
    ShellRun r = Shell("'" + kTool + "' --json '" + kSample + "' '" + doc + "' > '" + json + "' 2>/dev/null");
    EXPECT_EQ(r.status, 1);
    auto f = Flatten(json);
    std::remove(json.c_str());
    std::remove(doc.c_str());
    EXPECT_EQ(f["0.accepted"], "true");
    EXPECT_EQ(f["1.accepted"], "false");
    EXPECT_EQ(f["1.result"], "5");
    EXPECT_EQ(f["1.intervals#len"], "0");
}

TEST(DumpTool, OptionsReachTheRecord)
{
    // A segment starting at 5 s raises the earlier begins to 5000; the
    // transport value 1 sends the document to the image profile, which
    // refuses its untimed divs.
    std::string json = TempPath("segment.json");
    ShellRun r = Shell("'" + kTool + "' --json --segment 5000,9000 '" + kSample + "' > '" + json + "'");
    EXPECT_EQ(r.status, 0);
    auto f = Flatten(json);
    EXPECT_EQ(f["0.intervals.0.begin"], "5000");

    r = Shell("'" + kTool + "' --json --profile 1 '" + kSample + "' > '" + json + "' 2>/dev/null");
    EXPECT_EQ(r.status, 1);
    f = Flatten(json);
    std::remove(json.c_str());
    EXPECT_EQ(f["0.profile"], "1");
    EXPECT_EQ(f["0.result"], "5");

    EXPECT_EQ(Shell("'" + kTool + "' --segment 5000 '" + kSample + "' 2>/dev/null").status, 2);
    EXPECT_EQ(Shell("'" + kTool + "' 2>/dev/null").status, 2);
}

// Images named beside the document are packed and looked up as the image
// profile would; each reference reports its size or why it has none.
TEST(DumpTool, BackgroundImagesBesideTheDocument)
{
    std::string dir = TempPath("images");
    ASSERT_EQ(Shell("mkdir -p '" + dir + "'").status, 0);
    std::string png = std::string(INTERTITLE_TESTDATA) + "/imsc1/ttml/altText/altText1-img.png";
    ASSERT_EQ(Shell("cp '" + png + "' '" + dir + "/good.png' && head -c 300 '" + png + "' > '" + dir + "/cut.png'")
                  .status,
              0);
    std::ofstream(dir + "/doc.ttml")
        << "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:smpte=\"http://www.smpte-ra.org/schemas/2052-1/2010/smpte-tt\">"
           "<body><div begin=\"1s\" end=\"2s\" smpte:backgroundImage=\"good.png\"/>"
           "<div begin=\"2s\" end=\"3s\" smpte:backgroundImage='cut.png'/>"
           "<div begin=\"3s\" end=\"4s\" smpte:backgroundImage=\"gone.png\"/>"
           "<div begin=\"4s\" end=\"5s\" smpte:backgroundImage=\"urn:mpeg:14496-30:subs:1\"/></body></tt>";
    // The same divs in a document that declares the image profile itself.
    std::ofstream(dir + "/declared.ttml")
        << "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
           " ttp:profile=\"http://www.w3.org/ns/ttml/profile/imsc1/image\""
           " xmlns:smpte=\"http://www.smpte-ra.org/schemas/2052-1/2010/smpte-tt\">"
           "<body smpte:backgroundImage=\"notadiv.png\">"
           "<div begin=\"1s\" end=\"2s\" smpte:backgroundImage=\"good.png\"/>"
           "<div begin=\"2s\" end=\"3s\" smpte:backgroundImage=\"gone.png\"/></body></tt>";
    std::string json = dir + "/out.json";
    Shell("'" + kTool + "' --json --profile 1 '" + dir + "/doc.ttml' > '" + json + "' 2>/dev/null");
    auto f = Flatten(json);
    Shell("'" + kTool + "' --json '" + dir + "/declared.ttml' > '" + json + "' 2>/dev/null");
    auto declared = Flatten(json);
    // Without the image profile nothing is looked up.
    Shell("'" + kTool + "' --json '" + dir + "/doc.ttml' > '" + json + "' 2>/dev/null");
    auto undeclared = Flatten(json);
    ShellRun text = Shell("'" + kTool + "' '" + dir + "/declared.ttml' 2>/dev/null");
    Shell("rm -rf '" + dir + "'");
    EXPECT_EQ(f["0.images#len"], "4");
    EXPECT_EQ(f["0.images.0.reference"], "\"good.png\"");
    EXPECT_EQ(f["0.images.0.width"], "160");
    EXPECT_EQ(f["0.images.0.height"], "120");
    EXPECT_EQ(f["0.images.1.width"], "0");
    EXPECT_EQ(f["0.images.1.problem"].find("\"Image \\\"cut.png\\\" refused: corrupt or truncated PNG"), 0u)
        << f["0.images.1.problem"];
    EXPECT_EQ(f["0.images.2.problem"], "\"Image \\\"gone.png\\\" not found in the sub-sample data\"");
    EXPECT_EQ(f["0.images.3.width"], "160") << "sub-sample 1 is the first image packed";

    // What the parsed elements carry: one div per second, decoded or not.
    EXPECT_EQ(f["0.accepted"], "true");
    ASSERT_EQ(f["0.intervals#len"], "4");
    EXPECT_EQ(f["0.intervals.0.elements.0#keys"], "type,text,attributes,image");
    EXPECT_EQ(f["0.intervals.0.elements.0.image.ref"], "\"good.png\"");
    EXPECT_EQ(f["0.intervals.0.elements.0.image.width"], "160");
    EXPECT_EQ(f["0.intervals.0.elements.0.image.height"], "120");
    EXPECT_EQ(f["0.intervals.1.elements.0.image"], "null");
    EXPECT_EQ(f["0.intervals.2.elements.0.image"], "null");
    EXPECT_EQ(f["0.intervals.3.elements.0.image.ref"], "\"1\"");
    EXPECT_EQ(f["0.intervals.3.elements.0.image.width"], "160");

    EXPECT_EQ(undeclared["0.images#len"], "") << "no image profile, no image lookup";
    EXPECT_EQ(declared["0.images#len"], "2") << "only divs carry images";
    EXPECT_EQ(declared["0.profile"], "1");
    EXPECT_EQ(declared["0.accepted"], "true");
    EXPECT_EQ(declared["0.intervals.0.elements.0.image.height"], "120");
    EXPECT_EQ(declared["0.intervals.1.elements.0.image"], "null");
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.out.find("    image good.png: 160x120\n"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("    image gone.png: not decoded\n"), std::string::npos) << text.out;
}

const std::string kRun = "'" + kTool + "' ";

INSTANTIATE_TEST_SUITE_P(
    Dump, ToolRefusal,
    ::testing::Values(ToolCase{"Help", kRun + "--help", 0, ""},
                      ToolCase{"FolderAsFile", kRun + "'" + INTERTITLE_SOURCE_DIR + "/samples'", 1, "samples: is a folder"},
                      ToolCase{"MissingFile", kRun + "/nonexistent.xml", 1, "/nonexistent.xml: No such file"},
                      ToolCase{"ProfileOutOfRange", kRun + "--profile 3 '" + kSample + "'", 2, "--profile takes -1,"},
                      ToolCase{"ModeOutOfRange", kRun + "--mode -1 '" + kSample + "'", 2, "--mode takes a bit set"},
                      ToolCase{"UnknownOption", kRun + "--bogus '" + kSample + "'", 2, "unknown option --bogus"},
                      ToolCase{"NoFile", kRun + "--json", 2, "no FILE"}),
    ToolCaseName);

#endif

}  // namespace
