// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/filelibrary.h"

#include "app/appidentity.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

LibraryRefuge::LibraryRefuge()
    : m_name(QStringLiteral("KestranoTest%1").arg(QCoreApplication::applicationPid())), m_owned(true)
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setApplicationName(m_name);
}

LibraryRefuge::LibraryRefuge(const QString& name) : m_name(name), m_owned(false)
{
    QStandardPaths::setTestModeEnabled(true);
    QCoreApplication::setApplicationName(m_name);
}

LibraryRefuge::~LibraryRefuge()
{
    if (m_owned)
        clear();
}

void LibraryRefuge::clear()
{
    QDir(appidentity::dataFolder()).removeRecursively();
}

namespace filelibrary {

QString path()
{
    return appidentity::dataFolder() + QLatin1String("/file_data.json");
}

void write(const QByteArray& text)
{
    QDir().mkpath(appidentity::dataFolder());
    QFile file(path());
    if (!file.open(QIODevice::WriteOnly) || file.write(text) != text.size())
        qFatal("The test's list of files cannot be written");
}

QByteArray text()
{
    QFile file(path());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList paths()
{
    QStringList found;
    const QJsonArray array = QJsonDocument::fromJson(text()).array();
    for (const auto& element : array)
        found.append(element.toObject().value(QLatin1String("filepath")).toString());
    return found;
}

QStringList neighbours()
{
    QStringList names = QDir(appidentity::dataFolder()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
    names.removeAll(QStringLiteral("file_data.json"));
    return names;
}

} // namespace filelibrary

QString ProducedFiles::add(const QString& name)
{
    QString path = m_folder.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        qFatal("The file %s cannot be made", qPrintable(path));
    return path;
}

QString ProducedFiles::addRecording(const QString& name, int seconds, qint64 bytes)
{
    constexpr quint64 kSampleRate = 48000;
    constexpr int kStreamInfoBytes = 34;
    const QString path = add(name);
    QByteArray head("fLaC\x80\x00\x00\x22\x10\x00\x10\x00", 12);
    // No sizes of frames; sample rate, two channels, 16 bits, number of samples; no checksum.
    head.append(6, '\0');
    const quint64 format =
        kSampleRate << 44 | quint64{1} << 41 | quint64{15} << 36 | kSampleRate * static_cast<quint64>(seconds);
    for (int shift = 56; shift >= 0; shift -= 8)
        head.append(static_cast<char>(format >> shift & 0xff));
    head.append(8 + kStreamInfoBytes - head.size(), '\0');
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(head) != head.size() || !file.resize(bytes))
        qFatal("The file %s cannot be made", qPrintable(path));
    return path;
}
