#include "TTMLLog.h"
#include "Util.h"

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <cstring>
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

// Where the fields of a clock time stand when it can be read in place.
struct ClockFields {
    size_t secondsAt = 0;
    size_t framesAt = 0;  // 0: no frames field
};

// hh:mm:ss, hh:mm:ss.fff or hh:mm:ss:ff[.sub] with digits only: no blanks to
// trim, so the fields can be read where they stand.
bool IsPlainClockTime(const std::string& expr, ClockFields& at)
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
    at.secondsAt = i - 2;
    at.framesAt = 0;
    if (i == n)
        return true;
    if (expr[i] == ':') {
        at.framesAt = i + 1;
        ++i;
        const size_t digits = i;
        while (i < n && IsAsciiDigit(expr[i]))
            ++i;
        if (i == digits)
            return false;
        if (i == n)
            return true;
    }
    if (expr[i] != '.' || i + 1 == n)
        return false;
    for (++i; i < n; ++i) {
        if (!IsAsciiDigit(expr[i]))
            return false;
    }
    return true;
}

// The metric an offset time ends with, when the text is digits, an optional
// fraction and one metric; null otherwise.
const char* PlainOffsetMetric(const std::string& expr)
{
    const size_t n = expr.size();
    size_t i = 0;
    while (i < n && IsAsciiDigit(expr[i]))
        ++i;
    if (i == 0)
        return nullptr;
    if (i < n && expr[i] == '.') {
        const size_t fraction = ++i;
        while (i < n && IsAsciiDigit(expr[i]))
            ++i;
        if (i == fraction)
            return nullptr;
    }
    const char* metric = expr.c_str() + i;
    static const char* const kMetrics[] = {"h", "m", "s", "ms", "f", "t"};
    for (const char* known : kMetrics) {
        if (std::strcmp(metric, known) == 0)
            return metric;
    }
    return nullptr;
}

// Digits with at most three decimals, below a million, read exactly:
// `whole` and the fraction in thousandths. Below a million the
// floating-point reading lands within far less than ToMs's snap of the
// same whole milliseconds, so both readings agree.
bool ReadSmallDecimal(const char* text, unsigned long long& whole, unsigned& thousandths)
{
    const unsigned long long kLimit = 1000000;
    whole = 0;
    thousandths = 0;
    for (; IsAsciiDigit(*text); ++text) {
        whole = whole * 10 + static_cast<unsigned>(*text - '0');
        if (whole >= kLimit)
            return false;
    }
    if (*text != '.')
        return true;
    unsigned scale = 100;
    for (++text; IsAsciiDigit(*text); ++text, scale /= 10) {
        if (scale == 0)
            return false;
        thousandths += static_cast<unsigned>(*text - '0') * scale;
    }
    return true;
}

// Milliseconds of `value` counted in `metric`.
unsigned long long OffsetToMs(double value, const char* metric, double frameRate, int tickRate)
{
    if (std::strcmp(metric, "h") == 0)
        return ToMs(value * 60 * 60 * 1000);
    if (std::strcmp(metric, "m") == 0)
        return ToMs(value * 60 * 1000);
    if (std::strcmp(metric, "s") == 0)
        return ToMs(value * 1000);
    if (std::strcmp(metric, "ms") == 0)
        return ToMs(value);
    if (std::strcmp(metric, "f") == 0)
        return ToMs(PerRate(value, frameRate) * 1000);
    if (std::strcmp(metric, "t") == 0)
        return ToMs(PerRate(value, static_cast<double>(tickRate)) * 1000);
    TTML_ERROR("Invalid time matric=%s", metric);
    return 0;
}

}  // namespace

unsigned long long ConvertTimeExpressionToMS(const std::string& expr, double frameRate, int tickRate)
{
    // Every begin and end of a document comes through here; the usual form
    // is read in place instead of being split into strings first. The
    // arithmetic is the clock-time path's.
    ClockFields at;
    if (IsPlainClockTime(expr, at)) {
        const char* text = expr.c_str();
        unsigned long long h = 0;
        unsigned long long s = 0;
        unsigned thousandths = 0;
        if (at.framesAt == 0 && ReadSmallDecimal(text, h, thousandths) &&
            ReadSmallDecimal(text + at.secondsAt, s, thousandths)) {
            const auto m = static_cast<unsigned long long>(std::strtoll(text + at.secondsAt - 3, nullptr, 10));
            const unsigned long long total = (h * 60 + m) * 60 + s;
            if (total < 1000000)  // see ReadSmallDecimal
                return total * 1000 + thousandths;
        }
        const double hours = static_cast<double>(std::strtoll(text, nullptr, 10));
        const double minutes = static_cast<double>(std::strtoll(text + at.secondsAt - 3, nullptr, 10));
        const double seconds = strtod_l(text + at.secondsAt, nullptr, CLocale());
        double total = (hours * 60 + minutes) * 60 + seconds;
        if (at.framesAt != 0)
            total += PerRate(static_cast<double>(std::strtoll(text + at.framesAt, nullptr, 10)), frameRate);
        return ToMs(total * 1000);
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
    // The usual offset (840ms, 12.5s) is read without splitting it first.
    if (const char* metric = PlainOffsetMetric(expr)) {
        unsigned long long whole = 0;
        unsigned thousandths = 0;
        if ((metric[0] == 's' || std::strcmp(metric, "ms") == 0) && ReadSmallDecimal(expr.c_str(), whole, thousandths))
            return metric[0] == 's' ? whole * 1000 + thousandths : whole;
        return OffsetToMs(strtod_l(expr.c_str(), nullptr, CLocale()), metric, frameRate, tickRate);
    }
    std::string number;
    std::string metric;
    if (!SplitStrByFindFirstOf(expr, "hmsft", number, metric))
        return 0;
    // A metric with a NUL inside names no unit.
    const char* unit = metric.find('\0') == std::string::npos ? metric.c_str() : "";
    return OffsetToMs(LeadingDouble(number), unit, frameRate, tickRate);
}

unsigned long long StoredMsToULL(const std::string& text)
{
    // Stored times are plain digits; anything else is read as strtoull reads it.
    const size_t kSafeDigits = 19;  // 10^19 - 1 fits in 64 bits
    if (text.empty() || text.size() > kSafeDigits)
        return std::strtoull(text.c_str(), nullptr, 10);
    unsigned long long value = 0;
    for (char c : text) {
        if (!IsAsciiDigit(c))
            return std::strtoull(text.c_str(), nullptr, 10);
        value = value * 10 + static_cast<unsigned long long>(c - '0');
    }
    return value;
}

}  // namespace TTML
