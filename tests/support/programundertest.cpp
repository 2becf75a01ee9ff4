// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/programundertest.h"

#include "tests/support/testpattern.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTextStream>

#include <cstdio>

namespace {

constexpr int kEngineStartTimeoutMs = 60'000;
constexpr int kPoliteEndTimeoutMs = 10'000;
constexpr int kToolTimeoutMs = 10'000;
constexpr int kPollMs = 5;

QByteArray runTool(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished(kToolTimeoutMs);
    return process.readAllStandardOutput();
}

QString settingsValue(const QVariant& value)
{
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    QString text = value.toString();
    text.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
    return QLatin1Char('"') + text + QLatin1Char('"');
}

} // namespace

ProgramUnderTest::ProgramUnderTest(const QString& executable)
    : m_executable(executable.isEmpty()
                       ? QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("kestrano"))
                       : executable)
{
    setSetting(QStringLiteral("general/firstRun"), false);
    setSetting(QStringLiteral("recording/saveLocation"), saveFolder());
}

ProgramUnderTest::~ProgramUnderTest()
{
    // A class below has read and ended its own by now.
    if (isRunning()) {
        ProgramUnderTest::askToEnd();
        insistOnEnd();
    }
    if (!QTest::currentTestFailed())
        return;
    ProgramUnderTest::readMessages();
    std::fprintf(stderr, "--- what the program said ---\n%s--- exit %d ---\n%s", qPrintable(textOfMessages()),
                 m_process.exitCode(),
                 qPrintable(newestText(ProgramUnderTest::dataFolder(), QStringLiteral("crash_*.dmp"))));
}

void ProgramUnderTest::askToEnd()
{
    m_process.terminate();
}

void ProgramUnderTest::end()
{
    if (!isRunning())
        return;
    askToEnd();
    insistOnEnd();
}

void ProgramUnderTest::insistOnEnd()
{
    if (!m_process.waitForFinished(kPoliteEndTimeoutMs))
        kill();
}

void ProgramUnderTest::setSetting(const QString& key, const QVariant& value)
{
    m_settings.insert(key, value);
}

bool ProgramUnderTest::writeSettings()
{
    const QString folder = profile().filePath(QStringLiteral("config/Tolvaran"));
    QFile file(folder + QLatin1String("/Kestrano.conf"));
    if (!QDir().mkpath(folder) || !file.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    QTextStream stream(&file);
    QString group;
    for (auto setting = m_settings.cbegin(); setting != m_settings.cend(); ++setting) {
        const QStringList parts = setting.key().split(QLatin1Char('/'));
        if (parts.first() != group) {
            group = parts.first();
            stream << '[' << group << "]\n";
        }
        stream << parts.last() << '=' << settingsValue(setting.value()) << '\n';
    }
    return true;
}

void ProgramUnderTest::makeFolder(QProcessEnvironment& environment, const char* variable, const char* name) const
{
    profile().mkpath(QLatin1String(name));
    environment.insert(QLatin1String(variable), profile().filePath(QLatin1String(name)));
}

QProcessEnvironment ProgramUnderTest::environment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    makeFolder(environment, "HOME", "home");
    makeFolder(environment, "XDG_CONFIG_HOME", "config");
    makeFolder(environment, "XDG_DATA_HOME", "data");
    makeFolder(environment, "XDG_CACHE_HOME", "cache");
    makeFolder(environment, "TMPDIR", "tmp");
    return environment;
}

QStringList ProgramUnderTest::command() const
{
    return m_wrapper + QStringList{m_executable};
}

bool ProgramUnderTest::start()
{
    if (!writeSettings())
        return false;
    QProcessEnvironment variables = environment();
    if (m_countdownStepMs)
        variables.insert(QStringLiteral("KESTRANO_COUNTDOWN_STEP_MS"), QString::number(*m_countdownStepMs));
    // The moment of each message by the same clock that the test pattern shows.
    variables.insert(QStringLiteral("QT_MESSAGE_PATTERN"), QStringLiteral("@%{time boot}@%{message}"));
    m_process.setProcessEnvironment(variables);
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_startedAtNs = monotonicNow();
    const QStringList words = command();
    m_process.start(words.constFirst(), words.mid(1));
    return m_process.waitForStarted();
}

bool ProgramUnderTest::startAndWaitUntilReady()
{
    return start() && waitForMessage(QStringLiteral("OBS initialized successfully"), kEngineStartTimeoutMs).has_value();
}

bool ProgramUnderTest::waitUntilEnded(int timeoutMs)
{
    QElapsedTimer waited;
    waited.start();
    while (isRunning() && !waited.hasExpired(timeoutMs))
        m_process.waitForFinished(kPollMs * 10);
    readMessages();
    return !isRunning();
}

