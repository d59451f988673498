// Collects the warnings and errors logged while it lives, so that a tool can
// print a refused document's reasons itself instead of the log.
#pragma once

#include <dlog.h>

#include <mutex>
#include <string>
#include <vector>

namespace TTML {

class CWarningCollector {
public:
    CWarningCollector();
    ~CWarningCollector();
    CWarningCollector(const CWarningCollector&) = delete;
    CWarningCollector& operator=(const CWarningCollector&) = delete;

    // The message part of each line collected so far; the collector is emptied.
    std::vector<std::string> Take();

private:
    static void Log_Cb(log_priority prio, const char* tag, const char* msg, void* user);
    // The formatted line ends with " [message]", colour codes inside.
    static std::string m_MessageOf(const std::string& line);

    std::mutex m_lock;
    std::vector<std::string> m_lines;
};

}  // namespace TTML
