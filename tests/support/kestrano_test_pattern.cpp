// SPDX-License-Identifier: GPL-3.0-or-later
// Fills the screen with the test pattern of testpattern.h and keeps its number in step with the clock.
//
//   kestrano_test_pattern [--rate NUMBERS_PER_SECOND] [--motion] [--clock-ahead NANOSECONDS]
//
// The window lies below all others, as a desktop's background does. "READY" on the standard output says that the
// pattern shows. Where the clock of the program is not that of the test (Wine's is another one of Linux's),
// --clock-ahead says by how much.
#include "tests/support/patterncanvas.h"
#include "tests/support/testpattern.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

volatile std::sig_atomic_t quitRequested = 0;

/// Draws a TestPattern on a canvas, at each step just what changed.
class Painter
{
public:
    Painter(PatternCanvas& canvas, bool motion) : m_canvas(canvas), m_pattern(canvas.size()), m_motion(motion) {}

    const TestPattern& pattern() const { return m_pattern; }
    void drawAll(uint32_t number);
    void drawStep(uint32_t number);

private:
    static constexpr int kSweepSteps = 64;

    QRect bar(uint32_t number) const;
    void drawBar(uint32_t number);
    void drawBlock(int index, uint32_t number);

    PatternCanvas& m_canvas;
    TestPattern m_pattern;
    bool m_motion;
    uint32_t m_shown = 0;
};

QRect Painter::bar(uint32_t number) const
{
    const QRect area = m_pattern.sweepArea();
    const int step = area.width() / kSweepSteps;
    return {area.left() + static_cast<int>(number % kSweepSteps) * step, area.top(), step, area.height()};
}

void Painter::drawBar(uint32_t number)
{
    constexpr int kShades = 8;
    const QRect whole = bar(number);
    const int height = whole.height() / kShades;
    for (int shade = 0; shade < kShades; ++shade) {
        const QColor colour = QColor::fromHsv((shade * 45 + static_cast<int>(number) * 7) % 360, 200, 220);
        m_canvas.fill(QRect(whole.left(), whole.top() + shade * height, whole.width(), height), colour);
    }
}

void Painter::drawBlock(int index, uint32_t number)
{
    m_canvas.fill(m_pattern.block(index), TestPattern::isWhite(index, number) ? Qt::white : Qt::black);
}

void Painter::drawAll(uint32_t number)
{
    m_canvas.fill(QRect(QPoint(0, 0), m_pattern.screen()), m_pattern.background());
    for (const TestPattern::Patch& patch : m_pattern.patches())
        m_canvas.fill(patch.area, patch.colour);
    for (int index = 0; index < m_pattern.blockCount(); ++index)
        drawBlock(index, number);
    m_canvas.flush();
    m_shown = number;
}

void Painter::drawStep(uint32_t number)
{
    for (int index = 0; index < m_pattern.blockCount(); ++index)
        if (TestPattern::isWhite(index, number) != TestPattern::isWhite(index, m_shown))
            drawBlock(index, number);
    if (m_motion) {
        m_canvas.fill(bar(m_shown), m_pattern.background());
        drawBar(number);
    }
    m_canvas.flush();
    m_shown = number;
}

void requestQuit(int /*signal*/)
{
    quitRequested = 1;
}

int run(int numbersPerSecond, bool motion, int64_t clockAheadNs)
{
    const auto now = [clockAheadNs] { return monotonicNow() - clockAheadNs; };
    PatternCanvas canvas;
    if (canvas.isBroken()) {
        std::fputs("kestrano_test_pattern: no display to draw on\n", stderr);
        return EXIT_FAILURE;
    }
    Painter painter(canvas, motion);
    canvas.show(painter.pattern().background());
    bool announced = false;
    while (quitRequested == 0 && !canvas.isBroken()) {
        const uint32_t number = numberAt(now(), numbersPerSecond);
        if (canvas.takeExposure()) {
            painter.drawAll(number);
            if (!announced) {
                std::puts("READY");
                std::fflush(stdout);
                announced = true;
            }
        } else {
            painter.drawStep(number);
        }
        const int64_t next = momentOfNumber(number + 1, numbersPerSecond, now());
        std::this_thread::sleep_for(std::chrono::nanoseconds(next - now()));
    }
    return EXIT_SUCCESS;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    const QCommandLineOption rate(QStringLiteral("rate"), QStringLiteral("Numbers a second."), QStringLiteral("count"),
                                  QStringLiteral("30"));
    const QCommandLineOption motion(QStringLiteral("motion"), QStringLiteral("Let a bar of colours sweep."));
    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption ahead(QStringLiteral("clock-ahead"), QStringLiteral("How far this clock is ahead."),
                                   QStringLiteral("nanoseconds"), QStringLiteral("0"));
    parser.addOptions({rate, motion, ahead});
    parser.process(application);
    const int numbersPerSecond = parser.value(rate).toInt();
    if (numbersPerSecond < 1) {
        std::fputs("kestrano_test_pattern: --rate wants a number of at least 1\n", stderr);
        return EXIT_FAILURE;
    }
    std::signal(SIGTERM, requestQuit);
    std::signal(SIGINT, requestQuit);
    return run(numbersPerSecond, parser.isSet(motion), parser.value(ahead).toLongLong());
}
