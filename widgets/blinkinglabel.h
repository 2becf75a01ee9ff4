// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QBasicTimer>
#include <QLabel>

/// A label whose text comes and goes while it blinks. Steady where the style says that the user has animations off.
class BlinkingLabel : public QLabel
{
    Q_OBJECT

public:
    /// @param halfPeriodMs with the text, and then as long without it
    BlinkingLabel(const QString& text, QWidget* parent, int halfPeriodMs = 500);

    void setBlinking(bool blinking);

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    int m_halfPeriodMs;
    QBasicTimer m_timer;
    bool m_isTextShown = true;
};
