// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/filerowtexts.h"

#include "files/filedetails.h"
#include "files/fileproperties.h"
#include "widgets/shownsize.h"

#include <QDateTime>
#include <QLocale>

using namespace fileproperties;

namespace {

QString dateText(const QDateTime& date)
{
    if (!date.isValid())
        return {};
    const QLocale locale;
    // Qt takes "B", which stands for a part of the day in Chinese of Taiwan, as text.
    return locale.toString(date.toLocalTime(), locale.dateTimeFormat(QLocale::ShortFormat).remove(u'B'));
}

/// As players show it: "0:07", "1:02:03".
QString lengthText(qint64 ms)
{
    const qint64 seconds = ms / 1000;
    QString minutesAndSeconds =
        QStringLiteral("%1:%2").arg(seconds / 60 % 60).arg(seconds % 60, 2, 10, QLatin1Char('0'));
    const qint64 hours = seconds / 3600;
    if (hours == 0)
        return minutesAndSeconds;
    return QStringLiteral("%1:%2").arg(hours).arg(minutesAndSeconds.rightJustified(5, QLatin1Char('0')));
}

bool isTrue(const QVariant& value)
{
    return value.typeId() == QMetaType::Bool && value.toBool();
}

} // namespace

FileRowTexts FileRowTexts::of(const QVariantMap& properties, FileProgress progress)
{
    const FileDetails details = FileDetails::of(properties);
    FileRowTexts texts;
    texts.date = dateText(QDateTime::fromString(properties.value(kDateAdded).toString(), Qt::ISODate));
    if (details.sizeBytes)
        texts.size = shownSize(*details.sizeBytes);
    if (details.durationMs)
        texts.length = lengthText(*details.durationMs);
    if (progress != FileProgress::None)
        texts.state = progress == FileProgress::BeingRecorded ? tr("Being recorded") : tr("Being finished");
    else
        texts.setFault(properties);
    return texts;
}

void FileRowTexts::setFault(const QVariantMap& properties)
{
    const FileDetails details = FileDetails::of(properties);
    if (details.isMissing) {
        state = tr("Missing");
        explanation = tr("The file is not where it was saved.");
    } else if (details.isUnreadable) {
        state = tr("Unreadable");
        explanation = tr("There is nothing in the file that could be played.");
    } else if (properties.value(kUnfinished).toBool()) {
        state = tr("Unfinished");
        explanation = tr("The recording has not been finished yet: some programs may not play all of it.");
    } else if (isTrue(properties.value(kIncomplete))) {
        state = tr("Incomplete");
        explanation = tr("The recording could not be finished: some programs may not play all of it.");
    }
}

FileRowTexts FileRowTexts::longest()
{
    constexpr qint64 kLargeSize = 999'900'000;
    constexpr qint64 kTenHoursMs = 36'000'000;
    return {dateText(QDateTime(QDate(2028, 12, 28), QTime(22, 58))),
            shownSize(kLargeSize),
            lengthText(kTenHoursMs),
            {},
            {}};
}

QString FileRowTexts::description() const
{
    QStringList parts{state, length.isEmpty() ? QString() : tr("Length: %1").arg(length), size, date};
    parts.removeAll(QString());
    const QString line = parts.join(QStringLiteral(", "));
    return explanation.isEmpty() ? line : line + QStringLiteral(". ") + explanation;
}
