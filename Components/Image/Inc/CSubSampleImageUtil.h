#ifndef TTML_IMAGE_CSUBSAMPLEIMAGEUTIL_H
#define TTML_IMAGE_CSUBSAMPLEIMAGEUTIL_H

#include <memory>
#include <string>
#include <vector>

#include "CImageData.h"

namespace TTML {

// The images that came with one image-profile document, looked up by the
// reference its divs carry.
//
// Sub-sample data format (all integers unsigned 32-bit little-endian; see
// CSubSampleBuilder, which writes it):
//
//   "ISSD"  magic, 4 bytes
//   u32     version, 1
//   u32     count of entries, at most kMaxEntries
//   count times:
//     u32   name length, at most kMaxNameLength
//     ...   name bytes (a file name, no folder; may be empty)
//     u32   image length, at most CImageData::kMaxBytes
//     ...   image bytes (a PNG file)
//
// Nothing may follow the last entry. Entries are the sub-samples that follow
// the document, so the first image is sub-sample 1.
//
// A reference is looked up as:
// - decimal digits: the entry at that 1-based position
//   ("urn:mpeg:14496-30:subs:3" reaches here as "3"); 0 matches nothing;
// - anything else: the entry whose name equals the reference or the
//   reference's last path component ("img/1.png" finds "1.png").
// "#id" references (images embedded in the document) are not carried in the
// sub-sample data and are not found.
//
// Data that breaks the format in any way (bad magic or version, a length
// running past the end, too many entries, trailing bytes) is refused whole
// with the warning "Sub-sample data refused: <why>"; the util then holds no
// images. Empty data is simply no images (text documents carry none).
//
// Thread: one document's parser thread; not thread-safe. The CImageData it
// hands out are independent of it and outlive it.
class CSubSampleImageUtil {
public:
    static constexpr unsigned int kMaxEntries = 4096;
    static constexpr unsigned int kMaxNameLength = 1024;

    // Reads the index of `subSampleData`; the bytes are copied, the
    // argument is left as it was.
    explicit CSubSampleImageUtil(std::string& subSampleData);
    virtual ~CSubSampleImageUtil();

    CSubSampleImageUtil(const CSubSampleImageUtil&) = delete;
    CSubSampleImageUtil& operator=(const CSubSampleImageUtil&) = delete;

    // The decoded image for `reference`, or an empty pointer with a warning:
    //   Image "<reference>" not found in the sub-sample data
    // or CImageData's "refused" warning. An entry is decoded once; asking
    // again returns the same CImageData (or the empty pointer, without a
    // second warning).
    std::shared_ptr<CImageData> GetImage(const std::string& reference);

    // Drops the decoded images this util keeps for repeated lookups; the
    // holders of a CImageData keep theirs. Lookups still work (decoding again).
    void ReleaseImages();
    // Forgets the sub-sample data: later lookups find nothing.
    void Clear();

    // Number of entries read from the data (0 when refused or cleared).
    size_t GetCount() const { return m_entries.size(); }
    // The entry's name, 1-based like the references; empty when out of range.
    std::string GetName(size_t index) const;

private:
    struct Entry {
        size_t nameOffset;
        size_t nameLength;
        size_t dataOffset;
        size_t dataLength;
        bool decoded;  // tried already; image holds the result (maybe empty)
        std::shared_ptr<CImageData> image;
    };

    bool m_ReadIndex();
    long m_FindEntry(const std::string& reference) const;

    std::string m_data;
    std::vector<Entry> m_entries;
};

}  // namespace TTML

#endif
