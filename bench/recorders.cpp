// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/recorders.h"

#include "bench/processusage.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/mediafile.h"
#include "tests/support/programundertest.h"
#include "tests/support/testpattern.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

namespace {

constexpr int kToolTimeoutMs = 60'000;
/// Processor time counts from here on: opening files and encoders is over by then.
constexpr int kSettleMs = 1000;
/// The program tries its encoder out in the first seconds, once.
constexpr int kIdleSettleMs = 5000;
constexpr double kNsPerMs = 1e6;
constexpr int kVideoBitrateKbit = 4096;

/// Processor time of a process between two moments.
class CpuMeter
{
public:
    explicit CpuMeter(qint64 processId)
        : m_processId(processId), m_before(usageOf(processId).cpuSeconds), m_beganNs(monotonicNow())
    {}

    void writeTo(Measurement& measurement) const
    {
        measurement.cpuSeconds = secondsPerSecond();
        measurement.peakMiB = usageOf(m_processId).peakMiB;
    }

    double secondsPerSecond() const
    {
        const double wallSeconds = static_cast<double>(monotonicNow() - m_beganNs) / 1e9;
        return (usageOf(m_processId).cpuSeconds - m_before) / wallSeconds;
    }

private:
    qint64 m_processId;
    double m_before;
    int64_t m_beganNs;
};

Measurement emptyMeasurement(const QString& recorder, const Job& job)
{
    Measurement measurement;
    measurement.recorder = recorder;
    measurement.rate = job.rate;
    return measurement;
}

void readFile(Measurement& measurement, const QString& path)
{
    const MediaFile file(path);
    if (!file.isReadable() || !file.video()) {
        measurement.failure = path + QLatin1String(": ") + file.error();
        return;
    }
    measurement.heldPercent = countNumbers(file.numbers(TestPattern(file.video()->size))).share() * 100;
}

double percent(double part, double whole)
{
    return whole > 0 ? part * 100 / whole : 0;
}

/// libobs logs lagged and skipped frames when a recording ends, and only when there were some.
double percentFrom(const QString& text, const QString& pattern)
{
    const QRegularExpressionMatch match = QRegularExpression(pattern).match(text);
    return match.hasMatch() ? match.captured(1).toDouble() : 0;
}

QString executable(const QString& name)
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(name);
}

/// Waits for a line that begins with @p word and returns what follows it as a number; negative when it does not come.
int64_t waitForWord(QProcess& process, QByteArray& output, const QByteArray& word, int timeoutMs)
{
    QElapsedTimer waited;
    waited.start();
    while (!waited.hasExpired(timeoutMs)) {
        process.waitForReadyRead(10);
        output += process.readAllStandardOutput();
        const QList<QByteArray> lines = output.split('\n');
        for (qsizetype index = 0; index + 1 < lines.size(); ++index)
            if (lines.at(index).startsWith(word + ' '))
                return lines.at(index).mid(word.size() + 1).split(' ').constFirst().toLongLong();
        if (process.state() == QProcess::NotRunning && process.bytesAvailable() == 0)
            break;
    }
    return -1;
}

void readFrames(Measurement& measurement, const QByteArray& output)
{
    const QRegularExpressionMatch frames =
        QRegularExpression(QStringLiteral("FRAMES (\\d+) (\\d+) (\\d+)")).match(QString::fromLatin1(output));
    const double total = frames.captured(1).toDouble();
    measurement.laggedPercent = percent(frames.captured(2).toDouble(), total);
    measurement.skippedPercent = percent(frames.captured(3).toDouble(), total);
}

double lastProgressValue(const QByteArray& progress, const QByteArray& key)
{
    const qsizetype at = progress.lastIndexOf(key + '=');
    return at < 0 ? 0 : progress.mid(at + key.size() + 1).split('\n').constFirst().toDouble();
}

Measurement runBareLibobs(const Job& job)
{
    Measurement measurement = emptyMeasurement(QStringLiteral("bare libobs"), job);
    const QString path = job.folder + QLatin1String("/bare");
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(executable(QStringLiteral("bare_libobs")),
                  {QStringLiteral("--output"), path, QStringLiteral("--seconds"), QString::number(job.seconds)});
    QByteArray output;
    if (waitForWord(process, output, "STARTED", kToolTimeoutMs) < 0) {
        measurement.failure = QStringLiteral("bare_libobs did not start recording");
        return measurement;
    }
    QTest::qWait(kSettleMs);
    const CpuMeter meter(process.processId());
    const int64_t requested = waitForWord(process, output, "STOP_REQUESTED", job.seconds * 1000 + kToolTimeoutMs);
    meter.writeTo(measurement);
    const int64_t stopped = waitForWord(process, output, "STOPPED", kToolTimeoutMs);
    process.waitForFinished(kToolTimeoutMs);
    output += process.readAllStandardOutput();
    if (requested < 0 || stopped < 0 || process.exitStatus() != QProcess::NormalExit) {
        measurement.failure = QStringLiteral("bare_libobs did not end well");
        return measurement;
    }
    measurement.stopMs = static_cast<double>(stopped - requested) / kNsPerMs;
    readFrames(measurement, output);
    readFile(measurement, path + QLatin1String(".mp4"));
    return measurement;
}

} // namespace

