#include "CWarningCollector.h"

#include <cstring>

namespace TTML {

CWarningCollector::CWarningCollector()
{
    dlog_set_hook(&Log_Cb, this);
}

CWarningCollector::~CWarningCollector()
{
    dlog_set_hook(nullptr, nullptr);
}

std::vector<std::string> CWarningCollector::Take()
{
    std::lock_guard<std::mutex> guard(m_lock);
    std::vector<std::string> lines;
    lines.swap(m_lines);
    return lines;
}

void CWarningCollector::Log_Cb(log_priority prio, const char*, const char* msg, void* user)
{
    if (prio < DLOG_WARN)
        return;
    auto* self = static_cast<CWarningCollector*>(user);
    std::string line = m_MessageOf(msg);
    std::lock_guard<std::mutex> guard(self->m_lock);
    self->m_lines.push_back(line);
}

std::string CWarningCollector::m_MessageOf(const std::string& line)
{
    std::string msg = line;
    std::string::size_type open = line.rfind("] [");
    if (open != std::string::npos && !line.empty() && line.back() == ']')
        msg = line.substr(open + 3, line.size() - open - 4);
    for (const char* code : {"\033[01;33m", "\033[01;31m", "\033[0m"}) {
        std::string::size_type at;
        while ((at = msg.find(code)) != std::string::npos)
            msg.erase(at, std::strlen(code));
    }
    return msg;
}

}  // namespace TTML
