#pragma once

/// The numbers by which the engine, and everything that mirrors a recording, tell how it stands.
namespace recordstatus {

/// A start was asked for: show it as running.
inline constexpr int kStarted = 0;
inline constexpr int kPaused = 1;
/// Ended, or failed to start: show that nothing is recorded.
inline constexpr int kEnded = 2;

} // namespace recordstatus
