// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/capture/sizefields.h"

#include "widgets/stylesheet.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>

#include <utility>

#include <algorithm>
#include <cmath>

namespace {

/// The style sheet selects by it.
constexpr char kMarkProperty[] = "wrong";

QString shownLength(int length)
{
    return length > 0 ? QString::number(length) : QString();
}

} // namespace

SizeFields::SizeFields(QLineEdit& width, QLineEdit& height, std::function<Rules()> rules)
    : m_fields{&width, &height}, m_rules(std::move(rules))
{
    for (const Length length : {Width, Height}) {
        QLineEdit* const field = m_fields.at(length);
        field->installEventFilter(this);
        connect(field, &QLineEdit::returnPressed, this, [this, length] { enter(length); });
        connect(field, &QLineEdit::textEdited, this, [this, field] { setMark(*field, {}); });
    }
}

void SizeFields::show(const QSize& size)
{
    if (std::exchange(m_shown, size) != size)
        restore();
}

void SizeFields::restore()
{
    m_fields[Width]->setText(shownLength(m_shown.width()));
    m_fields[Height]->setText(shownLength(m_shown.height()));
    for (QLineEdit* const field : m_fields)
        setMark(*field, {});
}

void SizeFields::setEditable(bool editable)
{
    if (!editable)
        restore();
    for (QLineEdit* const field : m_fields) {
        field->setReadOnly(!editable);
        restyle(*field);
    }
}

bool SizeFields::isChanged() const
{
    return m_fields[Width]->text() != shownLength(m_shown.width()) ||
           m_fields[Height]->text() != shownLength(m_shown.height());
}

void SizeFields::enter(Length pressed)
{
    if (m_fields.at(pressed)->isReadOnly() || !isChanged())
        return;
    m_refusal.clear();
    const Rules rules = m_rules();
    const auto size = rules.ratio > 0.0 ? sizeAtRatio(leadingOf(pressed), rules) : enteredSize(pressed, rules);
    if (!size) {
        emit refused(m_refusal);
        return;
    }
    restore();
    emit entered(*size);
    // Whoever sizes the region shows another text.
    m_fields.at(pressed)->selectAll();
}

/// The one that was typed; of two, the one in which Enter was pressed.
SizeFields::Length SizeFields::leadingOf(Length pressed) const
{
    const Length other = pressed == Width ? Height : Width;
    const bool isPressedTyped = m_fields.at(pressed)->isModified();
    return !isPressedTyped && m_fields.at(other)->isModified() ? other : pressed;
}

std::optional<QSize> SizeFields::enteredSize(Length leading, const Rules& rules)
{
    const auto width = lengthIn(Width, {rules.smallest.width(), rules.largest.width()});
    const auto height = lengthIn(Height, {rules.smallest.height(), rules.largest.height()});
    if (width && height)
        return QSize(*width, *height);
    // The keyboard goes where something has to be corrected.
    QLineEdit* const wrong = m_fields.at(width ? Height : height ? Width : leading);
    wrong->setFocus();
    wrong->selectAll();
    return std::nullopt;
}

std::optional<QSize> SizeFields::sizeAtRatio(Length leading, const Rules& rules)
{
    const bool isWidth = leading == Width;
    const QSize smallest = isWidth ? rules.smallest : rules.smallest.transposed();
    const QSize largest = isWidth ? rules.largest : rules.largest.transposed();
    const double ratio = isWidth ? rules.ratio : 1.0 / rules.ratio;
    const int least = std::max(smallest.width(), static_cast<int>(std::ceil(smallest.height() * ratio)));
    // The ratio of a region across screens may be one that fits no region of one screen.
    const int most = std::max(least, std::min(largest.width(), static_cast<int>(std::floor(largest.height() * ratio))));
    const auto length = lengthIn(leading, {least, most});
    if (!length) {
        m_fields.at(leading)->selectAll();
        return std::nullopt;
    }
    const QSize size(*length, static_cast<int>(std::lround(*length / ratio)));
    return isWidth ? size : size.transposed();
}

/// Marks the field where that is not what it says.
std::optional<int> SizeFields::lengthIn(Length length, const Range& range)
{
    QLineEdit& field = *m_fields.at(length);
    bool isNumber = false;
    const int value = field.text().trimmed().toInt(&isNumber);
    // Of a region that is only partly on the screen, the fields may show less than can be typed.
    if (isNumber && value == (length == Width ? m_shown.width() : m_shown.height()))
        return std::clamp(value, range.smallest, range.largest);
    if (isNumber && value >= range.smallest && value <= range.largest)
        return value;
    const QString reason = length == Width ? tr("The width has to be a whole number from %1 to %2.")
                                           : tr("The height has to be a whole number from %1 to %2.");
    setMark(field, reason.arg(range.smallest).arg(range.largest));
    if (m_refusal.isEmpty())
        m_refusal = field.toolTip();
    return std::nullopt;
}

void SizeFields::setMark(QLineEdit& field, const QString& reason)
{
    if (field.toolTip() == reason)
        return;
    field.setToolTip(reason);
    field.setAccessibleDescription(reason);
    field.setProperty(kMarkProperty, !reason.isEmpty());
    restyle(field);
}

bool SizeFields::keepsFocus(const QEvent& event) const
{
    const Qt::FocusReason reason = static_cast<const QFocusEvent&>(event).reason();
    const bool isOther = std::ranges::find(m_fields, QApplication::focusWidget()) != m_fields.end();
    // The window or a menu comes back to what was typed.
    return isOther || reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
}

bool SizeFields::eventFilter(QObject* watched, QEvent* event)
{
    const bool isEscape =
        event->type() == QEvent::KeyPress && static_cast<const QKeyEvent*>(event)->key() == Qt::Key_Escape;
    const bool isCancelled = isEscape || (event->type() == QEvent::FocusOut && !keepsFocus(*event));
    if (!isCancelled || !isChanged())
        return QObject::eventFilter(watched, event);
    restore();
    return isEscape;
}
