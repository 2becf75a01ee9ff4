// SPDX-License-Identifier: GPL-3.0-or-later
// Measures the program, a bare libobs and FFmpeg's own screen capture on the display it runs on, one after the other,
// and prints a table. tools/bench runs it on private desktops of several sizes.
//
//   kestrano_bench [--seconds N] [--repeat N] [--idle-seconds N] [--json FILE]
#include "bench/figures.h"
#include "bench/recorders.h"
#include "tests/recording/recordinghelpers.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QScreen>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

using Measure = Measurement (*)(const Job&);
using Member = double Measurement::*;

struct Column
{
    const char* title;
    const char* key;
    Member member;
    int digits;
};

constexpr std::array<Column, 8> kColumns{{{"held %", "heldPercent", &Measurement::heldPercent, 1},
                                          {"lagged %", "laggedPercent", &Measurement::laggedPercent, 1},
                                          {"skipped %", "skippedPercent", &Measurement::skippedPercent, 1},
                                          {"CPU s/s", "cpuSeconds", &Measurement::cpuSeconds, 2},
                                          {"peak MiB", "peakMiB", &Measurement::peakMiB, 0},
                                          {"stop ms", "stopMs", &Measurement::stopMs, 0},
                                          {"window ms", "windowMs", &Measurement::windowMs, 0},
                                          {"engine ms", "engineMs", &Measurement::engineMs, 0}}};

/// The middle of several measurements, each value by itself; those that failed do not count.
Measurement middleMeasurement(const std::vector<Measurement>& measurements)
{
    std::vector<Measurement> good;
    std::copy_if(measurements.begin(), measurements.end(), std::back_inserter(good),
                 [](const Measurement& measurement) { return measurement.failure.isEmpty(); });
    Measurement middle = good.empty() ? measurements.front() : good.front();
    for (const Column& column : kColumns) {
        std::vector<double> values;
        values.reserve(good.size());
        for (const Measurement& measurement : good)
            values.push_back(measurement.*column.member);
        if (!values.empty())
            middle.*column.member = middleOf(values);
    }
    return middle;
}

QString cell(const Measurement& measurement, const Column& column)
{
    const double value = measurement.*column.member;
    return value < 0 ? QStringLiteral("-") : QString::number(value, 'f', column.digits);
}

void printRow(const QStringList& cells)
{
    QString row = cells.at(0).leftJustified(16) + cells.at(1).rightJustified(7);
    for (qsizetype index = 2; index < cells.size(); ++index)
        row += cells.at(index).rightJustified(11);
    std::printf("%s\n", qPrintable(row));
}

void printHeading(const Job& job, double framesPerSecond)
{
    std::printf("\n%dx%d, 30 frames a second, %d s each; the machine encodes %.0f frames a second of 1280x720\n",
                job.screen.width(), job.screen.height(), job.seconds, framesPerSecond);
    QStringList titles{QStringLiteral("recorder"), QStringLiteral("numbers")};
    for (const Column& column : kColumns)
        titles.append(QLatin1String(column.title));
    printRow(titles);
}

void print(const Measurement& measurement)
{
    if (!measurement.failure.isEmpty()) {
        std::printf("%s: %s\n", qPrintable(measurement.recorder), qPrintable(measurement.failure));
        return;
    }
    QStringList cells{measurement.recorder, QString::number(measurement.rate) + QLatin1String("/s")};
    for (const Column& column : kColumns)
        cells.append(cell(measurement, column));
    printRow(cells);
    std::fflush(stdout);
}

QJsonObject toJson(const Measurement& measurement)
{
    QJsonObject object{{"recorder", measurement.recorder}, {"numbersPerSecond", measurement.rate}};
    if (!measurement.failure.isEmpty())
        object.insert("failure", measurement.failure);
    for (const Column& column : kColumns)
        if (measurement.*column.member >= 0)
            object.insert(QLatin1String(column.key), measurement.*column.member);
    return object;
}

/// Runs all recorders at one rate of numbers; false when one of them failed throughout.
bool measureRate(const Job& job, int repeat, QJsonArray& results)
{
    Performance performance;
    const QString failure = performance.begin(job.rate);
    if (!failure.isEmpty()) {
        std::fprintf(stderr, "kestrano_bench: %s\n", qPrintable(failure));
        return false;
    }
    bool good = true;
    for (const Measure measure : {&measureProgram, &measureProgramWithScene, &measureBareLibobs, &measureX11Grab}) {
        std::vector<Measurement> measurements;
        measurements.reserve(static_cast<std::size_t>(repeat));
        for (int run = 0; run < repeat; ++run)
            measurements.push_back(measure(job));
        const Measurement middle = middleMeasurement(measurements);
        print(middle);
        results.append(toJson(middle));
        good = good && middle.failure.isEmpty();
    }
    return good;
}

/// What the program and a bare libobs cost while they record nothing; false when one of them failed.
bool measureIdle(int seconds, QJsonArray& results)
{
    std::printf("\nidle for %d s\n", seconds);
    bool good = true;
    for (const auto measureProcess : {&measureIdleProgram, &measureIdleLibobs}) {
        const IdleMeasurement measurement = measureProcess(seconds);
        QJsonObject object{{"process", measurement.process}};
        if (measurement.failure.isEmpty()) {
            std::printf("%s%6.1f %% of one core\n", qPrintable(measurement.process.leftJustified(12)),
                        measurement.corePercent);
            object.insert("corePercent", measurement.corePercent);
        } else {
            std::printf("%s: %s\n", qPrintable(measurement.process), qPrintable(measurement.failure));
            object.insert("failure", measurement.failure);
            good = false;
        }
        std::fflush(stdout);
        results.append(object);
    }
    return good;
}

} // namespace

int main(int argc, char* argv[])
{
    QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption seconds("seconds", "Length of each recording.", "seconds", "10");
    const QCommandLineOption repeat("repeat", "Recordings of each kind; the middle value counts.", "times", "1");
    const QCommandLineOption idleSeconds("idle-seconds", "How long the idle program is looked at; 0 for not at all.",
                                         "seconds", "20");
    const QCommandLineOption json("json", "Writes the figures to this file as well.", "file");
    parser.addHelpOption();
    parser.addOptions({seconds, repeat, idleSeconds, json});
    parser.process(application);

    const QTemporaryDir folder;
    Job job;
    job.seconds = std::max(2, parser.value(seconds).toInt());
    job.screen = QGuiApplication::primaryScreen()->size();
    job.folder = folder.path();
    bool good = true;
    QJsonArray idle;
    if (const int idleFor = parser.value(idleSeconds).toInt(); idleFor > 0)
        good = measureIdle(idleFor, idle);
    const double framesPerSecond = encoderFramesPerSecond();
    printHeading(job, framesPerSecond);
    QJsonArray results;
    for (const int rate : {30, 15}) {
        job.rate = rate;
        good = measureRate(job, std::max(1, parser.value(repeat).toInt()), results) && good;
    }
    const QJsonObject report{{"width", job.screen.width()},
                             {"height", job.screen.height()},
                             {"seconds", job.seconds},
                             {"machineFramesPerSecond", framesPerSecond},
                             {"idle", idle},
                             {"measurements", results}};
    if (parser.isSet(json) && !writeJson(parser.value(json), report)) {
        std::fprintf(stderr, "kestrano_bench: cannot write %s\n", qPrintable(parser.value(json)));
        good = false;
    }
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}
