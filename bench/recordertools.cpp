// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/recordertools.h"

#include "tests/support/mediafile.h"
#include "tests/support/processusage.h"
#include "tests/support/testpattern.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>

#include <algorithm>
#include <cmath>

namespace {

/// The end of a file, recorded after the stop request: an encoder that is not drained leaves frames out there.
constexpr double kTailSeconds = 0.1;

/// Frames before the tail.
qsizetype judgedFrames(const MediaStream& video)
{
    const double end = video.startSeconds + video.durationSeconds - kTailSeconds - 0.5 / kRecordedFps;
    return std::count_if(video.frameSeconds.begin(), video.frameSeconds.end(),
                         [end](double seconds) { return seconds < end; });
}

/// Frames that a video holds, in per cent of those that its length has room for.
double framesPercent(const MediaStream& video)
{
    return percent(static_cast<double>(judgedFrames(video)),
                   std::round((video.durationSeconds - kTailSeconds) * kRecordedFps));
}

} // namespace

CpuMeter::CpuMeter(qint64 processId, const QByteArray& thread)
    : m_processId(processId)
    , m_thread(thread)
    , m_before(usageOf(processId).cpuSeconds)
    , m_threadBefore(cpuSecondsOfThreads(processId, thread))
    , m_beganNs(monotonicNow())
{}

void CpuMeter::writeTo(Measurement& measurement) const
{
    measurement.cpuSeconds = secondsPerSecond();
    measurement.peakMiB = usageOf(m_processId).peakMiB;
    if (m_threadBefore >= 0)
        measurement.frameThreadPercent =
            percent(cpuSecondsOfThreads(m_processId, m_thread) - m_threadBefore, wallSeconds());
}

double CpuMeter::secondsPerSecond() const
{
    return (usageOf(m_processId).cpuSeconds - m_before) / wallSeconds();
}

double CpuMeter::wallSeconds() const
{
    return static_cast<double>(monotonicNow() - m_beganNs) / 1e9;
}

void judgeFile(Measurement& measurement, const Job& job, const QString& path)
{
    const MediaFile file(path);
    if (!file.isReadable() || !file.video()) {
        measurement.failure = path + QLatin1String(": ") + file.error();
        return;
    }
    const MediaStream& video = *file.video();
    const double frames = framesPercent(video);
    measurement.heldPercent = frames;
    if (job.workload.numbersPerSecond > 0) {
        const auto numbers = file.numbers(TestPattern(video.size));
        measurement.heldPercent =
            100 * countNumbers(numbers.first(std::min(judgedFrames(video), numbers.size()))).share();
    }
    if (measurement.laggedPercent < 0)
        measurement.laggedPercent = std::max(0.0, 100 - frames);
}

double percent(double part, double whole)
{
    return whole > 0 ? part * 100 / whole : 0;
}

QString executable(const QString& name)
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

std::optional<QByteArray> waitForText(QProcess& process, QByteArray& output, const QByteArray& text, int timeoutMs)
{
    QElapsedTimer waited;
    waited.start();
    while (!waited.hasExpired(timeoutMs)) {
        process.waitForReadyRead(10);
        output += process.readAllStandardOutput();
        const qsizetype at = output.indexOf(text);
        const qsizetype end = at < 0 ? -1 : output.indexOf('\n', at);
        if (end >= 0)
            return output.mid(at + text.size(), end - at - text.size());
        if (process.state() == QProcess::NotRunning && process.bytesAvailable() == 0)
            break;
    }
    return std::nullopt;
}

QStringList videoEncoderArguments()
{
    const QString bitrate = QString::number(kVideoBitrateKbit) + QLatin1Char('k');
    return {"-c:v", "libx264", "-preset", "veryfast", "-b:v", bitrate, "-g", "300"};
}
