#include "TTMLLog.h"
#include "Util.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale.h>

namespace TTML {

namespace {

// Time values always use a full stop, whatever locale the process runs in.
locale_t CLocale()
{
    static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(0));
    return c;
}

long long LeadingInteger(const std::string& text)
{
    return std::strtoll(text.c_str(), nullptr, 10);
}

double LeadingDouble(const std::string& text)
{
    return strtod_l(text.c_str(), nullptr, CLocale());
}

// Truncates toward zero. Values a document cannot mean (negative, NaN) give 0
// and huge ones saturate, rather than an undefined conversion.
unsigned long long ToMs(double ms)
{
    if (!(ms > 0))
        return 0;
    // Decimal fractions are inexact in binary (32.62 s x 1000 is
    // 32619.99999999999...): a value within a nanosecond of a whole
    // millisecond is that millisecond; real fractions (12.9ms) still truncate.
    double whole = std::round(ms);
    if (std::fabs(ms - whole) < 1e-6)
        ms = whole;
    if (ms >= 18446744073709551616.0)
        return std::numeric_limits<unsigned long long>::max();
    return static_cast<unsigned long long>(ms);
}

// A zero (or nonsensical) rate cannot time a frames or ticks count: the term
// counts as 0 instead of dividing by zero.
double PerRate(double count, double rate)
{
    return rate > 0 ? count / rate : 0.0;
}

bool IsAsciiDigit(char c)
{
    return c >= '0' && c <= '9';
}

// hh:mm:ss or hh:mm:ss.fff with digits only: no blanks to trim and no frame
// part, so the fields can be read where they stand. `secondsAt` is the
// position of the seconds field.
bool IsPlainClockTime(const std::string& expr, size_t& secondsAt)
{
    const size_t n = expr.size();
    size_t i = 0;
    while (i < n && IsAsciiDigit(expr[i]))
        ++i;
    if (i == 0)
        return false;
    for (int field = 0; field < 2; ++field) {
        if (i + 3 > n || expr[i] != ':' || !IsAsciiDigit(expr[i + 1]) || !IsAsciiDigit(expr[i + 2]))
            return false;
        i += 3;
    }
    secondsAt = i - 2;
    if (i == n)
        return true;
    if (expr[i] != '.' || i + 1 == n)
        return false;
    for (++i; i < n; ++i) {
        if (!IsAsciiDigit(expr[i]))
            return false;
    }
    return true;
}

}  // namespace

unsigned long long ConvertTimeExpressionToMS(const std::string& expr, double frameRate, int tickRate)
{
    // Every begin and end of a document comes through here; the usual form
    // is read in place instead of being split into strings first. The
    // arithmetic is the clock-time path's.
    size_t secondsAt = 0;
    if (IsPlainClockTime(expr, secondsAt)) {
        const char* text = expr.c_str();
        const double hours = static_cast<double>(std::strtoll(text, nullptr, 10));
        const double minutes = static_cast<double>(std::strtoll(text + secondsAt - 3, nullptr, 10));
        const double seconds = strtod_l(text + secondsAt, nullptr, CLocale());
        return ToMs(((hours * 60 + minutes) * 60 + seconds) * 1000);
    }
    const std::vector<std::string> parts = StrSplit(expr, ":");
    if (parts.size() > 1)
        return ConvertClockTimeToMS(parts, frameRate);
    return ConvertOffsetTimeToMS(expr, frameRate, tickRate);
}

unsigned long long ConvertClockTimeToMS(const std::vector<std::string>& parts, double frameRate)
{
    if (parts.empty())
        return 0;
    double hours = 0;
    double minutes = 0;
    double seconds = 0;
    if (parts.size() >= 3) {
        hours = static_cast<double>(LeadingInteger(parts[0]));
        minutes = static_cast<double>(LeadingInteger(parts[1]));
        seconds = LeadingDouble(parts[2]);
    } else if (parts.size() == 2) {
        // Validation never passes two parts; read them as minutes:seconds,
        // the way a person writes a short clock time, and nothing beyond them.
        minutes = static_cast<double>(LeadingInteger(parts[0]));
        seconds = LeadingDouble(parts[1]);
    } else {
        seconds = LeadingDouble(parts[0]);
    }
    double total = (hours * 60 + minutes) * 60 + seconds;
    if (parts.size() > 3 && !parts[3].empty()) {
        // Sub-frames after a full stop are dropped by the integer read.
        total += PerRate(static_cast<double>(LeadingInteger(parts[3])), frameRate);
    }
    return ToMs(total * 1000);
}

unsigned long long ConvertOffsetTimeToMS(const std::string& expr, double frameRate, int tickRate)
{
    std::string number;
    std::string metric;
    if (!SplitStrByFindFirstOf(expr, "hmsft", number, metric))
        return 0;
    const double value = LeadingDouble(number);
    if (metric == "h")
        return ToMs(value * 60 * 60 * 1000);
    if (metric == "m")
        return ToMs(value * 60 * 1000);
    if (metric == "s")
        return ToMs(value * 1000);
    if (metric == "ms")
        return ToMs(value);
    if (metric == "f")
        return ToMs(PerRate(value, frameRate) * 1000);
    if (metric == "t")
        return ToMs(PerRate(value, static_cast<double>(tickRate)) * 1000);
    TTML_ERROR("Invalid time matric=%s", metric.c_str());
    return 0;
}

}  // namespace TTML
