// Which profile a document is parsed with: transport value, declaration in
// the document, subtitle mode default.

#include "LogCapture.h"
#include "ParserTestUtil.h"
#include "RowPrinter.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace ParserTest;

namespace {

struct ResolutionCase {
    const char* name;
    int transport;
    int mode;
    std::string declaration;  // root attributes, then from the first '<' on head children
    int resolved;
    // Messages logged; with a leading '!', a text no message contains.
    std::vector<std::string> log;
};

std::string Root(const std::string& designator)
{
    return "ttp:profile=\"" + designator + "\"";
}

const std::string kNoMismatch = "!Different profile specified in XML and TS Descriptor/Mpd.";

const ResolutionCase kCases[] = {
    {"TransportImageIsUsedWithoutLookingAtTheDocument", 1, 1, Conforms({kEbu}), 1,
     {kNoMismatch, "!Profile found in xml", "!Using profile given"}},
    {"TransportEbuWithImscTextDeclarationWarnsAndUsesTheDocument", 2, 1, Conforms({kImscText}), 0,
     {"Different profile specified in XML and TS Descriptor/Mpd. profile=2, profileInXml=0",
      "Using profile given in XML: 0"}},
    {"SameProfileInTransportAndDocumentDoesNotWarn", 2, 1, Conforms({kEbu}), 2,
     {"Using profile given in XML: 2", kNoMismatch}},
    {"NoDeclarationMode9DefaultsToImscText", -1, 9, "", 0,
     {"Profile found in xml=[]", "Un-recognized profile in subtitle data!",
      "Using default profile as 0 in subtitle mode=9"}},
    {"NoDeclarationMode1DefaultsToEbu", -1, 1, "", 2,
     {"Using default profile as 2 in subtitle mode=1", "!Using profile given"}},
    {"UnknownTransportValueIsTreatedAsNone", 5, 9, "", 0,
     {"Using default profile as 0 in subtitle mode=9", "!Using profile given"}},
    {"NegativeTransportValueIsTreatedAsNone", -7, 1, "", 2,
     {"Using default profile as 2 in subtitle mode=1", "!Using profile given"}},
    {"TransportTextWithoutDeclaration", 0, 1, "", 0, {"Using profile given in TS/Mpd: 0"}},
    {"TransportEbuBeatsTheModeDefault", 2, 9, "", 2, {"Using profile given in TS/Mpd: 2", "!Using default profile"}},
    {"EbuUrnWithFurtherPartMatchesAsSubstring", 0, 1, Root("urn:ebu:tt:distribution:2014-01:extra"), 2,
     {"Profile found in xml=[urn:ebu:tt:distribution:2014-01:extra]",
      "Different profile specified in XML and TS Descriptor/Mpd. profile=0, profileInXml=2",
      "Using profile given in XML: 2"}},
    {"ImscTextDesignatorWithSuffixIsUnrecognised", -1, 1, Root(std::string(kImscText) + "/x"), 2,
     {"Un-recognized profile in subtitle data!", "Using default profile as 2 in subtitle mode=1"}},
    {"ImscImageDesignatorOnTheRoot", -1, 1, Root(kImscImage), 1, {"Using profile given in XML: 1"}},
    {"RootAttributeBeatsHeadDeclarations", -1, 9, Root(kEbu) + Conforms({kImscText}), 2,
     {"Using profile given in XML: 2"}},
    {"HeadProfileElementBeatsMetadata", -1, 9,
     "<ttp:profile use=\"" + std::string(kEbu) + "\"/>" + Conforms({kImscText}), 2, {"Using profile given in XML: 2"}},
    // The public EBU-TT-D samples declare EBU first and IMSC 1 text last.
    {"LastConformsToStandardWins", -1, 1, Conforms({kEbu, kImscText}), 0,
     {"Profile found in xml=[http://www.w3.org/ns/ttml/profile/imsc1/text]"}},
    {"LastConformsToStandardWinsEbu", -1, 9, Conforms({kImscText, kEbu}), 2, {"Using profile given in XML: 2"}},
};

class Resolution : public ::testing::TestWithParam<ResolutionCase> {};

TEST_P(Resolution, ResolvesAndLogs)
{
    const ResolutionCase& c = GetParam();
    DocParts d;
    const size_t head = std::min(c.declaration.find('<'), c.declaration.size());
    d.rootAttrs += " " + c.declaration.substr(0, head);
    d.head = c.declaration.substr(head);
    SyncParser p(c.mode);
    LogCapture log;
    int resolved = -2;
    const int result = p.Run(MakeDoc(d), c.transport, &resolved);

    EXPECT_EQ(resolved, c.resolved);
    // The document's div has no begin, so only the image walk refuses it.
    EXPECT_EQ(result, resolved == 1 ? TTML::ERR_INVALID : TTML::ERR_NONE) << log.Dump();
    EXPECT_EQ(p.delivered.Count(), result == TTML::ERR_NONE ? 1u : 0u);
    if (resolved == 1) {
        EXPECT_TRUE(log.Has("begin/end/showBG attributes not found in the map.")) << "the image walk saw it";
    }
    for (const auto& line : c.log) {
        if (line[0] == '!') {
            EXPECT_FALSE(log.HasContaining(line.substr(1))) << "unexpected: " << line << "\n" << log.Dump();
        } else {
            EXPECT_TRUE(log.Has(line)) << "missing: " << line << "\n" << log.Dump();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Parser, Resolution, ::testing::ValuesIn(kCases), TTMLTest::RowName());

// Documents of different profiles never share a profile object: an IMSC 1
// text document between two EBU-TT-D ones leaves the cached EBU-TT-D profile
// working, and a refused image document disturbs neither nor the next
// image document.
TEST(ResolutionCache, ProfilesAlternateWithoutDisturbingEachOther)
{
    SyncParser p(1);
    DocParts imsc, image;
    imsc.head = Conforms({kImscText});
    image.head = Conforms({kImscImage});
    DocParts timedImage = image;
    timedImage.body = "<div region=\"r1\" begin=\"00:00:01.000\" end=\"00:00:02.000\"/>";
    int resolved = -2;
    EXPECT_EQ(p.Run(MakeDoc()), TTML::ERR_NONE);
    EXPECT_EQ(p.Run(MakeDoc(imsc), -1, &resolved), TTML::ERR_NONE);
    EXPECT_EQ(resolved, 0);
    EXPECT_EQ(p.Run(MakeDoc(image), -1, &resolved), TTML::ERR_INVALID);
    EXPECT_EQ(resolved, 1);
    EXPECT_EQ(p.Run(MakeDoc(timedImage)), TTML::ERR_NONE);
    EXPECT_EQ(p.Run(MakeDoc()), TTML::ERR_NONE);
    EXPECT_EQ(p.Run(MakeDoc(imsc)), TTML::ERR_NONE);
    EXPECT_EQ(p.delivered.Count(), 5u);
}

}  // namespace
