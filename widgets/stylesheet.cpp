#include "widgets/stylesheet.h"

#include <QDebug>
#include <QFile>
#include <QWidget>

bool applyStyleSheet(QWidget& widget, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qWarning() << "Failed to load stylesheet from:" << path;
        qWarning() << "Error:" << file.errorString();
        return false;
    }
    const QString styleSheet = QString::fromUtf8(file.readAll());
    file.close();
    widget.setStyleSheet(styleSheet);
    qDebug() << "Loaded stylesheet from:" << path;
    return true;
}
