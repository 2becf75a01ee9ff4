// SPDX-License-Identifier: GPL-3.0-or-later
// Fills the screen with what tools/bench records, and with a counter: the strip of tests/support/testpattern.h, whose
// number is in step with the clock.
//
//   kestrano_bench_screen --film|--page [--rate NUMBERS_PER_SECOND] [--counter X,Y,WIDTH,HEIGHT]
//
// With each number the film changes every pixel around the counter; on the page every third number types one more
// character. At rate 0 nothing changes. The counter lies in its area as it lies on a screen of that size. "READY" on
// the standard output says that all of it shows.
#include "bench/areatext.h"
#include "bench/screenwindow.h"
#include "tests/support/testpattern.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QImage>
#include <QRegion>

#include <utility>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace {

constexpr QRgb kBlack = qRgb(0, 0, 0);
constexpr QRgb kWhite = qRgb(255, 255, 255);

volatile std::sig_atomic_t quitRequested = 0;

void requestQuit(int /*signal*/)
{
    quitRequested = 1;
}

/// What lies around the counter.
class Content
{
public:
    virtual ~Content() = default;
    virtual void drawAll(std::uint32_t number) = 0;
    /// What the number changes.
    virtual void drawStep(std::uint32_t number) = 0;
};

/// A film of a few frames, again and again: two waves that run in different directions, and grain.
class Film : public Content
{
public:
    Film(ScreenWindow& window, const QRect& counter);

    void drawAll(std::uint32_t number) override;
    void drawStep(std::uint32_t number) override { drawAll(number); }

private:
    static constexpr int kFrames = 8;
    /// Of the waves, in steps of their phase.
    static constexpr int kPeriod = 256;

    static QImage frame(const QSize& size, int index);
    static int wave(int phase);

    ScreenWindow& m_window;
    const QRegion m_area;
    std::vector<xcb_pixmap_t> m_frames;
};

Film::Film(ScreenWindow& window, const QRect& counter) : m_window(window), m_area(QRegion(window.rect()) - counter)
{
    m_frames.reserve(kFrames);
    for (int index = 0; index < kFrames; ++index)
        m_frames.push_back(window.upload(frame(window.rect().size(), index)));
}

/// 0..254, up and down.
int Film::wave(int phase)
{
    const int at = phase & (kPeriod - 1);
    return 2 * (at < kPeriod / 2 ? at : kPeriod - 1 - at);
}

QImage Film::frame(const QSize& size, int index)
{
    constexpr int kStep = kPeriod / kFrames;
    std::minstd_rand random(static_cast<unsigned>(index) + 1);
    QImage frame(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(frame.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            const int broad = wave(x + y / 2 + kStep * index);
            const int fine = wave(4 * x - 3 * y - 3 * kStep * index);
            const int grain = static_cast<int>(random() % 16);
            row[x] = qRgb((3 * broad + grain) / 4, (broad + fine + grain) / 3, (3 * fine + grain) / 4);
        }
    }
    return frame;
}

void Film::drawAll(std::uint32_t number)
{
    for (const QRect& part : m_area)
        m_window.copy(m_frames.at(number % kFrames), part);
}

/// A text that is being typed into the upper half of an area; when that is full, it begins over the old one.
class Page : public Content
{
public:
    /// @param textArea above the counter
    Page(ScreenWindow& window, const QRect& textArea) : m_window(window), m_textArea(textArea) {}

    void drawAll(std::uint32_t /*number*/) override { m_window.fill(m_window.rect(), kWhite); }
    void drawStep(std::uint32_t number) override;

private:
    static constexpr int kNumbersPerCharacter = 3;
    static constexpr QSize kCharacter{12, 24};

    ScreenWindow& m_window;
    const QRect m_textArea;
};

void Page::drawStep(std::uint32_t number)
{
    if (number % kNumbersPerCharacter != 0)
        return;
    const int columns = m_textArea.width() / kCharacter.width();
    const int rows = m_textArea.height() / kCharacter.height();
    const int at = static_cast<int>(number / kNumbersPerCharacter % static_cast<unsigned>(columns * rows));
    const QRect cell(m_textArea.topLeft() +
                         QPoint(at % columns * kCharacter.width(), at / columns * kCharacter.height()),
                     kCharacter);
    // A stem and a bar; where they meet makes eight different characters.
    m_window.fill(cell, kWhite);
    m_window.fill(QRect(cell.left() + 2 + at % 2 * 6, cell.top() + 4, 2, 16), kBlack);
    m_window.fill(QRect(cell.left() + 2, cell.top() + 4 + at / 2 % 4 * 4, 8, 2), kBlack);
}

