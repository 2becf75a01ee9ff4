// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QWidget;

/// Shows the icons that a form names in the property "iconName" of buttons, which light up under the pointer, and of
/// labels, in the device pixel ratio of the window's screen. A name that begins with a colon is a resource's path.
class FormIcons : public QObject
{
    Q_OBJECT

public:
    /// Belongs to the form.
    explicit FormIcons(QWidget* form);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showLabels();

    QWidget& m_form;
};
