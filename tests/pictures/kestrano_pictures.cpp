// Takes a picture of every window, page and overlay of the program, for the eyes of who builds it and for the
// documents. Wants a private desktop, on whose screen it shows them.

#include "app/appidentity.h"
#include "app/settings.h"
#include "dialogs/dialogwindow.h"
#include "dialogs/scaboutwindow.h"
#include "dialogs/scsettingswindow.h"
#include "dialogs/scupgradewindow.h"
#include "engine/volumecontrol.h"
#include "files/filerow.h"
#include "files/scfilemanager.h"
#include "mainwindow/sccountdownwidget.h"
#include "mainwindow/scfullscreentoolbar.h"
#include "mainwindow/scmainwindow.h"
#include "overlays/areaselector.h"
#include "overlays/drawwindow.h"
#include "overlays/scswitchwidget.h"
#include "overlays/windowhighlighter.h"
#include "tests/support/filelibrary.h"
#include "tests/support/testprofile.h"
#include "widgets/messagebox.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QListView>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>
#include <QTimer>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>

namespace {

/// How much of the desktop around a window is in its picture, in logical pixels.
constexpr int kMarginPx = 16;
/// Long enough for a window manager, a compositor and an animation.
constexpr int kSettleMs = 500;

/// What the windows stand before: something with edges and colours.
class Desktop : public QWidget
{
public:
    Desktop()
    {
        setWindowFlags(Qt::FramelessWindowHint | Qt::WindowStaysOnBottomHint);
        setGeometry(QGuiApplication::primaryScreen()->geometry());
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override
    {
        QPainter painter(this);
        QLinearGradient sky(0, 0, 0, height());
        sky.setColorAt(0, QColor(0x3a, 0x5a, 0x7c));
        sky.setColorAt(1, QColor(0xd8, 0xb8, 0x98));
        painter.fillRect(rect(), sky);
    }
};

class Pictures
{
public:
    explicit Pictures(const QDir& folder) : m_folder(folder) {}

    void take(const char* name, const QRect& area)
    {
        QTest::qWait(kSettleMs);
        const QScreen* const screen = QGuiApplication::primaryScreen();
        const QRect place = area.adjusted(-kMarginPx, -kMarginPx, kMarginPx, kMarginPx) & screen->geometry();
        const QPixmap picture =
            QGuiApplication::primaryScreen()->grabWindow(0, place.x(), place.y(), place.width(), place.height());
        const QString path =
            m_folder.filePath(QStringLiteral("%1-%2.png").arg(QLatin1String(name)).arg(screen->devicePixelRatio()));
        if (picture.isNull() || !picture.save(path)) {
            std::fprintf(stderr, "Cannot write %s\n", qPrintable(path));
            m_failed = true;
            return;
        }
        std::printf("%s\n", qPrintable(path));
    }

    void take(const char* name, const QWidget& window) { take(name, window.frameGeometry()); }

