// Reads any text as a "FileLinks" document, and expects the same links when they are written and read again.

#include "config/FileLinksDocument.h"
#include "fuzz/DocumentAgreement.h"
#include "fuzz/FuzzInput.h"

using namespace tandry::fuzz;
using sync::config::FileLink;

namespace {

bool Same(FileLink const& left, FileLink const& right)
{
    return left.fileId == right.fileId && left.path == right.path && left.refId == right.refId &&
           left.serverFileId == right.serverFileId;
}

bool FitsAttributes(QList<FileLink> const& links)
{
    return std::all_of(links.begin(), links.end(), [](FileLink const& link) {
        return FitsCdata(link.path + link.refId + link.serverFileId);
    });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QString const text = FuzzInput(data, size).TakeDocument();
    RequireFileLinksAgree(text);
    QDateTime date;
    QList<FileLink> const links = sync::config::ReadFileLinks(text, date);
    for (FileLink const& link : links)
        Require(link.IsValid(), "a link that was read names a file");
    Require(!date.isValid() || date.timeSpec() == Qt::UTC, "a date that was read is in UTC");

    QDateTime dateAgain;
    QList<FileLink> const again = sync::config::ReadFileLinks(sync::config::WriteFileLinks(links, date), dateAgain);
    if (!FitsAttributes(links))
        return 0;
    Require(again.size() == links.size() && std::equal(links.begin(), links.end(), again.begin(), Same),
            "links read again are the same");
    if (date.isValid() && date.date().year() >= 0 && date.date().year() <= 9999) {
        date = date.addMSecs(-date.time().msec());
        Require(dateAgain == date, "a date read again is the same, to the second");
    }
    return 0;
}
