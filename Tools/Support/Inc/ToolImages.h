// Image documents from disk for the command-line tools: the PNG files named
// beside an IMSC 1 image document are packed into the record's sub-sample
// data, as a source sends them.
#pragma once

#include <string>
#include <vector>

namespace TTML {

// The distinct smpte:backgroundImage values in document order, taken from
// the text so that refused documents are covered too. With divsOnly, only
// div start tags are searched (the only elements that can carry one).
std::vector<std::string> BackgroundImages(const std::string& xml, bool divsOnly);

// Packs the referenced files found beside the document file into
// subSampleData. urn, fragment and absolute references name no such file.
void PackImages(const std::string& file, const std::vector<std::string>& refs, std::string& subSampleData);

}  // namespace TTML