/// The strip that shows the number, in an area of the screen.
class Counter
{
public:
    explicit Counter(const QRect& area) : m_pattern(area.size()), m_origin(area.topLeft()) {}

    QRect strip() const { return m_pattern.strip().translated(m_origin); }
    void drawAll(ScreenWindow& window, std::uint32_t number);
    void drawStep(ScreenWindow& window, std::uint32_t number);

private:
    void drawBlock(ScreenWindow& window, int index, std::uint32_t number);

    const TestPattern m_pattern;
    const QPoint m_origin;
    std::uint32_t m_shown = 0;
};

void Counter::drawBlock(ScreenWindow& window, int index, std::uint32_t number)
{
    window.fill(m_pattern.block(index).translated(m_origin), TestPattern::isWhite(index, number) ? kWhite : kBlack);
}

void Counter::drawAll(ScreenWindow& window, std::uint32_t number)
{
    for (int index = 0; index < m_pattern.blockCount(); ++index)
        drawBlock(window, index, number);
    m_shown = number;
}

void Counter::drawStep(ScreenWindow& window, std::uint32_t number)
{
    for (int index = 0; index < m_pattern.blockCount(); ++index)
        if (TestPattern::isWhite(index, number) != TestPattern::isWhite(index, m_shown))
            drawBlock(window, index, number);
    m_shown = number;
}

/// The moment of the next number; without one, of the next look at whether something has to be drawn again.
std::int64_t nextStepNs(std::uint32_t number, int numbersPerSecond)
{
    constexpr std::int64_t kIdleNs = 100'000'000;
    const std::int64_t now = monotonicNow();
    return numbersPerSecond > 0 ? momentOfNumber(number + 1, numbersPerSecond, now) : now + kIdleNs;
}

void run(ScreenWindow& window, Content& content, Counter counter, int numbersPerSecond)
{
    bool announced = false;
    std::uint32_t shown = 0;
    while (quitRequested == 0 && !window.isBroken()) {
        const std::uint32_t number = numbersPerSecond > 0 ? numberAt(monotonicNow(), numbersPerSecond) : 0;
        if (window.takeExposure()) {
            content.drawAll(number);
            counter.drawAll(window, number);
            window.flush();
            if (!std::exchange(announced, true)) {
                std::puts("READY");
                std::fflush(stdout);
            }
        } else if (number != shown) {
            content.drawStep(number);
            counter.drawStep(window, number);
            window.flush();
        }
        shown = number;
        std::this_thread::sleep_for(std::chrono::nanoseconds(nextStepNs(number, numbersPerSecond) - monotonicNow()));
    }
}

QRect textAreaAbove(const QRect& strip, const QRect& area)
{
    return {area.topLeft(), QSize(area.width(), strip.top() - area.top())};
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption film("film", "Every pixel changes.");
    const QCommandLineOption page("page", "A character is typed now and then.");
    const QCommandLineOption rate("rate", "Numbers a second; 0: nothing changes.", "count", "30");
    const QCommandLineOption area("counter", "Where the counter lies.", "x,y,width,height");
    parser.addHelpOption();
    parser.addOptions({film, page, rate, area});
    parser.process(application);
    ScreenWindow window;
    if (window.isBroken() || parser.isSet(film) == parser.isSet(page)) {
        std::fputs("kestrano_bench_screen: a display, and either --film or --page, are wanted\n", stderr);
        return EXIT_FAILURE;
    }
    std::signal(SIGTERM, requestQuit);
    std::signal(SIGINT, requestQuit);
    const QRect counterArea = parser.isSet(area) ? areaFromText(parser.value(area)) : window.rect();
    const Counter counter(counterArea);
    std::unique_ptr<Content> content;
    if (parser.isSet(film))
        content = std::make_unique<Film>(window, counter.strip());
    else
        content = std::make_unique<Page>(window, textAreaAbove(counter.strip(), counterArea));
    window.show();
    run(window, *content, counter, parser.value(rate).toInt());
    return EXIT_SUCCESS;
}
