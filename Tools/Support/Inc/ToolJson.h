// JSON output helpers of the command-line tools (their --json lines).
#pragma once

#include <ostream>
#include <string>

namespace TTML {

// Writes s as a quoted JSON string, control characters escaped.
void JsonString(std::ostream& os, const std::string& s);
// The same as a string.
std::string JsonQuoted(const std::string& s);

}  // namespace TTML
