// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/output/stopreason.h"

#include <QLatin1String>
#include <QString>
#include <QStringList>

/// What the program needs of the engine; ObsWrapper, or a stand-in in tests. User-interface thread.

inline constexpr QLatin1String kDefaultAudioDevice("default");

/// How engine and session report the state of a recording.
namespace recordstatus {

/// A start was requested: show it as running.
inline constexpr int kStarted = 0;
inline constexpr int kPaused = 1;
/// Ended or failed to start.
inline constexpr int kEnded = 2;

} // namespace recordstatus

/// Its start and end are reported beside it, to RecordingSession::onRecordStatusChanged(). See ObsWrapper.
class RecorderPort
{
public:
    virtual ~RecorderPort() = default;

    /// Else nothing may be called.
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

    /// Whether the present or the next recording is without the windows that platform::setExcludedFromFrames() has
    /// entered.
    virtual bool leavesOutOwnWindows() const = 0;

    /// Why the last recording failed, in plain words, or empty.
    virtual QString stopReasonText() const = 0;
    /// AsAsked where stopReasonText() is empty.
    virtual StopCause stopCause() const = 0;
};

/// What the switches for sources need of the engine.
class SourcePort
{
public:
    virtual ~SourcePort() = default;

    virtual void setDesktopAudioDevice(bool enabled, const QString& deviceId) = 0;
    virtual void setMicDevice(bool enabled, const QString& deviceId) = 0;
    virtual void refreshMicDevices() = 0;
    virtual const QStringList& micDeviceNames() const = 0;
    virtual const QStringList& micDeviceIds() const = 0;
    virtual void refreshDesktopDevices() = 0;
    virtual const QStringList& desktopDeviceNames() const = 0;
    virtual const QStringList& desktopDeviceIds() const = 0;
    virtual void setCaptureCursor(bool show) = 0;
};
