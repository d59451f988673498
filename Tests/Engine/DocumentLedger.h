#ifndef INTERTITLE_TESTS_ENGINE_DOCUMENTLEDGER_H
#define INTERTITLE_TESTS_ENGINE_DOCUMENTLEDGER_H

#include "CElement.h"
#include "TTMLElem.h"

#include <cstddef>
#include <mutex>
#include <vector>

// How often each document was deleted, by document number. Any thread.
class DocumentLedger {
public:
    int Open()
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_freed.push_back(0);
        return static_cast<int>(m_freed.size()) - 1;
    }
    void Freed(int id)
    {
        std::lock_guard<std::mutex> guard(m_lock);
        ++m_freed[static_cast<std::size_t>(id)];
    }
    std::vector<int> Counts()
    {
        std::lock_guard<std::mutex> guard(m_lock);
        return m_freed;
    }

private:
    std::mutex m_lock;
    std::vector<int> m_freed;
};

// Added untimed to a document, so only the document holds it: it is
// deleted exactly when the document is, and tells the ledger.
class DocumentSentinel : public TTML::CElement {
public:
    DocumentSentinel(DocumentLedger* pLedger, int id) : CElement(TTML::ELEM_METADATA), m_pLedger(pLedger), m_id(id) {}
    ~DocumentSentinel() override { m_pLedger->Freed(m_id); }

private:
    DocumentLedger* m_pLedger;
    int m_id;
};

#endif
