// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>
#include <QList>
#include <QPoint>
#include <QSize>
#include <QString>

#include <cstdint>
#include <optional>

class TestPattern;

/// One stream of a media file, as ffprobe reports it.
struct MediaStream
{
    QString kind;    ///< "video" or "audio".
    QString codec;   ///< FFmpeg's name of the codec, for example "h264".
    int codecId = 0; ///< FFmpeg's number of the codec (AVCodecID), 0 where this system's FFmpeg does not know the name.
    QString tag;     ///< The four characters that the container stores, for example "avc1".
    QSize size;      ///< Pixels; empty for sound.
    bool hasColourSpace = false; ///< Whether the file says which colours it holds.
    double rate = 0;             ///< Average frames a second; 0 for sound.
    int sampleRate = 0;
    int channels = 0;
    double startSeconds = 0;    ///< Time of the first frame in the file.
    double durationSeconds = 0; ///< From the first frame's time to the end of the last frame.
    QList<double> frameSeconds; ///< Each decoded frame's time, in the order of decoding.
};

/// A recording as a judge sees it: decoded by the ffmpeg and ffprobe programs, which know nothing of how it was made.
/// Each function runs one of them and waits for it.
class MediaFile
{
public:
    explicit MediaFile(const QString& path);

    QString path() const { return m_path; }
    /// Whether ffprobe could read the file to its end without a complaint.
    bool isReadable() const { return m_error.isEmpty(); }
    /// What ffprobe complained of.
    QString error() const { return m_error; }
    QString container() const { return m_container; }
    double durationSeconds() const;
    const QList<MediaStream>& streams() const { return m_streams; }
    /// The first stream of the kind, nullptr where there is none.
    const MediaStream* video() const { return first(QStringLiteral("video")); }
    const MediaStream* audio() const { return first(QStringLiteral("audio")); }

    /// The frame that shows at @p seconds; a null image where there is none.
    QImage frameAt(double seconds) const;
    /// All frames, in order; for short recordings of small areas.
    QList<QImage> frames() const;
    /// The test pattern's number in each frame, in order; nothing where a frame shows no number.
    QList<std::optional<uint32_t>> numbers(const TestPattern& pattern) const;
    /// The sound, mixed to one channel, -1..1, at @p samplesPerSecond.
    QList<float> samples(int samplesPerSecond) const;

private:
    const MediaStream* first(const QString& kind) const;
    QList<QImage> decodedFrames(const QStringList& before, const QStringList& after) const;
    void probe();
    void readStreams(const QByteArray& json);

    QString m_path;
    QString m_container;
    QString m_error;
    QList<MediaStream> m_streams;
};

/// FFmpeg's number of a codec name ("h264" is 27), asked of the FFmpeg library of this system; 0 if it is unknown.
int ffmpegCodecId(const QString& codecName);

/// The mean colour of the pixels around @p centre, @p radius to each side.
QColor meanColour(const QImage& image, const QPoint& centre, int radius);

/// The largest difference of two colours over red, green and blue.
int colourDistance(const QColor& left, const QColor& right);

/// How a run of numbers was held by a file.
struct NumbersHeld
{
    int expected = 0;   ///< How many numbers lie between the first and the last that the file shows, both counted.
    int held = 0;       ///< How many of them the file shows.
    int unreadable = 0; ///< Frames without a number.
    int backwards = 0;  ///< Frames that show an earlier number than the frame before.
    std::optional<uint32_t> first;
    std::optional<uint32_t> last;

    double share() const { return expected > 0 ? static_cast<double>(held) / expected : 0.0; }
};

/// Counts the numbers of a file from the frame @p firstFrame on.
NumbersHeld countNumbers(const QList<std::optional<uint32_t>>& numbers, qsizetype firstFrame = 0);
