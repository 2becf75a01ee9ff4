// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/sctranslator.h"
#include "app/settings.h"
#include "app/settingstables.h"
#include "mainwindow/scmainwindow.h"
#include "tests/desktop/desktopuser.h"
#include "tests/support/layoutfaults.h"
#include "tests/support/testrun.h"
#include "tests/tour/tour.h"

#include <QApplication>
#include <QProcess>
#include <QPushButton>
#include <QScreen>
#include <QSettings>
#include <QTest>

namespace {

bool xrandr(const QStringList& arguments)
{
    return QProcess::execute(QStringLiteral("xrandr"), arguments) == 0;
}

QString firstFault(const QWidget& window)
{
    QStringList faults;
    (void)QTest::qWaitFor([&] { return (faults = layoutFaults(window)).isEmpty(); }, 2000);
    return faults.value(0);
}

QRect onDesktop(const QWidget& widget)
{
    return {widget.mapToGlobal(QPoint()), widget.size()};
}

/// What is there whatever the size of the screen.
QString missingOn(const QRect& screen, const QWidget& window)
{
    for (const char* name : {"titleBar", "menuBtn", "closeBtn", "recordButton"}) {
        const auto* const part = window.findChild<QWidget*>(QLatin1String(name));
        const bool isShown = part->isVisible() && screen.contains(onDesktop(*part));
        // The button is on the first page.
        if (!isShown && (part->isVisible() || qstrcmp(name, "recordButton") != 0))
            return QLatin1String(name);
    }
    return {};
}

} // namespace

/// The main window on a screen that is smaller than the window wants to be.
class TestSmallScreen : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        openSettings()->setValue(settingskeys::kFirstRun, false);
        applyDefaultSettings(*openSettings());
    }

    void mainWindowFits_data()
    {
        QTest::addColumn<QString>("code");
        for (const auto& [position, code] : settingstables::kLanguageCodes)
            QTest::newRow(qPrintable(code)) << code;
    }

    void mainWindowFits()
    {
        QFETCH(const QString, code);
        SCTranslator translator;
        QVERIFY(translator.loadLanguage(code));
        QVERIFY(QCoreApplication::installTranslator(&translator));
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        QStringList faults;
        const auto look = [&](const tour::Stop& stop) {
            const auto* const window = qobject_cast<const SCMainWindow*>(stop.windows.constFirst());
            if (window == nullptr)
                return;
            const QString missing = missingOn(screen, *window);
            const QString fault =
                missing.isEmpty() ? firstFault(*window) : missing + QLatin1String(" is off the screen");
            if (!fault.isEmpty())
                faults.append(QStringLiteral("%1: %2").arg(QLatin1String(stop.name), fault));
        };
        tour::mainWindow(look);
        tour::files(look);
        QCOMPARE(faults, QStringList());
    }

    void windowFollowsAScreenThatShrinksAndGrows()
    {
        SCMainWindow window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        desktopuser::waitUntilStill();
        const QSize before = window.size();
        const QSize screen = QGuiApplication::primaryScreen()->size();
        const double scale = desktopuser::scale();
        QVERIFY(xrandr({"--setmonitor", "*Small",
                        QStringLiteral("%1/100x%2/100+0+0").arg(int(640 * scale)).arg(int(360 * scale)), "screen"}));
        QTRY_COMPARE(QGuiApplication::primaryScreen()->size(), QSize(640, 360));
        QTRY_COMPARE(window.size(), QSize(640, 360));
        QTRY_COMPARE(missingOn(QGuiApplication::primaryScreen()->geometry(), window), QString());
        QVERIFY(xrandr({"--delmonitor", "Small"}));
        QTRY_COMPARE(QGuiApplication::primaryScreen()->size(), screen);
        QTRY_COMPARE(window.size(), before);
    }
};

REGISTER_TEST(testrun::gui<TestSmallScreen>);

#include "test_smallscreen.moc"
