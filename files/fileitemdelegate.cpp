// SPDX-License-Identifier: GPL-3.0-or-later
#include "files/fileitemdelegate.h"

#include "files/filerow.h"
#include "widgets/icons.h"
#include "widgets/shownname.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>

namespace {

constexpr QColor kBackground(0x28, 0x28, 0x2e);
constexpr QColor kRaisedBackground(0x37, 0x37, 0x3d);
constexpr QColor kText(0x99, 0xa1, 0xb0);
constexpr QColor kRaisedText(0xff, 0xff, 0xff);
constexpr QColor kIconTint(0x99, 0xa1, 0xb0);
constexpr QColor kSeparator(0x22, 0x22, 0x22);

constexpr int kQuietFontPx = 12;
constexpr int kColumnSpacing = 16;
/// To the icons.
constexpr int kColumnMargin = 8;
constexpr int kLeastNameWidth = 110;

constexpr int kFolderIconSide = 18;
constexpr int kDeleteIconSide = 16;

/// Null where the system cannot read the icon's format.
QPixmap tintedIcon(const char* name, int side, qreal devicePixelRatio)
{
    QPixmap pixmap = icons::named(QLatin1String(name)).pixmap(QSize(side, side), devicePixelRatio);
    if (pixmap.isNull())
        return pixmap;
    QPainter painter(&pixmap);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(pixmap.rect(), kIconTint);
    return pixmap;
}

void drawIcon(QPainter& painter, const QRect& rect, const char* name)
{
    const QPixmap pixmap = tintedIcon(name, rect.width(), painter.device()->devicePixelRatioF());
    if (!pixmap.isNull())
        painter.drawPixmap(rect, pixmap);
}

struct Column
{
    QString text;
    QString longest;
};

/// From the right, without the state.
QList<Column> columnsOf(const FileRowTexts& texts)
{
    const FileRowTexts longest = FileRowTexts::longest();
    return {{texts.date, longest.date}, {texts.size, longest.size}, {texts.length, longest.length}};
}

int widthOf(const Column& column, const QFontMetrics& metrics)
{
    return std::max(metrics.horizontalAdvance(column.text), metrics.horizontalAdvance(column.longest));
}

/// Draws texts from the right to the left.
class ColumnPainter
{
public:
    ColumnPainter(QPainter& painter, const QRect& text)
        : m_painter(painter), m_text(text), m_end(text.right() + 1 - kColumnMargin), m_nameEnd(text.right() + 1)
    {}

    /// Whether the name keeps its least width, and so much beside it.
    bool hasRoomFor(int width, int beside) const
    {
        return m_end - width - kColumnSpacing - beside - m_text.left() >= kLeastNameWidth;
    }

    void draw(const QString& text, int width)
    {
        const QRect rect(m_end - width, m_text.top(), width, m_text.height());
        m_painter.drawText(rect, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, text);
        m_end = m_nameEnd = rect.left() - kColumnSpacing;
    }

    int nameWidth() const { return m_nameEnd - m_text.left(); }

private:
    QPainter& m_painter;
    const QRect m_text;
    int m_end;
    int m_nameEnd;
};

/// Returns the width that is left for the name.
int drawColumns(QPainter& painter, const QRect& text, const QModelIndex& index)
{
    const QFontMetrics metrics = painter.fontMetrics();
    const FileRowTexts texts = FileRow::textsOf(index);
    ColumnPainter columns(painter, text);
    const int stateWidth = metrics.horizontalAdvance(texts.state);
    // What is the matter with a file matters most.
    const int beside = texts.state.isEmpty() ? 0 : stateWidth + kColumnSpacing;
    for (const Column& column : columnsOf(texts)) {
        const int width = widthOf(column, metrics);
        if (!columns.hasRoomFor(width, beside))
            break;
        if (!column.text.isEmpty())
            columns.draw(column.text, width);
    }
    if (!texts.state.isEmpty() && columns.hasRoomFor(stateWidth, 0))
        columns.draw(texts.state, stateWidth);
    return columns.nameWidth();
}

/// Cut off where the columns, or the icons, begin.
void drawName(QPainter& painter, const QRect& text, const QString& name, int width)
{
    const QRect rect(text.topLeft(), QSize(width, text.height()));
    painter.setClipRect(rect, Qt::IntersectClip);
    painter.drawText(rect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, name);
}

} // namespace

SCFileManager::FileItemDelegate::FileItemDelegate(QObject* parent) : QStyledItemDelegate(parent) {}

QRect SCFileManager::FileItemDelegate::textRect(const QRect& row)
{
    return row.adjusted(8, 0, -48, 0);
}

QRect SCFileManager::FileItemDelegate::folderRect(const QRect& row)
{
    return {QPoint(row.right() - 46, row.top() + 7), QPoint(row.right() - 46 + kFolderIconSide - 1, row.bottom() - 7)};
}

QRect SCFileManager::FileItemDelegate::deleteRect(const QRect& row)
{
    return {QPoint(row.right() - 20, row.top() + 8), QPoint(row.right() - 20 + kDeleteIconSide - 1, row.bottom() - 8)};
}

void SCFileManager::FileItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                            const QModelIndex& index) const
{
    const bool hovered = option.state.testFlag(QStyle::State_MouseOver);
    const bool raised = hovered || option.state.testFlag(QStyle::State_Selected);
    const QRect& row = option.rect;
    painter->save();
    painter->fillRect(row, kBackground);
    if (raised)
        painter->fillRect(row, kRaisedBackground);

    const QRect text = textRect(row);
    painter->save();
    QFont quiet = option.font;
    quiet.setPixelSize(kQuietFontPx);
    painter->setFont(quiet);
    painter->setPen(kText);
    const int nameWidth = drawColumns(*painter, text, index);
    painter->setFont(option.font);
    painter->setPen(raised ? kRaisedText : kText);
    drawName(*painter, text, shownName(index.data(Qt::DisplayRole).toString()), nameWidth);
    painter->restore();

    if (hovered) {
        drawIcon(*painter, folderRect(row), "folder");
        drawIcon(*painter, deleteRect(row), "delete");
    }
    // A line drawn with the pen would leave a seam at fractional scales.
    painter->fillRect(QRect(row.bottomLeft(), QSize(row.width(), 1)), kSeparator);
    painter->restore();
}

QSize SCFileManager::FileItemDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& /*index*/) const
{
    return {option.rect.width(), kHeight};
}

bool SCFileManager::FileItemDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                                const QStyleOptionViewItem& option, const QModelIndex& index)
{
    if (event == nullptr || view == nullptr || event->type() != QEvent::ToolTip)
        return QStyledItemDelegate::helpEvent(event, view, option, index);
    const QRect folder = folderRect(option.rect);
    const QRect remove = deleteRect(option.rect);
    if (folder.contains(event->pos())) {
        QToolTip::showText(event->globalPos(), tr("Show in Folder"), view, folder);
        return true;
    }
    if (remove.contains(event->pos())) {
        QToolTip::showText(event->globalPos(), tr("Delete"), view, remove);
        return true;
    }
    QToolTip::hideText();
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}
