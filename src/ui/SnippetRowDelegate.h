#pragma once

#include <QUuid>

#include <QStyledItemDelegate>
#include <functional>

// Draws one row of the snippet list: the command (bold) over the first line of the content
// (fainter), and a delete icon at the right that asks to delete the row's snippet. Rows are painted, not built from widgets, so ten thousand snippets scroll as
// smoothly as ten; every row has the same height.
class SnippetRowDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    // Receives the id of the row's snippet.
    using DeleteHandler = std::function<void(const QUuid& snippetId)>;

    static constexpr int trashSize = 16;
    static constexpr int horizontalPadding = 16;
    static constexpr int verticalPadding = 4;

    explicit SnippetRowDelegate(DeleteHandler onDelete, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    // Where the trash symbol of a row with these bounds is.
    static QRect trashRect(const QRect& rowRect);

protected:
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

private:
    DeleteHandler m_onDelete;
};
