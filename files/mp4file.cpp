// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/mp4file.h"

#include "files/filework.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <optional>

namespace {

constexpr qint64 kHeadBytes = 8;

/// A part of an MP4 at its top level.
struct Box
{
    bool isFragmentHead() const { return type == "moof"; }

    QByteArray type;
    /// With its head; 0 means up to the file's end.
    qint64 bytes = 0;
    qint64 position = 0;
    /// The file ends within it.
    bool isCutOff = false;
};

/// From the file's position on.
std::optional<Box> readBox(QFile& file)
{
    const qint64 position = file.pos();
    const QByteArray head = file.read(kHeadBytes);
    if (head.size() < kHeadBytes)
        return std::nullopt;
    Box box{head.mid(4), qFromBigEndian<quint32>(head.constData()), position, false};
    if (box.bytes == 1) {
        // A size of 64 bits follows.
        const QByteArray large = file.read(kHeadBytes);
        if (large.size() < kHeadBytes)
            return std::nullopt;
        box.bytes = qFromBigEndian<qint64>(large.constData());
    }
    box.isCutOff = box.bytes > file.size() - position;
    return box;
}

/// The first one that is wanted, up to where the file ends or is damaged.
template <typename Predicate>
std::optional<Box> findBox(const QString& path, Predicate isWanted)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    for (qint64 position = 0; file.seek(position);) {
        auto box = readBox(file);
        if (!box || (position == 0 && box->type != "ftyp"))
            return std::nullopt;
        if (isWanted(*box))
            return box;
        if (box->bytes < kHeadBytes || box->isCutOff)
            return std::nullopt;
        position += box->bytes;
    }
    return std::nullopt;
}

} // namespace

bool cutBrokenFragmentHead(const QString& path, FileWork& work)
{
    const auto broken = findBox(path, [](const Box& box) { return box.isFragmentHead() && box.isCutOff; });
    bool isCut = false;
    if (broken)
        work.change([&] { isCut = QFile::resize(path, broken->position); });
    return isCut;
}

bool isFragmentedMp4(const QString& path)
{
    return findBox(path, [](const Box& box) { return box.isFragmentHead(); }).has_value();
}

QString unfinishedMp4Path(const QString& path)
{
    // A name of its own length may be the longest that the file system takes.
    constexpr int kLetters = 16;
    const QFileInfo file(path);
    const QByteArray hash = QCryptographicHash::hash(file.fileName().toUtf8(), QCryptographicHash::Sha256).toHex();
    return QStringLiteral("%1/.%2.unfinished").arg(file.path(), QLatin1String(hash.first(kLetters)));
}
