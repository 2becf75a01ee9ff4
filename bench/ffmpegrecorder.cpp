// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/recorders.h"
#include "bench/recordertools.h"
#include "tests/support/testpattern.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

namespace {

double lastProgressValue(const QByteArray& progress, const QByteArray& key)
{
    const qsizetype at = progress.lastIndexOf(key + '=');
    return at < 0 ? 0 : progress.mid(at + key.size() + 1).split('\n').constFirst().toDouble();
}

QStringList arguments(const Job& job, const QString& path)
{
    const QRect area = job.area();
    const QString size = QStringLiteral("%1x%2").arg(area.width()).arg(area.height());
    const QString display = QStringLiteral("%1+%2,%3").arg(qEnvironmentVariable("DISPLAY")).arg(area.x()).arg(area.y());
    const QString audioBitrate = QString::number(kAudioBitrateKbit) + QLatin1Char('k');
    const QStringList queue{"-thread_queue_size", "512"};
    const QStringList video{"-f", "x11grab", "-framerate", "30", "-video_size", size, "-i", display};
    const QStringList audio{"-f", "pulse", "-i", "@DEFAULT_MONITOR@"};
    const QStringList streams{"-map", "0:v", "-map", "1:a"};
    return QStringList{"-y", "-v", "error", "-progress", "pipe:1"} + queue + video + queue + audio + streams +
           videoEncoderArguments() +
           QStringList{"-pix_fmt", "yuv420p", "-r", "30", "-c:a", "aac", "-b:a", audioBitrate, path};
}

} // namespace

Measurement measureX11Grab(const Job& job)
{
    Measurement measurement;
    const QString path = job.folder + QLatin1String("/x11grab.mp4");
    QProcess process;
    process.start(QStringLiteral("ffmpeg"), arguments(job, path));
    process.waitForReadyRead(kToolTimeoutMs);
    QTest::qWait(kSettleMs);
    const CpuMeter meter(process.processId());
    QTest::qWait(job.seconds * 1000 - kSettleMs);
    meter.writeTo(measurement);
    const int64_t requested = monotonicNow();
    process.write("q");
    process.waitForFinished(kToolTimeoutMs);
    measurement.stopMs = static_cast<double>(monotonicNow() - requested) / kNsPerMs;
    const QByteArray progress = process.readAllStandardOutput();
    if (process.exitCode() != 0) {
        measurement.failure = QString::fromLocal8Bit(process.readAllStandardError());
        return measurement;
    }
    const double frames = lastProgressValue(progress, "frame");
    measurement.laggedPercent = percent(lastProgressValue(progress, "dup_frames"), frames);
    measurement.skippedPercent = percent(lastProgressValue(progress, "drop_frames"), frames);
    judgeFile(measurement, job, path);
    return measurement;
}

double encoderFramesPerSecond()
{
    constexpr int kFrames = 300;
    QProcess process;
    QElapsedTimer elapsed;
    elapsed.start();
    process.start(QStringLiteral("ffmpeg"),
                  QStringList{"-v", "error", "-nostdin", "-f", "lavfi", "-i", "testsrc2=s=1280x720:r=30", "-frames:v",
                              QString::number(kFrames)} +
                      videoEncoderArguments() + QStringList{"-f", "null", "-"});
    process.waitForFinished(kToolTimeoutMs);
    return kFrames * 1000.0 / static_cast<double>(elapsed.elapsed());
}
