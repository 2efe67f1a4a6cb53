#pragma once

#include "tools/findings/Explanation.h"

#include <QTextBrowser>

#include <memory>
#include <optional>
#include <utility>

namespace sync::database {
class SqliteDatabaseFactory;
}

namespace tandry::viewer {

class BackgroundReader;

/// Shows what is known about one record, and what is wrong with it. Reads it in the background.
class DetailsView : public QTextBrowser
{
    Q_OBJECT

public:
    explicit DetailsView(std::shared_ptr<sync::database::SqliteDatabaseFactory> store, QWidget* parent = nullptr);

    // Shows a record with this id.
    void ShowFolder(int folderId);
    void ShowFile(int fileId);
    /// Shows nothing.
    void Clear();
    /// Shows the same record as it is now. The text stays where it was scrolled to.
    void Refresh();

private:
    using By = findings::ExplanationRequest::By;

    void _Show(By by, char const* table, int id);
    void _SetText(QString const& html);

    std::shared_ptr<sync::database::SqliteDatabaseFactory> const _store;
    BackgroundReader* const _reader;
    /// The record that is shown or will be.
    std::optional<std::pair<By, int>> _record;
    /// Whether the text is about that record.
    bool _isShown = false;
};

} // namespace tandry::viewer
