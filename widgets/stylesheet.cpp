// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/stylesheet.h"

#include <QDebug>
#include <QFile>
#include <QStyle>
#include <QWidget>

namespace {

QString inQuotes(const QString& text)
{
    return u'"' + text + u'"';
}

} // namespace

bool applyStyleSheet(QWidget& widget, const QString& path)
{
    return applyStyleSheet({&widget}, path, QStringLiteral("stylesheet"));
}

bool applyStyleSheet(const QList<QWidget*>& widgets, const QString& path, const QString& name)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qWarning().noquote() << "Failed to load" << name << "from:" << inQuotes(path);
        qWarning() << "Error:" << file.errorString();
        return false;
    }
    const QString styleSheet = QString::fromUtf8(file.readAll());
    file.close();
    for (QWidget* const widget : widgets)
        widget->setStyleSheet(styleSheet);
    qDebug().noquote() << "Loaded" << name << "from:" << inQuotes(path);
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
