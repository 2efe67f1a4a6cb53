#pragma once

#include <QStyledItemDelegate>

namespace tandry::viewer {

/// Draws a cell of `RootTable` as a bar, as full as the root is in sync, with its text on it, in the style and the
/// colours of the desktop.
class BarDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painter, QStyleOptionViewItem const& option, QModelIndex const& index) const override;
    QSize sizeHint(QStyleOptionViewItem const& option, QModelIndex const& index) const override;
};

} // namespace tandry::viewer
