#ifndef INTERTITLE_TESTS_SUPPORT_DRAWRECORDER_H
#define INTERTITLE_TESTS_SUPPORT_DRAWRECORDER_H

#include "CGraphics.h"
#include "IDrawObserver.h"

#include <chrono>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

// What the graphics component put on screen and took off, for as long as
// the recorder lives (it is the process's draw observer meanwhile): each
// event with its text, steady-clock time and thread. Tests and tools turn
// steady times into media time with the media clock's origin.
//
// A paragraph (text context) is made when a renderer is built and given
// back when it is destroyed; a region is shown once per drawing. Any thread.
class DrawRecorder : public TTML::IDrawObserver {
public:
    struct Event {
        Kind kind;
        const void* object;
        std::string text;
        long long steadyNs;
        std::thread::id thread;
    };

    DrawRecorder() { TTML::CGraphics::SetDrawObserver(this); }
    ~DrawRecorder() { TTML::CGraphics::SetDrawObserver(nullptr); }
    DrawRecorder(const DrawRecorder&) = delete;
    DrawRecorder& operator=(const DrawRecorder&) = delete;

    static long long SteadyNs()
    {
        return std::chrono::duration_cast<std::chrono::nanoseconds>(
                   std::chrono::steady_clock::now().time_since_epoch())
            .count();
    }

    void OnDrawEvent(Kind kind, const void* object, const std::string& text) override
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_events.push_back(Event{kind, object, text, SteadyNs(), std::this_thread::get_id()});
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

    // "D<text>" for each region shown, "R<text>" for each paragraph given
    // back, in call order.
    std::vector<std::string> Trace() const
    {
        std::vector<std::string> trace;
        for (const Event& e : Events()) {
            if (e.kind == REGION_SHOWN)
                trace.push_back("D" + e.text);
            else if (e.kind == PARAGRAPH_GONE)
                trace.push_back("R" + e.text);
        }
        return trace;
    }

    // Milliseconds after originNs (steady clock) of each event of a kind.
    std::vector<long long> Times(Kind kind, long long originNs) const
    {
        std::vector<long long> times;
        for (const Event& e : Events())
            if (e.kind == kind)
                times.push_back((e.steadyNs - originNs) / 1000000);
        return times;
    }

private:
    mutable std::mutex m_lock;
    std::vector<Event> m_events;
    std::set<const void*> m_live;
    int m_rejected = 0;
};

#endif
