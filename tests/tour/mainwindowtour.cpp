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
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
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

void devices(const Look& look, const SCMainWindow& window)
{
    child<QPushButton>(window, "micDevicesButton").click();
    QWidget* const menu = QApplication::activePopupWidget();
    waitFor(*menu);
    look({"devices", menu->geometry() | window.geometry(), {menu}});
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

void refusedSize(const Look& look, SCMainWindow& window)
{
    auto& width = child<QLineEdit>(window, "widthEdit");
    width.setFocus();
    width.selectAll();
    QTest::keyClicks(&width, QStringLiteral("12"));
    QTest::keyClick(&width, Qt::Key_Return);
    stop(look, "size-refused", window);
    QTest::keyClick(&width, Qt::Key_Escape);
    child<QPushButton>(window, "noticeClose").click();
}

/// Where the size cannot be typed.
void withoutScreen(const Look& look, SCMainWindow& window)
{
    auto& screen = child<SCSwitchWidget>(window, "screenSwitch");
    screen.setChecked(false);
    stop(look, "screen-off", window);
    screen.setChecked(true);
}

struct Shown
{
    const char* name;
    const char* type;
    const char* added;
    int seconds;
    qint64 bytes;
};

/// The list as it is after some days, the newest first.
void fillLibrary(ProducedFiles& produced)
{
    const QList<Shown> files{
        {"Recording_2026_11_21_12-30-05.mp4", "video", "2026-11-21T12:31:19", 74, 18'900'000},
        {"How we measure what an encoder buffers, and why the last frames before a stop are in the file all the same "
         "(final cut).mp4",
         "video", "2026-11-20T17:55:02", 5'423, 1'071'000'000},
        {"Screenshot_2026-11-19_09-12-44.png", "screenshot", "2026-11-19T09:12:44", 0, 412'000},
        {"\u9332\u753b 2026-11-18.mp4", "video", "2026-11-18T22:04:10", 2'711, 624'300'000},
        {"Interview with Zo\u00eb, second take.flac", "audio", "2026-11-17T10:40:00", 4'022, 312'700'000},
        {"Recording_2026_11_08_10-38-07.mp4", "video", "2026-11-08T10:38:07", 31, 6'400'000},
        {"Recording_2026_11_07_10-37-07.mp4", "video", "2026-11-07T10:37:07", 912, 150'000'000},
        {"Recording_2026_11_06_10-36-07.avi", "video", "2026-11-06T10:36:07", 8, 1'900'000},
        {"Recording_2026_11_05_10-35-07.gif", "video", "2026-11-05T10:35:07", 4, 860'000},
        {"Recording_2026_11_04_10-34-07.mp4", "video", "2026-11-04T10:34:07", 186, 40'100'000}};
    QJsonArray list;
    for (const Shown& file : files) {
        const QString path = produced.addRecording(QString::fromUtf8(file.name), file.seconds, file.bytes);
        QJsonObject properties{{"type", file.type}, {"dateAdded", file.added}};
        if (file.seconds == 2'711)
            properties.insert("incomplete", true);
        list.append(QJsonObject{{"filepath", path}, {"properties", properties}});
    }
    filelibrary::write(QJsonDocument(list).toJson());
}

/// Which are read in the background.
void waitForDetails(const QListView& view)
{
    const QModelIndex last = view.model()->index(view.model()->rowCount() - 1, 0);
    (void)QTest::qWaitFor([&last] { return last.data(FileRow::kPropertiesRole).toMap().contains("sizeBytes"); });
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
    refusedSize(look, window);
    withoutScreen(look, window);
    child<QPushButton>(window, "screenshotTab").click();
    stop(look, "screenshot", window);
    child<QPushButton>(window, "filesTab").click();
    stop(look, "files-empty", window);
    child<QPushButton>(window, "recordingTab").click();
    stopAtList(look, "formats", window, "formatBox");
    stopAtList(look, "ratios", window, "ratioBox");
    devices(look, window);
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
    waitForDetails(view);
    const QRect second = view.visualRect(view.model()->index(1, 0));
    QCursor::setPos(view.viewport()->mapToGlobal(second.center()));
    stop(look, "files", window);
    stopAtBox(look, "delete-file", [&] {
        QTest::mouseClick(view.viewport(), Qt::LeftButton, {},
                          SCFileManager::FileItemDelegate::deleteRect(second).center());
    });
    view.selectAll();
    stopAtBox(look, "delete-files", [&] { child<QPushButton>(window, "deleteFilesButton").click(); });
    choose(child<QPushButton>(window, "audioFilter"));
    stop(look, "files-sound", window);
}

} // namespace tour
