// File helpers shared by the command-line tools and the tests that read
// documents and pictures from disk.
#pragma once

#include <string>

namespace TTML {

// The whole file, bytes as they are. False when it cannot be opened or read.
bool ReadWholeFile(const std::string& path, std::string& out);

}  // namespace TTML
