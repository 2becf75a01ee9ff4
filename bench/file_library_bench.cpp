// SPDX-License-Identifier: GPL-3.0-or-later
// Measures what a long list of files costs: to load it, to show those of one kind, to take one more. tools/bench runs
// it without a display.
//
//   file_library_bench [--records N] [--repeat N] [--json FILE]
#include "app/appidentity.h"
#include "bench/figures.h"
#include "files/scfilemanager.h"
#include "tests/support/filelibrary.h"
#include "tests/support/testprofile.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QListView>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

constexpr double kGoalMs = 50;

void writeList(ProducedFiles& produced, int records)
{
    constexpr std::array<const char*, 3> kTypes{"video", "audio", "screenshot"};
    QJsonArray list;
    for (int number = 0; number < records; ++number) {
        const QString path =
            produced.add(QStringLiteral("Recording_2026_11_21_%1.mp4").arg(number, 6, 10, QChar(u'0')));
        const QJsonObject properties{{"dateAdded", "2026-11-21T12:00:00"},
                                     {"type", kTypes.at(static_cast<std::size_t>(number) % kTypes.size())}};
        list.append(QJsonObject{{"filepath", path}, {"properties", properties}});
    }
    filelibrary::write(QJsonDocument(list).toJson());
}

double loadMs()
{
    std::unique_ptr<SCFileManager> library;
    return millisecondsOf([&library] { library = std::make_unique<SCFileManager>(); });
}

/// Until the view has painted its rows.
double filterMs(SCFileManager& library, QListView& view)
{
    library.setupView(&view, QString());
    view.repaint();
    return millisecondsOf([&] {
        library.setupView(&view, QStringLiteral("video"));
        view.repaint();
    });
}

/// Until it is on the disk.
double addMs(SCFileManager& library, const QString& path)
{
    return millisecondsOf([&] { library.addFile(path, QStringLiteral("video")); });
}

} // namespace

int main(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    const LibraryRefuge refuge;
    QApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption records("records", "Files in the list.", "number", "10000");
    const QCommandLineOption repeat("repeat", "Measurements of each kind; the middle value counts.", "times", "5");
    const QCommandLineOption json("json", "Writes the figures to this file as well.", "file");
    parser.addHelpOption();
    parser.addOptions({records, repeat, json});
    parser.process(application);
    const int count = std::max(1, parser.value(records).toInt());
    const int times = std::max(1, parser.value(repeat).toInt());

    ProducedFiles produced;
    writeList(produced, count);
    const double load = middleOfRuns(times, &loadMs);
    SCFileManager library;
    QListView view;
    view.setUniformItemSizes(true);
    view.resize(636, 280);
    view.show();
    const double filter = middleOfRuns(times, [&] { return filterMs(library, view); });
    const QString added = produced.add(QStringLiteral("added.mp4"));
    const double add = middleOfRuns(times, [&] { return addMs(library, added); });

    std::printf("\nlist of %d files (goal: each below %.0f ms)\n", count, kGoalMs);
    std::printf("%-12s%8.1f ms\n%-12s%8.1f ms\n%-12s%8.1f ms\n", "load", load, "filter", filter, "one more", add);
    const QJsonObject figures{{"files", count}, {"loadMs", load}, {"filterMs", filter}, {"oneMoreMs", add}};
    if (parser.isSet(json) && !writeJson(parser.value(json), figures)) {
        std::fprintf(stderr, "file_library_bench: cannot write %s\n", qPrintable(parser.value(json)));
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
