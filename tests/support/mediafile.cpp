// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/mediafile.h"

#include "tests/support/testpattern.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLibrary>
#include <QProcess>
#include <QSet>

#include <cstring>

namespace {

constexpr int kDecodeTimeoutMs = 120'000;

struct RunResult
{
    QByteArray output;
    QByteArray error;
    bool succeeded = false;
};

RunResult run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments, QIODevice::ReadOnly);
    RunResult result;
    if (!process.waitForFinished(kDecodeTimeoutMs)) {
        result.error = program.toLocal8Bit() + ": " + process.errorString().toLocal8Bit();
        process.kill();
        process.waitForFinished();
        return result;
    }
    result.output = process.readAllStandardOutput();
    result.error = process.readAllStandardError().trimmed();
    result.succeeded = process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
    return result;
}

QByteArray decode(const QStringList& arguments)
{
    return run(QStringLiteral("ffmpeg"), QStringList{"-v", "error", "-nostdin"} + arguments).output;
}

double fraction(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char('/'));
    const double divisor = parts.size() == 2 ? parts.last().toDouble() : 1.0;
    return divisor > 0 ? parts.first().toDouble() / divisor : 0.0;
}

double number(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toString().toDouble();
}

MediaStream streamFrom(const QJsonObject& json)
{
    MediaStream stream;
    stream.kind = json.value(QLatin1String("codec_type")).toString();
    stream.codec = json.value(QLatin1String("codec_name")).toString();
    stream.codecId = ffmpegCodecId(stream.codec);
    stream.tag = json.value(QLatin1String("codec_tag_string")).toString();
    stream.size = {json.value(QLatin1String("width")).toInt(), json.value(QLatin1String("height")).toInt()};
    stream.rate = fraction(json.value(QLatin1String("avg_frame_rate")).toString());
    stream.hasColourSpace = json.contains(QLatin1String("color_space")) ||
                            json.value(QLatin1String("pix_fmt")).toString().startsWith(QLatin1String("bgr")) ||
                            json.value(QLatin1String("pix_fmt")).toString().startsWith(QLatin1String("pal"));
    stream.sampleRate = static_cast<int>(number(json, "sample_rate"));
    stream.channels = json.value(QLatin1String("channels")).toInt();
    return stream;
}

/// Times come from the frames themselves: containers without an index (FLV, AAC) state none.
void addFrame(MediaStream& stream, const QJsonObject& frame)
{
    const double seconds = number(frame, "best_effort_timestamp_time");
    const double length = frame.contains(QLatin1String("pkt_duration_time")) ? number(frame, "pkt_duration_time")
                          : stream.rate > 0                                  ? 1.0 / stream.rate
                                                                             : 0.0;
    if (stream.frameSeconds.isEmpty())
        stream.startSeconds = seconds;
    stream.frameSeconds.append(seconds);
    stream.durationSeconds = qMax(stream.durationSeconds, seconds + length - stream.startSeconds);
}

} // namespace

MediaFile::MediaFile(const QString& path) : m_path(path)
{
    probe();
}

void MediaFile::probe()
{
    const RunResult result = run(QStringLiteral("ffprobe"), {"-v", "error", "-show_format", "-show_streams",
                                                             "-show_frames", "-of", "json", m_path});
    m_error = QString::fromLocal8Bit(result.error);
    if (!result.succeeded && m_error.isEmpty())
        m_error = QStringLiteral("ffprobe failed");
    readStreams(result.output);
}

void MediaFile::readStreams(const QByteArray& json)
{
    const QJsonObject root = QJsonDocument::fromJson(json).object();
    m_container = root.value(QLatin1String("format")).toObject().value(QLatin1String("format_name")).toString();
    const QJsonArray streams = root.value(QLatin1String("streams")).toArray();
    for (const auto& stream : streams)
        m_streams.append(streamFrom(stream.toObject()));
    const QJsonArray frames = root.value(QLatin1String("frames")).toArray();
    for (const auto& value : frames) {
        const QJsonObject frame = value.toObject();
        const int index = frame.value(QLatin1String("stream_index")).toInt(-1);
        if (index >= 0 && index < m_streams.size())
            addFrame(m_streams[index], frame);
    }
}

const MediaStream* MediaFile::first(const QString& kind) const
{
    for (const MediaStream& stream : m_streams)
        if (stream.kind == kind)
            return &stream;
    return nullptr;
}

double MediaFile::durationSeconds() const
{
    double duration = 0;
    for (const MediaStream& stream : m_streams)
        duration = qMax(duration, stream.startSeconds + stream.durationSeconds);
    return duration;
}

QImage MediaFile::frameAt(double seconds) const
{
    return decodedFrames({"-ss", QString::number(seconds, 'f', 3)}, {"-frames:v", "1"}).value(0);
}

QList<QImage> MediaFile::frames() const
{
    return decodedFrames({}, {"-fps_mode", "passthrough"});
}

