#include "LogCapture.h"

#include <cstring>

LogCapture::LogCapture()
{
    dlog_set_hook(&LogCapture::Hook, this);
}

LogCapture::~LogCapture()
{
    dlog_set_hook(nullptr, nullptr);
}

void LogCapture::Hook(log_priority prio, const char* tag, const char* msg, void* user)
{
    if (std::strcmp(tag, "TTML") != 0)
        return;
    auto* self = static_cast<LogCapture*>(user);
    Line line{prio, msg, MessageOf(msg)};
    std::lock_guard<std::mutex> guard(self->m_lock);
    self->m_lines.push_back(std::move(line));
}

std::string LogCapture::MessageOf(const std::string& text)
{
    // "... > Thread:[name tid] [message]": the message starts after "] [".
    std::string::size_type thread = text.find(" > Thread:[");
    if (thread == std::string::npos)
        return text;
    std::string::size_type open = text.find("] [", thread);
    if (open == std::string::npos || text.empty() || text.back() != ']')
        return text;
    std::string msg = text.substr(open + 3, text.size() - open - 4);
    for (const char* code : {"\033[01;33m", "\033[01;31m", "\033[0m"}) {
        std::string::size_type at;
        while ((at = msg.find(code)) != std::string::npos)
            msg.erase(at, std::strlen(code));
    }
    return msg;
}

std::vector<LogCapture::Line> LogCapture::Lines() const
{
    std::lock_guard<std::mutex> guard(m_lock);
    return m_lines;
}

void LogCapture::Clear()
{
    std::lock_guard<std::mutex> guard(m_lock);
    m_lines.clear();
}

int LogCapture::Count(const std::string& message, log_priority prio) const
{
    std::lock_guard<std::mutex> guard(m_lock);
    int n = 0;
    for (const Line& l : m_lines)
        if (l.message == message && (prio == DLOG_UNKNOWN || l.prio == prio))
            ++n;
    return n;
}

int LogCapture::CountContaining(const std::string& part, log_priority prio) const
{
    std::lock_guard<std::mutex> guard(m_lock);
    int n = 0;
    for (const Line& l : m_lines)
        if (l.message.find(part) != std::string::npos && (prio == DLOG_UNKNOWN || l.prio == prio))
            ++n;
    return n;
}

std::string LogCapture::Dump() const
{
    std::lock_guard<std::mutex> guard(m_lock);
    std::string all;
    for (const Line& l : m_lines) {
        all += l.message;
        all += '\n';
    }
    return all;
}
