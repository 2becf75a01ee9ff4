// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/support/programundertest.h"

#include <QProcess>
#include <QRect>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <optional>

/// Frames a second of every recording.
inline constexpr int kFramesPerSecond = 30;

/// The test pattern on the screen and the test tone on the default sink, for as long as the object lives.
class Performance
{
public:
    /// Shows and plays. Empty on success, else what went wrong.
    QString begin(int numbersPerSecond = kFramesPerSecond, bool motion = true);
    /// Shows only.
    QString show(int numbersPerSecond = kFramesPerSecond, bool motion = true);
    ~Performance();

private:
    static QString launch(QProcess& process, const QString& name, const QStringList& arguments);

    QProcess m_patternProcess;
    QProcess m_tone;
};

/// The display split in two screens side by side, of which the right one is the primary, for as long as the object
/// lives.
class TwoScreens
{
public:
    /// @param displayPx size of the whole display; its width is even.
    explicit TwoScreens(const QSize& displayPx);
    ~TwoScreens();
    TwoScreens(const TwoScreens&) = delete;
    TwoScreens& operator=(const TwoScreens&) = delete;

    bool areMade() const { return m_made; }
    QRect primary() const { return {m_half.width(), 0, m_half.width(), m_half.height()}; }

private:
    QSize m_half;
    bool m_made = false;
};

/// What became of one recording, in CLOCK_MONOTONIC.
struct Take
{
    /// Why there is no recording; empty when there is one.
    QString failure;
    /// The file.
    QString path;
    /// The engine was asked to start.
    int64_t startedNs = 0;
    /// The stop key was surely down.
    int64_t stopRequestedNs = 0;
    /// The program reported the file as closed.
    int64_t closedNs = 0;
};

/// Presses the recording hotkey and waits until the engine has been asked to start. The take has its path and start.
Take beginTake(ProgramUnderTest& program, const QString& extension);

/// The same after somebody else has asked for the recording. @param from the messages before that
Take waitForTake(ProgramUnderTest& program, const QString& extension, qsizetype from);

/// Whether the countdown of a recording of the whole display is there; on a white display, once the main window is
/// minimised: the countdown is dark around its number.
bool isCountdownShown();

/// Where it has its number, in physical pixels of the display.
QRect countdownNumber();

/// Presses the hotkey again and waits until the file is closed and the main window is back.
void endTake(ProgramUnderTest& program, Take& take);

/// A whole recording of @p milliseconds.
Take record(ProgramUnderTest& program, const QString& extension, int milliseconds);

/// How often Shift+Tab is pressed from the record button, which has the keyboard after the start and after a recording,
/// to a control.
inline constexpr int kStepsToFormat = 3;
inline constexpr int kStepsToName = 4;
inline constexpr int kStepsToMicrophones = 6;
inline constexpr int kStepsToSpeakers = 8;
inline constexpr int kStepsToWebcam = 9;
inline constexpr int kStepsToRatio = 15;
inline constexpr int kStepsToRegion = 17;

/// Activates the main window and goes back in the order of its controls. False when there is no such window.
bool goBackFromRecordButton(ProgramUnderTest& program, int steps);

/// Where a window with this title is on the display, once one is visible, also one that the window manager does not
/// look after; nothing when none comes.
std::optional<QRect> visibleWindow(const QString& title);

/// Runs xdotool; false when it fails.
bool xdotool(const QStringList& arguments);

/// Moves the pointer, in physical pixels of the display.
bool pointTo(const QPoint& position);

/// Presses the left button at the first position, goes to the second one in steps, as a hand does, and releases it.
bool drag(const QPoint& from, const QPoint& to);
