// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "bench/measurement.h"

#include <QByteArray>
#include <QStringList>

#include <cstdint>
#include <optional>

class QProcess;

// What the recorders are measured with.

inline constexpr int kToolTimeoutMs = 60'000;
/// Processor time counts from here on: opening files and encoders is over by then.
inline constexpr int kSettleMs = 1000;
/// The program tries its encoder out in the first seconds, once.
inline constexpr int kIdleSettleMs = 5000;
inline constexpr double kNsPerMs = 1e6;
/// Of every recorder.
inline constexpr int kRecordedFps = 30;
inline constexpr int kVideoBitrateKbit = 4096;
inline constexpr int kAudioBitrateKbit = 192;

/// Processor time of a process from this object's construction on.
class CpuMeter
{
public:
    /// @param thread name of the thread that makes frames, where there is one
    explicit CpuMeter(qint64 processId, const QByteArray& thread = {});

    /// Fills in processor time and memory.
    void writeTo(Measurement& measurement) const;
    double secondsPerSecond() const;

private:
    double wallSeconds() const;

    qint64 m_processId;
    QByteArray m_thread;
    double m_before;
    double m_threadBefore;
    std::int64_t m_beganNs;
};

/// Fills in what the file of the recording holds. Where the recorder has not said how many frames were late, those are
/// taken for late that the file lacks.
void judgeFile(Measurement& measurement, const Job& job, const QString& path);

double percent(double part, double whole);

/// An executable of this build.
QString executable(const QString& name);

/// Reads what a process says until @p text is in a line of it: what follows in that line; nothing when none comes.
///
/// @param output everything that was read, in this call and before
std::optional<QByteArray> waitForText(QProcess& process, QByteArray& output, const QByteArray& text, int timeoutMs);

/// FFmpeg's options for the video encoder that the program uses, set as libobs sets it.
QStringList videoEncoderArguments();
