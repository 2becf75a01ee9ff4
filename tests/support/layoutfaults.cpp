// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/support/layoutfaults.h"

#include <QAbstractScrollArea>
#include <QCheckBox>
#include <QComboBox>
#include <QFontMetrics>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRawFont>
#include <QScreen>
#include <QScrollBar>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QStyleOptionFrame>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>

namespace {

/// Between a button's icon and its text, as Qt's styles have it.
constexpr int kIconSpacingPx = 4;
/// At the sides of a field's text, as QLineEdit has it.
constexpr int kFieldMarginPx = 2;

QString nameOf(const QWidget& widget)
{
    const QString name = widget.objectName();
    return name.isEmpty() ? QString::fromLatin1(widget.metaObject()->className()) : name;
}

QString sized(const QSize& size)
{
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

/// Qt's own parts of a larger control.
bool isInner(const QWidget& widget)
{
    const QWidget* const parent = widget.parentWidget();
    return widget.objectName().startsWith(QLatin1String("qt_")) || qobject_cast<const QComboBox*>(parent) != nullptr ||
           qobject_cast<const QLineEdit*>(parent) != nullptr ||
           qobject_cast<const QAbstractScrollArea*>(parent) != nullptr ||
           qobject_cast<const QScrollBar*>(&widget) != nullptr;
}

/// What only marks what is below it.
bool isDrawnOver(const QWidget& widget)
{
    return widget.testAttribute(Qt::WA_TransparentForMouseEvents);
}

/// What lies over a page for a while, by its class: this library knows no such class.
bool isOverAll(const QWidget& widget)
{
    return widget.inherits("NoticeBar");
}

QList<const QWidget*> shownPartsOf(const QWidget& window)
{
    QList<const QWidget*> parts;
    const QList<QWidget*> children = window.findChildren<QWidget*>();
    for (const QWidget* const child : children) {
        if (child->isVisible() && child->window() == &window && !isInner(*child) && !isDrawnOver(*child))
            parts.append(child);
    }
    return parts;
}

/// What a scroll area shows a part of.
bool isScrolled(const QWidget& widget)
{
    return qobject_cast<const QAbstractScrollArea*>(widget.parentWidget()->parentWidget()) != nullptr;
}

QSize sizeOf(const QString& text, const QWidget& widget)
{
    return widget.fontMetrics().size(Qt::TextShowMnemonic, text);
}

class Faults
{
public:
    void look(const QWidget& part)
    {
        lookAtGeometry(part);
        if (const auto* const label = qobject_cast<const QLabel*>(&part))
            lookAtLabel(*label);
        else if (const auto* const button = qobject_cast<const QPushButton*>(&part))
            lookAtButton(*button);
        else if (const auto* const check = qobject_cast<const QCheckBox*>(&part))
            lookAtCheckBox(*check);
        else if (const auto* const box = qobject_cast<const QComboBox*>(&part))
            lookAtBox(*box);
        else if (const auto* const field = qobject_cast<const QLineEdit*>(&part))
            lookAtField(*field);
        else if (const auto* const text = qobject_cast<const QPlainTextEdit*>(&part))
            lookAtText(*text);
    }

    void lookAtPairs(const QList<const QWidget*>& parts)
    {
        for (qsizetype one = 0; one < parts.size(); ++one) {
            for (qsizetype other = one + 1; other < parts.size(); ++other) {
                const QWidget& first = *parts.at(one);
                const QWidget& second = *parts.at(other);
                const bool areBesideEachOther =
                    first.parentWidget() == second.parentWidget() && !isOverAll(first) && !isOverAll(second);
                if (areBesideEachOther && first.geometry().intersects(second.geometry()))
                    add(first, QStringLiteral("lies over ") + nameOf(second));
            }
        }
    }

    void lookAtWindow(const QWidget& window)
    {
        const QSize screen = window.screen()->size();
        if (window.size().boundedTo(screen) != window.size())
            add(window, QStringLiteral("is larger than the screen: ") + sized(window.size()));
        const auto* const menu = qobject_cast<const QMenu*>(&window);
        if (menu != nullptr && menu->size().boundedTo(menu->sizeHint()) != menu->sizeHint())
            add(window, QStringLiteral("is smaller than its entries: ") + sized(window.size()));
        if (menu == nullptr)
            return;
        for (const QAction* const entry : menu->actions())
            expectLetters(window, entry->text());
    }

    const QStringList& found() const { return m_found; }

private:
    void add(const QWidget& part, const QString& fault) { m_found.append(nameOf(part) + u' ' + fault); }

    void lookAtGeometry(const QWidget& part)
    {
        if (!isScrolled(part) && !part.parentWidget()->rect().contains(part.geometry()))
            add(part, QStringLiteral("reaches beyond ") + nameOf(*part.parentWidget()));
    }

    void expectRoom(const QWidget& part, const QString& text, const QSize& room)
    {
        expectLetters(part, text);
        const QSize needed = sizeOf(text, part);
        if (!text.isEmpty() && needed.boundedTo(room) != needed)
            add(part, QStringLiteral("has %1 for \"%2\", which needs %3").arg(sized(room), text, sized(needed)));
    }

    /// A letter that no font has is shown as a box.
    void expectLetters(const QWidget& part, const QString& text)
    {
        QTextLayout layout(text, part.font());
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        const QList<QGlyphRun> runs = layout.glyphRuns();
        for (const QGlyphRun& run : runs) {
            if (run.glyphIndexes().contains(0U))
                add(part, QStringLiteral("has letters that no font has: ") + text);
        }
    }

    void lookAtLabel(const QLabel& label)
    {
        // A link's address is the maker's.
        if (label.text().isEmpty() || Qt::mightBeRichText(label.text()))
            return;
        const QSize room = label.contentsRect().size();
        if (!label.wordWrap()) {
            expectRoom(label, label.text(), room);
            return;
        }
        expectLetters(label, label.text());
        const QRect needed = label.fontMetrics().boundingRect(QRect(0, 0, room.width(), 0),
                                                              Qt::TextWordWrap | int(label.alignment()), label.text());
        if (needed.size().boundedTo(room) != needed.size())
            add(label, QStringLiteral("has %1 for \"%2\", which needs %3")
                           .arg(sized(room), label.text(), sized(needed.size())));
    }

    void lookAtButton(const QPushButton& button)
    {
        // Its text is a tool tip.
        if (button.property("folded").toBool())
            return;
        QStyleOptionButton option;
        option.initFrom(&button);
        option.text = button.text();
        option.icon = button.icon();
        option.iconSize = button.iconSize();
        QSize room = button.style()->subElementRect(QStyle::SE_PushButtonContents, &option, &button).size();
        if (!button.icon().isNull())
            room.rwidth() -= button.iconSize().width() + kIconSpacingPx;
        expectRoom(button, button.text(), room);
    }

    void lookAtCheckBox(const QCheckBox& check)
    {
        QStyleOptionButton option;
        option.initFrom(&check);
        option.text = check.text();
        expectRoom(check, check.text(),
                   check.style()->subElementRect(QStyle::SE_CheckBoxContents, &option, &check).size());
    }

    void lookAtBox(const QComboBox& box)
    {
        QStyleOptionComboBox option;
        option.initFrom(&box);
        const QSize room =
            box.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box).size();
        for (int index = 0; index < box.count(); ++index)
            expectRoom(box, box.itemText(index), room);
    }

    void lookAtField(const QLineEdit& field)
    {
        expectRoom(field, field.placeholderText(), roomIn(field));
        bool isNumber = false;
        (void)field.text().toInt(&isNumber);
        // One that is cut off is another number.
        if (isNumber)
            expectRoom(field, field.text(), roomIn(field));
    }

    static QSize roomIn(const QLineEdit& field)
    {
        QStyleOptionFrame option;
        option.initFrom(&field);
        const QRect contents = field.style()->subElementRect(QStyle::SE_LineEditContents, &option, &field);
        return contents.size() - QSize(2 * kFieldMarginPx, 0);
    }

    void lookAtText(const QPlainTextEdit& text)
    {
        expectLetters(text, text.toPlainText());
        // The height of such a document is counted in lines.
        const double lines = text.document()->size().height();
        if (lines * text.fontMetrics().lineSpacing() > text.viewport()->height())
            add(text, QStringLiteral("has more lines than it shows: ") + text.toPlainText());
    }

    QStringList m_found;
};

} // namespace

QStringList layoutFaults(const QWidget& window)
{
    Faults faults;
    const QList<const QWidget*> parts = shownPartsOf(window);
    for (const QWidget* const part : parts)
        faults.look(*part);
    faults.lookAtPairs(parts);
    faults.lookAtWindow(window);
    return faults.found();
}
