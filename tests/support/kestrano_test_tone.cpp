// SPDX-License-Identifier: GPL-3.0-or-later
// Plays the sound of testtone.h on PulseAudio's default sink until it is ended.
//
//   kestrano_test_tone
//
// The samples go to pacat through a pipe, each at its own moment: what is heard says the time; what the sound
// server buffers on the way (a few tens of milliseconds) comes on top. "READY" on the standard output says that it
// plays.
#include "tests/support/testpattern.h"
#include "tests/support/testtone.h"

#include <array>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <numbers>
#include <sys/ioctl.h>

namespace {

volatile std::sig_atomic_t quitRequested = 0;

constexpr int kChunkMs = 5;
constexpr int kChunkSamples = testtone::kSamplesPerSecond / 1000 * kChunkMs;
constexpr int64_t kChunkNs = int64_t{kChunkMs} * 1'000'000;
constexpr double kAmplitude = 0.2;

void requestQuit(int /*signal*/)
{
    quitRequested = 1;
}

/// Two oscillators whose phases go on when the frequency changes: no clicks.
class Generator
{
public:
    std::array<int16_t, kChunkSamples> chunk(int64_t monotonicNs)
    {
        const double step = testtone::stepFrequencyHz(testtone::stepAt(monotonicNs));
        std::array<int16_t, kChunkSamples> samples{};
        for (int16_t& sample : samples) {
            m_basePhase = advance(m_basePhase, testtone::kBaseFrequencyHz);
            m_stepPhase = advance(m_stepPhase, step);
            sample = static_cast<int16_t>(32767 * kAmplitude * (std::sin(m_basePhase) + std::sin(m_stepPhase)));
        }
        return samples;
    }

private:
    static double advance(double phase, double frequencyHz)
    {
        return std::fmod(phase + 2.0 * std::numbers::pi * frequencyHz / testtone::kSamplesPerSecond,
                         2.0 * std::numbers::pi);
    }

    double m_basePhase = 0.0;
    double m_stepPhase = 0.0;
};

/// Whether the player has yet to read more than it needs not to run dry: what is written now would be heard late.
bool isBacklogged(FILE* pipe)
{
    constexpr int kEnoughBytes = 3 * kChunkSamples * static_cast<int>(sizeof(int16_t));
    int unread = 0;
    return ioctl(fileno(pipe), FIONREAD, &unread) == 0 && unread > kEnoughBytes;
}

struct ClosePipe
{
    void operator()(FILE* pipe) const { pclose(pipe); }
};

void sleepUntil(int64_t monotonicNs)
{
    constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
    const timespec until{static_cast<time_t>(monotonicNs / kNanosecondsPerSecond),
                         static_cast<long>(monotonicNs % kNanosecondsPerSecond)};
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
}

} // namespace

int main()
{
    std::signal(SIGTERM, requestQuit);
    std::signal(SIGINT, requestQuit);
    std::signal(SIGPIPE, SIG_IGN);
    const std::unique_ptr<FILE, ClosePipe> player(
        popen("exec pacat --playback --raw --format=s16le --rate=48000 --channels=1 --latency-msec=30", "w"));
    if (!player) {
        std::fputs("kestrano_test_tone: pacat did not start\n", stderr);
        return EXIT_FAILURE;
    }
    std::puts("READY");
    std::fflush(stdout);
    Generator generator;
    for (int64_t moment = monotonicNow() / kChunkNs * kChunkNs; quitRequested == 0; moment += kChunkNs) {
        const auto samples = generator.chunk(moment);
        if (isBacklogged(player.get())) {
            sleepUntil(moment + kChunkNs);
            continue;
        }
        if (std::fwrite(samples.data(), sizeof(samples[0]), samples.size(), player.get()) != samples.size() ||
            std::fflush(player.get()) != 0) {
            std::fputs("kestrano_test_tone: pacat ended\n", stderr);
            return EXIT_FAILURE;
        }
        sleepUntil(moment + kChunkNs);
    }
    return EXIT_SUCCESS;
}