    bool failed() const { return m_failed; }

private:
    QDir m_folder;
    bool m_failed = false;
};

template <typename Widget>
Widget& child(QWidget& window, const char* name)
{
    return *window.findChild<Widget*>(QLatin1String(name));
}

void showLevels(VolumeControl& meter, float levelDb)
{
    std::array<float, VolumeControl::kMaxChannels> levels{};
    levels.fill(levelDb);
    meter.setFillFromMinimum(true);
    meter.setActive(true);
    meter.setLevels(levels.data(), levels.data(), levels.data());
}

void takeMenu(Pictures& pictures, SCMainWindow& window)
{
    child<QPushButton>(window, "menuBtn").click();
    QMenu* menu = nullptr;
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (widget->objectName() == QLatin1String("mainMenu"))
            menu = qobject_cast<QMenu*>(widget);
    }
    if (menu == nullptr)
        return;
    QAction* const languages = menu->actions().at(1);
    menu->setActiveAction(languages);
    QTest::keyClick(menu, Qt::Key_Right);
    QTest::qWait(kSettleMs);
    pictures.take("menu", menu->geometry() | languages->menu()->geometry() | window.geometry());
    menu->close();
}

void takeMainWindow(Pictures& pictures)
{
    SCMainWindow window;
    window.move(60, 50);
    window.show();
    QTest::qWait(kSettleMs);
    for (const char* name : {"screenSwitch", "speakerSwitch"})
        child<SCSwitchWidget>(window, name).setChecked(true);
    showLevels(child<VolumeControl>(window, "speakerMeter"), -12.0F);
    pictures.take("recording", window);
    child<QPushButton>(window, "screenshotTab").click();
    pictures.take("screenshot", window);
    child<QPushButton>(window, "filesTab").click();
    pictures.take("files-empty", window);
    child<QPushButton>(window, "recordingTab").click();
    child<QComboBox>(window, "formatBox").showPopup();
    pictures.take("formats", window.geometry() | QApplication::activePopupWidget()->geometry());
    QApplication::activePopupWidget()->close();
    child<SCSwitchWidget>(window, "micSwitch").setFocus();
    pictures.take("focus", window);
    takeMenu(pictures, window);
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
    add("How we measure what an encoder holds back, and why the last pictures before a stop are in the file all the "
        "same (final cut).mp4",
        "video");
    add("Recording_2026_11_21_12-30-05.mp4", "video");
}

void takeBox(Pictures& pictures, const char* name, const std::function<void()>& show)
{
    QTimer::singleShot(kSettleMs, qApp, [&pictures, name] {
        QWidget* const box = QApplication::activeModalWidget();
        pictures.take(name, *box);
        box->close();
    });
    show();
}

void takeFiles(Pictures& pictures)
{
    ProducedFiles produced;
    fillLibrary(produced);
    SCMainWindow window;
    window.move(60, 50);
    window.show();
    child<QPushButton>(window, "filesTab").click();
    auto& view = child<QListView>(window, "fileView");
    const QRect second = view.visualRect(view.model()->index(1, 0));
    QTest::qWait(kSettleMs);
    QCursor::setPos(view.viewport()->mapToGlobal(second.center()));
    pictures.take("files", window);
    takeBox(pictures, "delete-file",
            [&] { QTest::mouseClick(view.viewport(), Qt::LeftButton, {}, filerow::deleteRect(second).center()); });
    view.selectAll();
    takeBox(pictures, "delete-files", [&] { child<QPushButton>(window, "deleteFilesButton").click(); });
    child<QPushButton>(window, "audioFilter").click();
    pictures.take("files-sound", window);
}

void takeMessageBox(Pictures& pictures)
{
    takeBox(pictures, "message", [] {
        messagebox::warning(nullptr, QStringLiteral("Warning"), QStringLiteral("No microphone device found!"));
    });
}

QJsonObject releaseDocument(const char* version)
{
    return {{"win", QJsonObject{{"version", version},
                                {"size", "40MB"},
                                {"date", "2026.11.21"},
                                {"url", "https://www.kestrano.example/"},
                                {"change", QJsonArray{"Screenshots of a window, a region or the whole screen",
                                                      "A list of everything that was recorded, with filters",
                                                      "Settings in a window of their own"}}}}};
}

void takeDialog(Pictures& pictures, const char* name, QMainWindow* dialog, const QWidget& below)
{
    dialogwindow::showOver(*dialog, below);
    pictures.take(name, *dialog);
    dialog->close();
}

void takeSettings(Pictures& pictures, const QWidget& below)
{
    auto* const window = new SCSettingsWindow(nullptr);
    dialogwindow::showOver(*window, below);
    for (const char* page : {"recording", "screenshot", "hotkeys", "mouse"}) {
        child<QPushButton>(*window, QByteArray(page) + "SettingsTab").click();
        pictures.take("settings-" + QByteArray(page), *window);
    }
    child<QPushButton>(*window, "hotkeysSettingsTab").click();
    child<QComboBox>(*window, "recordingComboBox").showPopup();
    pictures.take("settings-keys", window->geometry() | QApplication::activePopupWidget()->geometry());
    QApplication::activePopupWidget()->close();
    window->close();
}

void takeDialogs(Pictures& pictures)
{
    QWidget below;
    below.setGeometry(100, 100, 832, 460);
    takeSettings(pictures, below);
    takeDialog(pictures, "about", new SCAboutWindow(nullptr), below);
    // A document without a release leaves the page that waits.
    takeDialog(pictures, "update-waiting", new SCUpgradeWindow(nullptr, {{"mac", QJsonObject()}}), below);
    takeDialog(pictures, "update-none", new SCUpgradeWindow(nullptr, releaseDocument("1.0.0")), below);
    takeDialog(pictures, "update-found", new SCUpgradeWindow(nullptr, releaseDocument("1.1.0")), below);
}

void takeSelector(Pictures& pictures)
{
    AreaSelector selector;
    selector.show();
    QTest::mousePress(&selector, Qt::LeftButton, {}, {120, 90});
    QTest::mouseMove(&selector, {480, 320});
    pictures.take("selector", QRect(60, 40, 520, 340));
    QTest::mouseRelease(&selector, Qt::LeftButton, {}, {480, 320});
}

void takeFrame(Pictures& pictures)
{
    DrawWindow frame;
    frame.setGeometry(100, 100, 480, 280);
    frame.show();
    const QRect area = frame.geometry().adjusted(0, -40, 0, 0);
    pictures.take("frame", area);
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
        if (auto* const pen = widget->findChild<QPushButton*>(QStringLiteral("drawToggleButton")))
            pen->click();
    }
    QTest::mousePress(&frame, Qt::LeftButton, {}, {60, 60});
    for (const QPoint& place : {QPoint(120, 200), QPoint(200, 80), QPoint(300, 210), QPoint(400, 70)})
        QTest::mouseMove(&frame, place);
    QTest::mouseRelease(&frame, Qt::LeftButton, {}, {400, 70});
    frame.setRecording(true);
    frame.setTimeText(QStringLiteral("00:01:23"));
    pictures.take("frame-drawn-on", area);
    frame.hide();
}

