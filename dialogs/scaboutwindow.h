#pragma once

#include <QMainWindow>
#include <QPoint>

#include <memory>

namespace Ui {
class SCAboutWindow;
}

/// Says what the program is, in which version, and where more is to be learnt. Moved by its title bar. Shown with
/// dialogwindow::showOver(). User-interface thread.
class SCAboutWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit SCAboutWindow(QWidget* parent);
    ~SCAboutWindow() override;

    bool eventFilter(QObject* watched, QEvent* event) override;

private slots:
    // Connected by their names when the form is set up.
    void on_closeBtn_clicked();
    void on_homeURLLabel_linkActivated(const QString& link);

private:
    void showLink();
    bool onTitleBar(const QEvent& event);

    std::unique_ptr<Ui::SCAboutWindow> m_ui;
    /// From the window's top-left corner to where the title bar was pressed.
    QPoint m_grip;
};
