// SPDX-License-Identifier: GPL-3.0-or-later
// Shows a flash and plays a beep at the same moment, again and again, beside a bar that moves all the time.
//
//   kestrano_bench_avsignal [--every SECONDS]
//
// The audio goes to pacat, whose reports of what is heard at which moment say when the flash is due. "READY" on the
// standard output says that all of it runs.
#include "bench/avsignal.h"
#include "bench/screenwindow.h"
#include "tests/support/testpattern.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QProcess>
#include <QRegularExpression>
#include <QThread>

#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <numbers>
#include <optional>

namespace {

constexpr QRgb kGrey = qRgb(64, 64, 64);
constexpr QRgb kBlue = qRgb(40, 80, 200);
constexpr QRgb kWhite = qRgb(255, 255, 255);
constexpr QRgb kBlack = qRgb(0, 0, 0);
constexpr int kStepsPerSecond = 30;
constexpr double kNsPerSecond = 1e9;

volatile std::sig_atomic_t quitRequested = 0;

void requestQuit(int /*signal*/)
{
    quitRequested = 1;
}

/// Beeps, with silence between them.
class Beeper
{
public:
    explicit Beeper(double everySeconds);
    ~Beeper();
    Beeper(const Beeper&) = delete;
    Beeper& operator=(const Beeper&) = delete;

    bool isPlaying() const { return m_player.state() == QProcess::Running; }
    /// Keeps the player supplied, and reads its reports.
    void update();
    /// Whether a beep is heard at a moment of CLOCK_MONOTONIC.
    bool isHeardAt(int64_t monotonicNs) const;

private:
    /// What the player has been given and not yet taken, at most.
    static constexpr int kReserveMs = 100;
    static constexpr int kChunkMs = 10;

    QByteArray chunk();

    const double m_everySeconds;
    QProcess m_player;
    QByteArray m_reports;
    std::int64_t m_writtenSamples = 0;
    /// The moment at which the first sample was heard, as the last report says.
    std::optional<double> m_beganNs;
};

Beeper::Beeper(double everySeconds) : m_everySeconds(everySeconds)
{
    m_player.start("pacat", {"--playback", "--verbose", "--raw", "--format=s16le", "--channels=1", "--latency-msec=30",
                             QStringLiteral("--rate=%1").arg(avsignal::kSamplesPerSecond)});
    m_player.setReadChannel(QProcess::StandardError);
    m_player.waitForStarted();
}

Beeper::~Beeper()
{
    m_player.terminate();
    m_player.waitForFinished();
}

QByteArray Beeper::chunk()
{
    constexpr int kSamples = avsignal::kSamplesPerSecond / 1000 * kChunkMs;
    QByteArray bytes;
    for (int i = 0; i < kSamples; ++i, ++m_writtenSamples) {
        const double seconds = static_cast<double>(m_writtenSamples) / avsignal::kSamplesPerSecond;
        const double sine = std::sin(2 * std::numbers::pi * avsignal::kBeepHz * seconds);
        const double level = std::fmod(seconds, m_everySeconds) < avsignal::kSeconds ? avsignal::kAmplitude : 0;
        const auto sample = static_cast<std::int16_t>(32767 * level * sine);
        bytes.append(reinterpret_cast<const char*>(&sample), sizeof sample);
    }
    return bytes;
}

void Beeper::update()
{
    constexpr qint64 kReserveBytes = qint64{2} * avsignal::kSamplesPerSecond / 1000 * kReserveMs;
    while (m_player.bytesToWrite() < kReserveBytes)
        m_player.write(chunk());
    m_player.waitForBytesWritten(1);
    m_player.waitForReadyRead(1);
    m_reports += m_player.readAllStandardError();
    static const QRegularExpression report("Time: ([0-9.]+) sec; Latency: [0-9]+ usec");
    const qsizetype last = m_reports.lastIndexOf("Time: ");
    const QRegularExpressionMatch match = report.match(QString::fromLatin1(m_reports.mid(last)));
    if (last < 0 || !match.hasMatch())
        return;
    m_beganNs = static_cast<double>(monotonicNow()) - match.captured(1).toDouble() * kNsPerSecond;
    m_reports.clear();
}

bool Beeper::isHeardAt(int64_t monotonicNs) const
{
    if (!m_beganNs)
        return false;
    const double seconds = (static_cast<double>(monotonicNs) - *m_beganNs) / kNsPerSecond;
    return seconds >= 0 && std::fmod(seconds, m_everySeconds) < avsignal::kSeconds;
}

/// The moving bar, and the flash in the middle.
class Scene
{
public:
    explicit Scene(ScreenWindow& window) : m_window(window) {}

    void drawAll();
    void step(std::uint32_t number);
    void showFlash(bool on);

private:
    static constexpr int kBarWidth = 40;

    QRect bar(std::uint32_t number) const;

    ScreenWindow& m_window;
    std::uint32_t m_shown = 0;
    bool m_isFlashing = false;
};

/// Below the flash.
QRect Scene::bar(std::uint32_t number) const
{
    const QRect all = m_window.rect();
    const int left = static_cast<int>(number * 8 % static_cast<unsigned>(all.width() - kBarWidth));
    return {left, 3 * all.height() / 4, kBarWidth, all.height() / 5};
}

void Scene::drawAll()
{
    m_window.fill(m_window.rect(), kGrey);
    m_window.fill(bar(m_shown), kBlue);
    m_window.fill(avsignal::flashArea(m_window.rect().size()), m_isFlashing ? kWhite : kBlack);
    m_window.flush();
}

void Scene::step(std::uint32_t number)
{
    if (number == m_shown)
        return;
    m_window.fill(bar(m_shown), kGrey);
    m_shown = number;
    m_window.fill(bar(m_shown), kBlue);
    m_window.flush();
}

void Scene::showFlash(bool on)
{
    if (on == m_isFlashing)
        return;
    m_isFlashing = on;
    m_window.fill(avsignal::flashArea(m_window.rect().size()), on ? kWhite : kBlack);
    m_window.flush();
}

int run(ScreenWindow& window, double everySeconds)
{
    Beeper beeper(everySeconds);
    Scene scene(window);
    window.show();
    std::puts("READY");
    std::fflush(stdout);
    while (quitRequested == 0 && !window.isBroken() && beeper.isPlaying()) {
        if (window.takeExposure())
            scene.drawAll();
        beeper.update();
        scene.showFlash(beeper.isHeardAt(monotonicNow()));
        scene.step(numberAt(monotonicNow(), kStepsPerSecond));
        QThread::msleep(1);
    }
    return quitRequested != 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption every("every", "From one flash to the next.", "seconds", "10");
    parser.addHelpOption();
    parser.addOption(every);
    parser.process(application);
    ScreenWindow window;
    if (window.isBroken() || parser.value(every).toDouble() < 1) {
        std::fputs("kestrano_bench_avsignal: a display and a number of seconds are wanted\n", stderr);
        return EXIT_FAILURE;
    }
    std::signal(SIGTERM, requestQuit);
    std::signal(SIGINT, requestQuit);
    return run(window, parser.value(every).toDouble());
}
