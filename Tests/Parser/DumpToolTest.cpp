// ttml-dump as a user runs it: the JSON for the bundled sample, checked
// field by field after Python's json module has read it (so it must be valid
// JSON), and the exit status and reasons of a refused document.

#include "ToolRefusal.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

#ifdef INTERTITLE_TTML_DUMP

const std::string kTool = INTERTITLE_TTML_DUMP;
const std::string kSample = std::string(INTERTITLE_SOURCE_DIR) + "/samples/ebu-tt-d-sample.xml";

// Flattens each JSON line to "path=value" lines, the n-th line's under "n";
// "#keys=" lists each object's keys in order, "#len=" gives each list's
// length (and "#len" the number of lines). Fails on invalid JSON.
const char kFlatten[] = R"PY(
import json, sys
def walk(path, v):
    if isinstance(v, dict):
        print(path + "#keys=" + ",".join(v))
        for k, x in v.items(): walk(path + "." + k, x)
    elif isinstance(v, list):
        print(path + "#len=" + str(len(v)))
        for i, x in enumerate(v): walk(path + "." + str(i), x)
    else:
        print(path + "=" + json.dumps(v, ensure_ascii=False))
lines = open(sys.argv[1], encoding="utf-8").readlines()
for n, line in enumerate(lines): walk(str(n), json.loads(line))
print("#len=" + str(len(lines)))
PY
)PY";

std::string TempPath(const char* tag)
{
    return ::testing::TempDir() + "ttml-dump-" + tag + "-" + std::to_string(getpid());
}

std::map<std::string, std::string> Flatten(const std::string& jsonFile)
{
    ShellRun r = Shell("python3 - '" + jsonFile + "' <<'PY'" + kFlatten);
    std::map<std::string, std::string> fields;
    EXPECT_EQ(r.status, 0) << "not valid JSON lines:\n" << r.out;
    std::istringstream lines(r.out);
    for (std::string line; std::getline(lines, line);) {
        const size_t eq = line.find('=');
        if (eq != std::string::npos)
            fields[line.substr(0, eq)] = line.substr(eq + 1);
    }
    return fields;
}

// Fields of each entry of the list at `path` (the documents, when empty),
// one line per entry; an absent field is empty.
std::string Rows(std::map<std::string, std::string>& f, const std::string& path, const std::vector<std::string>& fields)
{
    std::string out;
    for (int i = 0, n = std::atoi(f[path + "#len"].c_str()); i < n; ++i) {
        const std::string at = (path.empty() ? "" : path + ".") + std::to_string(i) + ".";
        for (const auto& field : fields)
            out += (&field == &fields.front() ? "" : " ") + f[at + field];
        out += "\n";
    }
    return out;
}

const std::string kRun = "'" + kTool + "' ";

