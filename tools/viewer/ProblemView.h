#pragma once

#include <QWidget>

QT_BEGIN_NAMESPACE
class QLabel;
class QPushButton;
QT_END_NAMESPACE

namespace tandry::viewer {

struct OpenedStore;

/// Says what is wrong with a store that could not be opened, and what to do.
class ProblemView : public QWidget
{
    Q_OBJECT

public:
    explicit ProblemView(QWidget* parent = nullptr);

    void Show(OpenedStore const& opened);

Q_SIGNALS:
    /// Emitted when the user wants to choose another store.
    void OtherRequested();
    /// Emitted when the user wants to open the same store again.
    void RetryRequested();

private:
    QLabel* const _heading;
    QLabel* const _reason;
    QLabel* const _advice;
    QPushButton* const _retry;
};

} // namespace tandry::viewer
