// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QIcon>
#include <QObject>
#include <QString>

class QAbstractButton;

namespace icons {

enum class Tone
{
    Normal,
    Light
};

/// ":/res/forms/images/<name>.svg", or "<name>-white.svg" for the light one.
QString path(const QString& name, Tone tone = Tone::Normal);

/// Fainter in a disabled control.
QIcon named(const QString& name, Tone tone = Tone::Normal);

} // namespace icons

/// Shows the light icon while the pointer is over an enabled button. Child of the button.
class HoverIcons : public QObject
{
    Q_OBJECT

public:
    HoverIcons(QAbstractButton* button, const QString& name);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showIcon();

    QAbstractButton& m_button;
    QString m_name;
};
