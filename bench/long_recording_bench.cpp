// SPDX-License-Identifier: GPL-3.0-or-later
// Lets the program record the flashes and beeps of kestrano_bench_avsignal for a long time, and prints what it uses and
// how far apart both are in the file. tools/bench-long runs it on a private desktop and says what the columns mean.
//
//   long_recording_bench [--minutes N] [--json FILE]
#include "bench/avsignal.h"
#include "bench/figures.h"
#include "bench/recordertools.h"
#include "bench/table.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/processusage.h"
#include "tests/support/programundertest.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QScreen>
#include <QTest>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kMsPerMinute = 60'000;
constexpr double kSecondsPerMinute = 60;

/// One minute of a recording. Negative figures are unknown.
struct Minute
{
    double memoryMiB = -1;
    double cpuSeconds = -1;
    double threads = -1;
    double descriptors = -1;
    double signalCount = 0;
    /// How much later than its beep a flash is in the file, in milliseconds.
    double leastOffsetMs = -1e9;
    double meanOffsetMs = -1e9;
    double mostOffsetMs = -1e9;
};

using Moments = std::vector<double>;

/// What a tool prints; nothing where it fails.
QByteArray outputOf(const QString& tool, const QStringList& arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(tool, arguments, QIODevice::ReadOnly);
    const bool isOver = process.waitForFinished(-1);
    return isOver && process.exitCode() == 0 ? process.readAllStandardOutput() : QByteArray();
}

/// The times of the frames in seconds, in the order in which they are shown.
Moments frameTimes(const QString& path)
{
    const QByteArray text = outputOf("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                                                 "packet=pts_time", "-of", "csv=p=0", path});
    Moments times;
    for (const QByteArray& line : text.split('\n'))
        if (!line.trimmed().isEmpty())
            times.push_back(line.split(',').constFirst().toDouble());
    std::sort(times.begin(), times.end());
    return times;
}

/// The first frame of each flash.
Moments flashes(const QString& path, const QSize& screen)
{
    const Moments times = frameTimes(path);
    const QPoint centre = avsignal::flashArea(screen).center();
    const QString filter = QStringLiteral("crop=2:2:%1:%2,format=gray").arg(centre.x()).arg(centre.y());
    const QByteArray pixels = outputOf("ffmpeg", {"-v", "error", "-nostdin", "-i", path, "-map", "0:v:0", "-fps_mode",
                                                  "passthrough", "-vf", filter, "-f", "rawvideo", "-"});
    constexpr qsizetype kPixels = 4;
    constexpr uchar kBright = 128;
    Moments begins;
    bool wasBright = true;
    const auto frames = std::min(times.size(), static_cast<std::size_t>(pixels.size() / kPixels));
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const bool isBright = static_cast<uchar>(pixels.at(static_cast<qsizetype>(frame) * kPixels)) > kBright;
        if (isBright && !wasBright)
            begins.push_back(times.at(frame));
        wasBright = isBright;
    }
    return begins;
}

/// The first loud sample after half a second of silence.
Moments beeps(const QString& path)
{
    constexpr int kRate = 8000;
    constexpr int kSilence = kRate / 2;
    constexpr double kLoud = 32767 * avsignal::kAmplitude / 4;
    const QByteArray bytes = outputOf("ffmpeg", {"-v", "error", "-nostdin", "-copyts", "-i", path, "-map", "0:a:0",
                                                 "-af", "aresample=async=1:min_hard_comp=0.01:first_pts=0", "-ac", "1",
                                                 "-ar", QString::number(kRate), "-f", "s16le", "-"});
    const auto* const samples = reinterpret_cast<const std::int16_t*>(bytes.constData());
    Moments begins;
    qsizetype quietSince = 0;
    for (qsizetype i = 0; i < bytes.size() / 2; ++i) {
        if (std::abs(samples[i]) < kLoud)
            continue;
        if (i - quietSince > kSilence)
            begins.push_back(static_cast<double>(i) / kRate);
        quietSince = i;
    }
    return begins;
}

double nearestTo(double moment, const Moments& moments)
{
    const auto isNearer = [moment](double one, double other) {
        return std::abs(one - moment) < std::abs(other - moment);
    };
    return *std::min_element(moments.begin(), moments.end(), isNearer);
}

void addOffset(Minute& minute, double offsetMs)
{
    const bool isFirst = minute.signalCount == 0;
    minute.leastOffsetMs = isFirst ? offsetMs : std::min(minute.leastOffsetMs, offsetMs);
    minute.mostOffsetMs = isFirst ? offsetMs : std::max(minute.mostOffsetMs, offsetMs);
    minute.meanOffsetMs =
        isFirst ? offsetMs : minute.meanOffsetMs + (offsetMs - minute.meanOffsetMs) / (minute.signalCount + 1);
    ++minute.signalCount;
}

