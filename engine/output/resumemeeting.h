#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

/// Lets the picture and the sound of a paused output go on from one and the same moment.
///
/// The library keeps one pause for both of an output's lines, and whichever line gets to the pause's end first ends it
/// for the other as well, which then lets in what it should still have left out: up to some tenths of a second for each
/// pause, adding up. So the line that is early waits here: the sound until the picture is there, and then the picture
/// until the sound has passed.
///
/// appoint() and callOff() may be called from any thread, the other two from their lines.
class ResumeMeeting
{
public:
    /// @param limit how long one stream waits for the other
    explicit ResumeMeeting(std::chrono::milliseconds limit) : m_limit(limit) {}

    /// Lets the lines meet at a moment that neither has reached, on the clock of their time stamps.
    void appoint(std::uint64_t momentNs);

    /// From the picture's line, before the output is given the picture.
    void pictureArrives(std::uint64_t takenNs);

    /// From the sound's line, after the output was given the block: the library calls the listeners of its sound from
    /// the last to the first.
    void soundHasPassed(std::uint64_t beginNs, std::uint64_t endNs);

    /// Lets whoever waits go on.
    void callOff();

    /// Waits until both lines have passed the moment, or the meeting was called off. At once when there is none.
    ///
    /// @return false when it did not happen within the time
    bool waitUntilOver(std::chrono::milliseconds limit);

private:
    static constexpr std::uint64_t kNone = 0;

    const std::chrono::milliseconds m_limit;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::uint64_t m_momentNs = kNone;
    bool m_pictureIsThere = false;
    bool m_soundIsThrough = false;
};
