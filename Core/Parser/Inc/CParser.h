#ifndef TTML_PARSER_CPARSER_H
#define TTML_PARSER_CPARSER_H

#include "CTask.h"
#include "TTMLTypes.h"

#include <atomic>
#include <list>
#include <string>

namespace TTML {

class CProfile;
class CSubtitleInfo;
class IXmlParser;
struct SubRawData;

// Receives the parser's messages. Only message id 0 exists: `data` is a
// ParserCallbackData that lives on the parser's stack for the call.
typedef void (*ParserCallbackFuncType)(int msgId, void* data);

// Handed to the callback with message 0. pSubtitleInfo is a finished, split
// document; ownership passes to the callback's owner, which must delete it.
struct ParserCallbackData {
    void* pUserData;               // as given to CParser::Initialize
    CSubtitleInfo* pSubtitleInfo;  // never null
};

// The parser task (thread "Parser"): turns each queued SubRawData into a
// CSubtitleInfo through the profile the document resolves to, and hands the
// document to the callback on the parser thread.
//
// Profile numbers: TTMLProfile.
// Owns the XML reader and one cached profile object per number, each created
// on first use and kept until Destroy.
//
// Threads: AddToParserQueue from any thread; Reset and Destroy from an owner
// thread (they wait for the parser thread, so never from the callback);
// OnErrorDownloadableFonts from any thread.
class CParser : public CTask {
public:
    CParser();
    // Calls Destroy (with a warning) when the owner forgot.
    ~CParser() override;
    CParser(const CParser&) = delete;
    CParser& operator=(const CParser&) = delete;

    // subtitleMode: the source's bit set (bit value 8 makes IMSC 1 text the
    // default profile). callback may be null: documents are then dropped.
    // Starts the thread and creates the reader. False when already initialised.
    bool Initialize(int subtitleMode, ParserCallbackFuncType callback, void* pUserData);

    // Queues a SubRawData (allocated with new). The parser owns it from here
    // on and deletes it, parsed or not. Null is refused with a warning.
    void AddToParserQueue(void* pSubRawData);

    // Returns once every document queued before the call has been parsed and
    // delivered and the reader's DOM has been freed on the parser thread.
    // Profiles stay cached.
    void Reset();

    // Drops the documents still queued (freed unread), joins the thread,
    // destroys the cached profiles and the reader.
    void Destroy();

    // Passes the failed downloadable-font references to every cached profile.
    virtual void OnErrorDownloadableFonts(const std::list<std::string>& fontList);

    // The whole per-document path for one record: DOM, profile resolution,
    // walk, delivery through the callback, clean-up. Takes ownership of the
    // record and deletes it. Returns 0 when the document was delivered; the
    // profile's result code when the profile refused it; 3 when no profile
    // object exists for the resolved number; 5 when no DOM could be built;
    // 6 for a null record or a missing callback.
    // pResolvedProfile (may be null) receives the resolved profile number,
    // -1 when resolution was not reached.
    // The parser thread runs it for each queued record. Tools and tests may
    // call it on their own thread after Initialize, but only while nothing
    // is queued: the reader and profiles take no lock.
    int ProcessRecord(SubRawData* pSubRawData, int* pResolvedProfile = nullptr);

private:
    void m_ProcessQueueData(void* pData);
    bool m_CreateXMLDOM(const char* pXml, int length);
    int m_SendSubtitleInfo(CSubtitleInfo* pSubtitleInfo);
    CProfile* m_GetParsingProfile(int transportProfile, int* pResolvedProfile);
    CProfile* m_CreateProfile(int number);
    int m_ResolveTTMLProfile(int transportProfile);
    int m_GetProfileFromDOM();
    void m_CleanUp();


    bool m_bInitialized;
    int m_subtitleMode;
    IXmlParser* m_pXmlParser;                // owned
    // Owned, indexed by profile number. Atomic because OnErrorDownloadableFonts
    // reads the cache on the source's thread while the parser thread fills it.
    std::atomic<CProfile*> m_pProfiles[TTML_PROFILE_COUNT];
    ParserCallbackFuncType m_pUserCbFn;
    void* m_pUserData;                       // not owned
};

}  // namespace TTML

#endif
