// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/flacfile.h"

#include "files/filework.h"

#include <QFile>
#include <QList>
#include <QtEndian>

#include <algorithm>
#include <bit>
#include <optional>

// The layout of FLAC is that of RFC 9639.

namespace {

/// "fLaC", the head of the first block of metadata, and the sizes that STREAMINFO begins with.
constexpr qint64 kPropertiesPosition = 18;
/// Rate, channels and bits of a sample, and in the last 36 bits the number of samples; 0 where that is unknown.
constexpr quint64 kLengthMask = (quint64{1} << 36) - 1;
/// Holds several frames of the largest size that FFmpeg's encoder makes for two channels of 16 bits.
constexpr qint64 kTailBytes = qint64{128} * 1024;

/// A frame in a stream of blocks of one size.
struct Frame
{
    quint64 number = 0;
    int samples = 0;
};

/// Reads what follows the first two bytes of a frame, which are looked for.
class FrameHead
{
public:
    explicit FrameHead(const QByteArray& bytes) : m_bytes(bytes) {}

    std::optional<Frame> read();

private:
    static constexpr int kFixedBytes = 4;

    quint8 next() { return m_at < m_bytes.size() ? static_cast<quint8>(m_bytes.at(m_at++)) : fail(); }
    quint8 fail();
    quint64 codedNumber();
    int samplesOf(int code);
    bool isChecked();

    const QByteArray m_bytes;
    qsizetype m_at = kFixedBytes;
    bool m_isComplete = true;
};

quint8 FrameHead::fail()
{
    m_isComplete = false;
    return 0;
}

/// As UTF-8 codes numbers, of up to 36 bits.
quint64 FrameHead::codedNumber()
{
    const quint8 first = next();
    const int length = std::countl_one(first);
    if (length == 0)
        return first;
    if (length == 1 || length > 6)
        return fail();
    quint64 number = first & (0x7FU >> length);
    for (int i = 1; i < length; ++i)
        number = number << 6 | (next() & 0x3FU);
    return number;
}

int FrameHead::samplesOf(int code)
{
    if (code == 1)
        return 192;
    if (code >= 2 && code <= 5)
        return 576 << (code - 2);
    if (code == 6)
        return next() + 1;
    if (code == 7) {
        const int high = next();
        return (high << 8 | next()) + 1;
    }
    return code >= 8 ? 256 << (code - 8) : fail();
}

/// The last byte is a sum of all before it.
bool FrameHead::isChecked()
{
    quint8 sum = 0;
    for (const char byte : m_bytes.first(std::min(m_at, m_bytes.size()))) {
        sum ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = static_cast<quint8>((sum & 0x80U) != 0 ? sum << 1 ^ 0x07U : sum << 1);
    }
    return next() == sum && m_isComplete;
}

std::optional<Frame> FrameHead::read()
{
    if (m_bytes.size() < kFixedBytes)
        return std::nullopt;
    const auto sizes = static_cast<quint8>(m_bytes.at(2));
    Frame frame;
    frame.number = codedNumber();
    frame.samples = samplesOf(sizes >> 4);
    constexpr int kRateInOneByte = 12;
    const int rate = sizes & 0x0F;
    for (int i = 0; i < std::min(std::max(rate - kRateInOneByte + 1, 0), 2); ++i)
        next();
    return isChecked() ? std::optional(frame) : std::nullopt;
}

/// The frames that begin in a part of a file.
QList<Frame> framesIn(const QByteArray& part)
{
    constexpr qsizetype kLongestHead = 16;
    const QByteArray begin = QByteArrayLiteral("\xFF\xF8");
    QList<Frame> frames;
    for (qsizetype at = part.indexOf(begin); at >= 0; at = part.indexOf(begin, at + 1))
        if (const auto frame = FrameHead(part.mid(at, kLongestHead)).read())
            frames.append(*frame);
    return frames;
}

/// Audio data may look like the head of a frame: what counts is the last frame whose predecessor is there as well, or
/// the only one.
std::optional<quint64> lengthOf(const QList<Frame>& frames)
{
    const Frame* last = nullptr;
    const Frame* previous = nullptr;
    for (const Frame& frame : frames) {
        const auto before =
            std::ranges::find_if(frames, [&frame](const Frame& other) { return other.number + 1 == frame.number; });
        if (before != frames.end() && (last == nullptr || frame.number > last->number)) {
            last = &frame;
            previous = &*before;
        }
    }
    if (last != nullptr)
        return last->number * static_cast<quint64>(previous->samples) + static_cast<quint64>(last->samples);
    if (frames.size() == 1 && frames.first().number == 0)
        return frames.first().samples;
    return std::nullopt;
}

bool seekProperties(QFile& file, QString& error)
{
    if (file.open(QIODevice::ReadWrite | QIODevice::ExistingOnly) && file.read(4) == "fLaC" &&
        file.seek(kPropertiesPosition))
        return true;
    error = file.error() != QFileDevice::NoError ? file.errorString() : QStringLiteral("it is no FLAC file");
    return false;
}

bool writeProperties(QFile& file, quint64 properties)
{
    properties = qToBigEndian(properties);
    return file.seek(kPropertiesPosition) &&
           file.write(reinterpret_cast<const char*>(&properties), sizeof properties) == sizeof properties &&
           file.flush();
}

} // namespace

bool writeFlacLength(const QString& path, FileWork& work, QString& error)
{
    QFile file(path);
    if (!seekProperties(file, error))
        return false;
    quint64 properties = 0;
    if (file.read(reinterpret_cast<char*>(&properties), sizeof properties) != sizeof properties) {
        error = QStringLiteral("it has no audio");
        return false;
    }
    properties = qFromBigEndian(properties);
    if ((properties & kLengthMask) != 0)
        return true;
    file.seek(std::max(kPropertiesPosition, file.size() - kTailBytes));
    const auto length = lengthOf(framesIn(file.readAll()));
    if (!length) {
        error = QStringLiteral("it has no audio");
        return false;
    }
    bool isWritten = false;
    work.change([&] { isWritten = writeProperties(file, properties | (*length & kLengthMask)); });
    if (!isWritten)
        error = file.errorString();
    return isWritten;
}
