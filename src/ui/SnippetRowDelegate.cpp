#include "SnippetRowDelegate.h"

#include "SnippetListModel.h"
#include "SymbolImage.h"
#include "UiTheme.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QToolTip>

SnippetRowDelegate::SnippetRowDelegate(DeleteHandler onDelete, QObject* parent)
    : QStyledItemDelegate(parent), m_onDelete(std::move(onDelete)) {}

QRect SnippetRowDelegate::trashRect(const QRect& rowRect) {
    return QRect(rowRect.right() - horizontalPadding - trashSize + 1,
                 rowRect.center().y() - trashSize / 2, trashSize, trashSize);
}

QSize SnippetRowDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    const int height = QFontMetrics(UiTheme::titleFont()).height() +
                       QFontMetrics(UiTheme::smallFont()).height() + 2 +
                       2 * (verticalPadding + 4);
    return QSize(200, height);
}

void SnippetRowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect;
    const bool selected = option.state & QStyle::State_Selected;
    if (selected) {
        QPainterPath shape;
        shape.addRoundedRect(QRectF(row).adjusted(6, 1, -6, -1), 6, 6);
        painter->fillPath(shape, UiTheme::selectionFill(option.palette));
    } else if (option.state & QStyle::State_MouseOver) {
        QPainterPath shape;
        shape.addRoundedRect(QRectF(row).adjusted(6, 1, -6, -1), 6, 6);
        QColor hover = option.palette.color(QPalette::WindowText);
        hover.setAlphaF(0.05f);
        painter->fillPath(shape, hover);
    }

    const QRect trash = trashRect(row);
    const QRect text(row.left() + horizontalPadding, row.top() + verticalPadding + 4,
                     trash.left() - 8 - (row.left() + horizontalPadding),
                     row.height() - 2 * (verticalPadding + 4));
    const QColor primary = selected
                               ? option.palette.color(QPalette::Active, QPalette::HighlightedText)
                               : option.palette.color(QPalette::Text);
    const QColor secondary = selected ? primary : UiTheme::secondaryText(option.palette);

    const QFont title = UiTheme::titleFont();
    const QFont small = UiTheme::smallFont();
    const QFontMetrics titleMetrics(title);
    const QFontMetrics smallMetrics(small);
    const QString command =
        UiTheme::oneLine(index.data(SnippetListModel::CommandRole).toString());
    const QString content =
        UiTheme::oneLine(index.data(SnippetListModel::ContentRole).toString());

    painter->setFont(title);
    // A command another snippet has too is marked until the user changes one of them.
    painter->setPen(primary);
    const QRect commandRect(text.left(), text.top(), text.width(), titleMetrics.height());
    const QString shownCommand = index.data(SnippetListModel::ClashRole).toBool()
                                     ? QStringLiteral("\u26A0 ") + command
                                     : command;
    painter->drawText(commandRect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      titleMetrics.elidedText(shownCommand, Qt::ElideRight, text.width()));
    painter->setFont(small);
    painter->setPen(secondary);
    const QRect contentRect(text.left(), commandRect.bottom() + 3, text.width(),
                            smallMetrics.height());
    painter->drawText(contentRect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                      smallMetrics.elidedText(content, Qt::ElideRight, text.width()));

    const qreal ratio = painter->device()->devicePixelRatioF();
    painter->drawPixmap(trash.topLeft(),
                        SymbolImage::pixmap(QStringLiteral("edit-delete"), trashSize, secondary,
                                            ratio));
    painter->restore();
    UiTheme::drawRowFocus(painter, option);
}

bool SnippetRowDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                  const QStyleOptionViewItem& option, const QModelIndex& index) {
    const bool press =
        event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
    const bool release = event->type() == QEvent::MouseButtonRelease;
    if (press || release) {
        const auto* mouse = static_cast<QMouseEvent*>(event);
        // A little slack around the symbol makes it easier to hit.
        if (mouse->button() == Qt::LeftButton &&
            trashRect(option.rect).adjusted(-4, -4, 4, 4).contains(mouse->position().toPoint())) {
            if (release && m_onDelete) {
                m_onDelete(index.data(SnippetListModel::IdRole).toUuid());
            }
            return true; // the trash symbol does not select the row
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}

bool SnippetRowDelegate::helpEvent(QHelpEvent* event, QAbstractItemView* view,
                                const QStyleOptionViewItem& option, const QModelIndex& index) {
    if (event->type() == QEvent::ToolTip && trashRect(option.rect).contains(event->pos())) {
        QToolTip::showText(event->globalPos(), tr("Delete Snippet"), view);
        return true;
    }
    return QStyledItemDelegate::helpEvent(event, view, option, index);
}
