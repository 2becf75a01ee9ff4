// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/flvgiflength.h"

#include "files/filework.h"

#include <QFile>
#include <QtEndian>

#include <utility>

#include <algorithm>

// The layouts are those of Adobe's "Video File Format Specification, Version 10.1" and CompuServe's "Graphics
// Interchange Format, Version 89a".

using std::chrono::milliseconds;

namespace {

// ---- FLV
// -------------------------------------------------------------------------------------------------------------

constexpr qint64 kFlvHeadBytes = 9;
constexpr qint64 kTagHeadBytes = 11;
/// After each tag: its size.
constexpr qint64 kTagTailBytes = 4;

struct Tag
{
    bool isMedia() const { return type == 8 || type == 9; }

    int type = 0;
    /// With its head.
    qint64 bytes = 0;
    milliseconds time{};
};

/// A tag that the file holds to its end.
std::optional<Tag> readTag(QFile& file, qint64 position)
{
    const QByteArray head = position >= 0 && file.seek(position) ? file.read(kTagHeadBytes) : QByteArray();
    if (head.size() < kTagHeadBytes)
        return std::nullopt;
    const auto* const bytes = reinterpret_cast<const uchar*>(head.constData());
    const Tag tag{bytes[0], kTagHeadBytes + (bytes[1] << 16 | bytes[2] << 8 | bytes[3]),
                  // The highest bits follow the others.
                  milliseconds(qint64{bytes[7]} << 24 | bytes[4] << 16 | bytes[5] << 8 | bytes[6])};
    if (tag.bytes + kTagTailBytes > file.size() - position)
        return std::nullopt;
    return tag;
}

/// Where the file is whole.
std::optional<Tag> lastTag(QFile& file)
{
    // To seek before the beginning would be a fault of the disk.
    if (file.size() < kFlvHeadBytes + kTagTailBytes)
        return std::nullopt;
    const QByteArray tail = file.seek(file.size() - kTagTailBytes) ? file.read(kTagTailBytes) : QByteArray();
    if (tail.size() < kTagTailBytes)
        return std::nullopt;
    const qint64 bytes = qFromBigEndian<quint32>(tail.constData());
    const auto tag = readTag(file, file.size() - kTagTailBytes - bytes);
    return tag && tag->bytes == bytes && tag->isMedia() ? tag : std::nullopt;
}

/// From the beginning.
std::optional<milliseconds> lastTimeOfTags(QFile& file, const FileWork& work)
{
    std::optional<milliseconds> last;
    for (qint64 position = kFlvHeadBytes + kTagTailBytes; !work.isCancelled();) {
        const auto tag = readTag(file, position);
        if (!tag)
            break;
        if (tag->isMedia())
            last = std::max(last.value_or(tag->time), tag->time);
        position += tag->bytes + kTagTailBytes;
    }
    return last;
}

// ---- GIF
// -------------------------------------------------------------------------------------------------------------

constexpr qint64 kGifHeadBytes = 6;
constexpr char kExtension = 0x21;
constexpr char kTimes = '\xf9';
constexpr char kImage = 0x2c;

bool skip(QFile& file, qint64 bytes)
{
    return file.skip(bytes) == bytes;
}

/// The colours that the last byte of a descriptor announces.
bool skipColours(QFile& file, char flags)
{
    const bool isThere = (flags & 0x80) != 0;
    return !isThere || skip(file, qint64{3} << ((flags & 7) + 1));
}

/// Up to the empty one that ends them.
bool skipBlocks(QFile& file)
{
    char bytes = 0;
    while (file.getChar(&bytes))
        if (bytes == 0 || !skip(file, static_cast<uchar>(bytes)))
            return bytes == 0;
    return false;
}

bool skipImage(QFile& file)
{
    const QByteArray descriptor = file.read(9);
    return descriptor.size() == 9 && skipColours(file, descriptor.back()) && skip(file, 1) && skipBlocks(file);
}

/// As browsers and players have it, who slow down images that are shown for no time.
milliseconds timeOf(const QByteArray& times)
{
    constexpr int kLeast = 2;
    constexpr int kInstead = 10;
    const int hundredths = times.size() < 4 ? 0 : qFromLittleEndian<quint16>(times.constData() + 2);
    return milliseconds(10 * (hundredths < kLeast ? kInstead : hundredths));
}

/// @param time of the image that follows
bool readExtension(QFile& file, milliseconds& time)
{
    char label = 0;
    if (!file.getChar(&label))
        return false;
    if (label == kTimes)
        time = timeOf(file.peek(4));
    return skipBlocks(file);
}

bool skipGifHead(QFile& file)
{
    if (!file.read(kGifHeadBytes).startsWith("GIF8"))
        return false;
    const QByteArray screen = file.read(5);
    return screen.size() == 5 && skip(file, 2) && skipColours(file, screen.back());
}

std::optional<milliseconds> lengthOfImages(QFile& file, const FileWork& work)
{
    std::optional<milliseconds> length;
    milliseconds time = timeOf({});
    char kind = 0;
    while (!work.isCancelled() && file.getChar(&kind)) {
        if (kind == kExtension ? !readExtension(file, time) : kind != kImage || !skipImage(file))
            break;
        if (kind == kImage)
            length = length.value_or(milliseconds(0)) + std::exchange(time, timeOf({}));
    }
    return length;
}

/// A disk that cannot be read says nothing about the file.
MediaLength result(const QFile& file, std::optional<milliseconds> length, const FileWork& work)
{
    if (work.isCancelled() || file.error() != QFileDevice::NoError)
        return {};
    return {length, !length};
}

} // namespace

MediaLength flvLength(const QString& path, FileWork& work)
{
    QFile file(path);
    // Heads far apart are read.
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return {};
    if (!file.read(kFlvHeadBytes).startsWith("FLV"))
        return result(file, {}, work);
    const auto last = lastTag(file);
    return result(file, last ? last->time : lastTimeOfTags(file, work), work);
}

MediaLength gifLength(const QString& path, FileWork& work)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return result(file, skipGifHead(file) ? lengthOfImages(file, work) : std::nullopt, work);
}
