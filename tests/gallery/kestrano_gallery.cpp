// SPDX-License-Identifier: GPL-3.0-or-later
// Takes an image of every window, page and overlay of the program, for the eyes of who builds it and for the
// documents. Wants a private desktop, on whose screen it shows them.

#include "app/appidentity.h"
#include "app/sctranslator.h"
#include "app/settings.h"
#include "tests/support/testprofile.h"
#include "tests/support/x11clients.h"
#include "tests/tour/tour.h"

#include <QApplication>
#include <QDir>
#include <QPainter>
#include <QScreen>
#include <QSettings>
#include <QTest>

#include <cstdio>
#include <cstdlib>

namespace {

/// How much of the desktop around a window is in its image, in logical pixels.
constexpr int kMarginPx = 16;
/// Long enough for a compositor and an animation.
constexpr int kSettleMs = 250;

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

/// As the server has it: Qt may have missed where the window manager has put a frameless one.
QRect geometryOf(const QWidget& window)
{
    const QList<x11clients::Window> clients = x11clients::windowsOf(QCoreApplication::applicationPid());
    for (const x11clients::Window& client : clients) {
        const QPointF corner = QPointF(client.geometry.topLeft()) / window.devicePixelRatioF();
        if (client.id == window.winId() && window.frameSize() == window.size())
            return {corner.toPoint(), (QSizeF(client.geometry.size()) / window.devicePixelRatioF()).toSize()};
    }
    return window.frameGeometry();
}

using Geometry = QRect (*)(const QWidget&);

QRect outlineOf(const QList<QWidget*>& windows, Geometry geometry)
{
    QRect outline;
    for (const QWidget* const window : windows)
        outline |= geometry(*window);
    return outline;
}

/// A window manager may give a window its place after the tour has stopped there.
QRect settledArea(const tour::Stop& stop)
{
    const auto known = [](const QWidget& window) { return window.frameGeometry(); };
    const bool isWhole = stop.area == outlineOf(stop.windows, known);
    QRect outline;
    do {
        outline = outlineOf(stop.windows, geometryOf);
        QTest::qWait(kSettleMs);
    } while (outline != outlineOf(stop.windows, geometryOf));
    return isWhole ? outline : stop.area;
}

class Gallery
{
public:
    explicit Gallery(const QDir& folder) : m_folder(folder) {}

    void take(const tour::Stop& stop)
    {
        const QRect area = settledArea(stop);
        QScreen* const screen = QGuiApplication::primaryScreen();
        const QRect position = area.adjusted(-kMarginPx, -kMarginPx, kMarginPx, kMarginPx) & screen->geometry();
        const QPixmap image = screen->grabWindow(0, position.x(), position.y(), position.width(), position.height());
        const QString path = m_folder.filePath(
            QStringLiteral("%1-%2.png").arg(QLatin1String(stop.name)).arg(screen->devicePixelRatio()));
        if (image.isNull() || !image.save(path)) {
            std::fprintf(stderr, "Cannot write %s\n", qPrintable(path));
            m_failed = true;
            return;
        }
        std::printf("%s\n", qPrintable(path));
    }

    bool failed() const { return m_failed; }

private:
    QDir m_folder;
    bool m_failed = false;
};

/// The profile as a user's is. Nothing is written to its folders.
void fillSettings(const QString& language)
{
    const auto settings = openSettings();
    settings->setValue(settingskeys::kFirstRun, false);
    settings->setValue(settingskeys::kLanguage, language);
    settings->setValue(settingskeys::kRecordingSaveLocation, QStringLiteral("/home/user/Videos/Kestrano"));
    settings->setValue(settingskeys::kScreenshotSaveLocation, QStringLiteral("/home/user/Pictures/Kestrano"));
    applyDefaultSettings(*settings);
}

bool takeAll(const QString& language, const QString& folder)
{
    SCTranslator translator;
    if (!translator.loadLanguage(language)) {
        std::fprintf(stderr, "There is no language %s\n", qPrintable(language));
        return false;
    }
    QCoreApplication::installTranslator(&translator);
    fillSettings(language);
    Gallery gallery{QDir(folder)};
    tour::everything([&gallery](const tour::Stop& stop) { gallery.take(stop); });
    return !gallery.failed();
}

} // namespace

int main(int argc, char* argv[])
{
    const TestProfile profile;
    appidentity::apply();
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    constexpr int kArguments = 3;
    if (argc != kArguments || !QDir().mkpath(QString::fromLocal8Bit(argv[2]))) {
        std::fprintf(stderr, "Usage: kestrano_gallery LANGUAGE FOLDER\n");
        return EXIT_FAILURE;
    }
    Desktop desktop;
    desktop.show();
    return takeAll(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2])) ? EXIT_SUCCESS : EXIT_FAILURE;
}
