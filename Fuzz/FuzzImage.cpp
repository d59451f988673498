// The image component's decoding: a PNG file as an image document's divs
// reach it, and sub-sample data as a source delivers it.
//
// Input starting with "ISSD" is sub-sample data: its index is read and its
// first entries are looked up by position and by name. Anything else is a
// PNG file: decoded directly, and packed by CSubSampleBuilder, whose output
// the reader must take back whole.
#include "CImageData.h"
#include "CSubSampleBuilder.h"
#include "CSubSampleImageUtil.h"

#include <cstdint>
#include <cstdlib>
#include <string>

using namespace TTML;

namespace {

void Touch(const std::shared_ptr<CImageData>& image)
{
    if (!image)
        return;
    unsigned int size = 0;
    const unsigned char* pBuffer = image->GetBuffer(&size);
    // A decoded image is a non-empty picture within the side limit.
    if (!pBuffer || size == 0 || image->GetWidth() == 0 || image->GetHeight() == 0 ||
        image->GetWidth() > CImageData::kMaxSide || image->GetHeight() > CImageData::kMaxSide)
        abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    setenv("INTERTITLE_LOG", "none", 0);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::string bytes(reinterpret_cast<const char*>(data), size);
    if (bytes.compare(0, 4, "ISSD") == 0) {
        CSubSampleImageUtil util(bytes);
        const size_t count = util.GetCount() < 4 ? util.GetCount() : 4;
        for (size_t i = 1; i <= count; ++i) {
            Touch(util.GetImage(std::to_string(i)));
            Touch(util.GetImage("dir/" + util.GetName(i)));
        }
        Touch(util.GetImage("0"));
        return 0;
    }

    Touch(CImageData::FromPng("fuzz.png", data, size));
    std::string packed;
    if (CSubSampleBuilder::Build({{"fuzz.png", bytes}}, packed)) {
        CSubSampleImageUtil util(packed);
        if (util.GetCount() != 1 || util.GetName(1) != "fuzz.png")
            abort();
    }
    return 0;
}
