#include "tests/recording/recordinghelpers.h"

#include <QCoreApplication>
#include <QDir>
#include <QTest>

namespace {

constexpr int kStartTimeoutMs = 30'000;
constexpr int kCloseTimeoutMs = 60'000;
constexpr int kWindowTimeoutMs = 10'000;
const QString kHotkey = QStringLiteral("F9");

} // namespace

Performance::~Performance()
{
    for (QProcess* process : {&m_picture, &m_tone}) {
        process->terminate();
        if (process->state() != QProcess::NotRunning && !process->waitForFinished())
            process->kill();
        process->waitForFinished();
    }
}

QString Performance::begin(int numbersPerSecond, bool motion)
{
    QStringList arguments{QStringLiteral("--rate"), QString::number(numbersPerSecond)};
    if (motion)
        arguments.append(QStringLiteral("--motion"));
    const QString failure = launch(m_picture, QStringLiteral("kestrano_test_picture"), arguments);
    return failure.isEmpty() ? launch(m_tone, QStringLiteral("kestrano_test_tone"), {}) : failure;
}

QString Performance::launch(QProcess& process, const QString& name, const QStringList& arguments)
{
    process.start(QDir(QCoreApplication::applicationDirPath()).filePath(name), arguments);
    while (!process.canReadLine())
        if (!process.waitForReadyRead(kStartTimeoutMs))
            return name + QLatin1String(" did not get ready: ") + process.errorString() +
                   QString::fromLocal8Bit(process.readAllStandardError());
    return {};
}

Take beginTake(ProgramUnderTest& program, const QString& extension)
{
    Take take;
    const qsizetype from = program.messages().size();
    ProgramUnderTest::pressKey(kHotkey);
    const auto file = program.waitForMessage(QStringLiteral("Starting recording to file: "), kStartTimeoutMs, from);
    const auto started = program.waitForMessage(QStringLiteral("Starting recording..."), kStartTimeoutMs, from);
    if (!file || !started || !program.waitForMessage(QStringLiteral("Recording started..."), kStartTimeoutMs, from)) {
        take.failure = QStringLiteral("no recording was started:\n") + program.transcript();
        return take;
    }
    take.path = file->text.section(QLatin1String("file: "), 1) + QLatin1Char('.') + extension;
    take.startedNs = started->monotonicNs;
    return take;
}

void endTake(ProgramUnderTest& program, Take& take)
{
    const qsizetype from = program.messages().size();
    take.stopRequestedNs = ProgramUnderTest::pressKey(kHotkey);
    const auto closed = program.waitForMessage(QStringLiteral("Recording stopped... 0"), kCloseTimeoutMs, from);
    if (!closed)
        take.failure = QStringLiteral("the recording was not stopped:\n") + program.transcript();
    else if (!program.mainWindow(false, kWindowTimeoutMs))
        take.failure = QStringLiteral("the main window did not come back:\n") + program.transcript();
    else
        take.closedNs = closed->monotonicNs;
}

Take record(ProgramUnderTest& program, const QString& extension, int milliseconds)
{
    Take take = beginTake(program, extension);
    if (take.failure.isEmpty()) {
        QTest::qWait(milliseconds);
        endTake(program, take);
    }
    return take;
}
