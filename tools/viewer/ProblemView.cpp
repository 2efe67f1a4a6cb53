#include "tools/viewer/ProblemView.h"

#include "tools/viewer/OpenedStore.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tandry::viewer {

namespace {

/// The size of the heading, in multiples of the ordinary one.
constexpr double HeadingSize = 1.5;

/// A text that wraps and can be selected, also by keyboard.
QLabel* MakeText(QWidget* parent)
{
    auto* const label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

} // namespace

ProblemView::ProblemView(QWidget* parent)
    : QWidget(parent)
    , _heading(MakeText(this))
    , _reason(MakeText(this))
    , _advice(MakeText(this))
    , _retry(new QPushButton(tr("&Try Again"), this))
{
    QFont font = _heading->font();
    font.setPointSizeF(font.pointSizeF() * HeadingSize);
    font.setBold(true);
    _heading->setFont(font);
    auto* const other = new QPushButton(tr("&Open Another Store…"), this);

    auto* const buttons = new QHBoxLayout;
    buttons->addWidget(_retry);
    buttons->addWidget(other);
    buttons->addStretch();
    auto* const layout = new QVBoxLayout(this);
    layout->addWidget(_heading);
    layout->addWidget(_reason);
    layout->addWidget(_advice);
    layout->addLayout(buttons);
    layout->addStretch();
    connect(_retry, &QPushButton::clicked, this, &ProblemView::RetryRequested);
    connect(other, &QPushButton::clicked, this, &ProblemView::OtherRequested);
}

void ProblemView::Show(OpenedStore const& opened)
{
    auto const show = [](QLabel& label, QString const& text) {
        label.setText(text);
        label.setAccessibleName(text);
    };
    show(*_heading, opened.heading);
    show(*_reason, opened.reason);
    show(*_advice, opened.advice);
    _retry->setFocus();
}

} // namespace tandry::viewer
