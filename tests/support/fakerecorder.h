// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "engine/ports.h"

#include <QStringList>

#include <functional>

/// An engine that does nothing but note what it is asked, in order, and behave as it is set to.
class FakeRecorder : public RecorderPort
{
public:
    explicit FakeRecorder(QStringList& calls) : m_calls(calls) {}

    bool isReady() const override { return ready; }
    bool isRecording() const override { return recording; }
    void setCaptureCursor(bool show) override { note("cursor %1", show); }
    void setCursorEffects(bool show) override { note("effects %1", show); }

    void setupFFmpeg(const QString& storePath, int widthPx, int heightPx, int fps, int bitRate, int format) override
    {
        path = storePath;
        m_calls << QStringLiteral("setup %1x%2 %3 %4 %5").arg(widthPx).arg(heightPx).arg(fps).arg(bitRate).arg(format);
    }

    int startRecording() override
    {
        m_calls << QStringLiteral("start");
        onStatus(0);
        if (!startWorks) {
            onStatus(2);
            return -1;
        }
        recording = true;
        return 0;
    }

    int stopRecording(bool force) override
    {
        note("stop %1", force);
        recording = false;
        return 0;
    }

    bool pauseRecording(bool pause) override
    {
        note("pause %1", pause);
        if (pauseWorks)
            paused = pause;
        return pauseWorks;
    }
    bool isRecordingPaused() const override { return paused; }
    bool canPauseRecording() const override { return pauseWorks; }

    void requestRecordingEnd() override { m_calls << QStringLiteral("end here"); }
    bool isRecordingEndReached() override { return pollsUntilDrained-- <= 0; }
    bool leavesOutOwnWindows() const override { return leavesOut; }
    QString stopReasonText() const override { return error; }
    StopCause stopCause() const override { return cause; }

    /// The output ends for a reason of its own.
    void endByItself(const QString& reason, StopCause why = StopCause::CannotWrite)
    {
        error = reason;
        cause = why;
        recording = false;
        onStatus(2);
    }

    std::function<void(int)> onStatus;
    bool ready = true;
    bool recording = false;
    bool startWorks = true;
    bool pauseWorks = true;
    bool paused = false;
    bool leavesOut = false;
    int pollsUntilDrained = 0;
    QString path;
    QString error;
    StopCause cause = StopCause::AsAsked;

private:
    void note(const char* text, bool value) { m_calls << QString::fromLatin1(text).arg(int(value)); }

    QStringList& m_calls;
};
