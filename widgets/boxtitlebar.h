// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QFrame>

class QMessageBox;

/// The program's title bar on top of a message box, in place of the system's frame.
class BoxTitleBar : public QFrame
{
    Q_OBJECT

public:
    /// Child of the box, with the title that the box has now.
    explicit BoxTitleBar(QMessageBox& box);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void addContent(QMessageBox& box);
};
