#pragma once

#include "support/QtPrinters.h"
#include "support/StoreFixture.h"

#include <QStringList>
#include <QWidget>

#include <functional>

QT_BEGIN_NAMESPACE
class QAbstractItemModel;
QT_END_NAMESPACE

namespace tandry::test {

/// Runs the event loop until the condition holds. Returns whether it does, after a minute at the latest.
[[nodiscard]] bool WaitUntil(std::function<bool()> const& condition);

/// Returns the texts of a column of all rows that are at the top.
QStringList TextsOf(QAbstractItemModel const& model, int column);

/// Returns the widget of this type with this accessible name; null, and fails the test, if there is not one.
template <class Widget>
Widget* Find(QWidget const& window, QString const& accessibleName);

/// A store with the root "/p/docs", which holds the file "a.txt" and the folder "letters" with the file "b.odt"; the
/// folder is out of sync, and so are the files. A second root, "/p/empty", holds nothing.
class ViewerFixture : public StoreFixture
{
protected:
    void SetUp() override;

    int AddFolder(QString const& path, int parentId, int status);
    int AddFile(QString const& path, int folderId);

    int docs = 0;
    int letters = 0;
    int empty = 0;
    int textFile = 0;
    int letterFile = 0;
};

template <class Widget>
Widget* Find(QWidget const& window, QString const& accessibleName)
{
    Widget* found = nullptr;
    for (Widget* const widget : window.findChildren<Widget*>()) {
        if (widget->accessibleName() != accessibleName)
            continue;
        EXPECT_EQ(found, nullptr) << "two widgets: " << accessibleName.toStdString();
        found = widget;
    }
    EXPECT_NE(found, nullptr) << "no widget: " << accessibleName.toStdString();
    return found;
}

} // namespace tandry::test
