// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/recording/recordinghelpers.h"

#include "tests/support/stillimage.h"
#include "tests/support/x11clients.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>

namespace {

constexpr int kStartTimeoutMs = 30'000;
constexpr int kCloseTimeoutMs = 60'000;
constexpr int kWindowTimeoutMs = 10'000;
/// What a window manager and Qt need to take notice of one thing before the next.
constexpr int kNoticeMs = 60;
const QString kHotkey = QStringLiteral("F9");

bool run(const QString& tool, const QStringList& arguments)
{
    return QProcess::execute(tool, arguments) == 0;
}

bool xrandr(const QStringList& arguments)
{
    return run(QStringLiteral("xrandr"), arguments);
}

} // namespace

Performance::~Performance()
{
    for (QProcess* process : {&m_patternProcess, &m_tone}) {
        process->terminate();
        if (process->state() != QProcess::NotRunning && !process->waitForFinished())
            process->kill();
        process->waitForFinished();
    }
}

QString Performance::begin(int numbersPerSecond, bool motion)
{
    const QString failure = show(numbersPerSecond, motion);
    return failure.isEmpty() ? launch(m_tone, QStringLiteral("kestrano_test_tone"), {}) : failure;
}

QString Performance::show(int numbersPerSecond, bool motion)
{
    QStringList arguments{QStringLiteral("--rate"), QString::number(numbersPerSecond)};
    if (motion)
        arguments.append(QStringLiteral("--motion"));
    return launch(m_patternProcess, QStringLiteral("kestrano_test_pattern"), arguments);
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

TwoScreens::TwoScreens(const QSize& displayPx) : m_half(displayPx.width() / 2, displayPx.height())
{
    // Any size in millimetres will do.
    const QString area = QStringLiteral("%1/85x%2/95+%3+0").arg(m_half.width()).arg(m_half.height());
    m_made = xrandr({"--setmonitor", "*Right", area.arg(m_half.width()), "screen"}) &&
             xrandr({"--setmonitor", "Left", area.arg(0), "none"});
}

TwoScreens::~TwoScreens()
{
    xrandr({"--delmonitor", "Left"});
    xrandr({"--delmonitor", "Right"});
}

Take beginTake(ProgramUnderTest& program, const QString& extension)
{
    const qsizetype from = program.messages().size();
    ProgramUnderTest::pressKey(kHotkey);
    return waitForTake(program, extension, from);
}

Take waitForTake(ProgramUnderTest& program, const QString& extension, qsizetype from)
{
    Take take;
    const auto file = program.waitForMessage(QStringLiteral("Starting recording to file: "), kStartTimeoutMs, from);
    const auto started = program.waitForMessage(program.startMessage(), kStartTimeoutMs, from);
    if (!file || !started || !program.waitForMessage(QStringLiteral("Recording started..."), kStartTimeoutMs, from)) {
        take.failure = QStringLiteral("no recording was started:\n") + program.transcript();
        return take;
    }
    take.path = file->text.section(QLatin1String("file: "), 1) + QLatin1Char('.') + extension;
    take.startedNs = started->monotonicNs;
    return take;
}

QRect countdownNumber()
{
    QRect number(0, 0, 60, 60);
    number.moveCenter(QRect(QPoint(0, 0), StillImage::displaySize()).center() - QPoint(0, 15));
    return number;
}

bool isCountdownShown()
{
    return qGray(x11clients::grab(countdownNumber()).pixel(0, 0)) < 128;
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

bool goBackFromRecordButton(ProgramUnderTest& program, int steps)
{
    const auto window = program.mainWindow(false, kWindowTimeoutMs);
    if (!window)
        return false;
    x11clients::activate(window->id);
    QTest::qWait(5 * kNoticeMs);
    for (int step = 0; step < steps; ++step)
        ProgramUnderTest::pressKey(QStringLiteral("shift+Tab"));
    return true;
}

std::optional<QRect> visibleWindow(const QString& title)
{
    static const QRegularExpression geometry(
        QStringLiteral("X=(-?\\d+)\\s+Y=(-?\\d+)\\s+WIDTH=(\\d+)\\s+HEIGHT=(\\d+)"));
    QElapsedTimer waited;
    waited.start();
    do {
        QProcess search;
        search.start(QStringLiteral("xdotool"), {"search", "--onlyvisible", "--name", QStringLiteral("^%1$").arg(title),
                                                 "getwindowgeometry", "--shell"});
        search.waitForFinished();
        const auto match = geometry.match(QString::fromLatin1(search.readAllStandardOutput()));
        const auto number = [&match](int index) { return match.captured(index).toInt(); };
        if (match.hasMatch())
            return QRect(number(1), number(2), number(3), number(4));
        QTest::qWait(kNoticeMs);
    } while (!waited.hasExpired(kWindowTimeoutMs));
    return std::nullopt;
}

bool xdotool(const QStringList& arguments)
{
    return run(QStringLiteral("xdotool"), arguments);
}

bool pointTo(const QPoint& position)
{
    const bool pointed = xdotool({"mousemove", QString::number(position.x()), QString::number(position.y())});
    QTest::qWait(kNoticeMs);
    return pointed;
}

bool drag(const QPoint& from, const QPoint& to)
{
    constexpr int kSteps = 4;
    bool done = pointTo(from) && xdotool({"mousedown", "1"});
    QTest::qWait(kNoticeMs);
    for (int step = 1; step <= kSteps; ++step)
        done = pointTo(from + (to - from) * step / kSteps) && done;
    return xdotool({"mouseup", "1"}) && done;
}
