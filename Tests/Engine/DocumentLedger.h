#ifndef INTERTITLE_TESTS_ENGINE_DOCUMENTLEDGER_H
#define INTERTITLE_TESTS_ENGINE_DOCUMENTLEDGER_H

#include "CElement.h"
#include "CSubtitleInfo.h"
#include "TTMLAttr.h"
#include "TTMLElem.h"

#include <memory>
#include <mutex>
#include <string>
#include <utility>
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

typedef std::pair<unsigned long long, unsigned long long> Span;

// A document the ledger follows: one paragraph per span, its text the span's
// begin; spans that do not overlap become intervals of their own, so the
// text drawn names the interval.
inline TTML::CSubtitleInfo* MakeDocument(DocumentLedger& ledger, const std::vector<Span>& spans,
                                         long long timeStamp = 0)
{
    using namespace TTML;
    CSubtitleInfo* pInfo = new CSubtitleInfo();
    CElementSPTR sentinel = std::make_shared<DocumentSentinel>(&ledger, ledger.Open());
    pInfo->AddElement(0, 0, sentinel);
    for (const Span& span : spans) {
        CElementSPTR p = std::make_shared<CElement>(ELEM_P);
        p->AddAttrValue(ATTR_BEGIN, std::to_string(span.first));
        p->AddAttrValue(ATTR_END, std::to_string(span.second));
        p->AddAttrValue(ATTR_TEXT, std::to_string(span.first));
        pInfo->AddElement(span.first, span.second, p);
    }
    pInfo->SetTimeStamp(timeStamp);
    pInfo->SplitSubtitleInfoData();
    return pInfo;
}

#endif
