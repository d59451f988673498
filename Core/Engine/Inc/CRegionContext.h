#ifndef TTML_ENGINE_CREGIONCONTEXT_H
#define TTML_ENGINE_CREGIONCONTEXT_H

#include <list>
#include <map>
#include <string>

namespace TTML {

class ITextContext;

// One renderer's paragraphs (text contexts) by region id, in creation
// order. An image region is entered with a null context so that it is
// visited when drawing. The contexts are the renderer's: it destroys them
// before Clear. Used by one thread at a time (its renderer's).
class CRegionContext {
public:
    CRegionContext() = default;
    CRegionContext(const CRegionContext&) = delete;
    CRegionContext& operator=(const CRegionContext&) = delete;

    // Appends pContext (null allowed) to id's list, making the entry.
    void AddContext(const std::string& id, ITextContext* pContext);
    // Null when id is unknown; valid until the next AddContext or Clear.
    std::list<void*>* GetContextList(const std::string& id);
    const std::list<void*>* GetContextList(const std::string& id) const;
    // Appends every region id, in id order (bytewise).
    void GetRegionList(std::list<std::string>& ids) const;
    void Clear();

private:
    std::map<std::string, std::list<void*>> m_contexts;
};

}  // namespace TTML

#endif
