#include "CXmlParser.h"

#include "TTMLLimits.h"
#include "TTMLLog.h"

#include <libxml/entities.h>
#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/dict.h>
#include <libxml/valid.h>
#include <libxml/xmlerror.h>

#include <malloc.h>
#include <sys/stat.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <mutex>

namespace TTML {

namespace {

#if LIBXML_VERSION >= 21200
typedef const xmlError* XmlErrorArg;
#else
typedef xmlErrorPtr XmlErrorArg;
#endif

// Blank text between elements dropped, CDATA merged into text.
const int kMemoryReadOptions = XML_PARSE_NOBLANKS | XML_PARSE_NOCDATA;
const int kFileReadOptions = XML_PARSE_NOBLANKS;
// Names a reader's parser context may keep interned between documents before
// it starts over with an empty dictionary (ids differ from one document to
// the next, so a long stream would otherwise grow it without end).
const int kMaxKeptNames = 8192;

// While alive, libxml2 messages raised on this thread become TTML warnings
// instead of raw lines on standard error. libxml2 keeps its handlers per
// thread, so readers on other threads are not affected. A broken document can
// raise a message per element, so only the first few are written.
class CXmlErrorRoute {
public:
    CXmlErrorRoute()
        : m_prevStructured(xmlStructuredError),
          m_prevStructuredCtx(xmlStructuredErrorContext),
          m_prevGeneric(xmlGenericError),
          m_prevGenericCtx(xmlGenericErrorContext),
          m_count(0)
    {
        xmlSetStructuredErrorFunc(this, m_OnStructuredError_Cb);
        xmlSetGenericErrorFunc(this, m_OnGenericError_Cb);
    }

    ~CXmlErrorRoute()
    {
        xmlSetStructuredErrorFunc(m_prevStructuredCtx, m_prevStructured);
        xmlSetGenericErrorFunc(m_prevGenericCtx, m_prevGeneric);
        if (m_count > kMaxLines)
            TTML_WARN("libxml2: %d further messages not shown", m_count - kMaxLines);
    }

    CXmlErrorRoute(const CXmlErrorRoute&) = delete;
    CXmlErrorRoute& operator=(const CXmlErrorRoute&) = delete;

private:
    static const int kMaxLines = 8;

    // libxml2 messages end in a newline; the log line adds its own.
    static void m_Write(CXmlErrorRoute* self, int line, const char* text)
    {
        if (!self || !text)
            return;
        size_t len = std::strlen(text);
        while (len > 0 && (text[len - 1] == '\n' || text[len - 1] == '\r'))
            --len;
        if (len == 0)
            return;
        if (++self->m_count > kMaxLines)
            return;
        if (line > 0)
            TTML_WARN("libxml2: line %d: %.*s", line, static_cast<int>(len), text);
        else
            TTML_WARN("libxml2: %.*s", static_cast<int>(len), text);
    }

    static void m_OnStructuredError_Cb(void* user, XmlErrorArg error)
    {
        if (error)
            m_Write(static_cast<CXmlErrorRoute*>(user), error->line, error->message);
    }

    static void m_OnGenericError_Cb(void* user, const char* fmt, ...)
    {
        char text[512];
        va_list ap;
        va_start(ap, fmt);
        std::vsnprintf(text, sizeof(text), fmt, ap);
        va_end(ap);
        m_Write(static_cast<CXmlErrorRoute*>(user), 0, text);
    }

