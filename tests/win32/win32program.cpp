// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/win32/win32program.h"

#include "tests/support/testpattern.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QTest>

#include <cstdio>

namespace {

constexpr int kStartTimeoutMs = 60'000;
constexpr int kPollMs = 50;
constexpr int64_t kNsPerMs = 1'000'000;
const auto kKey = QStringLiteral("Software\\Tolvaran\\Kestrano");
const auto kFolders = QStringLiteral("Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders");

bool store(const QString& key, const QString& name, const QString& value)
{
    return WineDesktop::request({QStringLiteral("store"), key, name, value});
}

} // namespace

Win32Program::Win32Program(const QString& profileName)
    : ProgramUnderTest(WineDesktop::program()), m_profileName(profileName.isEmpty() ? QStringLiteral(".") : profileName)
{
    setSetting(QStringLiteral("recording/saveLocation"), WineDesktop::windowsPath(saveFolder()).replace('\\', '/'));
}

Win32Program::~Win32Program()
{
    if (QTest::currentTestFailed())
        std::fprintf(stderr, "--- what libobs printed ---\n%s", m_printed.constData());
    end();
}

QDir Win32Program::dataFolder() const
{
    return userFolder().filePath(QStringLiteral("AppData/Roaming/Tolvaran/Kestrano"));
}

bool Win32Program::writeSettings()
{
    bool done = WineDesktop::request({QStringLiteral("forget"), kKey});
    for (const auto& [name, folder] : {std::pair{"AppData", "AppData/Roaming"},
                                       {"Local AppData", "AppData/Local"},
                                       {"My Video", "Films"},
                                       {"My Pictures", "Pictures"}}) {
        userFolder().mkpath(QLatin1String(folder));
        const QString path = QDir::cleanPath(userFolder().filePath(QLatin1String(folder)));
        done = store(kFolders, QLatin1String(name), WineDesktop::windowsPath(path)) && done;
    }
    for (auto setting = settings().cbegin(); setting != settings().cend(); ++setting)
        done = store(kKey + QLatin1Char('\\') + setting.key().section(QLatin1Char('/'), 0, 0),
                     setting.key().section(QLatin1Char('/'), 1), setting.value().toString()) &&
               done;
    return done;
}

QStringList Win32Program::command() const
{
    return {QStringLiteral("wine"), executable()};
}

/// The profile's folders are in the registry.
QProcessEnvironment Win32Program::environment()
{
    return QProcessEnvironment::systemEnvironment();
}

void Win32Program::readMessages()
{
    process().waitForReadyRead(0);
    m_printed += process().readAll();
    const QDir logs(dataFolder().filePath(QStringLiteral("logs")));
    const QStringList names = logs.entryList({QStringLiteral("vexmoor_*.log")}, QDir::Files, QDir::Name);
    QFile file(names.isEmpty() ? QString() : logs.filePath(names.constLast()));
    if (names.isEmpty() || !file.open(QIODevice::ReadOnly) || !file.seek(m_readBytes))
        return;
    for (QByteArray line = file.readLine(); line.endsWith('\n'); line = file.readLine()) {
        m_readBytes = file.pos();
        keepLine(QString::fromUtf8(line.trimmed()));
    }
}

void Win32Program::keepLine(const QString& line)
{
    constexpr qsizetype kStampLength = 23;
    const QDateTime moment = QDateTime::fromString(line.left(kStampLength), QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
    const int64_t sinceNs =
        moment.isValid() ? (QDateTime::currentMSecsSinceEpoch() - moment.toMSecsSinceEpoch()) * kNsPerMs : 0;
    keep({monotonicNow() - sinceNs, line.mid(kStampLength)});
}

QList<x11clients::Window> Win32Program::windows()
{
    QList<x11clients::Window> windows;
    const QList<WindowsWindow> all = WineDesktop::windows();
    for (const WindowsWindow& window : all)
        if (window.isVisible && window.program == QLatin1String("kestrano.exe"))
            windows.append({static_cast<uint32_t>(window.handle), window.title, window.position, window.isMinimised});
    return windows;
}

QMap<QString, QString> Win32Program::storedSettings()
{
    return WineDesktop::stored(kKey);
}

std::optional<WindowsWindow> Win32Program::mainWindowAsWindowsKnowsIt(bool minimised, int timeoutMs)
{
    QElapsedTimer waited;
    waited.start();
    do {
        auto window = WineDesktop::visibleWindow(QStringLiteral("Kestrano"), timeoutMs);
        if (window && window->isMinimised == minimised)
            return window;
        QTest::qWait(kPollMs);
    } while (!waited.hasExpired(timeoutMs));
    return std::nullopt;
}

void Win32Program::askToEnd()
{
    constexpr int kCloseMessage = 0x0010;
    const QList<WindowsWindow> all = WineDesktop::windows();
    for (const WindowsWindow& window : all)
        if (window.program == QLatin1String("kestrano.exe") && window.title == QLatin1String("Kestrano"))
            WineDesktop::request({QStringLiteral("post"), QString::number(window.handle),
                                  QString::number(kCloseMessage), QStringLiteral("0"), QStringLiteral("0")});
}

WindowsPerformance::~WindowsPerformance()
{
    for (QProcess* process : {&m_patternProcess, &m_tone}) {
        process->terminate();
        if (process->state() != QProcess::NotRunning && !process->waitForFinished())
            process->kill();
        process->waitForFinished();
    }
}

QString WindowsPerformance::begin(int numbersPerSecond)
{
    QString failure =
        WineDesktop::launch(m_patternProcess, QStringLiteral("kestrano_test_pattern"),
                            {QStringLiteral("--rate"), QString::number(numbersPerSecond), QStringLiteral("--motion"),
                             QStringLiteral("--clock-ahead"), QString::number(WineDesktop::clockAheadNs())});
    if (!failure.isEmpty())
        return failure;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("PULSE_SINK"), qEnvironmentVariable("KESTRANO_TEST_MICROPHONE_SINK"));
    m_tone.setProcessEnvironment(environment);
    m_tone.start(QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("kestrano_test_tone")), {});
    return m_tone.waitForReadyRead(kStartTimeoutMs) ? QString() : QStringLiteral("the test tone does not play");
}
