#include "tools/viewer/DetailsView.h"

#include "database/SqliteDatabaseFactory.h"
#include "tools/findings/StoreAdvice.h"
#include "tools/findings/TableNames.h"
#include "tools/viewer/BackgroundReader.h"
#include "tools/viewer/DetailsText.h"
#include "tools/viewer/Sentence.h"

#include <QScrollBar>

#include <utility>

namespace tandry::viewer {

using sync::database::SqliteDatabaseFactory;
using sync::database::StoreError;

DetailsView::DetailsView(std::shared_ptr<SqliteDatabaseFactory> store, QWidget* parent)
    : QTextBrowser(parent)
    , _store(std::move(store))
    , _reader(new BackgroundReader(this))
{
    setOpenLinks(false);
    setAccessibleName(tr("Details"));
    setPlaceholderText(tr("Select a folder or a file to see what is known about it."));
}

void DetailsView::ShowFolder(int folderId)
{
    _Show(By::FolderId, findings::Folders, folderId);
}

void DetailsView::ShowFile(int fileId)
{
    _Show(By::FileId, findings::Files, fileId);
}

void DetailsView::Clear()
{
    _reader->Stop();
    _record.reset();
    clear();
}

void DetailsView::Refresh()
{
    _reader->Renew();
}

void DetailsView::_Show(By by, char const* table, int id)
{
    if (_record == std::pair(by, id))
        return;
    _record = std::pair(by, id);
    _isShown = false;
    findings::ExplanationRequest request;
    request.by = by;
    request.id = id;
    _reader->Read([this, store = _store, table, request]() -> BackgroundReader::Answer {
        store->ClearError();
        auto const explanation = findings::Explain(store, request);
        std::optional<StoreError> const error = store->LastError();
        auto const faults = findings::FindInRow(store, table, request.id);
        store->ClearError();
        QString html;
        if (error)
            html = QStringLiteral("<p>%1</p><p>%2</p>")
                       .arg(ToSentence(error->text).toHtmlEscaped(),
                            ToSentence(findings::AdviceOn(error->kind)).toHtmlEscaped());
        else if (explanation)
            html = DetailsText(*explanation, faults);
        else
            html = QStringLiteral("<p>%1</p>").arg(tr("This record was removed.").toHtmlEscaped());
        return [this, html] { _SetText(html); };
    });
}

void DetailsView::_SetText(QString const& html)
{
    int const place = _isShown ? verticalScrollBar()->value() : 0;
    setHtml(html);
    verticalScrollBar()->setValue(place);
    _isShown = true;
}

} // namespace tandry::viewer