/// False where the file lacks flashes or beeps.
bool judge(std::vector<Minute>& minutes, const QString& path, const QSize& screen)
{
    const Moments seen = flashes(path, screen);
    const Moments heard = beeps(path);
    std::printf("%zu flashes, %zu beeps\n", seen.size(), heard.size());
    if (seen.empty() || heard.empty())
        return false;
    for (const double flash : seen) {
        const auto minute = std::min(static_cast<std::size_t>(flash / kSecondsPerMinute), minutes.size() - 1);
        addOffset(minutes.at(minute), 1000 * (flash - nearestTo(flash, heard)));
    }
    return seen.size() == heard.size();
}

/// What the program uses in the course of the minutes.
std::vector<Minute> watch(const ProgramUnderTest& program, int count)
{
    std::vector<Minute> minutes;
    double before = usageOf(program.processId()).cpuSeconds;
    for (int i = 0; i < count && program.isRunning(); ++i) {
        QTest::qWait(kMsPerMinute);
        const ProcessUsage usage = usageOf(program.processId());
        Minute minute;
        minute.memoryMiB = usage.memoryMiB;
        minute.cpuSeconds = (usage.cpuSeconds - before) / kSecondsPerMinute;
        minute.threads = usage.threads;
        minute.descriptors = usage.descriptors;
        minutes.push_back(minute);
        before = usage.cpuSeconds;
    }
    return minutes;
}

QJsonObject print(const Minute& minute, std::size_t number)
{
    const std::vector<std::pair<const char*, double>> figures{
        {"memoryMiB", minute.memoryMiB},       {"cpuSeconds", minute.cpuSeconds},
        {"threads", minute.threads},           {"descriptors", minute.descriptors},
        {"signals", minute.signalCount},       {"leastOffsetMs", minute.leastOffsetMs},
        {"meanOffsetMs", minute.meanOffsetMs}, {"mostOffsetMs", minute.mostOffsetMs}};
    QStringList cells;
    QJsonObject object;
    for (const auto& [name, figure] : figures) {
        cells.append(QString::number(figure, 'f', figure == std::floor(figure) ? 0 : 2));
        object.insert(QLatin1String(name), figure);
    }
    printRow(QString::number(number), {}, cells);
    return object;
}

/// Empty on success, else what went wrong.
QString record(std::vector<Minute>& minutes, int count, const QSize& screen)
{
    ProgramUnderTest program;
    if (!program.startAndWaitUntilReady() || !program.mainWindow(false, kToolTimeoutMs))
        return QStringLiteral("the program does not start:\n") + program.transcript();
    Take take = beginTake(program, QStringLiteral("mp4"));
    if (!take.failure.isEmpty())
        return take.failure;
    minutes = watch(program, count);
    endTake(program, take);
    if (!take.failure.isEmpty() || minutes.empty())
        return take.failure + program.transcript();
    return judge(minutes, take.path, screen) ? QString() : QStringLiteral("flashes or beeps are missing");
}

} // namespace

int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption length("minutes", "Length of the recording.", "count", "60");
    const QCommandLineOption json("json", "Writes the figures to this file as well.", "file");
    parser.addHelpOption();
    parser.addOptions({length, json});
    parser.process(application);
    QProcess stimulus;
    stimulus.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // No whole number of frames: the flashes come at every moment of a frame interval.
    stimulus.start(executable("kestrano_bench_avsignal"), {"--every", "10.007"});
    stimulus.waitForReadyRead(kToolTimeoutMs);
    std::vector<Minute> minutes;
    const QString failure =
        record(minutes, std::max(1, parser.value(length).toInt()), QGuiApplication::primaryScreen()->size());
    stimulus.terminate();
    stimulus.waitForFinished();
    printRow("minute", {}, {"MiB", "CPU s/s", "threads", "files", "signals", "least ms", "mean ms", "most ms"});
    QJsonArray figures;
    for (std::size_t i = 0; i < minutes.size(); ++i)
        figures.append(print(minutes.at(i), i + 1));
    if (!failure.isEmpty())
        std::fprintf(stderr, "long_recording_bench: %s\n", qPrintable(failure));
    const bool isWritten = !parser.isSet(json) || writeJson(parser.value(json), {{"minutes", figures}});
    return failure.isEmpty() && isWritten ? EXIT_SUCCESS : EXIT_FAILURE;
}
