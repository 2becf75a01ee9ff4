#include "platform/signal_safe_writer.h"

#include <cerrno>
#include <unistd.h>

namespace platform {

namespace {

constexpr int kMaximumDigits = 20;

} // namespace

CivilTime civilTime(int64_t secondsSinceEpoch)
{
    constexpr int64_t kSecondsPerDay = 86400;
    constexpr int64_t kDaysPerEra = 146097;         // 400 years
    constexpr int64_t kDaysFromEraToEpoch = 719468; // 1 March of year 0 to 1 January 1970
    int64_t days = secondsSinceEpoch / kSecondsPerDay;
    int64_t seconds = secondsSinceEpoch % kSecondsPerDay;
    if (seconds < 0) {
        seconds += kSecondsPerDay;
        --days;
    }
    days += kDaysFromEraToEpoch;
    const int64_t era = (days >= 0 ? days : days - (kDaysPerEra - 1)) / kDaysPerEra;
    const int64_t dayOfEra = days - era * kDaysPerEra;
    const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    // Years that begin in March have their leap day at the end.
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t shiftedMonth = (5 * dayOfYear + 2) / 153;
    const int64_t month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
    return {static_cast<int>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0)),
            static_cast<int>(month),
            static_cast<int>(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1),
            static_cast<int>(seconds / 3600),
            static_cast<int>(seconds / 60 % 60),
            static_cast<int>(seconds % 60)};
}

void SignalSafeWriter::append(char character)
{
    if (m_used == kSize - 1)
        flush();
    if (m_used < kSize - 1)
        m_buffer[m_used++] = character;
}

SignalSafeWriter& SignalSafeWriter::text(std::string_view text)
{
    for (const char character : text)
        append(character);
    return *this;
}

SignalSafeWriter& SignalSafeWriter::decimal(int64_t number, int minimumDigits)
{
    char digits[kMaximumDigits];
    int count = 0;
    uint64_t rest = number < 0 ? 0 - static_cast<uint64_t>(number) : static_cast<uint64_t>(number);
    while (rest > 0 || count < minimumDigits) {
        digits[count++] = static_cast<char>('0' + rest % 10);
        rest /= 10;
    }
    if (number < 0)
        append('-');
    while (count > 0)
        append(digits[--count]);
    return *this;
}

SignalSafeWriter& SignalSafeWriter::hexadecimal(uint64_t number)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    text("0x");
    int shift = 60;
    while (shift > 0 && (number >> shift) == 0)
        shift -= 4;
    for (; shift >= 0; shift -= 4)
        append(kDigits[(number >> shift) & 0xf]);
    return *this;
}

SignalSafeWriter& SignalSafeWriter::time(const CivilTime& time, std::string_view separator,
                                         std::string_view timeSeparator)
{
    decimal(time.year, 4).text("-").decimal(time.month, 2).text("-").decimal(time.day, 2).text(separator);
    return decimal(time.hour, 2)
        .text(timeSeparator)
        .decimal(time.minute, 2)
        .text(timeSeparator)
        .decimal(time.second, 2);
}

void SignalSafeWriter::flush()
{
    if (m_descriptor < 0)
        return;
    std::size_t written = 0;
    while (written < m_used) {
        const ssize_t count = write(m_descriptor, m_buffer + written, m_used - written);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            break;
        written += static_cast<std::size_t>(count);
    }
    m_used = 0;
}

const char* SignalSafeWriter::buffer()
{
    m_buffer[m_used] = '\0';
    return m_buffer;
}

} // namespace platform
