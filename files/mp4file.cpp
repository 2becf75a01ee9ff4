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
    QByteArray type;
    /// With its head; 0 means up to the file's end.
    qint64 bytes = 0;
};

std::optional<Box> readBox(QFile& file)
{
    const QByteArray head = file.read(kHeadBytes);
    if (head.size() < kHeadBytes)
        return std::nullopt;
    Box box{head.mid(4), qFromBigEndian<quint32>(head.constData())};
    if (box.bytes != 1)
        return box;
    // A size of 64 bits follows.
    const QByteArray large = file.read(kHeadBytes);
    if (large.size() < kHeadBytes)
        return std::nullopt;
    box.bytes = qFromBigEndian<qint64>(large.constData());
    return box;
}

/// Where the head of a fragment begins that the file does not hold to its end.
std::optional<qint64> brokenFragmentHead(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    for (qint64 position = 0; file.seek(position);) {
        const auto box = readBox(file);
        if (!box || box->bytes < kHeadBytes || (position == 0 && box->type != "ftyp"))
            return std::nullopt;
        if (box->type == "moof" && position + box->bytes > file.size())
            return position;
        position += box->bytes;
    }
    return std::nullopt;
}

} // namespace

bool cutBrokenFragmentHead(const QString& path, FileWork& work)
{
    const auto position = brokenFragmentHead(path);
    bool isCut = false;
    if (position)
        work.change([&] { isCut = QFile::resize(path, *position); });
    return isCut;
}

bool isFragmentedMp4(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    for (qint64 position = 0; file.seek(position);) {
        const auto box = readBox(file);
        if (!box || (position == 0 && box->type != "ftyp"))
            return false;
        if (box->type == "moof")
            return true;
        if (box->bytes < kHeadBytes)
            return false;
        position += box->bytes;
    }
    return false;
}

QString unfinishedMp4Path(const QString& path)
{
    // A name of its own length may be the longest that the file system takes.
    constexpr int kLetters = 16;
    const QFileInfo file(path);
    const QByteArray hash = QCryptographicHash::hash(file.fileName().toUtf8(), QCryptographicHash::Sha256).toHex();
    return QStringLiteral("%1/.%2.unfinished").arg(file.path(), QLatin1String(hash.first(kLetters)));
}
