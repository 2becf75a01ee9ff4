// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/textcontrast.h"

#include "files/fileitemdelegate.h"
#include "tests/desktop/desktopuser.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QScreen>
#include <QStyle>

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

/// Of a widget.
struct Part
{
    QString name;
    QRect area;
    /// Left of the text, of any colour.
    int iconPx = 0;
};

/// Its width.
int iconOf(const QWidget& widget)
{
    if (qobject_cast<const QCheckBox*>(&widget) != nullptr)
        return widget.style()->pixelMetric(QStyle::PM_IndicatorWidth, nullptr, &widget);
    const auto* const button = qobject_cast<const QAbstractButton*>(&widget);
    return button == nullptr || button->icon().isNull() ? 0 : button->iconSize().width();
}

QList<Part> partsOf(const QWidget& widget)
{
    constexpr int kFramePx = 3;
    constexpr int kArrowPx = 24;
    if (textOf(widget).isEmpty())
        return {};
    const bool hasArrow = qobject_cast<const QComboBox*>(&widget) != nullptr;
    return {
        {{}, widget.rect().adjusted(kFramePx, kFramePx, hasArrow ? -kArrowPx : -kFramePx, -kFramePx), iconOf(widget)}};
}

/// Between the columns of check marks and arrows.
QList<Part> entriesOf(const QMenu& menu)
{
    constexpr int kColumnPx = 20;
    QList<Part> parts;
    for (QAction* const entry : menu.actions()) {
        if (entry->isEnabled() && !entry->isSeparator() && !entry->text().isEmpty())
            parts.append({entry->text(), menu.actionGeometry(entry).adjusted(kColumnPx, 1, -kColumnPx, -1)});
    }
    return parts;
}

/// The name, and the date at the right, of the list of files; else the whole row.
QList<Part> rowsOf(const QAbstractItemView& view)
{
    constexpr int kNamePx = 100;
    constexpr int kDatePx = 60;
    constexpr int kFramePx = 2;
    const bool isFileList = qobject_cast<SCFileManager::FileItemDelegate*>(view.itemDelegate()) != nullptr;
    const QPoint corner = view.viewport()->pos();
    QList<Part> parts;
    for (int row = 0; row < view.model()->rowCount(); ++row) {
        const QModelIndex index = view.model()->index(row, 0);
        const QRect area = view.visualRect(index);
        if (!view.viewport()->rect().contains(area))
            continue;
        const QRect text = (isFileList ? SCFileManager::FileItemDelegate::textRect(area) : area).translated(corner);
        const QRect inside = text.adjusted(kFramePx, kFramePx, -kFramePx, -kFramePx);
        const QString name = index.data().toString();
        if (!isFileList) {
            parts.append({name, inside});
            continue;
        }
        parts.append({name, QRect(inside.topLeft(), QSize(kNamePx, inside.height()))});
        parts.append({name + QStringLiteral(", date"), inside.adjusted(inside.width() - kDatePx, 0, 0, 0)});
    }
    return parts;
}

QList<Part> allPartsOf(const QWidget& widget)
{
    if (const auto* const menu = qobject_cast<const QMenu*>(&widget))
        return entriesOf(*menu);
    if (const auto* const view = qobject_cast<const QAbstractItemView*>(&widget))
        return rowsOf(*view);
    return partsOf(widget);
}

bool isPainted(const QWidget& widget)
{
    return widget.isVisible() && widget.isEnabled() && !widget.visibleRegion().isEmpty();
}

/// Without the columns up to the end of the icon, which is the first thing that is painted there.
QImage withoutIcon(const QImage& image, int iconPx)
{
    const QRgb background = backgroundOf(image);
    const auto isEmpty = [&](int x) {
        for (int y = 0; y < image.height(); ++y) {
            if (image.pixel(x, y) != background)
                return false;
        }
        return true;
    };
    int left = 0;
    while (iconPx > 0 && left < image.width() && isEmpty(left))
        ++left;
    return image.copy(left + iconPx, 0, image.width() - left - iconPx, image.height());
}

bool isCovered(const QWidget& widget)
{
    const QWidget* const popup = QApplication::activePopupWidget();
    const QRect area(widget.mapToGlobal(QPoint()), widget.size());
    return popup != nullptr && popup != widget.window() && popup->geometry().intersects(area);
}

/// @param origin of its window
QImage imageOf(const QWidget& widget, const Part& part, const QImage& screen, const QPoint& origin)
{
    const QPointF corner = widget.mapTo(widget.window(), part.area.topLeft());
    const double scale = desktopuser::scale();
    const QImage image =
        screen.copy(QRectF(QPointF(origin) + corner * scale, QSizeF(part.area.size()) * scale).toRect());
    return withoutIcon(image, static_cast<int>(part.iconPx * scale));
}

} // namespace

QList<Text> textsOf(const QWidget& window, const QImage& screen)
{
    QList<const QWidget*> widgets{&window};
    for (const QWidget* const widget : window.findChildren<QWidget*>())
        widgets << widget;
    const QPoint origin = desktopuser::originInImage(*window.window());
    QList<Text> texts;
    for (const QWidget* const widget : widgets) {
        if (!isPainted(*widget) || isCovered(*widget) || widget->window() != window.window())
            continue;
        const QString name = QLatin1String(widget->metaObject()->className()) + QLatin1Char(' ') + widget->objectName();
        for (const Part& part : allPartsOf(*widget))
            texts.append({name + QLatin1Char(' ') + part.name, strongest(imageOf(*widget, part, screen, origin))});
    }
    return texts;
}

} // namespace textcontrast
