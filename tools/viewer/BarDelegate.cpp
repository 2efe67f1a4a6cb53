#include "tools/viewer/BarDelegate.h"

#include "tools/viewer/RootTable.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionProgressBar>

namespace tandry::viewer {

namespace {

/// A bar has that many steps.
constexpr int Steps = 1000;

/// Around the bar and on both sides of its text, in device-independent pixels.
constexpr int Margin = 2;
constexpr int TextMargin = 12;

QStyle const& StyleOf(QStyleOptionViewItem const& option)
{
    return option.widget != nullptr ? *option.widget->style() : *QApplication::style();
}

} // namespace

void BarDelegate::paint(QPainter* painter, QStyleOptionViewItem const& option, QModelIndex const& index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    QStyle const& style = StyleOf(option);
    style.drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, painter, cell.widget);

    QStyleOptionProgressBar bar;
    bar.initFrom(cell.widget);
    bar.state |= QStyle::State_Horizontal;
#if QT_VERSION_MAJOR == 5
    bar.orientation = Qt::Horizontal;
#endif
    bar.rect = cell.rect.adjusted(Margin, Margin, -Margin, -Margin);
    bar.maximum = Steps;
    bar.progress = static_cast<int>(index.data(RootTable::InSyncRole).toDouble() * Steps);
    bar.text = cell.text;
    bar.textVisible = true;
    bar.textAlignment = Qt::AlignCenter;
    style.drawControl(QStyle::CE_ProgressBar, &bar, painter, cell.widget);
}

QSize BarDelegate::sizeHint(QStyleOptionViewItem const& option, QModelIndex const& index) const
{
    QSize const text = QStyledItemDelegate::sizeHint(option, index);
    return {text.width() + 2 * TextMargin, text.height() + 2 * Margin};
}

} // namespace tandry::viewer
