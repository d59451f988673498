// Runs documents through the parser task's own per-document path, on the
// calling thread, for the command-line tools: the parser thread stays idle,
// nothing is queued, so a record runs as a queued one would.
#pragma once

#include "CParser.h"
#include "CSubtitleInfo.h"
#include "SubRawData.h"

#include <string>
#include <vector>

namespace TTML {

class CDocumentParser {
public:
    CDocumentParser() = default;
    ~CDocumentParser() { Destroy(); }
    CDocumentParser(const CDocumentParser&) = delete;
    CDocumentParser& operator=(const CDocumentParser&) = delete;

    bool Initialize(int subtitleMode);
    void Destroy();

    // A record for the document file, or nullptr when it cannot be read
    // (why in *pWhy when given: a folder, a missing file, no permission). A
    // document declaring the IMSC 1 image profile gets that transport
    // profile when profile is none, as a source announces it.
    static SubRawData* NewRecord(const std::string& file, int profile, std::string* pWhy = nullptr);

    // Parses pRecord (taken over) and returns the parser's result. The
    // warnings logged meanwhile go to pWarnings when given.
    int Parse(SubRawData* pRecord, int* pResolvedProfile = nullptr, std::vector<std::string>* pWarnings = nullptr);

    // The last document delivered, owned here until Reset or the next one.
    CSubtitleInfo* GetSubtitleInfo() const { return m_pSubtitleInfo; }
    void Reset();

private:
    static void Parsed_Cb(int msgId, void* data);

    CParser m_parser;
    CSubtitleInfo* m_pSubtitleInfo = nullptr;
    bool m_bInitialized = false;
};

}  // namespace TTML
