// SPDX-License-Identifier: GPL-3.0-or-later
// Measures the program and other recorders on the display it runs on, one after the other, each with several workloads,
// and prints a table. tools/bench runs it on private desktops of several sizes and says what the columns mean.
//
//   kestrano_bench [--workload NAME]... [--recorder NAME]... [--seconds N] [--repeat N] [--idle-seconds N]
//                  [--json FILE]
#include "bench/figures.h"
#include "bench/recorders.h"
#include "bench/table.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QScreen>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr std::array<Column<Measurement>, 9> kColumns{
    {{"held %", "heldPercent", &Measurement::heldPercent, 1},
     {"lagged %", "laggedPercent", &Measurement::laggedPercent, 1},
     {"skipped %", "skippedPercent", &Measurement::skippedPercent, 1},
     {"CPU s/s", "cpuSeconds", &Measurement::cpuSeconds, 2},
     {"frames %", "frameThreadPercent", &Measurement::frameThreadPercent, 1},
     {"peak MiB", "peakMiB", &Measurement::peakMiB, 0},
     {"stop ms", "stopMs", &Measurement::stopMs, 0},
     {"window ms", "windowMs", &Measurement::windowMs, 0},
     {"engine ms", "engineMs", &Measurement::engineMs, 0}}};

/// What the command line asks for.
struct Request
{
    std::vector<Workload> workloads;
    std::vector<Recorder> recorders;
    int seconds = 10;
    int repeat = 1;
    int idleSeconds = 20;
    QString json;
    /// What it asks for that there is not; empty when all is well.
    QString unknown;
};

/// Those with these names; all of them where there are no names.
template <typename T, std::size_t count>
std::vector<T> chosen(const std::array<T, count>& all, const QStringList& names, QString& unknown)
{
    if (names.isEmpty())
        return {all.begin(), all.end()};
    std::vector<T> found;
    for (const QString& name : names) {
        const auto entry =
            std::find_if(all.begin(), all.end(), [&name](const T& one) { return name == QLatin1String(one.name); });
        if (entry == all.end())
            unknown = name;
        else
            found.push_back(*entry);
    }
    return found;
}

/// Says which recorders are not installed, and leaves them out.
void keepInstalled(std::vector<Recorder>& recorders)
{
    std::erase_if(recorders, [](const Recorder& recorder) {
        const bool isMissing = recorder.tool && QStandardPaths::findExecutable(QLatin1String(recorder.tool)).isEmpty();
        if (isMissing)
            std::printf("%s is not installed and has no row\n", recorder.name);
        return isMissing;
    });
}

Request readRequest(const QCoreApplication& application)
{
    QCommandLineParser parser;
    const QCommandLineOption workload("workload", "What is recorded; may be given several times.", "name");
    const QCommandLineOption recorder("recorder", "What records it; may be given several times.", "name");
    const QCommandLineOption seconds("seconds", "Length of each recording.", "seconds", "10");
    const QCommandLineOption repeat("repeat", "Recordings of each kind; the middle value counts.", "times", "1");
    const QCommandLineOption idleSeconds("idle-seconds", "How long the idle program is looked at; 0 for not at all.",
                                         "seconds", "20");
    const QCommandLineOption json("json", "Writes the figures to this file as well.", "file");
    parser.addHelpOption();
    parser.addOptions({workload, recorder, seconds, repeat, idleSeconds, json});
    parser.process(application);
    Request request;
    request.workloads = chosen(kWorkloads, parser.values(workload), request.unknown);
    request.recorders = chosen(kRecorders, parser.values(recorder), request.unknown);
    keepInstalled(request.recorders);
    request.seconds = std::max(2, parser.value(seconds).toInt());
    request.repeat = std::max(1, parser.value(repeat).toInt());
    request.idleSeconds = parser.value(idleSeconds).toInt();
    request.json = parser.value(json);
    return request;
}

/// The middle of several measurements, each value by itself; those that failed do not count.
Measurement middleMeasurement(const std::vector<Measurement>& measurements)
{
    std::vector<Measurement> good;
    std::copy_if(measurements.begin(), measurements.end(), std::back_inserter(good),
                 [](const Measurement& measurement) { return measurement.failure.isEmpty(); });
    if (good.empty())
        return measurements.front();
    Measurement middle = good.front();
    for (const Column<Measurement>& column : kColumns) {
        std::vector<double> values(good.size());
        std::transform(good.begin(), good.end(), values.begin(),
                       [&column](const Measurement& measurement) { return measurement.*column.member; });
        middle.*column.member = middleOf(values);
    }
    return middle;
}

