// Fills the screen with the test picture of testpicture.h and keeps its number in step with the clock.
//
//   kestrano_test_picture [--rate NUMBERS_PER_SECOND] [--motion]
//
// Plain XCB: a number is a few rectangles in one flush, so that showing it costs next to nothing. The window lies below
// all others, as a desktop's background does. "READY" on the standard output says that the picture shows.
#include "tests/support/testpicture.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <xcb/xcb.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string_view>

namespace {

volatile std::sig_atomic_t quitRequested = 0;

struct Disconnect
{
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

struct Free
{
    void operator()(void* memory) const { std::free(memory); }
};

template <typename T>
using Reply = std::unique_ptr<T, Free>;

xcb_rectangle_t rectangleOf(const QRect& rect)
{
    return {static_cast<int16_t>(rect.x()), static_cast<int16_t>(rect.y()), static_cast<uint16_t>(rect.width()),
            static_cast<uint16_t>(rect.height())};
}

/// A window over the whole screen, below all others, that is filled with rectangles.
class Canvas
{
public:
    Canvas();

    bool isBroken() const { return !m_screen || xcb_connection_has_error(m_connection.get()) != 0; }
    QSize size() const { return {m_screen->width_in_pixels, m_screen->height_in_pixels}; }
    void show(const QColor& background);
    void fill(const QRect& area, const QColor& colour);
    void flush() { xcb_flush(m_connection.get()); }
    /// Whether some of the picture has to be drawn again, asked since the last call.
    bool takeExposure();

private:
    xcb_atom_t atom(std::string_view name);

    std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
    xcb_screen_t* m_screen = nullptr;
    xcb_window_t m_window = 0;
    xcb_gcontext_t m_gc = 0;
};

Canvas::Canvas() : m_connection(xcb_connect(nullptr, nullptr))
{
    if (xcb_connection_has_error(m_connection.get()) == 0)
        m_screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection.get())).data;
}

xcb_atom_t Canvas::atom(std::string_view name)
{
    const auto cookie = xcb_intern_atom(m_connection.get(), 0, static_cast<uint16_t>(name.size()), name.data());
    const Reply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(m_connection.get(), cookie, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void Canvas::show(const QColor& background)
{
    xcb_connection_t* const connection = m_connection.get();
    m_window = xcb_generate_id(connection);
    m_gc = xcb_generate_id(connection);
    const std::array<uint32_t, 2> values{background.rgb() & 0xFFFFFFU, XCB_EVENT_MASK_EXPOSURE};
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, m_window, m_screen->root, 0, 0, m_screen->width_in_pixels,
                      m_screen->height_in_pixels, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, m_screen->root_visual,
                      XCB_CW_BACK_PIXEL | XCB_CW_EVENT_MASK, values.data());
    const std::array<uint32_t, 1> noExposures{0};
    xcb_create_gc(connection, m_gc, m_window, XCB_GC_GRAPHICS_EXPOSURES, noExposures.data());
    const xcb_atom_t type = atom("_NET_WM_WINDOW_TYPE_DESKTOP");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, m_window, atom("_NET_WM_WINDOW_TYPE"), XCB_ATOM_ATOM, 32, 1,
                        &type);
    xcb_map_window(connection, m_window);
    flush();
}

void Canvas::fill(const QRect& area, const QColor& colour)
{
    const std::array<uint32_t, 1> foreground{colour.rgb() & 0xFFFFFFU};
    const xcb_rectangle_t rectangle = rectangleOf(area);
    xcb_change_gc(m_connection.get(), m_gc, XCB_GC_FOREGROUND, foreground.data());
    xcb_poly_fill_rectangle(m_connection.get(), m_window, m_gc, 1, &rectangle);
}

bool Canvas::takeExposure()
{
    bool exposed = false;
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())})
        exposed = exposed || (event->response_type & 0x7F) == XCB_EXPOSE;
    return exposed;
}

/// Draws a TestPicture on a Canvas, at each step just what changed.
class Painter
{
public:
    Painter(Canvas& canvas, bool motion) : m_canvas(canvas), m_picture(canvas.size()), m_motion(motion) {}

    const TestPicture& picture() const { return m_picture; }
    void drawAll(uint32_t number);
    void drawStep(uint32_t number);

private:
    static constexpr int kSweepSteps = 64;

    QRect bar(uint32_t number) const;
    void drawBar(uint32_t number);
    void drawBlock(int index, uint32_t number);

    Canvas& m_canvas;
    TestPicture m_picture;
    bool m_motion;
    uint32_t m_shown = 0;
};

QRect Painter::bar(uint32_t number) const
{
    const QRect area = m_picture.sweepArea();
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
    m_canvas.fill(m_picture.block(index), TestPicture::isWhite(index, number) ? Qt::white : Qt::black);
}

void Painter::drawAll(uint32_t number)
{
    m_canvas.fill(QRect(QPoint(0, 0), m_picture.screen()), m_picture.background());
    for (const TestPicture::Patch& patch : m_picture.patches())
        m_canvas.fill(patch.area, patch.colour);
    for (int index = 0; index < m_picture.blockCount(); ++index)
        drawBlock(index, number);
    m_canvas.flush();
    m_shown = number;
}

void Painter::drawStep(uint32_t number)
{
    for (int index = 0; index < m_picture.blockCount(); ++index)
        if (TestPicture::isWhite(index, number) != TestPicture::isWhite(index, m_shown))
            drawBlock(index, number);
    if (m_motion) {
        m_canvas.fill(bar(m_shown), m_picture.background());
        drawBar(number);
    }
    m_canvas.flush();
    m_shown = number;
}

void sleepUntil(int64_t monotonicNs)
{
    constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
    const timespec until{static_cast<time_t>(monotonicNs / kNanosecondsPerSecond),
                         static_cast<long>(monotonicNs % kNanosecondsPerSecond)};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
}

void requestQuit(int /*signal*/)
{
    quitRequested = 1;
}

int run(int numbersPerSecond, bool motion)
{
    Canvas canvas;
    if (canvas.isBroken()) {
        std::fputs("kestrano_test_picture: no X display to draw on\n", stderr);
        return EXIT_FAILURE;
    }
    Painter painter(canvas, motion);
    canvas.show(painter.picture().background());
    bool announced = false;
    while (quitRequested == 0 && !canvas.isBroken()) {
        const uint32_t number = numberAt(monotonicNow(), numbersPerSecond);
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
        sleepUntil(momentOfNumber(number + 1, numbersPerSecond, monotonicNow()));
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
    parser.addOptions({rate, motion});
    parser.process(application);
    const int numbersPerSecond = parser.value(rate).toInt();
    if (numbersPerSecond < 1) {
        std::fputs("kestrano_test_picture: --rate wants a number of at least 1\n", stderr);
        return EXIT_FAILURE;
    }
    std::signal(SIGTERM, requestQuit);
    std::signal(SIGINT, requestQuit);
    return run(numbersPerSecond, parser.isSet(motion));
}
