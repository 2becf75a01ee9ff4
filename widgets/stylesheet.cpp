// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/stylesheet.h"

#include "app/sclogger.h"

#include <QDebug>
#include <QFile>
#include <QStyle>
#include <QWidget>

bool applyStyleSheet(QWidget& widget, const QString& path)
{
    return applyStyleSheet({&widget}, path, QStringLiteral("stylesheet"));
}

bool applyStyleSheet(const QList<QWidget*>& widgets, const QString& path, const QString& name)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        SCLogger::warning(QStringLiteral("Failed to load %1 from: %2").arg(name, path));
        SCLogger::warning(QStringLiteral("Error: %1").arg(file.errorString()));
        return false;
    }
    const QString styleSheet = QString::fromUtf8(file.readAll());
    file.close();
    for (QWidget* const widget : widgets)
        widget->setStyleSheet(styleSheet);
    qDebug().noquote() << "Loaded" << name << "from:" << path;
    return true;
}

void restyle(QWidget& widget)
{
    widget.style()->unpolish(&widget);
    widget.style()->polish(&widget);
}

void applyStyleSheetIfReadable(QWidget& widget, const QString& path)
{
    QFile file(path);
    if (file.open(QIODevice::ReadOnly | QIODevice::Text))
        widget.setStyleSheet(QString::fromUtf8(file.readAll()));
}
