#ifndef TTML_CORE_PARSER_XMLPARSER_IXMLPARSER_H
#define TTML_CORE_PARSER_XMLPARSER_IXMLPARSER_H

#include <libxml/tree.h>

#include <cstddef>
#include <string>

namespace TTML {

// Nodes and attributes are handed out as libxml2 pointers into the reader's
// tree; they stay valid until the reader's next Reset(), or until the subtree
// holding them is released (ReleaseNode).
typedef xmlNodePtr XMLNODEPTR;
typedef xmlAttrPtr XMLATTRPTR;

// Narrow read-only view of one XML document, used by the parser task and the
// profile walkers. A reader holds at most one document: read, walk, Reset.
// Not thread-safe; one thread (the parser thread) uses a reader at a time.
// Node "names" are local names (no prefix). Null node or attribute arguments
// give empty results (null, "" or false), never a crash.
class IXmlParser {
public:
    // Parses the file at `path`. The reader must be empty (fatal otherwise).
    virtual bool ReadFile(std::string path) = 0;
    // Parses `length` bytes at `data` (UTF-8 or UTF-16 with its byte-order
    // mark; other encodings are refused). The reader must be empty (fatal
    // otherwise). The bytes are not kept after the call.
    virtual bool ReadMemory(const char* data, int length) = 0;
    // Bytes of the document read last (file or memory); 0 when empty. Limits
    // that scale with a document's size read it here, whatever the source.
    virtual size_t GetDocumentBytes() = 0;
    // Writes the document to standard output (debugging).
    virtual void Dump() = 0;
    // Encoding named in the XML declaration; empty when none was declared.
    virtual std::string GetEncoding() = 0;

    // Root element of the document; null when no document is loaded.
    virtual XMLNODEPTR GetRootElement() = 0;
    // First child / next sibling that is an element.
    virtual XMLNODEPTR GetChildElementList(XMLNODEPTR pNodePtr) = 0;
    virtual XMLNODEPTR GetNextElementNode(XMLNODEPTR pNodePtr) = 0;
    // First child / next sibling that is an element or a text node; comments,
    // processing instructions and the like are skipped.
    virtual XMLNODEPTR GetChildNodeList(XMLNODEPTR pNodePtr) = 0;
    virtual XMLNODEPTR GetNextNode(XMLNODEPTR pNodePtr) = 0;
    // First element child whose local name equals `name` ignoring ASCII case.
    virtual XMLNODEPTR GetChildNodeByName(XMLNODEPTR pNodePtr, std::string name) = 0;
    virtual bool IsTextNode(XMLNODEPTR pNodePtr) = 0;
    // Local name as stored in the node ("text" for text nodes).
    virtual std::string GetNodeName(XMLNODEPTR pNodePtr) = 0;
    // Text of a text node, or the direct text children of an element with
    // entity references substituted; either way re-escaped, so "<" comes back
    // as "&lt;" (and "&" as "&amp;", ">" as "&gt;").
    virtual std::string GetElementContent(XMLNODEPTR pNodePtr) = 0;

    // First / next attribute that carries a value node, in document order.
    virtual XMLATTRPTR GetAttributeList(XMLNODEPTR pNodePtr) = 0;
    // Local name of the attribute (no prefix).
    virtual std::string GetAttrName(XMLATTRPTR attrPtr) = 0;
    // Value held in the attribute's first child; empty when there is none.
    virtual std::string GetAttrValue(XMLATTRPTR attrPtr) = 0;
    // Looks up the attribute `name` (local name, any namespace) on the element.
    // Found: `value` is replaced and the result is true. Absent: false and
    // `value` is left as it was.
    virtual bool GetAttrValue(XMLNODEPTR pNodePtr, std::string& name, std::string& value) = 0;
    virtual XMLATTRPTR GetNextAttr(XMLATTRPTR attrPtr) = 0;

    // Takes a finished subtree out of the document and frees it now, so that
    // what is built from the document reuses its memory instead of adding to
    // it. Pointers into the subtree become invalid at once. Refused with a
    // warning: null, the root, or a node of no loaded document.
    virtual void ReleaseNode(XMLNODEPTR pNodePtr) = 0;
    // Frees the document (every node pointer handed out becomes invalid).
    virtual void Reset() = 0;
    virtual ~IXmlParser() {}
};

}  // namespace TTML

#endif
