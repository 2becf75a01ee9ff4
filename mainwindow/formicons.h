// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

class QWidget;

/// Shows the icons named in the property "iconName" of a form's buttons, which light up under the pointer, and labels,
/// at the screen's device pixel ratio. A name that begins with a colon is a resource.
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