bool ProgramUnderTest::endedWell() const
{
    return exitCode() == 0;
}

int ProgramUnderTest::exitCode() const
{
    return !isRunning() && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

void ProgramUnderTest::kill()
{
    m_process.kill();
    m_process.waitForFinished();
}

std::optional<ProgramUnderTest::Line> ProgramUnderTest::waitForMessage(const QString& text, int timeoutMs,
                                                                       qsizetype from)
{
    QElapsedTimer waited;
    waited.start();
    qsizetype next = from;
    while (true) {
        readMessages();
        for (; next < m_messages.size(); ++next)
            if (m_messages.at(next).text.contains(text))
                return m_messages.at(next);
        if (waited.hasExpired(timeoutMs) || !isRunning())
            return std::nullopt;
        m_process.waitForReadyRead(kPollMs);
    }
}

const QList<ProgramUnderTest::Line>& ProgramUnderTest::messages()
{
    readMessages();
    return m_messages;
}

QString ProgramUnderTest::transcript()
{
    readMessages();
    return textOfMessages();
}

QString ProgramUnderTest::textOfMessages() const
{
    QString text;
    for (const Line& line : m_messages)
        if (!line.text.startsWith(QLatin1String("debug: ")))
            text += QString::number(static_cast<double>(line.monotonicNs) / 1e9, 'f', 3) + QLatin1Char(' ') +
                    line.text + QLatin1Char('\n');
    return text;
}

void ProgramUnderTest::readMessages()
{
    m_process.waitForReadyRead(0);
    m_partialLine += m_process.readAll();
    for (qsizetype end = m_partialLine.indexOf('\n'); end >= 0; end = m_partialLine.indexOf('\n')) {
        keepLine(m_partialLine.left(end));
        m_partialLine.remove(0, end + 1);
    }
}

void ProgramUnderTest::keepLine(const QByteArray& line)
{
    // What libobs and its plug-ins print themselves has no time; it takes that of the message before it.
    const qsizetype end = line.startsWith('@') ? line.indexOf('@', 1) : -1;
    if (end > 0)
        m_messages.append({static_cast<int64_t>(line.mid(1, end - 1).trimmed().toDouble() * 1e9),
                           QString::fromLocal8Bit(line.mid(end + 1))});
    else
        m_messages.append(
            {m_messages.isEmpty() ? m_startedAtNs : m_messages.constLast().monotonicNs, QString::fromLocal8Bit(line)});
}

QDir ProgramUnderTest::dataFolder() const
{
    return profile().filePath(QStringLiteral("data/Tolvaran/Kestrano"));
}

QString ProgramUnderTest::logText() const
{
    return newestText(dataFolder(), QStringLiteral("vexmoor_*.log"));
}

QString ProgramUnderTest::crashReport() const
{
    return newestText(dataFolder(), QStringLiteral("crash_*.dmp"));
}

QString ProgramUnderTest::newestText(const QDir& dataFolder, const QString& pattern)
{
    const QDir folder(dataFolder.filePath(QStringLiteral("logs")));
    const QStringList names = folder.entryList({pattern}, QDir::Files, QDir::Name);
    QFile file(names.isEmpty() ? QString() : folder.filePath(names.constLast()));
    return !names.isEmpty() && file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

int64_t ProgramUnderTest::pressKey(const QString& key)
{
    runTool(QStringLiteral("xdotool"), {QStringLiteral("key"), key});
    return monotonicNow();
}

void ProgramUnderTest::typeText(const QString& text)
{
    runTool(QStringLiteral("xdotool"), {QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("15"), text});
}

void ProgramUnderTest::click(const QPoint& rootPx)
{
    runTool(QStringLiteral("xdotool"), {QStringLiteral("mousemove"), QString::number(rootPx.x()),
                                        QString::number(rootPx.y()), QStringLiteral("click"), QStringLiteral("1")});
}

QList<x11clients::Window> ProgramUnderTest::windows()
{
    return x11clients::windowsOf(processId());
}

std::optional<x11clients::Window> ProgramUnderTest::mainWindow(bool minimised, int timeoutMs)
{
    QElapsedTimer waited;
    waited.start();
    do {
        const QList<x11clients::Window> candidates = windows();
        for (const x11clients::Window& window : candidates)
            if (window.title.contains(QLatin1String("Kestrano")) && window.isMinimised == minimised)
                return window;
        m_process.waitForReadyRead(kPollMs * 4);
    } while (!waited.hasExpired(timeoutMs) && isRunning());
    return std::nullopt;
}
