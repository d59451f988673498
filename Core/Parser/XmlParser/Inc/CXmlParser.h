#ifndef TTML_CORE_PARSER_XMLPARSER_CXMLPARSER_H
#define TTML_CORE_PARSER_XMLPARSER_CXMLPARSER_H

#include "IXmlParser.h"
#include "TTMLLimits.h"

namespace TTML {

// IXmlParser over libxml2. Owns the current document (null when empty).
//
// Reads never load DTDs, external entities or anything from the network. They
// refuse documents above kMaxDocumentBytes and documents that declare an
// internal DTD subset (entities, elements, attribute lists; see TTMLLimits.h),
// and keep libxml2's own limits
// (nesting up to 256 levels, entity expansion), so a hostile document fails to
// read instead of exhausting memory.
// libxml2's own error messages are written as TTML warnings (a few per call),
// never straight to standard error.
//
// libxml2 is initialised on first construction and stays initialised for the
// life of the process: other readers, on other threads, may still be using it,
// so no reader ever calls xmlCleanupParser.
class CXmlParser : public IXmlParser {
public:
    // Largest document read, from memory or file.
    static constexpr int kMaxDocumentBytes = Limits::kMaxDocumentBytes;

    CXmlParser();
    ~CXmlParser() override;
    CXmlParser(const CXmlParser&) = delete;
    CXmlParser& operator=(const CXmlParser&) = delete;

    bool ReadFile(std::string path) override;
    bool ReadMemory(const char* data, int length) override;
    size_t GetDocumentBytes() override;
    void Dump() override;
    std::string GetEncoding() override;

    XMLNODEPTR GetRootElement() override;
    XMLNODEPTR GetChildElementList(XMLNODEPTR pNodePtr) override;
    XMLNODEPTR GetNextElementNode(XMLNODEPTR pNodePtr) override;
    XMLNODEPTR GetChildNodeList(XMLNODEPTR pNodePtr) override;
    XMLNODEPTR GetNextNode(XMLNODEPTR pNodePtr) override;
    XMLNODEPTR GetChildNodeByName(XMLNODEPTR pNodePtr, std::string name) override;
    bool IsTextNode(XMLNODEPTR pNodePtr) override;
    std::string GetNodeName(XMLNODEPTR pNodePtr) override;
    std::string GetElementContent(XMLNODEPTR pNodePtr) override;

    XMLATTRPTR GetAttributeList(XMLNODEPTR pNodePtr) override;
    std::string GetAttrName(XMLATTRPTR attrPtr) override;
    std::string GetAttrValue(XMLATTRPTR attrPtr) override;
    bool GetAttrValue(XMLNODEPTR pNodePtr, std::string& name, std::string& value) override;
    XMLATTRPTR GetNextAttr(XMLATTRPTR attrPtr) override;

    void ReleaseNode(XMLNODEPTR pNodePtr) override;
    // Frees the document, then returns free heap to the system (malloc_trim),
    // also when there was no document.
    void Reset() override;

private:
    // Frees a document that declares an internal DTD subset, with a warning;
    // true when it did. Runs before anything reads (and so expands) the tree.
    bool m_RefuseDeclarations();

    xmlDocPtr m_xmlDoc;
    // Kept between reads from memory (see ReadMemory); null until the first.
    xmlParserCtxtPtr m_parserContext = nullptr;
    size_t m_documentBytes = 0;
};

}  // namespace TTML

#endif