// The sample and a refused document: one JSON line each, status 1. The
// control character in the refused file's name must reach the JSON escaped.
TEST(DumpTool, JsonOfTheSampleAndARefusedDocument)
{
    const std::string doc = TempPath("refused\x1f.xml"), json = TempPath("two.json");
    std::ofstream(doc) << "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\""
                          " ttp:timeBase=\"smpte\"><body><div><p begin=\"00:00:01.000\" end=\"00:00:02.000\">x"
                          "</p></div></body></tt>";
    EXPECT_EQ(Shell(kRun + "--json '" + kSample + "' '" + doc + "' > '" + json + "' 2>/dev/null").status, 1);
    auto f = Flatten(json);
    ShellRun text = Shell(kRun + "'" + doc + "' 2>/dev/null");
    std::remove(json.c_str());
    std::remove(doc.c_str());

    EXPECT_EQ(f["0#keys"], "file,accepted,result,profile,timeBase,cellResolution,extent,aspectRatio,frameRate,"
                           "tickRate,lastEndTime,intervals");
    EXPECT_EQ(Rows(f, "", {"accepted", "result", "profile", "timeBase", "cellResolution", "extent", "frameRate",
                           "lastEndTime", "intervals#len"}),
              "true 0 2 \"media\" \"50 30\" \"\" 0 9000 4\nfalse 5 2 \"\" \"\" \"\" 0 0 0\n");
    EXPECT_EQ(f["0.file"], "\"" + kSample + "\"");
    // s1 1-4 s, s2 4-7.5 s, s3 6-9 s: s1 and s2 touch, s2 and s3 overlap.
    EXPECT_EQ(Rows(f, "0.intervals", {"begin", "end", "elements#len"}),
              "1000 4000 3\n4000 6000 1\n6000 7500 2\n7500 9000 1\n");
    EXPECT_EQ(Rows(f, "0.intervals.0.elements", {"type", "text", "attributes.begin", "attributes.region"}),
              "\"span\" \"Bonjour à tous,\" \"1000\" \"bottom\"\n"
              "\"br\" \"\\n\" \"1000\" \"bottom\"\n"
              "\"span\" \"et bienvenue à Noël !\" \"1000\" \"bottom\"\n");
    EXPECT_EQ(Rows(f, "0.intervals.2.elements", {"text", "attributes.role", "attributes.textdecoration"}),
              "\"Où est passée la clé ?\" \"dialog\" \"none\"\n\"Plus tard, à Montréal…\"  \"2\"\n");
    // Text is no attribute, and a text element names no image.
    EXPECT_EQ(f["0.intervals.0.elements.0#keys"] + f["0.intervals.0.elements.0.attributes.text"],
              "type,text,attributes");
    // As text: the result and every reason.
    EXPECT_EQ(text.status, 1);
    EXPECT_NE(text.out.find("refused: result 5"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("reason: Error in processing XML DOM. Error code = 5"), std::string::npos) << text.out;
}

TEST(DumpTool, OptionsReachTheRecord)
{
    // A segment starting at 5 s raises the earlier begins to 5000; the
    // transport value 1 sends the document to the image profile, which
    // refuses its untimed divs.
    std::string json = TempPath("options.json");
    EXPECT_EQ(Shell(kRun + "--json --segment 5000,9000 '" + kSample + "' > '" + json + "'").status, 0);
    auto f = Flatten(json);
    EXPECT_EQ(f["0.intervals.0.begin"], "5000");
    EXPECT_EQ(Shell(kRun + "--json --profile 1 '" + kSample + "' > '" + json + "' 2>/dev/null").status, 1);
    f = Flatten(json);
    std::remove(json.c_str());
    EXPECT_EQ(Rows(f, "", {"profile", "result"}), "1 5\n");
    EXPECT_EQ(Shell(kRun + "--segment 5000 '" + kSample + "' 2>/dev/null").status, 2);
}

// Images named beside the document are packed and looked up as the image
// profile would; each reference reports its size or why it has none.
TEST(DumpTool, BackgroundImagesBesideTheDocument)
{
    std::string dir = TempPath("images");
    std::string png = std::string(INTERTITLE_TESTDATA) + "/imsc1/ttml/altText/altText1-img.png";
    if (!std::ifstream(png))
        GTEST_SKIP() << "shared test image not found: " << png;
    ASSERT_EQ(Shell("mkdir -p '" + dir + "' && cp '" + png + "' '" + dir + "/good.png' && head -c 300 '" + png +
                    "' > '" + dir + "/cut.png'")
                  .status,
              0);
    std::ofstream(dir + "/doc.ttml")
        << "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:smpte=\"http://www.smpte-ra.org/schemas/2052-1/2010/smpte-tt\">"
           "<body><div begin=\"1s\" end=\"2s\" smpte:backgroundImage=\"good.png\"/>"
           "<div begin=\"2s\" end=\"3s\" smpte:backgroundImage='cut.png'/>"
           "<div begin=\"3s\" end=\"4s\" smpte:backgroundImage=\"gone.png\"/>"
           "<div begin=\"4s\" end=\"5s\" smpte:backgroundImage=\"urn:mpeg:14496-30:subs:1\"/></body></tt>";
    const std::string json = dir + "/out.json";
    Shell(kRun + "--json --profile 1 '" + dir + "/doc.ttml' > '" + json + "' 2>/dev/null");
    auto f = Flatten(json);
    // Without the image profile nothing is looked up.
    Shell(kRun + "--json '" + dir + "/doc.ttml' > '" + json + "' 2>/dev/null");
    auto undeclared = Flatten(json);
    ShellRun text = Shell(kRun + "--profile 1 '" + dir + "/doc.ttml' 2>/dev/null");
    Shell("rm -rf '" + dir + "'");

    // Sub-sample 1 is the first image packed.
    EXPECT_EQ(Rows(f, "0.images", {"reference", "width", "height", "problem"}),
              "\"good.png\" 160 120 \"\"\n"
              "\"cut.png\" 0 0 \"Image \\\"cut.png\\\" refused: corrupt or truncated PNG (truncated)\"\n"
              "\"gone.png\" 0 0 \"Image \\\"gone.png\\\" not found in the sub-sample data\"\n"
              "\"urn:mpeg:14496-30:subs:1\" 160 120 \"\"\n");
    // What the parsed elements carry: one div per second, decoded or not.
    EXPECT_EQ(f["0.intervals.0.elements.0#keys"], "type,text,attributes,image");
    EXPECT_EQ(Rows(f, "0.intervals", {"begin", "elements.0.image", "elements.0.image.ref", "elements.0.image.width"}),
              "1000  \"good.png\" 160\n2000 null  \n3000 null  \n4000  \"1\" 160\n");
    EXPECT_EQ(undeclared["0.images#len"], "");
    EXPECT_EQ(text.status, 0);
    EXPECT_NE(text.out.find("    image good.png: 160x120\n"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("    image gone.png: not decoded\n"), std::string::npos) << text.out;
}

INSTANTIATE_TEST_SUITE_P(
    Dump, ToolRefusal,
    ::testing::Values(ToolCase{"Help", kRun + "--help", 0, ""},
                      ToolCase{"MissingFile", kRun + "/nonexistent.xml", 1, "/nonexistent.xml: No such file"},
                      ToolCase{"UnknownOption", kRun + "--bogus '" + kSample + "'", 2, "unknown option --bogus"},
                      ToolCase{"NoFile", kRun + "--json", 2, "no FILE"}),
    ToolCaseName);

#endif

}  // namespace
