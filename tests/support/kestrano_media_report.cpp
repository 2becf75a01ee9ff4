// Says what a recording of the test picture and the test tone holds.
//
//   kestrano_media_report FILE [--rate NUMBERS_PER_SECOND] [--started NS] [--stopped NS]
//
// The two moments are CLOCK_MONOTONIC; with them the report says how far the picture and the sound lie from them.
#include "tests/support/mediafile.h"
#include "tests/support/testpicture.h"
#include "tests/support/testtone.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr double kNsPerMs = 1e6;

void reportStreams(const MediaFile& file)
{
    std::printf("file      %s (%s), %.3f s\n", qPrintable(file.path()), qPrintable(file.container()),
                file.durationSeconds());
    for (const MediaStream& stream : file.streams())
        std::printf("%-9s %s (%d, %s), %dx%d, %.2f/s, %d Hz, from %.3f s, %.3f s, %lld frames\n",
                    qPrintable(stream.kind), qPrintable(stream.codec), stream.codecId, qPrintable(stream.tag),
                    stream.size.width(), stream.size.height(), stream.rate, stream.sampleRate, stream.startSeconds,
                    stream.durationSeconds, static_cast<long long>(stream.frameSeconds.size()));
}

void reportPicture(const MediaFile& file, int rate, int64_t started, int64_t stopped)
{
    const QList<std::optional<uint32_t>> numbers = file.numbers(TestPicture(file.video()->size));
    const NumbersHeld held = countNumbers(numbers);
    std::printf("numbers   %d of %d (%.2f %%), %d frames without one, %d backwards\n", held.held, held.expected,
                held.share() * 100, held.unreadable, held.backwards);
    if (held.first && started > 0)
        std::printf("picture   first %+.0f ms from the start, last %+.0f ms from the stop\n",
                    static_cast<double>(momentOfNumber(*held.first, rate, started) - started) / kNsPerMs,
                    static_cast<double>(momentOfNumber(*held.last, rate, stopped) - stopped) / kNsPerMs);
}

void reportSound(const MediaFile& file, int64_t started, int64_t stopped)
{
    constexpr int kSpanMs = 300;
    constexpr int kSpan = testtone::kSamplesPerSecond / 1000 * kSpanMs;
    const QList<float> samples = file.samples(testtone::kSamplesPerSecond);
    std::printf("tone      440 Hz at %.3f, 700 Hz at %.3f\n",
                testtone::amplitude(samples, samples.size() / 2, kSpan, 440, testtone::kSamplesPerSecond),
                testtone::amplitude(samples, samples.size() / 2, kSpan, 700, testtone::kSamplesPerSecond));
    const auto first = testtone::momentOfSample(samples, 0, kSpanMs, started);
    const auto last = testtone::momentOfSample(samples, samples.size() - kSpan, kSpanMs, stopped);
    if (first && last && started > 0)
        std::printf("sound     first %+.0f ms from the start, last %+.0f ms from the stop\n",
                    static_cast<double>(*first - started) / kNsPerMs,
                    static_cast<double>(*last - stopped) / kNsPerMs + kSpanMs);
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    const QCommandLineOption rate("rate", "Numbers a second.", "count", "30");
    const QCommandLineOption started("started", "When the recording started.", "nanoseconds", "0");
    const QCommandLineOption stopped("stopped", "When it was asked to stop.", "nanoseconds", "0");
    parser.addHelpOption();
    parser.addOptions({rate, started, stopped});
    parser.addPositionalArgument("file", "The recording.");
    parser.process(application);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(EXIT_FAILURE);
    const MediaFile file(parser.positionalArguments().constFirst());
    if (!file.isReadable()) {
        std::fprintf(stderr, "kestrano_media_report: %s\n", qPrintable(file.error()));
        return EXIT_FAILURE;
    }
    const int64_t startedNs = parser.value(started).toLongLong();
    const int64_t stoppedNs = parser.value(stopped).toLongLong();
    reportStreams(file);
    if (file.video())
        reportPicture(file, parser.value(rate).toInt(), startedNs, stoppedNs);
    if (file.audio())
        reportSound(file, startedNs, stoppedNs);
    return EXIT_SUCCESS;
}
