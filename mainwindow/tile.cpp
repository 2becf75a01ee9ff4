// SPDX-License-Identifier: GPL-3.0-or-later
#include "mainwindow/tile.h"

#include "widgets/accessibletoggle.h"
#include "widgets/icons.h"
#include "widgets/stylesheet.h"

#include <QEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QVBoxLayout>

namespace {

constexpr QSize kIconSize(28, 28);
constexpr QSize kSmallestSize(104, 80);

} // namespace

Tile::Tile(QWidget* parent)
    : QFrame(parent), m_icon(new QLabel(this)), m_label(new QLabel(this)), m_note(new QLabel(this))
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    registerAccessibleToggle("Tile", QAccessible::RadioButton, "selected");
    m_icon->setObjectName(QStringLiteral("tileIcon"));
    m_label->setObjectName(QStringLiteral("tileLabel"));
    m_note->setObjectName(QStringLiteral("tileNote"));
    m_note->hide();
    for (QLabel* const part : {m_icon, m_label, m_note})
        part->setAlignment(Qt::AlignCenter);
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(4);
    layout->addStretch();
    layout->addWidget(m_icon);
    layout->addWidget(m_label);
    layout->addWidget(m_note);
    layout->addStretch();
}

void Tile::setSelected(bool selected)
{
    if (m_selected == selected)
        return;
    m_selected = selected;
    showIcon();
    for (QWidget* const part : std::initializer_list<QWidget*>{this, m_icon, m_label, m_note})
        restyle(*part);
    update();
    announceToggled(*this);
}

QString Tile::text() const
{
    return m_label->text();
}

void Tile::setText(const QString& text)
{
    m_label->setText(text);
    setAccessibleName(text);
}

QString Tile::note() const
{
    return m_note->text();
}

void Tile::setNote(const QString& note)
{
    m_note->setText(note);
    m_note->setVisible(!note.isEmpty());
}

void Tile::setIconName(const QString& name)
{
    m_iconName = name;
    showIcon();
}

QSize Tile::minimumSizeHint() const
{
    return layout()->totalMinimumSize().expandedTo(kSmallestSize);
}

bool Tile::event(QEvent* event)
{
    const bool handled = QFrame::event(event);
    if (event->type() == QEvent::Enter || event->type() == QEvent::Leave || event->type() == QEvent::EnabledChange ||
        event->type() == QEvent::ScreenChangeInternal)
        showIcon();
    return handled;
}

void Tile::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        emit activated();
    else
        QFrame::keyPressEvent(event);
}

void Tile::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
        emit activated();
    QFrame::mouseReleaseEvent(event);
}

void Tile::showIcon()
{
    const bool light = m_selected || (underMouse() && isEnabled());
    const QIcon icon = icons::named(m_iconName, light ? icons::Tone::Light : icons::Tone::Normal);
    m_icon->setPixmap(icon.pixmap(kIconSize, devicePixelRatioF(), isEnabled() ? QIcon::Normal : QIcon::Disabled));
}
