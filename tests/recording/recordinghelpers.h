#pragma once

#include "tests/support/programundertest.h"

#include <QProcess>
#include <QString>

#include <cstdint>

/// Frames a second of every recording.
inline constexpr int kFramesPerSecond = 30;

/// The test picture on the screen and the test tone on the default sink, for as long as the object lives.
class Performance
{
public:
    /// Shows and plays. Empty on success, else what went wrong.
    QString begin(int numbersPerSecond = kFramesPerSecond, bool motion = true);
    ~Performance();

private:
    static QString launch(QProcess& process, const QString& name, const QStringList& arguments);

    QProcess m_picture;
    QProcess m_tone;
};

/// What became of one recording, in CLOCK_MONOTONIC.
struct Take
{
    /// Why there is no recording; empty when there is one.
    QString failure;
    /// The file.
    QString path;
    /// The engine was told to start.
    int64_t startedNs = 0;
    /// The stop key was surely down.
    int64_t stopRequestedNs = 0;
    /// The program reported the file as closed.
    int64_t closedNs = 0;
};

/// Presses the recording hotkey and waits until the engine has been told to start. The take has its path and start.
Take beginTake(ProgramUnderTest& program, const QString& extension);

/// Presses the hotkey again and waits until the file is closed and the main window is back.
void endTake(ProgramUnderTest& program, Take& take);

/// A whole recording of @p milliseconds.
Take record(ProgramUnderTest& program, const QString& extension, int milliseconds);