    xmlStructuredErrorFunc m_prevStructured;
    void* m_prevStructuredCtx;
    xmlGenericErrorFunc m_prevGeneric;
    void* m_prevGenericCtx;
    int m_count;
};

std::string ToString(const xmlChar* text)
{
    return text ? std::string(reinterpret_cast<const char*>(text)) : std::string();
}

bool EqualsIgnoringAsciiCase(const xmlChar* a, const std::string& b)
{
    if (!a)
        return false;
    size_t i = 0;
    for (; a[i] != 0 && i < b.size(); ++i) {
        unsigned char x = a[i];
        unsigned char y = static_cast<unsigned char>(b[i]);
        if (x >= 'A' && x <= 'Z')
            x = static_cast<unsigned char>(x - 'A' + 'a');
        if (y >= 'A' && y <= 'Z')
            y = static_cast<unsigned char>(y - 'A' + 'a');
        if (x != y)
            return false;
    }
    return a[i] == 0 && i == b.size();
}

bool IsWalkedNode(xmlNodePtr node)
{
    return node->type == XML_ELEMENT_NODE || node->type == XML_TEXT_NODE;
}

xmlNodePtr FirstElementFrom(xmlNodePtr node)
{
    while (node && node->type != XML_ELEMENT_NODE)
        node = node->next;
    return node;
}

xmlNodePtr FirstWalkedFrom(xmlNodePtr node)
{
    while (node && !IsWalkedNode(node))
        node = node->next;
    return node;
}

xmlAttrPtr FirstValuedFrom(xmlAttrPtr attr)
{
    while (attr && !attr->children)
        attr = attr->next;
    return attr;
}

// An entity declared in the document is expanded each time the tree is read
// (text and attribute reads), past any guard libxml2 applies while parsing,
// so a small document could grow to gigabytes.
int CountDeclarations(xmlDocPtr doc)
{
    int count = 0;
    if (doc && doc->intSubset) {
        for (xmlNodePtr n = doc->intSubset->children; n; n = n->next)
            ++count;
    }
    return count;
}

// Whether xmlEncodeEntitiesReentrant would give `text` back unchanged: no
// markup character, no control character it writes as a reference, and
// non-ASCII bytes only where the document declares an encoding (otherwise
// they become character references).
bool EncodesToItself(xmlDocPtr doc, const xmlChar* text)
{
    if (!doc || doc->type != XML_DOCUMENT_NODE)
        return false;
    const bool keepsNonAscii = doc->encoding != nullptr;
    for (const xmlChar* p = text; *p; ++p) {
        const xmlChar c = *p;
        if (c == '<' || c == '>' || c == '&')
            return false;
        if (c >= 0x80) {
            if (!keepsNonAscii)
                return false;
        } else if (c < 0x20 && c != '\n' && c != '\t') {
            return false;
        }
    }
    return true;
}

// The node itself when it is text, or an element's only child when that
// is text; null otherwise or when the text has no content.
const xmlNode* SingleTextNode(xmlNodePtr node)
{
    const xmlNode* text = node->type == XML_TEXT_NODE                   ? node
                          : node->children && !node->children->next ? node->children
                                                                      : nullptr;
    return text && text->type == XML_TEXT_NODE && text->content ? text : nullptr;
}

// Only element nodes have attributes; in other node types the same field may
// hold something else.
bool HasAttributes(xmlNodePtr node)
{
    return node->type == XML_ELEMENT_NODE;
}

}  // namespace

CXmlParser::CXmlParser() : m_xmlDoc(nullptr)
{
    static std::once_flag s_init;
    std::call_once(s_init, [] { xmlInitParser(); });
}

CXmlParser::~CXmlParser()
{
    // An empty reader is the normal state here, not worth a warning.
    if (m_xmlDoc)
        Reset();
    if (m_parserContext)
        xmlFreeParserCtxt(m_parserContext);
}

bool CXmlParser::m_RefuseDeclarations()
{
    const int declarations = CountDeclarations(m_xmlDoc);
    if (declarations <= Limits::kMaxDtdDeclarations)
        return false;
    TTML_WARN("Document declares an internal DTD subset: refused (%d declarations, limit %d)", declarations,
              Limits::kMaxDtdDeclarations);
    xmlFreeDoc(m_xmlDoc);
    m_xmlDoc = nullptr;
    return true;
}

bool CXmlParser::ReadFile(std::string path)
{
    TTML_ASSERT(!m_xmlDoc);
    struct stat info;
    if (stat(path.c_str(), &info) != 0) {
        TTML_WARN("File not found: %s", path.c_str());
        return false;
    }
    if (info.st_size > kMaxDocumentBytes) {
        TTML_WARN("XML file too large: %lld bytes (limit %d)", static_cast<long long>(info.st_size),
                  kMaxDocumentBytes);
        return false;
    }
    CXmlErrorRoute route;
    m_xmlDoc = xmlReadFile(path.c_str(), nullptr, kFileReadOptions);
    m_RefuseDeclarations();
    m_documentBytes = m_xmlDoc ? static_cast<size_t>(info.st_size) : 0;
    return m_xmlDoc != nullptr;
}

bool CXmlParser::ReadMemory(const char* data, int length)
{
    TTML_ASSERT(!m_xmlDoc);
    // libxml2 cannot take a null buffer or a non-positive size.
    if (!data || length <= 0) {
        TTML_WARN("Invalid XML data (length %d)", length);
        return false;
    }
    if (length > kMaxDocumentBytes) {
        TTML_WARN("XML data too large: %d bytes (limit %d)", length, kMaxDocumentBytes);
        return false;
    }
    xmlCharEncoding encoding = xmlDetectCharEncoding(reinterpret_cast<const unsigned char*>(data), length);
    if (encoding > XML_CHAR_ENCODING_UTF16BE) {
        TTML_WARN("xmlEncoding is not supported : %d", encoding);
    } else {
        CXmlErrorRoute route;
        // One context for every document: its dictionary already holds the
        // names a document repeats (element and attribute names), so they
        // are not interned again, and its tables are not built again.
        if (!m_parserContext)
            m_parserContext = xmlNewParserCtxt();
        m_xmlDoc = m_parserContext
                       ? xmlCtxtReadMemory(m_parserContext, data, length, "", nullptr, kMemoryReadOptions)
                       : xmlReadMemory(data, length, "", nullptr, kMemoryReadOptions);
        if (m_parserContext && xmlDictSize(m_parserContext->dict) > kMaxKeptNames) {
            xmlFreeParserCtxt(m_parserContext);
            m_parserContext = nullptr;
        }
        m_RefuseDeclarations();
    }
    TTML_INFO("XmlCharEncoding is: [%d] where 0 = None, 1 = UTF8, 2 = UTF16LE and 3 = UTF16BE", encoding);
    m_documentBytes = m_xmlDoc ? static_cast<size_t>(length) : 0;
    return m_xmlDoc != nullptr;
}

size_t CXmlParser::GetDocumentBytes()
{
    return m_documentBytes;
}

void CXmlParser::Dump()
{
    if (!m_xmlDoc) {
        TTML_WARN("m_xmlDoc is NULL");
        return;
    }
    CXmlErrorRoute route;
    xmlDocDump(stdout, m_xmlDoc);
    std::fflush(stdout);
}

std::string CXmlParser::GetEncoding()
{
    if (!m_xmlDoc) {
        TTML_WARN("m_xmlDoc is NULL");
        return std::string();
    }
    return ToString(m_xmlDoc->encoding);
}

XMLNODEPTR CXmlParser::GetRootElement()
{
    if (!m_xmlDoc) {
        TTML_WARN("m_xmlDoc is NULL");
        return nullptr;
    }
    return xmlDocGetRootElement(m_xmlDoc);
}

XMLNODEPTR CXmlParser::GetChildElementList(XMLNODEPTR pNodePtr)
{
    return pNodePtr ? FirstElementFrom(pNodePtr->children) : nullptr;
}

XMLNODEPTR CXmlParser::GetNextElementNode(XMLNODEPTR pNodePtr)
{
    return pNodePtr ? FirstElementFrom(pNodePtr->next) : nullptr;
}

XMLNODEPTR CXmlParser::GetChildNodeList(XMLNODEPTR pNodePtr)
{
    return pNodePtr ? FirstWalkedFrom(pNodePtr->children) : nullptr;
}

XMLNODEPTR CXmlParser::GetNextNode(XMLNODEPTR pNodePtr)
{
    return pNodePtr ? FirstWalkedFrom(pNodePtr->next) : nullptr;
}

XMLNODEPTR CXmlParser::GetChildNodeByName(XMLNODEPTR pNodePtr, std::string name)
{
    if (!pNodePtr)
        return nullptr;
    for (xmlNodePtr child = FirstElementFrom(pNodePtr->children); child; child = FirstElementFrom(child->next)) {
        if (EqualsIgnoringAsciiCase(child->name, name))
            return child;
    }
    return nullptr;
}

bool CXmlParser::IsTextNode(XMLNODEPTR pNodePtr)
{
    return pNodePtr && pNodePtr->type == XML_TEXT_NODE;
}

std::string CXmlParser::GetNodeName(XMLNODEPTR pNodePtr)
{
    return pNodePtr ? ToString(pNodePtr->name) : std::string();
}

std::string CXmlParser::GetElementContent(XMLNODEPTR pNodePtr)
{
    if (!pNodePtr) {
        TTML_WARN("pNodePtr is NULL");
        return std::string();
    }
    // A text node's content, or that of an element's only child when it is
    // text, is encoded where it stands, without a copy; most need no
    // escaping at all and are taken as they are.
    const xmlNode* single = SingleTextNode(pNodePtr);
    if (single && EncodesToItself(pNodePtr->doc, single->content))
        return ToString(single->content);
    CXmlErrorRoute route;
    xmlChar* text = nullptr;
    const xmlChar* source = nullptr;
    if (single) {
        source = single->content;
    } else if (pNodePtr->type == XML_TEXT_NODE) {
        source = pNodePtr->content;
    } else {
        text = xmlNodeListGetString(pNodePtr->doc, pNodePtr->children, 1);
        source = text;
    }
    if (!source)
        return std::string();
    // Re-escaped because the text later goes into markup, where a bare "<"
    // or "&" would be read as a tag or an entity.
    xmlChar* escaped = xmlEncodeEntitiesReentrant(pNodePtr->doc, source);
    if (text)
        xmlFree(text);
    std::string result = ToString(escaped);
    xmlFree(escaped);
    return result;
}

XMLATTRPTR CXmlParser::GetAttributeList(XMLNODEPTR pNodePtr)
{
    if (!pNodePtr) {
        TTML_WARN("pNodePtr is NULL");
        return nullptr;
    }
    return HasAttributes(pNodePtr) ? FirstValuedFrom(pNodePtr->properties) : nullptr;
}

std::string CXmlParser::GetAttrName(XMLATTRPTR attrPtr)
{
    if (!attrPtr) {
        TTML_WARN("attrPtr is NULL");
        return std::string();
    }
    return ToString(attrPtr->name);
}

std::string CXmlParser::GetAttrValue(XMLATTRPTR attrPtr)
{
    if (!attrPtr || !attrPtr->children)
        return std::string();
    return ToString(attrPtr->children->content);
}

bool CXmlParser::GetAttrValue(XMLNODEPTR pNodePtr, std::string& name, std::string& value)
{
    if (!pNodePtr) {
        TTML_WARN("pNodePtr is NULL");
        return false;
    }
    if (!HasAttributes(pNodePtr))
        return false;
    // xmlHasProp and xmlGetProp match the local name whatever the namespace
    // (unlike xmlGetNoNsProp, which would miss ttp:profile).
    const xmlChar* key = reinterpret_cast<const xmlChar*>(name.c_str());
    // The usual attribute holds one text node: read it in place rather than
    // through a copy; xmlGetProp handles every other shape.
    xmlAttrPtr prop = xmlHasProp(pNodePtr, key);
    if (!prop)
        return false;
    if (prop->type == XML_ATTRIBUTE_NODE && prop->children && !prop->children->next &&
        prop->children->type == XML_TEXT_NODE && prop->children->content) {
        value.assign(reinterpret_cast<const char*>(prop->children->content));
        return true;
    }
    xmlChar* found = xmlGetProp(pNodePtr, key);
    if (!found)
        return false;
    value = ToString(found);
    xmlFree(found);
    return true;
}

XMLATTRPTR CXmlParser::GetNextAttr(XMLATTRPTR attrPtr)
{
    if (!attrPtr) {
        TTML_WARN("attrPtr is NULL");
        return nullptr;
    }
    return FirstValuedFrom(attrPtr->next);
}

void CXmlParser::ReleaseNode(XMLNODEPTR pNodePtr)
{
    if (!pNodePtr) {
        TTML_WARN("pNodePtr is NULL");
        return;
    }
    // Nodes below the root only: the root and the document stay for Reset.
    const bool inTree = pNodePtr->type != XML_ATTRIBUTE_NODE && pNodePtr->type != XML_DOCUMENT_NODE &&
                        pNodePtr->parent && pNodePtr->parent->type != XML_DOCUMENT_NODE;
    if (!m_xmlDoc || pNodePtr->doc != m_xmlDoc || !inTree) {
        TTML_WARN("Node %p is not releasable; kept until Reset", static_cast<void*>(pNodePtr));
        return;
    }
    // libxml2 indexes xml:id values for lookups this reader never makes;
    // dropping the index once is cheaper than taking each released id out.
    if (m_xmlDoc->ids) {
        xmlFreeIDTable(static_cast<xmlIDTablePtr>(m_xmlDoc->ids));
        m_xmlDoc->ids = nullptr;
    }
    xmlUnlinkNode(pNodePtr);
    xmlFreeNode(pNodePtr);
}

void CXmlParser::Reset()
{
    if (m_xmlDoc) {
        xmlFreeDoc(m_xmlDoc);
        m_xmlDoc = nullptr;
    } else {
        TTML_WARN("m_xmlDoc is NULL");
    }
    m_documentBytes = 0;
    // A document can take megabytes; give them back before the next one.
    malloc_trim(0);
}

}  // namespace TTML
