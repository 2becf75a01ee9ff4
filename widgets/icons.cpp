// SPDX-License-Identifier: GPL-3.0-or-later
#include "widgets/icons.h"

#include <QAbstractButton>
#include <QEvent>
#include <QIconEngine>
#include <QPainter>

namespace icons {

namespace {

/// Gives the icons the colour of a disabled control's text on the windows' background.
constexpr double kDisabledOpacity = 0.46;

/// An icon from a file, fainter in a disabled control. Qt's own way goes by the desktop's colours and leaves an icon on
/// a dark window bright.
class FadingIcon : public QIconEngine
{
public:
    explicit FadingIcon(const QString& file) : m_icon(file) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override
    {
        const double before = painter->opacity();
        painter->setOpacity(before * opacity(mode));
        m_icon.paint(painter, rect, Qt::AlignCenter, shown(mode), state);
        painter->setOpacity(before);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        if (mode != QIcon::Disabled)
            return m_icon.pixmap(size, 1.0, mode, state);
        const QPixmap whole = m_icon.pixmap(size, 1.0, shown(mode), state);
        if (whole.isNull())
            return {};
        QPixmap faint(whole.size());
        faint.fill(Qt::transparent);
        QPainter painter(&faint);
        painter.setOpacity(kDisabledOpacity);
        painter.drawPixmap(0, 0, whole);
        return faint;
    }

    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override
    {
        return m_icon.actualSize(size, shown(mode), state);
    }

    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override
    {
        return m_icon.availableSizes(shown(mode), state);
    }

    QIconEngine* clone() const override { return new FadingIcon(*this); }
    bool isNull() override { return m_icon.isNull(); }

private:
    static double opacity(QIcon::Mode mode) { return mode == QIcon::Disabled ? kDisabledOpacity : 1.0; }
    static QIcon::Mode shown(QIcon::Mode mode) { return mode == QIcon::Disabled ? QIcon::Normal : mode; }

    QIcon m_icon;
};

} // namespace

QString path(const QString& name, Tone tone)
{
    return QStringLiteral(":/res/forms/images/%1%2.svg").arg(name, QLatin1String(tone == Tone::Light ? "-white" : ""));
}

QIcon named(const QString& name, Tone tone)
{
    return QIcon(new FadingIcon(path(name, tone)));
}

} // namespace icons

HoverIcons::HoverIcons(QAbstractButton* button, const QString& name) : QObject(button), m_button(*button), m_name(name)
{
    button->installEventFilter(this);
    showIcon();
}

bool HoverIcons::eventFilter(QObject*, QEvent* event)
{
    const QEvent::Type type = event->type();
    if (type == QEvent::Enter || type == QEvent::Leave || type == QEvent::EnabledChange)
        showIcon();
    return false;
}

void HoverIcons::showIcon()
{
    const bool light = m_button.underMouse() && m_button.isEnabled();
    m_button.setIcon(icons::named(m_name, light ? icons::Tone::Light : icons::Tone::Normal));
}
