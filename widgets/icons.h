#pragma once

#include <QIcon>
#include <QObject>
#include <QString>

class QAbstractButton;

/// The program's own icons: one drawing each, and a light twin for what is pointed at or chosen.
namespace icons {

enum class Tone
{
    Normal,
    Light
};

/// Where the icon called name lies among the resources: ":/res/forms/images/<name>.svg", its light twin
/// ":/res/forms/images/<name>-white.svg".
QString path(const QString& name, Tone tone = Tone::Normal);

/// For any number of pixels. A disabled control shows it fainter.
QIcon named(const QString& name, Tone tone = Tone::Normal);

} // namespace icons

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
