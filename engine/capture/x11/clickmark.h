// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

/// Whether the mark of a click is in a frame: while the button is down, and in any case long enough to be seen, also
/// after a click between two frames. One object for each button; all times are nanoseconds of one clock. One thread.
class ClickMark
{
public:
    static constexpr std::int64_t kShortestNs = 200'000'000;
    /// A click that ended that long before the next frame is not marked any more.
    static constexpr std::int64_t kForgottenNs = 1'000'000'000;

    /// A press while the button is down, or a release while it is not, changes nothing.
    void press();
    void release(std::int64_t timeNs);

    /// To be asked for each frame, because the shortest time begins with the first frame that shows the mark.
    bool isIn(std::int64_t frameTimeNs);

private:
    enum class State
    {
        Off,
        Down,
        /// The button is up again.
        Remaining,
    };

    bool isRemaining(std::int64_t frameTimeNs) const;

    State m_state = State::Off;
    std::int64_t m_releasedNs = 0;
    std::optional<std::int64_t> m_firstFrameNs;
};
