#include "CParser.h"

#include "CEBUProfile.h"
#include "CIMSC1ImageProfile.h"
#include "CIMSCProfile.h"
#include "CProfile.h"
#include "CSubtitleInfo.h"
#include "CXmlParser.h"
#include "SubRawData.h"
#include "TCallback.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"
#include "TTMLLog.h"
#include "TTMLTypes.h"
#include "Util.h"

#include <climits>
#include <new>

namespace TTML {

namespace {

// Queued by Reset ahead of the task's own marker: the reader's clean-up runs
// on the parser thread, never beside a document another thread just posted.
char g_cleanUpEvent;

}  // namespace

CParser::CParser()
    : m_bInitialized(false),
      m_subtitleMode(1),
      m_pXmlParser(nullptr),
      m_pUserCbFn(nullptr),
      m_pUserData(nullptr)
{
    for (auto& p : m_pProfiles)
        p = nullptr;
    TTML_INFO("Construction done");
}

CParser::~CParser()
{
    if (m_bInitialized) {
        TTML_WARN("Parser object deleted without calling Destroy! Fix this.");
        Destroy();
    }
    TTML_INFO("Destruction done");
}

bool CParser::Initialize(int subtitleMode, ParserCallbackFuncType callback, void* pUserData)
{
    if (m_bInitialized) {
        TTML_WARN("CParser is already initialized, returning false.");
        return false;
    }
    m_subtitleMode = subtitleMode;
    m_pUserCbFn = callback;
    m_pUserData = pUserData;

    // The reader exists before the thread starts: records queued before
    // Initialize are handled as soon as it runs.
    m_pXmlParser = new (std::nothrow) CXmlParser();
    TTML_ASSERT(m_pXmlParser);

    ICallback* pEventCb = new (std::nothrow) TCallback<CParser>(this, &CParser::m_ProcessQueueData);
    TTML_ASSERT(pEventCb);
    Connect(pEventCb, nullptr);
    // A parser initialised again after Destroy must not keep dropping documents.
    SetTaskState(false);
    Start("Parser");

    m_bInitialized = true;
    TTML_INFO("Initialize is done");
    return true;
}

void CParser::AddToParserQueue(void* pSubRawData)
{
    // A null event is the task's stop marker, so it must never be posted.
    if (!pSubRawData) {
        TTML_WARN("pSubRawData is NULL");
        return;
    }
    SendEvent(pSubRawData);
}

void CParser::Reset()
{
    SendEvent(&g_cleanUpEvent);
    CTask::Reset();
    TTML_INFO("Reset is done");
}

void CParser::Destroy()
{
    if (!m_bInitialized) {
        TTML_WARN("CParser is already destroyed!!!");
        return;
    }
    m_bInitialized = false;
    TTML_INFO("Marking the current queue to be ignored.");
    SetTaskState(true);
    Stop();

    for (auto& slot : m_pProfiles) {
        CProfile* pProfile = slot.exchange(nullptr);
        if (pProfile) {
            pProfile->Destroy();
            delete pProfile;
        }
    }
    delete m_pXmlParser;
    m_pXmlParser = nullptr;
    TTML_INFO("Destroy is done");
}

void CParser::OnErrorDownloadableFonts(const std::list<std::string>& fontList)
{
    for (auto& slot : m_pProfiles) {
        CProfile* pProfile = slot.load();
        if (pProfile)
            pProfile->OnErrorDownloadableFonts(fontList);
    }
}

void CParser::m_ProcessQueueData(void* pData)
{
    if (pData == &g_cleanUpEvent) {
        m_CleanUp();
        return;
    }
    SubRawData* pSubRawData = static_cast<SubRawData*>(pData);
    if (!pSubRawData) {
        TTML_WARN("pSubRawData is NULL");
        return;
    }
    if (IsTaskIgnored()) {
        TTML_WARN("CTask::IsTaskIgnored() is true, deleting xml data!");
        delete pSubRawData;
        return;
    }
    ProcessRecord(pSubRawData);
}

int CParser::ProcessRecord(SubRawData* pSubRawData, int* pResolvedProfile)
{
    if (pResolvedProfile)
        *pResolvedProfile = TTML_PROFILE_NONE;
    if (!pSubRawData) {
        TTML_WARN("pSubRawData is NULL");
        return ERR_NULL_POINTER;
    }

    int result = ERR_NONE;
    const std::string& xml = pSubRawData->xmlData;
    // Longer texts than an int can count are refused like empty ones.
    int length = xml.size() > static_cast<size_t>(INT_MAX) ? -1 : static_cast<int>(xml.size());

    if (!m_CreateXMLDOM(xml.data(), length)) {
        TTML_WARN("Unable to create XML DOM!!!");
        result = ERR_INVALID;
    } else {
        CSubtitleInfo* pSubtitleInfo = new (std::nothrow) CSubtitleInfo();
        TTML_ASSERT(pSubtitleInfo);
        pSubtitleInfo->SetTimeStamp(pSubRawData->timeStamp);
        pSubtitleInfo->SetSubtitleSegmentTimings(pSubRawData->segmentBegin, pSubRawData->segmentEnd);

        CProfile* pProfile = m_GetParsingProfile(pSubRawData->profile, pResolvedProfile);
        if (!pProfile) {
            TTML_WARN("Unable to create parsing profile!!!");
            delete pSubtitleInfo;
            result = ERR_NOT_SUPPORTED;
        } else {
            CProfile::TTMLProfileData data;
            data.pXmlParser = m_pXmlParser;
            data.pSubtitleInfo = pSubtitleInfo;
            data.pSubRawData = pSubRawData;
            result = pProfile->ProcessSubtitles(&data);
            pProfile->Reset();

            if (result != ERR_NONE) {
                TTML_WARN("Error in processing XML DOM. Error code = %d", result);
                delete pSubtitleInfo;
            } else {
                result = m_SendSubtitleInfo(pSubtitleInfo);
                if (result != ERR_NONE)
                    delete pSubtitleInfo;
            }
        }
    }

    delete pSubRawData;
    m_CleanUp();
    TTML_INFO("Exit");
    return result;
}

bool CParser::m_CreateXMLDOM(const char* pXml, int length)
{
    if (!m_pXmlParser || !pXml || length <= 0) {
        TTML_WARN("NULL pointer found or invalid data");
        return false;
    }
    if (!m_pXmlParser->ReadMemory(pXml, length)) {
        TTML_WARN("ReadMemory failed");
        return false;
    }
    return true;
}

int CParser::m_SendSubtitleInfo(CSubtitleInfo* pSubtitleInfo)
{
    if (!m_pUserCbFn) {
        TTML_WARN("m_pUserCbFn is null!");
        return ERR_NULL_POINTER;
    }
    ParserCallbackData data;
    data.pUserData = m_pUserData;
    data.pSubtitleInfo = pSubtitleInfo;
    m_pUserCbFn(0, &data);
    return ERR_NONE;
}

CProfile* CParser::m_GetParsingProfile(int transportProfile, int* pResolvedProfile)
{
    int number = m_ResolveTTMLProfile(transportProfile);
    if (pResolvedProfile)
        *pResolvedProfile = number;

    // Resolution only yields 0..2; anything else would be walked as EBU-TT-D.
    int index = (number >= 0 && number < TTML_PROFILE_COUNT) ? number : TTML_PROFILE_EBUTTD;
    CProfile* pParsingProfile = m_pProfiles[index].load();
    if (pParsingProfile)
        return pParsingProfile;

    pParsingProfile = m_CreateProfile(number);
    if (!pParsingProfile)
        return nullptr;
    pParsingProfile->Initialize();
    pParsingProfile->SetProfile(number);
    m_pProfiles[index].store(pParsingProfile);
    return pParsingProfile;
}

CProfile* CParser::m_CreateProfile(int number)
{
    CProfile* pParsingProfile = nullptr;
    if (number == TTML_PROFILE_IMSC1_TEXT)
        pParsingProfile = new (std::nothrow) CIMSCProfile();
    else if (number == TTML_PROFILE_IMSC1_IMAGE)
        pParsingProfile = new (std::nothrow) CIMSC1ImageProfile();
    else
        pParsingProfile = new (std::nothrow) CEBUProfile();
    TTML_ASSERT(pParsingProfile);
    return pParsingProfile;
}

int CParser::m_ResolveTTMLProfile(int transportProfile)
{
    // The image profile needs the sub-sample data the transport announced,
    // whatever the document claims.
    if (transportProfile == TTML_PROFILE_IMSC1_IMAGE)
        return TTML_PROFILE_IMSC1_IMAGE;

    int profileInXml = m_GetProfileFromDOM();
    if (profileInXml != TTML_PROFILE_NONE) {
        if (transportProfile != TTML_PROFILE_NONE && transportProfile != profileInXml) {
            TTML_WARN("Different profile specified in XML and TS Descriptor/Mpd. profile=%d, profileInXml=%d",
                      transportProfile, profileInXml);
        }
        TTML_INFO("Using profile given in XML: %d", profileInXml);
        return profileInXml;
    }

    if (static_cast<unsigned>(transportProfile) <= TTML_PROFILE_EBUTTD) {
        TTML_INFO("Using profile given in TS/Mpd: %d", transportProfile);
        return transportProfile;
    }

    int defaultProfile = (m_subtitleMode & SUBTITLE_MODE_IMSC1_DEFAULT) ? TTML_PROFILE_IMSC1_TEXT : TTML_PROFILE_EBUTTD;
    TTML_INFO("Using default profile as %d in subtitle mode=%d", defaultProfile, m_subtitleMode);
    return defaultProfile;
}

int CParser::m_GetProfileFromDOM()
{
    if (!m_pXmlParser) {
        TTML_WARN("NULL pointer found");
        return TTML_PROFILE_NONE;
    }
    XMLNODEPTR pRoot = m_pXmlParser->GetRootElement();
    if (!pRoot) {
        TTML_WARN("Root element not found");
        return TTML_PROFILE_NONE;
    }

    std::string value;
    std::string attrName = kTTMLAttrKeys[ATTR_PROFILE];
    if (!m_pXmlParser->GetAttrValue(pRoot, attrName, value)) {
        XMLNODEPTR pHead = m_pXmlParser->GetChildNodeByName(pRoot, kTTMLElemNames[ELEM_HEAD]);
        XMLNODEPTR pProfile = m_pXmlParser->GetChildNodeByName(pHead, "profile");
        std::string useName = "use";
        if (!pProfile || !m_pXmlParser->GetAttrValue(pProfile, useName, value)) {
            XMLNODEPTR pMetadata = m_pXmlParser->GetChildNodeByName(pHead, kTTMLElemNames[ELEM_METADATA]);
            XMLNODEPTR pDocMetadata = m_pXmlParser->GetChildNodeByName(pMetadata, kTTMLElemNames[ELEM_DOCUMENTMETADATA]);
            // The last declaration wins when several are given.
            XMLNODEPTR pConforms = nullptr;
            for (XMLNODEPTR p = m_pXmlParser->GetChildElementList(pDocMetadata); p;
                 p = m_pXmlParser->GetNextElementNode(p)) {
                std::string name = m_pXmlParser->GetNodeName(p);
                StrToLower(name);
                if (name == kTTMLAttrKeys[ATTR_CONFORMSTOSTANDARD])
                    pConforms = p;
            }
            value = pConforms ? m_pXmlParser->GetElementContent(pConforms) : std::string();
        }
    }
    TTML_INFO("Profile found in xml=[%s]", value.c_str());

    if (value.find(kEbuTtdDesignator) != std::string::npos)
        return TTML_PROFILE_EBUTTD;
    if (value == kImsc1ImageDesignator)
        return TTML_PROFILE_IMSC1_IMAGE;
    if (value == kImsc1TextDesignator)
        return TTML_PROFILE_IMSC1_TEXT;
    TTML_WARN("Un-recognized profile in subtitle data!");
    return TTML_PROFILE_NONE;
}

void CParser::m_CleanUp()
{
    if (m_pXmlParser)
        m_pXmlParser->Reset();
    TTML_INFO("Function is done");
}

}  // namespace TTML
