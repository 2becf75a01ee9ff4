// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>
#include <QString>
#include <QStringList>

/// What the rest of the program needs of the engine, so that it can be tested without libobs; in the program both are
/// the ObsWrapper. User-interface thread.

/// The device identifier that stands for the system's default device.
inline constexpr QLatin1String kDefaultAudioDevice("default");

/// The numbers by which the engine, and everything that mirrors a recording, report its state.
namespace recordstatus {

/// A start was asked for: show it as running.
inline constexpr int kStarted = 0;
inline constexpr int kPaused = 1;
/// Ended, or failed to start: show that nothing is recorded.
inline constexpr int kEnded = 2;

} // namespace recordstatus

/// What a recording session needs of the engine. How a recording begins and ends is reported beside this interface, by
/// the status numbers that go to RecordingSession::onRecordStatusChanged(). The functions are described at ObsWrapper.
class RecorderPort
{
public:
    virtual ~RecorderPort() = default;

    /// Whether the engine runs; nothing else may be called while it does not.
    virtual bool isReady() const = 0;
    virtual bool isRecording() const = 0;

    virtual void setCaptureCursor(bool show) = 0;
    virtual void setCursorEffects(bool show) = 0;

    virtual void setupFFmpeg(const QString& storePath, int srcWidth, int srcHeight, int fps, int bitRate,
                             int format) = 0;
    virtual int startRecording() = 0;
    virtual int stopRecording(bool force) = 0;

    virtual bool pauseRecording(bool pause) = 0;
    virtual bool isRecordingPaused() const = 0;
    virtual bool canPauseRecording() const = 0;

    virtual void requestRecordingEnd() = 0;
    virtual bool isRecordingEndReached() = 0;

    /// Why the last recording did not start or did not end well, in plain words; empty when the engine knows of
    /// nothing.
    virtual QString stopReasonText() const = 0;
};

/// What the rows of sources need of the engine.
class SourcePort
{
public:
    virtual ~SourcePort() = default;

    virtual void setDesktopAudioDevice(bool enabled, const QString& deviceId) = 0;
    virtual void setMicDevice(bool enabled, const QString& deviceId) = 0;
    virtual void refreshMicDevices() = 0;
    virtual const QStringList& micDeviceNames() const = 0;
    virtual void setCaptureCursor(bool show) = 0;
};
