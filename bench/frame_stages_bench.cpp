// SPDX-License-Identifier: GPL-3.0-or-later
// Measures what is done to the pixels of a screen before they are a frame of a video, in milliseconds a frame:
// converting with each kind of instructions that the processor has, blending pointers, drawing the circles around them.
// Needs no display.
//
//   frame_stages_bench [--repeat N] [--json FILE]
#include "bench/figures.h"
#include "engine/capture/pointercircles.h"
#include "engine/capture/x11/cursorblend.h"
#include "engine/capture/x11/pointermarks.h"
#include "engine/capture/x11/videoconversion.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonObject>
#include <QRect>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <vector>

namespace {

const std::array<QSize, 4> kSizes{QSize(1280, 720), QSize(1920, 1080), QSize(2560, 1440), QSize(3840, 2160)};
const QRect kRegion(400, 300, 640, 360);

std::size_t areaOf(int width, int height)
{
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

/// A screen of random pixels, and a frame for it.
class Screen
{
public:
    explicit Screen(const QSize& size)
        : m_size(size)
        , m_pixels(areaOf(4 * size.width(), size.height()))
        , m_luma(areaOf(size.width(), size.height()))
        , m_cb(areaOf(size.width() / 2, size.height() / 2))
        , m_cr(m_cb)
    {
        std::mt19937 random;
        std::generate(m_pixels.begin(), m_pixels.end(), [&random] { return static_cast<std::uint8_t>(random()); });
    }

    QRect rect() const { return {QPoint(), m_size}; }
    MutablePixelView pixels() { return {m_pixels.data(), 4 * m_size.width(), m_size.width(), m_size.height()}; }

    void convert(const QRect& rect, const VideoConversionKind& kind)
    {
        const int width = m_size.width();
        convertToI420({m_pixels.data(), 4 * width, width, m_size.height()},
                      {{m_luma.data(), m_cb.data(), m_cr.data()}, {width, width / 2, width / 2}}, rect, kind);
    }

private:
    QSize m_size;
    std::vector<std::uint8_t> m_pixels;
    std::vector<std::uint8_t> m_luma;
    std::vector<std::uint8_t> m_cb;
    std::vector<std::uint8_t> m_cr;
};

/// Prints each figure when it is there, and keeps it.
class Figures
{
public:
    explicit Figures(int repeat) : m_repeat(repeat) {}

    void measure(const QString& name, const std::function<void()>& work)
    {
        const double ms = middleOfRuns(m_repeat, [&work] { return millisecondsOf(work); });
        m_figures.insert(name, ms);
        std::printf("%-36s%8.3f ms\n", qPrintable(name), ms);
    }

    const QJsonObject& all() const { return m_figures; }

private:
    int m_repeat;
    QJsonObject m_figures;
};

void measureConversion(Figures& figures)
{
    for (const VideoConversionKind& kind : videoConversionKinds()) {
        const QString name = QStringLiteral("convert %2, %1").arg(QString::fromLatin1(kind.name));
        for (const QSize& size : kSizes) {
            Screen screen(size);
            figures.measure(name.arg(QStringLiteral("%1x%2").arg(size.width()).arg(size.height())),
                            [&] { screen.convert(screen.rect(), kind); });
        }
        Screen screen(kSizes.at(1));
        figures.measure(name.arg("640x360 of 1920x1080"), [&] { screen.convert(kRegion, kind); });
    }
}

void measureCursors(Figures& figures)
{
    Screen screen(kSizes.at(1));
    for (const int side : {24, 64, 256}) {
        const CursorImage cursor{side, side, {}, std::vector<std::uint32_t>(areaOf(side, side), 0x80402010)};
        figures.measure(QStringLiteral("pointer of %1x%1").arg(side), [&] {
            blendCursor(screen.pixels(), cursor, {300, 200});
        });
    }
}

void measureCircles(Figures& figures)
{
    Screen screen(kSizes.at(1));
    const EffectColor color{0.0F, 1.0F, 0.5F, 0.3F};
    const PointerEffectChoice choice{color, color, color};
    for (const float ratio : {1.0F, 2.0F}) {
        const auto circles = choice.circlesAround({{300, 200}, true, false}, ratio);
        figures.measure(QStringLiteral("highlight and click, scale %1").arg(static_cast<double>(ratio)),
                        [&] { drawPointerCircles(screen.pixels(), circles); });
    }
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption repeat("repeat", "Measurements of each kind; the middle value counts.", "times", "101");
    const QCommandLineOption json("json", "Writes the figures to this file as well.", "file");
    parser.addHelpOption();
    parser.addOptions({repeat, json});
    parser.process(application);

    Figures figures(std::max(1, parser.value(repeat).toInt()));
    measureConversion(figures);
    measureCursors(figures);
    measureCircles(figures);
    if (parser.isSet(json) && !writeJson(parser.value(json), figures.all())) {
        std::fprintf(stderr, "frame_stages_bench: cannot write %s\n", qPrintable(parser.value(json)));
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
