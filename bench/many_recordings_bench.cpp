// SPDX-License-Identifier: GPL-3.0-or-later
// Lets the program make many short recordings in one run, in all formats by turns, and prints what it uses after each
// twenty. tools/bench-many runs it on a private desktop and says what the columns mean.
//
//   many_recordings_bench [--recordings N] [--milliseconds N] [--json FILE]
#include "bench/figures.h"
#include "bench/table.h"
#include "tests/recording/formatcycle.h"
#include "tests/recording/recordinghelpers.h"
#include "tests/support/processusage.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

constexpr int kStep = 20;
constexpr int kReleaseMs = 60'000;
/// Caches are full by then.
constexpr std::size_t kSettledRow = 1;

struct Usage
{
    double recordings = 0;
    double memoryMiB = 0;
    double threads = 0;
    double descriptors = 0;
    double sharedParts = 0;
};

constexpr std::array<Column<Usage>, 5> kColumns{{{"recordings", "recordings", &Usage::recordings, 0},
                                                 {"MiB", "memoryMiB", &Usage::memoryMiB, 1},
                                                 {"threads", "threads", &Usage::threads, 0},
                                                 {"files", "descriptors", &Usage::descriptors, 0},
                                                 {"shared", "sharedParts", &Usage::sharedParts, 0}}};

Usage usageAfter(int recordings, const ProgramUnderTest& program)
{
    const ProcessUsage usage = usageOf(program.processId());
    return {static_cast<double>(recordings), usage.memoryMiB, static_cast<double>(usage.threads),
            static_cast<double>(usage.descriptors), static_cast<double>(usage.sharedParts)};
}

/// Compares the last row with the first one after caches have filled.
bool isFlat(const std::vector<Usage>& rows)
{
    constexpr double kMemoryTolerance = 1.05;
    const Usage& first = rows.at(std::min(kSettledRow, rows.size() - 1));
    const Usage& last = rows.back();
    return last.memoryMiB <= kMemoryTolerance * first.memoryMiB && last.threads <= first.threads &&
           last.descriptors <= first.descriptors && last.sharedParts <= first.sharedParts;
}

/// Empty on success, else what went wrong.
QString run(std::vector<Usage>& rows, int count, int milliseconds)
{
    Performance performance;
    if (QString failure = performance.begin(); !failure.isEmpty())
        return failure;
    ProgramUnderTest program;
    if (!program.startAndWaitUntilReady())
        return QStringLiteral("the program does not start:\n") + program.transcript();
    FormatCycle recordings(program);
    printRow({}, {}, titles(kColumns));
    while (recordings.count() < count) {
        if (QString failure = recordings.record(milliseconds); !failure.isEmpty())
            return failure;
        if (recordings.count() % kStep != 0 && recordings.count() != count)
            continue;
        rows.push_back(usageAfter(recordings.count(), program));
        printRow({}, {}, cells(rows.back(), kColumns));
    }
    // What the last one used is released some time after its end; threads of pools end after 30 s.
    const auto isReleased = [&rows, &program, count] {
        rows.back() = usageAfter(count, program);
        return isFlat(rows);
    };
    if (!isFlat(rows) && QTest::qWaitFor(isReleased, kReleaseMs))
        printRow({}, {}, cells(rows.back(), kColumns));
    return {};
}

bool writeRows(const QString& path, const std::vector<Usage>& rows)
{
    QJsonArray figures;
    for (const Usage& row : rows) {
        QJsonObject object;
        insertFigures(object, row, kColumns);
        figures.append(object);
    }
    return writeJson(path, {{"rows", figures}});
}

} // namespace

int main(int argc, char* argv[])
{
    const QGuiApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption count("recordings", "How many.", "count", "200");
    const QCommandLineOption length("milliseconds", "Length of each.", "ms", "2000");
    const QCommandLineOption json("json", "Writes the figures to this file as well.", "file");
    parser.addHelpOption();
    parser.addOptions({count, length, json});
    parser.process(application);
    std::vector<Usage> rows;
    const QString failure = run(rows, std::max(1, parser.value(count).toInt()), parser.value(length).toInt());
    if (!failure.isEmpty())
        std::fprintf(stderr, "many_recordings_bench: %s\n", qPrintable(failure));
    const bool flat = !rows.empty() && isFlat(rows);
    std::printf("%s\n", flat ? "flat" : "not flat");
    const bool isWritten = !parser.isSet(json) || writeRows(parser.value(json), rows);
    return failure.isEmpty() && flat && isWritten ? EXIT_SUCCESS : EXIT_FAILURE;
}