void printFailure(const QString& name, const QString& failure)
{
    std::printf("%s: %s\n", qPrintable(name), qPrintable(failure));
    std::fflush(stdout);
}

/// Measures on one display. What failed is printed, and is in the report.
class Bench
{
public:
    Bench(const Request& request, const QSize& screen) : m_request(request), m_screen(screen) {}

    /// False when something could not be measured.
    bool run();
    QJsonObject report() const;

private:
    void measureIdle();
    void measure(const Workload& workload);
    void measure(const Recorder& recorder, const Job& job);

    const Request& m_request;
    const QSize m_screen;
    const QTemporaryDir m_folder;
    bool m_isGood = true;
    double m_encoderFramesPerSecond = 0;
    QJsonArray m_idle;
    QJsonArray m_measurements;
};

bool Bench::run()
{
    if (m_request.idleSeconds > 0)
        measureIdle();
    m_encoderFramesPerSecond = encoderFramesPerSecond();
    std::printf("\n%dx%d, 30 frames a second, %d s each; the machine encodes %.0f frames a second of 1280x720\n",
                m_screen.width(), m_screen.height(), m_request.seconds, m_encoderFramesPerSecond);
    printRow("workload", "recorder", titles(kColumns));
    for (const Workload& workload : m_request.workloads)
        measure(workload);
    return m_isGood;
}

/// What the program and a bare libobs cost while they record nothing.
void Bench::measureIdle()
{
    std::printf("\nidle for %d s\n", m_request.idleSeconds);
    for (const auto measureProcess : {&measureIdleProgram, &measureIdleLibobs}) {
        const IdleMeasurement measurement = measureProcess(m_request.idleSeconds);
        QJsonObject object{{"process", measurement.process}};
        if (measurement.failure.isEmpty()) {
            std::printf("%s%6.1f %% of one core\n", qPrintable(measurement.process.leftJustified(12)),
                        measurement.corePercent);
            object.insert("corePercent", measurement.corePercent);
        } else {
            printFailure(measurement.process, measurement.failure);
            object.insert("failure", measurement.failure);
            m_isGood = false;
        }
        m_idle.append(object);
    }
}

void Bench::measure(const Workload& workload)
{
    const Job job{workload, m_screen, m_request.seconds, m_folder.path()};
    Show show;
    const QString failure = show.begin(workload, m_screen);
    if (!failure.isEmpty()) {
        printFailure(QLatin1String(workload.name), failure);
        m_isGood = false;
        return;
    }
    for (const Recorder& recorder : m_request.recorders)
        measure(recorder, job);
}

void Bench::measure(const Recorder& recorder, const Job& job)
{
    std::vector<Measurement> measurements(static_cast<std::size_t>(m_request.repeat));
    std::generate(measurements.begin(), measurements.end(), [&] { return recorder.measure(job); });
    const Measurement middle = middleMeasurement(measurements);
    QJsonObject object{{"workload", job.workload.name}, {"recorder", recorder.name}};
    if (middle.failure.isEmpty()) {
        printRow(job.workload.name, recorder.name, cells(middle, kColumns));
        insertFigures(object, middle, kColumns);
    } else {
        printFailure(QLatin1String(recorder.name), middle.failure);
        object.insert("failure", middle.failure);
        m_isGood = false;
    }
    m_measurements.append(object);
}

QJsonObject Bench::report() const
{
    return {{"width", m_screen.width()},
            {"height", m_screen.height()},
            {"seconds", m_request.seconds},
            {"machineFramesPerSecond", m_encoderFramesPerSecond},
            {"idle", m_idle},
            {"measurements", m_measurements}};
}

} // namespace

int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv);
    const Request request = readRequest(application);
    if (!request.unknown.isEmpty()) {
        std::fprintf(stderr, "kestrano_bench: there is no %s\n", qPrintable(request.unknown));
        return EXIT_FAILURE;
    }
    Bench bench(request, QGuiApplication::primaryScreen()->size());
    bool isGood = bench.run();
    if (!request.json.isEmpty() && !writeJson(request.json, bench.report())) {
        std::fprintf(stderr, "kestrano_bench: cannot write %s\n", qPrintable(request.json));
        isGood = false;
    }
    return isGood ? EXIT_SUCCESS : EXIT_FAILURE;
}
