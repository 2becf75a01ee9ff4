// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLocale>
#include <QString>

/// A number of bytes as users see it, everywhere in the same units: 1 MB is 1,000,000 bytes.
inline QString shownSize(qint64 bytes)
{
    return QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat);
}
