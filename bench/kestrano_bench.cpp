// SPDX-License-Identifier: GPL-3.0-or-later
// Measures the program and other recorders on the display it runs on, one after the other, each with several workloads,
// and prints a table. tools/bench runs it on private desktops of several sizes and says what the columns mean.
//
//   kestrano_bench [--workload NAME]... [--recorder NAME]... [--seconds N] [--repeat N] [--idle-seconds N]
//                  [--json FILE]
#include "bench/figures.h"
#include "bench/framestages.h"
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

constexpr std::array<Column<IdleMeasurement>, 1> kIdleColumns{
    {{"% of core", "corePercent", &IdleMeasurement::corePercent, 1}}};

constexpr std::array<Column<FrameStages>, 5> kStageColumns{{{"grab", "grabMs", &FrameStages::grabMs, 3},
                                                            {"convert", "convertMs", &FrameStages::convertMs, 3},
                                                            {"blend", "blendMs", &FrameStages::blendMs, 3},
                                                            {"hand over", "handOverMs", &FrameStages::handOverMs, 3},
                                                            {"encode", "encodeMs", &FrameStages::encodeMs, 3}}};

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
    const QCommandLineOption repeat("repeat", "Recordings of each kind; the middle value counts. 0: stages alone.",
                                    "times", "1");
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
    request.repeat = std::max(0, parser.value(repeat).toInt());
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
    void measureIdle(const char* name, IdleMeasurement (*measurement)(int seconds));
    void measure(const Workload& workload);
    void measure(const Recorder& recorder, const Job& job);
    void measureStages(const Workload& workload);
    bool begin(Show& show, const Workload& workload);
    Job jobFor(const Workload& workload) const;

    template <typename T, std::size_t count>
    void add(QJsonArray& results, QJsonObject object, const T& result, const std::array<Column<T>, count>& columns);

    const Request& m_request;
    const QSize m_screen;
    const QTemporaryDir m_folder;
    bool m_isGood = true;
    double m_encoderFramesPerSecond = 0;
    QJsonArray m_idle;
    QJsonArray m_measurements;
    QJsonArray m_stages;
};

bool Bench::run()
{
    if (m_request.idleSeconds > 0) {
        printRow("workload", "recorder", titles(kIdleColumns));
        measureIdle("kestrano", &measureIdleProgram);
        measureIdle("bare-libobs", &measureIdleLibobs);
    }
    m_encoderFramesPerSecond = encoderFramesPerSecond();
    std::printf("\n%dx%d, 30 frames a second, %d s each; the machine encodes %.0f frames a second of 1280x720\n",
                m_screen.width(), m_screen.height(), m_request.seconds, m_encoderFramesPerSecond);
    if (m_request.repeat > 0) {
        printRow("workload", "recorder", titles(kColumns));
        for (const Workload& workload : m_request.workloads)
            measure(workload);
    }
    std::printf("\nstages of a frame, in ms\n");
    printRow("workload", {}, titles(kStageColumns));
    for (const Workload& workload : m_request.workloads)
        measureStages(workload);
    return m_isGood;
}

/// Puts the workload on the screen.
bool Bench::begin(Show& show, const Workload& workload)
{
    const QString failure = show.begin(workload, m_screen);
    if (failure.isEmpty())
        return true;
    printFailure(QLatin1String(workload.name), failure);
    m_isGood = false;
    return false;
}

Job Bench::jobFor(const Workload& workload) const
{
    return {workload, m_screen, m_request.seconds, m_folder.path()};
}

/// Prints a result and adds it to those of its kind.
///
/// @param object which result it is
template <typename T, std::size_t count>
void Bench::add(QJsonArray& results, QJsonObject object, const T& result, const std::array<Column<T>, count>& columns)
{
    const QString workload = object.value("workload").toString();
    const QString recorder = object.value("recorder").toString();
    if (result.failure.isEmpty()) {
        printRow(workload, recorder, cells(result, columns));
        insertFigures(object, result, columns);
    } else {
        printFailure(workload + QLatin1Char(' ') + recorder, result.failure);
        object.insert("failure", result.failure);
        m_isGood = false;
    }
    results.append(object);
}

void Bench::measureIdle(const char* name, IdleMeasurement (*measurement)(int seconds))
{
    add(m_idle, {{"workload", "idle"}, {"recorder", name}}, measurement(m_request.idleSeconds), kIdleColumns);
}

void Bench::measure(const Workload& workload)
{
    Show show;
    if (!begin(show, workload))
        return;
    for (const Recorder& recorder : m_request.recorders)
        measure(recorder, jobFor(workload));
}

void Bench::measure(const Recorder& recorder, const Job& job)
{
    std::vector<Measurement> measurements(static_cast<std::size_t>(m_request.repeat));
    std::generate(measurements.begin(), measurements.end(), [&] { return recorder.measure(job); });
    add(m_measurements, {{"workload", job.workload.name}, {"recorder", recorder.name}}, middleMeasurement(measurements),
        kColumns);
}

void Bench::measureStages(const Workload& workload)
{
    Show show;
    if (begin(show, workload))
        add(m_stages, {{"workload", workload.name}}, measureFrameStages(jobFor(workload)), kStageColumns);
}

QJsonObject Bench::report() const
{
    return {{"width", m_screen.width()},
            {"height", m_screen.height()},
            {"seconds", m_request.seconds},
            {"machineFramesPerSecond", m_encoderFramesPerSecond},
            {"idle", m_idle},
            {"measurements", m_measurements},
            {"stages", m_stages}};
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
