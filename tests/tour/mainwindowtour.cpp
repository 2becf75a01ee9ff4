// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/fileitemdelegate.h"
#include "files/scfilemanager.h"
#include "mainwindow/notices/notices.h"
#include "mainwindow/scmainwindow.h"
#include "overlays/scswitchwidget.h"
#include "tests/support/filelibrary.h"
#include "tests/tour/guide.h"
#include "widgets/volumecontrol.h"

#include <QApplication>
#include <QCursor>
#include <QListView>
#include <QMenu>
#include <QPushButton>
#include <QScreen>

#include <algorithm>
#include <array>

namespace tour {

namespace {

constexpr QPoint kPosition(60, 50);

/// On a screen without that much room, as near to it as the window is whole.
void place(QWidget& window)
{
    const QSize spare = (window.screen()->size() - window.size()).expandedTo({0, 0});
    window.move(std::min(kPosition.x(), spare.width()), std::min(kPosition.y(), spare.height()));
}

void showLevels(VolumeControl& meter, float levelDb)
{
    std::array<float, VolumeControl::kMaxChannels> levels{};
    levels.fill(levelDb);
    meter.setFillFromMinimum(true);
    meter.setActive(true);
    meter.setLevels(levels.data(), levels.data(), levels.data());
}

QMenu* mainMenu()
{
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QLatin1String("mainMenu"))
            return qobject_cast<QMenu*>(widget);
    }
    return nullptr;
}

void menu(const Look& look, const QByteArray& name, const SCMainWindow& window, int entry)
{
    child<QPushButton>(window, "menuBtn").click();
    QMenu* const menu = mainMenu();
    QAction* const submenu = menu->actions().at(entry);
    menu->setActiveAction(submenu);
    QTest::keyClick(menu, Qt::Key_Right);
    waitFor(*submenu->menu());
    look({name, menu->geometry() | submenu->menu()->geometry() | window.geometry(), {menu, submenu->menu()}});
    menu->close();
}

void notice(const Look& look, SCMainWindow& window)
{
    const auto translated = [](const char* text) { return QCoreApplication::translate("FilePage", text); };
    const QString name = QStringLiteral("Recording_2026_11_21_12-30-05.flv");
    window.findChild<Notices*>()->post(
        {translated("No program can open %1.").arg(name), translated("Show in Folder"), [] {}});
    stop(look, "notice", window);
    child<QPushButton>(window, "noticeClose").click();
}

/// The list as it is after some days.
void fillLibrary(ProducedFiles& produced)
{
    SCFileManager library;
    const auto add = [&](const char* name, const char* type) {
        library.addFile(produced.add(QString::fromUtf8(name)), QLatin1String(type));
    };
    for (int day = 2; day < 9; ++day)
        add(qPrintable(QStringLiteral("Recording_2026_11_0%1_10-3%1-07.mp4").arg(day)), "video");
    add("Interview with Zo\u00eb, second take.flac", "audio");
    add("\u9332\u753b 2026-11-18.mp4", "video");
    add("Screenshot_2026-11-19_09-12-44.png", "screenshot");
    add("How we measure what an encoder buffers, and why the last frames before a stop are in the file all the "
        "same (final cut).mp4",
        "video");
    add("Recording_2026_11_21_12-30-05.mp4", "video");
}

} // namespace

void mainWindow(const Look& look)
{
    // Nothing is to look as if the pointer were over it.
    QCursor::setPos(0, 0);
    SCMainWindow window;
    place(window);
    window.show();
    waitFor(window);
    for (const char* name : {"screenSwitch", "speakerSwitch"})
        child<SCSwitchWidget>(window, name).setChecked(true);
    showLevels(child<VolumeControl>(window, "speakerMeter"), -12.0F);
    stop(look, "recording", window);
    notice(look, window);
    child<QPushButton>(window, "screenshotTab").click();
    stop(look, "screenshot", window);
    child<QPushButton>(window, "filesTab").click();
    stop(look, "files-empty", window);
    child<QPushButton>(window, "recordingTab").click();
    stopAtList(look, "formats", window, "formatBox");
    stopAtList(look, "ratios", window, "ratioBox");
    child<SCSwitchWidget>(window, "micSwitch").setFocus();
    stop(look, "focus", window);
    constexpr int kLanguageEntry = 1;
    constexpr int kHelpEntry = 4;
    menu(look, "menu", window, kLanguageEntry);
    menu(look, "menu-help", window, kHelpEntry);
}

void files(const Look& look)
{
    const LibraryRefuge refuge;
    LibraryRefuge::clear();
    ProducedFiles produced;
    fillLibrary(produced);
    SCMainWindow window;
    place(window);
    window.show();
    child<QPushButton>(window, "filesTab").click();
    waitFor(window);
    auto& view = child<QListView>(window, "fileView");
    const QRect second = view.visualRect(view.model()->index(1, 0));
    QCursor::setPos(view.viewport()->mapToGlobal(second.center()));
    stop(look, "files", window);
    stopAtBox(look, "delete-file", [&] {
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {},
                          SCFileManager::FileItemDelegate::deleteRect(second).center());
    });
    view.selectAll();
    stopAtBox(look, "delete-files", [&] { child<QPushButton>(window, "deleteFilesButton").click(); });
    child<QPushButton>(window, "audioFilter").click();
    stop(look, "files-sound", window);
}

} // namespace tour
