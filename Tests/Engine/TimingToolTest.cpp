// ttml-timing's answers to its arguments. Its measurements are not judged:
// on a busy machine intervals may be missed, and tests do not time.

#include "ToolRefusal.h"

#include <string>

namespace {

#ifdef INTERTITLE_TTML_TIMING

const std::string kRun = std::string("'") + INTERTITLE_TTML_TIMING + "' ";

INSTANTIATE_TEST_SUITE_P(Timing, ToolRefusal,
                         ::testing::Values(ToolCase{"Help", kRun + "--help", 0, ""},
                                           ToolCase{"TooShort", kRun + "--seconds 2", 2, "--seconds takes"},
                                           ToolCase{"NotANumber", kRun + "--seconds x", 2, "--seconds takes"},
                                           ToolCase{"NoLength", kRun + "--seconds", 2, "--seconds takes"},
                                           ToolCase{"UnknownOption", kRun + "--bogus", 2, "unknown option --bogus"}),
                         ToolCaseName);

#endif

}  // namespace