Measurement measureProgram(const Job& job)
{
    Measurement measurement = emptyMeasurement(QStringLiteral("kestrano"), job);
    ProgramUnderTest program;
    if (!program.start()) {
        measurement.failure = QStringLiteral("the program does not start");
        return measurement;
    }
    const auto window = program.mainWindow(false, kToolTimeoutMs);
    measurement.windowMs = static_cast<double>(monotonicNow() - program.startedAtNs()) / kNsPerMs;
    const auto ready = program.waitForMessage(QStringLiteral("OBS initialized successfully"), kToolTimeoutMs);
    Take take;
    if (window && ready) {
        measurement.engineMs = static_cast<double>(ready->monotonicNs - program.startedAtNs()) / kNsPerMs;
        take = beginTake(program, QStringLiteral("mp4"));
    }
    if (!take.failure.isEmpty() || take.path.isEmpty()) {
        measurement.failure = take.failure.isEmpty() ? program.transcript() : take.failure;
        return measurement;
    }
    QTest::qWait(kSettleMs);
    const CpuMeter meter(program.processId());
    QTest::qWait(job.seconds * 1000 - kSettleMs);
    meter.writeTo(measurement);
    endTake(program, take);
    measurement.failure = take.failure;
    measurement.peakMiB = usageOf(program.processId()).peakMiB;
    measurement.stopMs = static_cast<double>(take.closedNs - take.stopRequestedNs) / kNsPerMs;
    // What comes after the recording's own end: the program tries its encoder out before, and libobs logs that as
    // well.
    const QString text = program.transcript().section(QStringLiteral("'adv_ffmpeg_output': stopping"), -1);
    measurement.laggedPercent = percentFrom(text, QStringLiteral("rendering lag/stalls: \\d+ \\(([0-9.]+)%\\)"));
    measurement.skippedPercent = percentFrom(text, QStringLiteral("encoding lag: \\d+/\\d+ \\(([0-9.]+)%\\)"));
    if (measurement.failure.isEmpty())
        readFile(measurement, take.path);
    return measurement;
}

Measurement measureProgramWithScene(const Job& job)
{
    constexpr char kChoice[] = "KESTRANO_CAPTURE";
    qputenv(kChoice, "scene");
    Measurement measurement = measureProgram(job);
    qunsetenv(kChoice);
    measurement.recorder += QStringLiteral(" scene");
    return measurement;
}

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

Measurement measureX11Grab(const Job& job)
{
    Measurement measurement = emptyMeasurement(QStringLiteral("x11grab"), job);
    const QString path = job.folder + QLatin1String("/x11grab.mp4");
    const QString size = QStringLiteral("%1x%2").arg(job.screen.width()).arg(job.screen.height());
    const QString bitrate = QString::number(kVideoBitrateKbit) + QLatin1Char('k');
    QProcess process;
    process.start(QStringLiteral("ffmpeg"), QStringList{"-y",
                                                        "-v",
                                                        "error",
                                                        "-progress",
                                                        "pipe:1",
                                                        "-thread_queue_size",
                                                        "512",
                                                        "-f",
                                                        "x11grab",
                                                        "-framerate",
                                                        "30",
                                                        "-video_size",
                                                        size,
                                                        "-i",
                                                        qEnvironmentVariable("DISPLAY"),
                                                        "-thread_queue_size",
                                                        "512",
                                                        "-f",
                                                        "pulse",
                                                        "-i",
                                                        "@DEFAULT_MONITOR@",
                                                        "-map",
                                                        "0:v",
                                                        "-map",
                                                        "1:a",
                                                        "-c:v",
                                                        "libx264",
                                                        "-preset",
                                                        "veryfast",
                                                        "-b:v",
                                                        bitrate,
                                                        "-g",
                                                        "300",
                                                        "-pix_fmt",
                                                        "yuv420p",
                                                        "-r",
                                                        "30",
                                                        "-c:a",
                                                        "aac",
                                                        "-b:a",
                                                        "192k",
                                                        path});
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
    readFile(measurement, path);
    return measurement;
}

IdleMeasurement measureIdleProgram(int seconds)
{
    IdleMeasurement measurement{QStringLiteral("kestrano"), {}, 0};
    ProgramUnderTest program;
    if (!program.startAndWaitUntilReady() || !program.mainWindow(false, kToolTimeoutMs)) {
        measurement.failure = program.transcript();
        return measurement;
    }
    QTest::qWait(kIdleSettleMs);
    const CpuMeter meter(program.processId());
    QTest::qWait(seconds * 1000);
    measurement.corePercent = meter.secondsPerSecond() * 100;
    if (!program.isRunning())
        measurement.failure = program.transcript();
    return measurement;
}

IdleMeasurement measureIdleLibobs(int seconds)
{
    IdleMeasurement measurement{QStringLiteral("bare libobs"), {}, 0};
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    const int lifeSeconds = seconds + kIdleSettleMs / 1000 + 1;
    process.start(executable(QStringLiteral("bare_libobs")),
                  {QStringLiteral("--idle"), QStringLiteral("--seconds"), QString::number(lifeSeconds)});
    QByteArray output;
    if (waitForWord(process, output, "READY", kToolTimeoutMs) < 0) {
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

double encoderFramesPerSecond()
{
    constexpr int kFrames = 300;
    QProcess process;
    QElapsedTimer elapsed;
    elapsed.start();
    process.start(QStringLiteral("ffmpeg"),
                  {"-v", "error", "-nostdin", "-f", "lavfi", "-i", "testsrc2=s=1280x720:r=30", "-frames:v",
                   QString::number(kFrames), "-c:v", "libx264", "-preset", "veryfast", "-b:v",
                   QString::number(kVideoBitrateKbit) + QLatin1Char('k'), "-f", "null", "-"});
    process.waitForFinished(kToolTimeoutMs);
    return kFrames * 1000.0 / static_cast<double>(elapsed.elapsed());
}
