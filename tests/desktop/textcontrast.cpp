// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/textcontrast.h"

#include "tests/desktop/desktopuser.h"
#include "tests/support/x11clients.h"

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScreen>

#include <algorithm>
#include <cmath>

namespace textcontrast {

namespace {

double linear(int value)
{
    const double part = value / 255.0;
    return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

/// As the web's guidelines for accessible contents have it.
double luminance(QRgb colour)
{
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour)) + 0.0722 * linear(qBlue(colour));
}

double contrastOf(QRgb one, QRgb other)
{
    const auto [low, high] = std::minmax({luminance(one), luminance(other)});
    return (high + 0.05) / (low + 0.05);
}

QString textOf(const QWidget& widget)
{
    if (const auto* const label = qobject_cast<const QLabel*>(&widget))
        return label->text();
    if (const auto* const button = qobject_cast<const QAbstractButton*>(&widget))
        return button->text();
    if (const auto* const box = qobject_cast<const QComboBox*>(&widget))
        return box->currentText();
    if (const auto* const field = qobject_cast<const QLineEdit*>(&widget))
        return field->text() + field->placeholderText();
    if (const auto* const text = qobject_cast<const QPlainTextEdit*>(&widget))
        return text->toPlainText();
    return {};
}

/// What is in most of an area.
QRgb backgroundOf(const QImage& image)
{
    QHash<QRgb, int> counts;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            ++counts[image.pixel(x, y)];
    QRgb most = 0;
    for (auto count = counts.cbegin(); count != counts.cend(); ++count)
        most = *count > counts.value(most) ? count.key() : most;
    return most;
}

/// The innermost pixels of the strokes have the text's colour.
double strongest(const QImage& image)
{
    const QRgb background = backgroundOf(image);
    double found = 1.0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            found = std::max(found, contrastOf(image.pixel(x, y), background));
    return found;
}

/// Without its frame and, where a text is longer than that, without the half that has the icon.
QRect textArea(const QWidget& widget)
{
    constexpr int kFramePx = 3;
    QRect area = widget.rect().adjusted(kFramePx, kFramePx, -kFramePx, -kFramePx);
    const auto* const button = qobject_cast<const QAbstractButton*>(&widget);
    const bool hasIcon = button != nullptr && !button->icon().isNull();
    if (hasIcon && widget.fontMetrics().horizontalAdvance(button->text()) > area.width() / 2)
        area.setLeft(area.center().x());
    return area;
}

bool isPainted(const QWidget& widget)
{
    return widget.isVisible() && widget.isEnabled() && !textOf(widget).isEmpty() && !widget.visibleRegion().isEmpty();
}

bool isCovered(const QWidget& widget)
{
    const QWidget* const popup = QApplication::activePopupWidget();
    const QRect area(widget.mapToGlobal(QPoint()), widget.size());
    return popup != nullptr && popup != widget.window() && popup->geometry().intersects(area);
}

/// In pixels of the screen. As the server has it: Qt may have missed where the window manager has put a frameless one.
QPoint originOf(const QWidget& window)
{
    const QList<x11clients::Window> clients = x11clients::windowsOf(QCoreApplication::applicationPid());
    for (const x11clients::Window& client : clients)
        if (client.id == window.winId())
            return client.geometry.topLeft();
    const QPoint corner = window.mapToGlobal(QPoint()) - window.screen()->geometry().topLeft();
    return (QPointF(corner) * desktopuser::scale()).toPoint();
}

/// @param origin of its window
QImage imageOf(const QWidget& widget, const QImage& screen, const QPoint& origin)
{
    const QRect area = textArea(widget);
    const QPointF corner = widget.mapTo(widget.window(), area.topLeft());
    const double scale = desktopuser::scale();
    return screen.copy(QRectF(QPointF(origin) + corner * scale, QSizeF(area.size()) * scale).toRect());
}

} // namespace

QList<Text> textsOf(const QWidget& window, const QImage& screen)
{
    QList<const QWidget*> widgets{&window};
    for (const QWidget* const widget : window.findChildren<QWidget*>())
        widgets << widget;
    const QPoint origin = originOf(*window.window());
    QList<Text> texts;
    for (const QWidget* const widget : widgets) {
        if (!isPainted(*widget) || isCovered(*widget) || widget->window() != window.window())
            continue;
        const QString name = QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') + widget->objectName();
        texts.append({name, strongest(imageOf(*widget, screen, origin))});
    }
    return texts;
}

} // namespace textcontrast
