// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/recorders.h"
#include "bench/recordertools.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/recording/regionuser.h"
#include "tests/support/processusage.h"
#include "tests/support/programundertest.h"
#include "tests/support/testpattern.h"

#include <QRegularExpression>
#include <QTest>

namespace {

/// Which frames the program takes.
constexpr char kCaptureVariable[] = "KESTRANO_CAPTURE";
/// Makes them where they do not come through libobs' scene.
constexpr char kFrameThread[] = "screen video";

/// The program, which can be ended before its log is read.
class MeasuredProgram : public ProgramUnderTest
{
public:
    using ProgramUnderTest::end;
};

double msSinceStart(const ProgramUnderTest& program, int64_t ns)
{
    return static_cast<double>(ns - program.startedAtNs()) / kNsPerMs;
}

bool chooseArea(ProgramUnderTest& program, const Job& job)
{
    return job.workload.part.isEmpty() || regionuser::chooseRegion(program, job.area()) == job.area();
}

/// Starts the program and a recording of the area; the take has the reason where that fails.
Take begin(ProgramUnderTest& program, const Job& job, Measurement& measurement)
{
    Take take;
    const auto window = program.start() ? program.mainWindow(false, kToolTimeoutMs) : std::nullopt;
    measurement.windowMs = msSinceStart(program, monotonicNow());
    const auto ready = program.waitForMessage(QStringLiteral("OBS initialized successfully"), kToolTimeoutMs);
    if (!window || !ready) {
        take.failure = QStringLiteral("the program does not start:\n") + program.transcript();
        return take;
    }
    measurement.engineMs = msSinceStart(program, ready->monotonicNs);
    if (!chooseArea(program, job)) {
        take.failure = QStringLiteral("the program does not take the region:\n") + program.transcript();
        return take;
    }
    return beginTake(program, QStringLiteral("mp4"));
}

/// libobs and the program log lagged and skipped frames when a video output is closed, and only when there were some.
double percentFrom(const QString& text, const QString& pattern)
{
    const QRegularExpressionMatch match = QRegularExpression(pattern).match(text);
    return match.hasMatch() ? match.captured(1).toDouble() : 0;
}

void readLog(Measurement& measurement, const QString& transcript)
{
    // What comes after the recording's own end: the program tries its encoder out before, and libobs logs that as
    // well.
    const QString text = transcript.section(QStringLiteral("'adv_ffmpeg_output': stopping"), -1);
    // Of frames that the program makes itself libobs knows nothing: what it says then is about its own video.
    const bool makesFrames = measurement.frameThreadPercent >= 0;
    const QString video = makesFrames ? QStringLiteral("Kestrano screen") : QStringLiteral("'adv_ffmpeg_output'");
    measurement.laggedPercent =
        percentFrom(text, video + QStringLiteral(": Number of lagged frames .*: \\d+ \\(([0-9.]+)%\\)"));
    measurement.skippedPercent = percentFrom(text, QStringLiteral("encoding lag: \\d+/\\d+ \\(([0-9.]+)%\\)"));
}

void measureTake(ProgramUnderTest& program, Take& take, Measurement& measurement, int seconds)
{
    QTest::qWait(kSettleMs);
    const CpuMeter meter(program.processId(), kFrameThread);
    QTest::qWait(seconds * 1000 - kSettleMs);
    meter.writeTo(measurement);
    endTake(program, take);
    measurement.peakMiB = usageOf(program.processId()).peakMiB;
    measurement.stopMs = static_cast<double>(take.closedNs - take.stopRequestedNs) / kNsPerMs;
}

Measurement recordWithProgram(const Job& job)
{
    Measurement measurement;
    MeasuredProgram program;
    Take take = begin(program, job, measurement);
    if (take.failure.isEmpty())
        measureTake(program, take, measurement, job.seconds);
    measurement.failure = take.failure;
    if (!measurement.failure.isEmpty())
        return measurement;
    // A video output of the program's own may be closed as late as that.
    program.end();
    readLog(measurement, program.transcript());
    judgeFile(measurement, job, take.path);
    return measurement;
}

} // namespace

Measurement measureProgram(const Job& job)
{
    qunsetenv(kCaptureVariable);
    return recordWithProgram(job);
}

Measurement measureProgramWithScene(const Job& job)
{
    qputenv(kCaptureVariable, "scene");
    return recordWithProgram(job);
}

IdleMeasurement measureIdleProgram(int seconds)
{
    qunsetenv(kCaptureVariable);
    IdleMeasurement measurement;
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
