// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMainWindow>
#include <QPoint>

#include <memory>

namespace Ui {
class SCAboutWindow;
}

/// Shown with dialogwindow::showOver(). User-interface thread.
class SCAboutWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit SCAboutWindow(QWidget* parent);
    ~SCAboutWindow() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    // Connected by name.
    void on_closeBtn_clicked();
    void on_homeURLLabel_linkActivated(const QString& link);

private:
    void showLink();
    bool onTitleBar(const QEvent& event);

    std::unique_ptr<Ui::SCAboutWindow> m_ui;
    /// Position of the press, from the window's top-left corner.
    QPoint m_grip;
};
