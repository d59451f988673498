#ifndef INTERTITLE_TESTS_LOGCAPTURE_H
#define INTERTITLE_TESTS_LOGCAPTURE_H

#include <dlog.h>

#include <mutex>
#include <string>
#include <vector>

// Collects every log line written while it lives, from any thread, so tests
// can assert on the message texts. Only one capture may be active at a time.
class LogCapture {
public:
    struct Line {
        log_priority prio;
        std::string text;     // the whole formatted line
        std::string message;  // the part inside the last brackets, colour codes removed
    };

    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<Line> Lines() const;
    void Clear();

    // Number of lines whose message equals `message` exactly (any priority,
    // or only `prio` when given).
    int Count(const std::string& message, log_priority prio = DLOG_UNKNOWN) const;
    bool Has(const std::string& message, log_priority prio = DLOG_UNKNOWN) const
    {
        return Count(message, prio) > 0;
    }
    // Number of lines whose message contains `part`.
    int CountContaining(const std::string& part, log_priority prio = DLOG_UNKNOWN) const;
    bool HasContaining(const std::string& part, log_priority prio = DLOG_UNKNOWN) const
    {
        return CountContaining(part, prio) > 0;
    }
    // All messages, one per line, for failure output.
    std::string Dump() const;

    // Splits a formatted line into its message (exposed for the logging tests).
    static std::string MessageOf(const std::string& text);

private:
    static void Hook(log_priority prio, const char* tag, const char* msg, void* user);

    mutable std::mutex m_lock;
    std::vector<Line> m_lines;
};

#endif
