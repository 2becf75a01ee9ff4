// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/areatext.h"
#include "bench/recorders.h"
#include "bench/recordertools.h"

#include <QProcess>
#include <QRegularExpression>
#include <QTest>

namespace {

/// Waits for an event of bare_libobs: its moment in nanoseconds; nothing when it does not come.
std::optional<int64_t> waitForEvent(QProcess& process, QByteArray& output, const QByteArray& event, int timeoutMs)
{
    const std::optional<QByteArray> moment = waitForText(process, output, event + ' ', timeoutMs);
    return moment ? std::optional<int64_t>(moment->toLongLong()) : std::nullopt;
}

void readFrames(Measurement& measurement, const QByteArray& output)
{
    const QRegularExpressionMatch frames =
        QRegularExpression(QStringLiteral("FRAMES (\\d+) (\\d+) (\\d+)")).match(QString::fromLatin1(output));
    const double total = frames.captured(1).toDouble();
    measurement.laggedPercent = percent(frames.captured(2).toDouble(), total);
    measurement.skippedPercent = percent(frames.captured(3).toDouble(), total);
}

Measurement runBareLibobs(const Job& job)
{
    Measurement measurement;
    const QString path = job.folder + QLatin1String("/bare");
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(executable(QStringLiteral("bare_libobs")),
                  {"--output", path, "--seconds", QString::number(job.seconds), "--area", textFromArea(job.area())});
    QByteArray output;
    if (!waitForEvent(process, output, "STARTED", kToolTimeoutMs)) {
        measurement.failure = QStringLiteral("bare_libobs did not start recording");
        return measurement;
    }
    QTest::qWait(kSettleMs);
    const CpuMeter meter(process.processId());
    const auto requested = waitForEvent(process, output, "STOP_REQUESTED", job.seconds * 1000 + kToolTimeoutMs);
    meter.writeTo(measurement);
    const auto stopped = waitForEvent(process, output, "STOPPED", kToolTimeoutMs);
    process.waitForFinished(kToolTimeoutMs);
    output += process.readAllStandardOutput();
    if (!requested || !stopped || process.exitStatus() != QProcess::NormalExit) {
        measurement.failure = QStringLiteral("bare_libobs did not end well");
        return measurement;
    }
    measurement.stopMs = static_cast<double>(*stopped - *requested) / kNsPerMs;
    readFrames(measurement, output);
    judgeFile(measurement, job, path + QLatin1String(".mp4"));
    return measurement;
}

} // namespace

Measurement measureBareLibobs(const Job& job)
{
    // The stock output frees its encoders while the video stream may be inside them; without the program's care for
    // that, a stop can crash.
    constexpr int kAttempts = 3;
    Measurement measurement = runBareLibobs(job);
    for (int attempt = 1; attempt < kAttempts && !measurement.failure.isEmpty(); ++attempt)
        measurement = runBareLibobs(job);
    return measurement;
}

IdleMeasurement measureIdleLibobs(int seconds)
{
    IdleMeasurement measurement;
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    const int lifeSeconds = seconds + kIdleSettleMs / 1000 + 1;
    process.start(executable(QStringLiteral("bare_libobs")), {"--idle", "--seconds", QString::number(lifeSeconds)});
    QByteArray output;
    if (!waitForEvent(process, output, "READY", kToolTimeoutMs)) {
        measurement.failure = QStringLiteral("bare_libobs did not get ready");
        return measurement;
    }
    QTest::qWait(kIdleSettleMs);
    const CpuMeter meter(process.processId());
    QTest::qWait(seconds * 1000);
    measurement.corePercent = meter.secondsPerSecond() * 100;
    if (!process.waitForFinished(kToolTimeoutMs) || process.exitCode() != 0)
        measurement.failure = QStringLiteral("bare_libobs did not end well");
    return measurement;
}
