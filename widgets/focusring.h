#pragma once

#include <QList>
#include <QWidget>

/// A ring around whichever of some widgets has the keyboard focus, for widgets whose own painting leaves no room for
/// one. It lies over the window that it belongs to and takes no mouse.
class FocusRing : public QWidget
{
    Q_OBJECT

public:
    /// The widgets are in window, and outlive the ring.
    FocusRing(QWidget* window, const QList<QWidget*>& widgets);
    ~FocusRing() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void surround(const QWidget& widget);

    /// The one that has the focus.
    const QWidget* m_surrounded = nullptr;
};