/// The frames that ffmpeg gives with further arguments before and after the name of the file.
QList<QImage> MediaFile::decodedFrames(const QStringList& before, const QStringList& after) const
{
    if (!video())
        return {};
    // Where the file does not say which colours it holds, those of high definition are taken for granted, as players
    // do.
    const QString filter =
        video()->hasColourSpace ? QStringLiteral("null") : QStringLiteral("scale=in_color_matrix=bt709");
    const QByteArray data = decode(before + QStringList{"-i", m_path, "-map", "0:v:0", "-vf", filter} + after +
                                   QStringList{"-f", "rawvideo", "-pix_fmt", "rgb24", "-"});
    const QSize size = video()->size;
    const qsizetype lineBytes = qsizetype{3} * size.width();
    const qsizetype imageBytes = lineBytes * size.height();
    QList<QImage> frames;
    for (qsizetype at = 0; imageBytes > 0 && at + imageBytes <= data.size(); at += imageBytes) {
        const auto* bytes = reinterpret_cast<const uchar*>(data.constData()) + at;
        frames.append(QImage(bytes, size.width(), size.height(), lineBytes, QImage::Format_RGB888).copy());
    }
    return frames;
}

QList<std::optional<uint32_t>> MediaFile::numbers(const TestPattern& pattern) const
{
    // The middle half of the strip's height, averaged by the scaler to one pixel for each block's middle half.
    const QRect strip = pattern.strip();
    const int halfBlock = strip.height() / 2;
    const QString filter = QStringLiteral("crop=%1:%2:%3:%4,format=gray,scale=%5:1:flags=area")
                               .arg(strip.width())
                               .arg(halfBlock)
                               .arg(strip.left())
                               .arg(strip.top() + halfBlock / 2)
                               .arg(pattern.blockCount() * 4);
    const QByteArray data =
        decode({"-i", m_path, "-map", "0:v:0", "-fps_mode", "passthrough", "-vf", filter, "-f", "rawvideo", "-"});
    QList<std::optional<uint32_t>> numbers;
    const qsizetype frameBytes = qsizetype{4} * pattern.blockCount();
    for (qsizetype frame = 0; (frame + 1) * frameBytes <= data.size(); ++frame) {
        QList<int> brightness;
        for (int block = 0; block < pattern.blockCount(); ++block) {
            const qsizetype at = frame * frameBytes + qsizetype{4} * block;
            brightness.append((static_cast<uchar>(data.at(at + 1)) + static_cast<uchar>(data.at(at + 2))) / 2);
        }
        numbers.append(TestPattern::numberFromBlocks(brightness));
    }
    return numbers;
}

QList<float> MediaFile::samples(int samplesPerSecond) const
{
    const QByteArray data = decode(
        {"-i", m_path, "-map", "0:a:0", "-ac", "1", "-ar", QString::number(samplesPerSecond), "-f", "f32le", "-"});
    QList<float> samples(data.size() / static_cast<qsizetype>(sizeof(float)));
    std::memcpy(samples.data(), data.constData(), static_cast<size_t>(samples.size()) * sizeof(float));
    return samples;
}

int ffmpegCodecId(const QString& codecName)
{
    // The descriptor's first member is the number; asked of the library: a table of ours would agree with itself.
    using DescriptorByName = const int* (*)(const char*);
    static const auto descriptorByName = [] {
        for (const int version : {59, 60, 61, 62, 58}) {
            QLibrary library(QStringLiteral("avcodec"), version);
            if (library.load())
                return reinterpret_cast<DescriptorByName>(library.resolve("avcodec_descriptor_get_by_name"));
        }
        return DescriptorByName{nullptr};
    }();
    const int* const descriptor = descriptorByName ? descriptorByName(codecName.toLatin1().constData()) : nullptr;
    return descriptor ? *descriptor : 0;
}

QColor meanColour(const QImage& image, const QPoint& centre, int radius)
{
    int red = 0;
    int green = 0;
    int blue = 0;
    int count = 0;
    const QRect area = QRect(centre - QPoint(radius, radius), centre + QPoint(radius, radius)) & image.rect();
    for (int y = area.top(); y <= area.bottom(); ++y) {
        for (int x = area.left(); x <= area.right(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            red += qRed(pixel);
            green += qGreen(pixel);
            blue += qBlue(pixel);
            ++count;
        }
    }
    return count > 0 ? QColor(red / count, green / count, blue / count) : QColor();
}

int colourDistance(const QColor& left, const QColor& right)
{
    return qMax(qAbs(left.red() - right.red()),
                qMax(qAbs(left.green() - right.green()), qAbs(left.blue() - right.blue())));
}

NumbersHeld countNumbers(const QList<std::optional<uint32_t>>& numbers, qsizetype firstFrame)
{
    NumbersHeld result;
    QSet<uint32_t> seen;
    for (qsizetype frame = firstFrame; frame < numbers.size(); ++frame) {
        const std::optional<uint32_t>& shown = numbers.at(frame);
        if (!shown) {
            ++result.unreadable;
            continue;
        }
        if (!result.first)
            result.first = shown;
        else if (*shown < *result.last)
            ++result.backwards;
        result.last = shown;
        seen.insert(*shown);
    }
    result.held = static_cast<int>(seen.size());
    result.expected = result.first ? static_cast<int>(*result.last - *result.first) + 1 : 0;
    return result;
}
