#include "benchmarks/SampleRecords.h"

#include <QDateTime>

#include <algorithm>

namespace sync::benchmarks {

namespace {

constexpr int SubFolders = 20;
constexpr int FilesOfFolder = 50;

const QString ClientPlace = QStringLiteral("/home/anna/Cloud");
const QString ServerPlace = QStringLiteral("/shares/projects");

quint64 Mixed(quint64 value)
{
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9ULL;
    value = (value ^ (value >> 27)) * 0x94d049bb133111ebULL;
    return value ^ (value >> 31);
}

/// Hexadecimal digits that look like a checksum or a key.
QString Digits(int number, quint64 purpose, int count)
{
    QString digits;
    for (quint64 part = 0; digits.size() < count; ++part) {
        quint64 const mixed = Mixed((quint64(number) + 1) * 0x9e3779b97f4a7c15ULL + purpose * 64 + part);
        digits += QStringLiteral("%1").arg(mixed, 16, 16, QLatin1Char('0'));
    }
    digits.truncate(count);
    return digits;
}

QString Key(int number, quint64 purpose)
{
    QString key = Digits(number, purpose, 32);
    for (int const position : {20, 16, 12, 8})
        key.insert(position, QLatin1Char('-'));
    return key;
}

QDateTime Moment(int number)
{
    return QDateTime::fromMSecsSinceEpoch(1600000000000 + qint64(number) * 61234, Qt::UTC);
}

} // namespace

int Scattered(qint64 choice, int limit)
{
    return int(Mixed(quint64(choice) + 1) % quint64(limit));
}

SampleRecords::Shape SampleRecords::_ShapeOfFiles(int files)
{
    Shape shape;
    shape.filesOfSubFolder = FilesOfFolder;
    shape.subFoldersOfRoot = std::max(1, files / (shape.roots * FilesOfFolder));
    return shape;
}

SampleRecords SampleRecords::OfFiles(int files)
{
    return SampleRecords(_ShapeOfFiles(files));
}

SampleRecords SampleRecords::OfFilesWithProperties(int files)
{
    Shape shape = _ShapeOfFiles(files);
    shape.filesPerProperties = 1;
    return SampleRecords(shape);
}

SampleRecords SampleRecords::OfFilesWithoutProperties(int files)
{
    Shape shape = _ShapeOfFiles(files);
    shape.filesPerProperties = 0;
    return SampleRecords(shape);
}

SampleRecords SampleRecords::OfFolders(int folders)
{
    Shape shape;
    shape.subFoldersOfRoot = folders / shape.roots - 1;
    return SampleRecords(shape);
}

SampleRecords::SampleRecords(Shape const& shape)
    : _shape(shape)
{}

int SampleRecords::_ParentOf(int folder) const
{
    int const placeInRoot = folder / _shape.roots - 1; // the roots themselves stand in front
    if (placeInRoot < SubFolders)
        return _RootOf(folder);
    return (placeInRoot / SubFolders) * _shape.roots + _RootOf(folder);
}

int SampleRecords::_FolderOf(int file) const
{
    int const subFolders = _shape.roots * _shape.subFoldersOfRoot;
    return _shape.roots + (file / _shape.filesOfSubFolder) % subFolders;
}

QString SampleRecords::_FolderName(int number) const
{
    return number < _shape.roots ? QStringLiteral("Projekt Übersicht %1").arg(number)
                                 : QStringLiteral("Folder %1").arg(number);
}

QString SampleRecords::_FileName(int number)
{
    return QStringLiteral("Report %1 (%2).docx").arg(number).arg(Digits(number, 1, 6));
}

QString SampleRecords::_RelativePath(int folder) const
{
    QString const here = QLatin1Char('/') + _FolderName(folder);
    return folder < _shape.roots ? here : _RelativePath(_ParentOf(folder)) + here;
}

QString SampleRecords::FolderPath(int number) const
{
    return ClientPlace + _RelativePath(number);
}

QString SampleRecords::FilePath(int number) const
{
    return FolderPath(_FolderOf(number)) + QLatin1Char('/') + _FileName(number);
}

QString SampleRecords::FolderServerId(int number)
{
    return Key(number, 2);
}

QString SampleRecords::FileServerId(int number)
{
    return Key(number, 3);
}

int SampleRecords::FullFolder(int choice) const
{
    int const full = std::max(1, _shape.subFoldersOfRoot / SubFolders); // in each root, the root included
    return Scattered(choice, full * _shape.roots);
}

int SampleRecords::FolderWithFiles(int choice) const
{
    return _shape.roots + Scattered(choice, _shape.roots * _shape.subFoldersOfRoot);
}

config::FolderConfiguration SampleRecords::Folder(int number) const
{
    bool const isRoot = number < _shape.roots;
    QString const relativePath = _RelativePath(number);

    config::FolderConfiguration folder;
    folder.setAuthenticationId(1 + _RootOf(number) % AccountRows);
    folder.setProductConfigurationId(1);
    folder.setRootId(1 + _RootOf(number));
    folder.setParentId(isRoot ? 0 : 1 + _ParentOf(number));
    folder.setName(_FolderName(number));
    folder.setRemoteShortKey(Digits(number, 4, 12));
    folder.setRemoteLongKey(ServerPlace + relativePath);
    folder.setClientPath(ClientPlace + relativePath);
    folder.setServerPath(ServerPlace + relativePath);
    folder.setLastOperationTime(Moment(number));
    folder.setLastSyncTime(Moment(number + 1));
    folder.setOwnerId(QStringLiteral("anna.example"));
    folder.setServerRoot(ServerPlace);
    folder.setServerFolderId(FolderServerId(number));
    if (number % 4 == 0)
        folder.setFeatureName(QStringLiteral("project <space>"));
    folder.resetSyncStatusChanged();
    return folder;
}

config::FileConfiguration SampleRecords::File(int number) const
{
    int const folder = _FolderOf(number);

    config::FileConfiguration file;
    file.folderConfigurationId = 1 + folder;
    file.rootFolderId = 1 + _RootOf(folder);
    file.productConfigurationId = 1;
    file.name = _FileName(number);
    file.clientPath = FilePath(number);
    file.serverPath = ServerPlace + _RelativePath(folder) + QLatin1Char('/') + file.name;
    file.checkSum = Digits(number, 5, 40);
    file.checkSumMD5 = Digits(number, 6, 32);
    file.createdDateTime = Moment(number);
    file.lastModifiedDateTime = Moment(number + 1);
    file.lastOperationTime = Moment(number + 2);
    file.size = number * 1234LL;
    if (_shape.filesPerProperties > 0 && number % _shape.filesPerProperties == 0)
        file.nameValueProperties = {{QStringLiteral("ContentType"), QStringLiteral("application/msword")},
                                    {QStringLiteral("LockedBy"), QStringLiteral("Anna <anna@example.org>")}};
    if (number % 8 == 0)
        file.fileDate = Moment(number); // no links: resolving them is work on disk, which isn't the store's
    file.ownerId = QStringLiteral("anna.example");
    file.serverFileId = FileServerId(number);
    file.serverFileVersionId = Key(number, 7);
    file.setSyncStatus(number % 5 == 0 ? config::FileSyncStatusSyncing : config::FileSynchronizationStatus(4));
    file.resetSyncStatusChanged();
    return file;
}

config::ServerConfiguration SampleRecords::Server(int number)
{
    config::ServerConfiguration server;
    server.setAlias(QStringLiteral("Server %1").arg(number));
    server.setDavUrl(QStringLiteral("https://dav%1.example.org/remote").arg(number));
    server.setWebServiceUrl(QStringLiteral("https://services%1.example.org/api").arg(number));
    server.setBinaryDiffEncoder(QStringLiteral("vcdiff"));
    return server;
}

config::AuthenticationConfiguration SampleRecords::Account(int number)
{
    config::AuthenticationConfiguration account;
    account.setDomain(QStringLiteral("office%1.example.org").arg(number % 10));
    account.setDomainId(Digits(number, 8, 8));
    account.setUserName(QStringLiteral("user%1").arg(number));
    account.setServerId(1 + number);
    return account;
}

config::ProductConfiguration SampleRecords::Product(int number)
{
    config::ProductConfiguration product;
    product.setName(QStringLiteral("Product %1").arg(number));
    product.setConsumerKey(Key(number, 9));
    product.setConsumerSecret(Digits(number, 10, 40));
    product.setServerId(1 + number);
    return product;
}

} // namespace sync::benchmarks
