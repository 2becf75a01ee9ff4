#pragma once

#include <QObject>
#include <QString>

class QAbstractButton;

/// Gives a button its light icon while the pointer is over it: ":/res/forms/images/<name>-white.svg" instead of
/// ":/res/forms/images/<name>.svg". A button that is disabled keeps the latter. Belongs to the button.
class HoverIcons : public QObject
{
    Q_OBJECT

public:
    HoverIcons(QAbstractButton* button, const QString& name);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showIcon(bool isPointedAt);

    QAbstractButton& m_button;
    QString m_name;
};
