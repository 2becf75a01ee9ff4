#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace platform {

/// A calendar date and time of day.
struct CivilTime
{
    int year;
    int month;
    int day;
    int hour;
    int minute;
    int second;
};

/// The date and time of day that lie secondsSinceEpoch after the start of 1970, in the Gregorian calendar. May be
/// called in a signal handler, which gmtime_r and localtime_r may not.
CivilTime civilTime(int64_t secondsSinceEpoch);

/// Puts text together in a buffer of a fixed size and writes it to a file, with what may be called in a signal handler.
/// What does not fit is written out first, when there is a file, and else dropped.
class SignalSafeWriter
{
public:
    /// @param descriptor an open file, or -1 to use the buffer alone. Not closed here.
    explicit SignalSafeWriter(int descriptor) : m_descriptor(descriptor) {}

    SignalSafeWriter& text(std::string_view text);
    SignalSafeWriter& decimal(int64_t number, int minimumDigits = 1);
    SignalSafeWriter& hexadecimal(uint64_t number);
    /// "yyyy-MM-dd", the separator, the hours, minutes and seconds joined by timeSeparator.
    SignalSafeWriter& time(const CivilTime& time, std::string_view separator, std::string_view timeSeparator);

    /// Writes out what the buffer holds.
    void flush();

    /// What the buffer holds, ended by a zero.
    const char* buffer();

private:
    void append(char character);

    static constexpr std::size_t kSize = 4096;

    int m_descriptor;
    std::size_t m_used = 0;
    char m_buffer[kSize] = {};
};

} // namespace platform
