// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/recording/recordingpath.h"

#include <QDateTime>
#include <QFileInfo>
#include <QStringList>

namespace {

/// 255 bytes, the limit of the usual file systems, less " (99999)" and the longest extension with its dot.
constexpr qsizetype kMaximumNameBytes = 240;

bool isForbidden(QChar character)
{
    static constexpr QStringView kReserved(u"/\\:*?\"<>|");
    return kReserved.contains(character) || character.category() == QChar::Other_Control;
}

/// Whether the character at index is half of a surrogate pair whose other half is not beside it.
bool isLoneSurrogate(const QString& text, qsizetype index)
{
    const QChar character = text.at(index);
    if (character.isHighSurrogate())
        return index + 1 == text.size() || !text.at(index + 1).isLowSurrogate();
    return character.isLowSurrogate() && (index == 0 || !text.at(index - 1).isHighSurrogate());
}

QString withoutForbiddenCharacters(const QString& text)
{
    QString kept;
    kept.reserve(text.size());
    for (qsizetype index = 0; index < text.size(); ++index) {
        if (!isForbidden(text.at(index)) && !isLoneSurrogate(text, index))
            kept.append(text.at(index));
    }
    return kept;
}

/// Windows drops dots and blanks at the end of a name by itself: "a." and "a" would be one file.
QString withoutBlanksAndFinalDots(QString name)
{
    name = name.trimmed();
    while (name.endsWith(QLatin1Char('.')))
        name = name.chopped(1).trimmed();
    return name;
}

/// Whether Windows takes the word for a device, in any case and whatever follows it after a dot.
bool isDeviceName(const QString& word)
{
    static const QStringList kDevices{"CON",  "PRN",  "AUX",  "NUL",  "CONIN$", "CONOUT$", "CLOCK$", "COM0", "COM1",
                                      "COM2", "COM3", "COM4", "COM5", "COM6",   "COM7",    "COM8",   "COM9", "COM¹",
                                      "COM²", "COM³", "LPT0", "LPT1", "LPT2",   "LPT3",    "LPT4",   "LPT5", "LPT6",
                                      "LPT7", "LPT8", "LPT9", "LPT¹", "LPT²",   "LPT³"};
    return kDevices.contains(word.trimmed(), Qt::CaseInsensitive);
}

QString withoutDeviceNames(QString name)
{
    while (!name.isEmpty() && isDeviceName(name.section(QLatin1Char('.'), 0, 0)))
        name = name.section(QLatin1Char('.'), 1).trimmed();
    return name;
}

QString shortened(QString name)
{
    while (name.toUtf8().size() > kMaximumNameBytes)
        name.chop(name.back().isLowSurrogate() ? 2 : 1);
    return name;
}

/// Cleaned as far as the end of a name goes, so that "demo.mp4." counts as well.
QString nameWithoutExtension(const QString& typedName, const QString& extension)
{
    const QString name = withoutBlanksAndFinalDots(withoutForbiddenCharacters(typedName));
    const QString ending = QLatin1Char('.') + extension;
    return name.endsWith(ending, Qt::CaseInsensitive) ? name.chopped(ending.size()) : name;
}

bool isTaken(const QString& path)
{
    // A link that leads nowhere would still be written through.
    const QFileInfo file(path);
    return file.exists() || file.isSymLink();
}

} // namespace

QString firstFreePath(const QString& base, const QString& extension)
{
    QString path = base;
    for (int number = 2; isTaken(path + QLatin1Char('.') + extension); ++number)
        path = base + QStringLiteral(" (%1)").arg(number);
    return path;
}

QString cleanedRecordingName(const QString& typedName)
{
    const QString legible = withoutBlanksAndFinalDots(withoutForbiddenCharacters(typedName));
    // Shortened before the devices are looked for: the cut may leave nothing but a device's name.
    const QString fitting = withoutBlanksAndFinalDots(shortened(legible));
    return withoutBlanksAndFinalDots(withoutDeviceNames(fitting));
}

QString defaultRecordingName(const QDateTime& now)
{
    return QLatin1String("Recording_") + now.toString(QStringLiteral("yyyy_MM_dd_HH-mm-ss"));
}

RecordingPath::RecordingPath(const QString& folder, const QString& typedName, RecordingFormat format,
                             const QDateTime& now)
    : m_extension(recordingFileExtension(format))
{
    const QString typed = cleanedRecordingName(nameWithoutExtension(typedName, m_extension));
    const QString name = typed.isEmpty() ? defaultRecordingName(now) : typed;
    m_withoutExtension = firstFreePath(folder + QLatin1Char('/') + name, m_extension);
}

QString RecordingPath::full() const
{
    return m_withoutExtension + QLatin1Char('.') + m_extension;
}
