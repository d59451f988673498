#ifndef TTML_IMAGE_CSUBSAMPLEBUILDER_H
#define TTML_IMAGE_CSUBSAMPLEBUILDER_H

#include <string>
#include <vector>

namespace TTML {

// Writes sub-sample data in the format CSubSampleImageUtil reads (described
// in CSubSampleImageUtil.h). Images are packed as they are; whether they
// decode is checked when they are looked up, so a corrupt file still reaches
// the parser and is refused there with its reason.
class CSubSampleBuilder {
public:
    struct Entry {
        std::string name;   // file name without folder
        std::string bytes;  // the image file
    };

    // Packs `entries` in order (the first is sub-sample 1) into `out`.
    // False with a warning, `out` emptied, when there are more than
    // CSubSampleImageUtil::kMaxEntries entries, a name is longer than
    // kMaxNameLength or an image is larger than CImageData::kMaxBytes.
    static bool Build(const std::vector<Entry>& entries, std::string& out);

    // Reads each file and packs it under its file name (folder dropped).
    // False with the warning "Cannot read image file <path>" (or Build's)
    // and `out` emptied when a file cannot be read.
    static bool BuildFromFiles(const std::vector<std::string>& paths, std::string& out);
};

}  // namespace TTML

#endif
