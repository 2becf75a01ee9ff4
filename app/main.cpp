// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/appidentity.h"
#include "app/crashhandler.h"
#include "app/sclogger.h"
#include "app/sctranslator.h"
#include "app/settings.h"
#include "app/singleinstance.h"
#include "mainwindow/durations.h"
#include "mainwindow/scmainwindow.h"
#include "platform/process/console.h"
#include "platform/process/display_loss.h"
#include "platform/process/termination.h"
#include "platform/system_failure.h"
#include "platform/windowing/display_choice.h"

#include <QApplication>
#include <QIcon>
#include <QLocale>
#include <QTimer>
#include <QWindow>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

/// The engine is started when the window has been painted once, since starting it takes its time.
constexpr int kInitializeCaptureDelayMs = 10;

void openLog()
{
    const QString path = SCLogger::defaultPath();
    if (!SCLogger::instance()->initialize(path)) {
        std::fputs("Failed to initialize logger\n", stderr);
        return;
    }
    SCLogger::info(QStringLiteral("Logger initialized successfully"));
    SCLogger::info(QStringLiteral("Log file: %1").arg(path));
}

/// The application is the translator's parent and deletes it, after everybody who shares it is gone. The references
/// say who uses it and delete nothing: an object with a parent cannot have a second owner.
std::shared_ptr<SCTranslator> makeTranslator(QApplication& application)
{
    return {new SCTranslator(&application), [](SCTranslator*) {}};
}

QString chosenLanguage(const QSettings& settings)
{
    if (settings.contains(settingskeys::kLanguage))
        return settings.value(settingskeys::kLanguage).toString();
    QString locale = QLocale::system().name();
    SCLogger::info(QStringLiteral("System locale: %1").arg(locale));
    return locale;
}

void installLanguage(SCTranslator& translator, const QString& code)
{
    const bool loaded = translator.loadLanguage(code);
    if (!loaded)
        translator.loadLanguage(QStringLiteral("en_US"));
    QCoreApplication::installTranslator(&translator);
    SCLogger::info(loaded ? QStringLiteral("Loaded translation for: %1").arg(code)
                          : QStringLiteral("Loaded fallback translation (en_US)"));
}

void showWindow(SCMainWindow& window, const std::shared_ptr<SCTranslator>& translator)
{
    window.setTranslator(translator);
    window.show();
    SCLogger::info(QStringLiteral("Main window displayed"));
    QTimer::singleShot(kInitializeCaptureDelayMs, &window, &SCMainWindow::initializeCapture);
}

void publishWindow(SingleInstance& guard, const SCMainWindow& window)
{
    const QWindow* const handle = window.windowHandle();
    guard.publish(handle != nullptr ? handle->winId() : 0, QCoreApplication::applicationPid());
}

/// Runs the first instance, from its log to the end of its event loop.
int run(QApplication& application, SingleInstance& guard)
{
    // Quitting closes every window as the user would, as soon as the event loop runs.
    const platform::TerminationWatcher termination;
    QObject::connect(&termination, &platform::TerminationWatcher::terminationRequested, &application,
                     &QApplication::quit);

    openLog();
    platform::endInOrderOnDisplayLoss();
    SCLogger::info(QStringLiteral("Application starting..."));
    QCoreApplication::setAttribute(Qt::AA_DontCreateNativeWidgetSiblings, true);
    const std::unique_ptr<QSettings> settings = openSettings();
    const std::shared_ptr<SCTranslator> translator = makeTranslator(application);
    installLanguage(*translator, chosenLanguage(*settings));

    SCLogger::info(QStringLiteral("Creating main window..."));
    SCMainWindow window(durationsFromEnvironment());
    showWindow(window, translator);
    publishWindow(guard, window);
    const auto leave = [&guard] {
        SCLogger::info(QStringLiteral("Application exiting..."));
        guard.release();
    };
    // The last of these actions.
    const platform::DisplayLossAction onDisplayLoss(leave);

    const int exitCode = QApplication::exec();
    leave();
    return exitCode;
}

std::unique_ptr<QApplication> makeApplication(int& argc, char* argv[])
{
    const platform::DisplayChoice x11;
    return std::make_unique<QApplication>(argc, argv);
}

/// Runs the program from its first step to the last object's end; the process has only to end after it.
int runProcess(int argc, char* argv[])
{
    platform::attachToParentConsole();
    appidentity::apply();
    installCrashHandler();
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    const std::unique_ptr<QApplication> application = makeApplication(argc, argv);
    platform::setFailureSink(&SCLogger::warning);
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/resources/logo.ico")));

    SingleInstance guard;
    if (guard.claim() == SingleInstance::Role::Second) {
        guard.handOver();
        return 0;
    }
    return run(*application, guard);
}

} // namespace

int main(int argc, char* argv[])
{
    const int exitCode = runProcess(argc, argv);
    // The engine is never shut down and goes on drawing. The usual end would take from under its threads what they use,
    // one library's data after the other: they would crash, or wait for each other for ever. Standard output is not
    // written out either: one of those threads may hold it, waiting for somebody to read. Nothing of the program's own
    // goes there.
    std::_Exit(exitCode);
}
