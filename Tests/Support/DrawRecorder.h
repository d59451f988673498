#ifndef INTERTITLE_TESTS_SUPPORT_DRAWRECORDER_H
#define INTERTITLE_TESTS_SUPPORT_DRAWRECORDER_H

#include "CGraphics.h"
#include "IDrawObserver.h"

#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

// What the graphics component put on screen and took off, for as long as
// the recorder lives (it is the process's draw observer meanwhile): each
// event with its text and thread.
//
// A paragraph (text context) is made when a renderer is built and given
// back when it is destroyed; a region is shown once per drawing. Any thread.
class DrawRecorder : public TTML::IDrawObserver {
public:
    struct Event {
        Kind kind;
        const void* object;
        std::string text;
        std::thread::id thread;
    };

    DrawRecorder() { TTML::CGraphics::SetDrawObserver(this); }
    ~DrawRecorder() { TTML::CGraphics::SetDrawObserver(nullptr); }
    DrawRecorder(const DrawRecorder&) = delete;
    DrawRecorder& operator=(const DrawRecorder&) = delete;

    void OnDrawEvent(Kind kind, const void* object, const std::string& text) override
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_events.push_back(Event{kind, object, text, std::this_thread::get_id()});
        if (kind == PARAGRAPH_MADE && !m_live.insert(object).second)
            ++m_rejected;
        if (kind == PARAGRAPH_GONE && m_live.erase(object) == 0)
            ++m_rejected;
    }

    std::vector<Event> Events() const
    {
        std::lock_guard<std::mutex> guard(m_lock);
        return m_events;
    }

    int Count(Kind kind) const
    {
        int count = 0;
        for (const Event& e : Events())
            count += e.kind == kind ? 1 : 0;
        return count;
    }

    // Paragraphs made and not given back.
    int Live() const
    {
        std::lock_guard<std::mutex> guard(m_lock);
        return static_cast<int>(m_live.size());
    }

    // Paragraphs given back that were not live, or made twice.
    int Rejected() const
    {
        std::lock_guard<std::mutex> guard(m_lock);
        return m_rejected;
    }

private:
    mutable std::mutex m_lock;
    std::vector<Event> m_events;
    std::set<const void*> m_live;
    int m_rejected = 0;
};

#endif
