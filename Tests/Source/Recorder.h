#ifndef INTERTITLE_TESTS_SOURCE_RECORDER_H
#define INTERTITLE_TESTS_SOURCE_RECORDER_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <list>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "ITTMLSource.h"
#include "SeekNotifyData.h"
#include "StartNotifyData.h"
#include "SubRawData.h"

// Registered as a source's callback with itself as user data; copies what
// each message carries, and what the source reports, at delivery time.
class Recorder {
public:
    struct Message {
        int msgId = -1;
        std::thread::id thread;
        bool hasTime = false;
        long long mediaTime = 0;
        std::list<std::string> fonts;
        bool bandMode = false;
        long long position = 0;
        TTML::SubRawData raw;
    };

    explicit Recorder(TTML::ITTMLSource* source) : m_source(source)
    {
        std::lock_guard<std::mutex> lock(LiveLock());
        Live().insert(this);
    }
    ~Recorder()
    {
        std::lock_guard<std::mutex> lock(LiveLock());
        Live().erase(this);
    }

    // Messages whose core pointer was not a live recorder.
    static std::atomic<int>& Strays()
    {
        static std::atomic<int> strays{0};
        return strays;
    }

    void Register() { m_source->RegisterCallback(&Recorder::OnMessage_Cb, this); }

    static void OnMessage_Cb(int msgId, void* data)
    {
        Recorder* self = nullptr;
        Message m;
        m.msgId = msgId;
        if (msgId == 0) {
            auto* raw = static_cast<TTML::SubRawData*>(data);
            self = static_cast<Recorder*>(raw->pCore);
            m.raw = *raw;
            delete raw;  // the receiver owns it
        } else if (msgId == 1) {
            auto* start = static_cast<TTML::StartNotifyData*>(data);
            self = static_cast<Recorder*>(start->pCore);
            m.bandMode = start->bandMode;
        } else if (msgId == 6) {
            auto* seek = static_cast<TTML::SeekNotifyData*>(data);
            self = static_cast<Recorder*>(seek->pCore);
            m.position = seek->position;
        } else {
            self = static_cast<Recorder*>(data);
        }
        // The payload's core must be a recorder still alive; anything else
        // is counted, never dereferenced. The lock also keeps it alive while recording.
        std::lock_guard<std::mutex> lock(LiveLock());
        if (!Live().count(self)) {
            ++Strays();
            return;
        }
        self->m_Record(m);
    }

    // Waits (bounded, so a fault fails instead of hanging) until `count` messages arrived.
    bool WaitFor(size_t count)
    {
        std::unique_lock<std::mutex> lock(m_lock);
        return m_arrived.wait_for(lock, std::chrono::seconds(20), [&] { return m_messages.size() >= count; });
    }

    std::vector<Message> Messages()
    {
        std::lock_guard<std::mutex> lock(m_lock);
        return m_messages;
    }

    std::vector<int> Ids()
    {
        std::vector<int> ids;
        for (const auto& m : Messages())
            ids.push_back(m.msgId);
        return ids;
    }

    size_t Count()
    {
        std::lock_guard<std::mutex> lock(m_lock);
        return m_messages.size();
    }

    // Called inside the callback after the message is recorded.
    std::function<void(Recorder&, const Message&)> onMessage;
    // A message that arrives while this is set is counted as late.
    std::atomic<bool> closed{false};
    std::atomic<int> late{0};
    TTML::ITTMLSource* source() { return m_source; }

private:
    static std::mutex& LiveLock()
    {
        static std::mutex lock;
        return lock;
    }
    static std::set<Recorder*>& Live()
    {
        static std::set<Recorder*> live;
        return live;
    }

    void m_Record(Message& m)
    {
        if (closed)
            ++late;
        m.thread = std::this_thread::get_id();
        long long t = 0;
        m.hasTime = m_source->GetMediaTime(&t) == 0;
        m.mediaTime = t;
        if (m.msgId == 13)
            m.fonts = m_source->GetFontErrorList();
        {
            std::lock_guard<std::mutex> lock(m_lock);
            m_messages.push_back(m);
        }
        if (onMessage)
            onMessage(*this, m);
        m_arrived.notify_all();
    }

    TTML::ITTMLSource* m_source;
    std::mutex m_lock;
    std::condition_variable m_arrived;
    std::vector<Message> m_messages;
};

#endif