void takeBar(Pictures& pictures)
{
    SCFullscreenToolbar bar;
    bar.move(200, 60);
    bar.setRecording(true);
    bar.setTimeText(QStringLiteral("00:01:23"));
    bar.show();
    pictures.take("bar", bar);
    bar.setPaused(true);
    pictures.take("bar-paused", bar);
    bar.setPaused(false);
    bar.setAudioOnly(true);
    bar.setPausable(false);
    pictures.take("bar-sound-only", bar);
}

void takeHighlighter(Pictures& pictures)
{
    QWidget window;
    window.setGeometry(120, 100, 400, 240);
    window.show();
    QTest::qWait(kSettleMs);
    WindowHighlighter highlighter;
    highlighter.show();
    QCursor::setPos(140, 120);
    QTest::qWait(kSettleMs);
    QCursor::setPos(320, 220);
    pictures.take("highlighter", window);
}

void takeCountdown(Pictures& pictures)
{
    SCCountdownWidget countdown(nullptr);
    countdown.move(200, 80);
    countdown.start(3);
    pictures.take("countdown", countdown);
    countdown.cancel();
}

} // namespace

int main(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    if (argc != 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "Usage: kestrano_pictures FOLDER\n");
        return EXIT_FAILURE;
    }
    const auto settings = openSettings();
    settings->setValue(settingskeys::kFirstRun, false);
    // As on a user's machine, not as in this profile. Nothing is written there.
    settings->setValue(settingskeys::kRecordingSaveLocation, QStringLiteral("/home/user/Videos/Kestrano"));
    settings->setValue(settingskeys::kScreenshotSaveLocation, QStringLiteral("/home/user/Pictures/Kestrano"));
    Pictures pictures{QDir(QString::fromLocal8Bit(argv[1]))};
    Desktop desktop;
    desktop.show();
    takeMainWindow(pictures);
    takeFiles(pictures);
    takeMessageBox(pictures);
    takeDialogs(pictures);
    takeSelector(pictures);
    takeFrame(pictures);
    takeBar(pictures);
    takeHighlighter(pictures);
    takeCountdown(pictures);
    return pictures.failed() ? EXIT_FAILURE : EXIT_SUCCESS;
}
