// SPDX-License-Identifier: GPL-3.0-or-later
#include "dialogs/hotkeychoices.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QSignalBlocker>

namespace hotkeychoices {

namespace {

constexpr int kKeys = 10;

QStringList availableFor(const QString& other)
{
    QStringList keys;
    for (int number = 1; number <= kKeys; ++number)
        keys.append(QStringLiteral("F%1").arg(number));
    keys.removeIf([&other](const QString& key) { return key.compare(other, Qt::CaseInsensitive) == 0; });
    return keys;
}

} // namespace

void fill(QComboBox& box, const QString& own, const QString& other)
{
    const QSignalBlocker blocker(box);
    box.clear();
    box.addItem(QCoreApplication::translate("SCSettingsWindow", kNone));
    box.addItems(availableFor(other));
    const int index = box.findText(own, Qt::MatchFixedString);
    if (index > 0)
        box.setCurrentIndex(index);
}

QString chosen(const QComboBox& box)
{
    return box.currentIndex() > 0 ? box.currentText() : QString::fromLatin1(kNone);
}

} // namespace hotkeychoices
