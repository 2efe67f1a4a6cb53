#pragma once

#include "config/AuthenticationConfiguration.h"
#include "config/FileConfiguration.h"
#include "config/FolderConfiguration.h"
#include "config/ProductConfiguration.h"
#include "config/ServerConfiguration.h"

#include <QString>

namespace sync::benchmarks {

/// The rows of a sample store, the same in every run. Rows count from 0 and have their number plus 1 as id.
///
/// Folders: the roots first, then their sub-folders, one of each root in turn; a folder has up to twenty sub-folders.
/// Files: the first of them in the first sub-folder, and so on.
class SampleRecords
{
public:
    struct Shape
    {
        int roots = 10;
        int subFoldersOfRoot = 0;
        int filesOfSubFolder = 0;
        /// Every so many files, one has two properties; 0 for none.
        int filesPerProperties = 4;
    };

    /// So many rows in all, on ten roots.
    static SampleRecords OfFiles(int files);
    static SampleRecords OfFolders(int folders);
    /// So many files, each of them with two properties, or none of them with any.
    static SampleRecords OfFilesWithProperties(int files);
    static SampleRecords OfFilesWithoutProperties(int files);

    explicit SampleRecords(Shape const& shape);

    int folderCount() const { return _shape.roots * (1 + _shape.subFoldersOfRoot); }
    int fileCount() const { return _shape.roots * _shape.subFoldersOfRoot * _shape.filesOfSubFolder; }

    /// The number may lie beyond the last row: such a record is new to the store.
    config::FolderConfiguration Folder(int number) const;
    config::FileConfiguration File(int number) const;

    QString FolderPath(int number) const;
    QString FilePath(int number) const;
    static QString FolderServerId(int number);
    static QString FileServerId(int number);

    /// The number of a folder that has twenty sub-folders, if there are any; else of a root.
    int FullFolder(int choice) const;
    /// The number of a folder that holds files.
    int FolderWithFiles(int choice) const;

    static constexpr int AccountRows = 100;
    static config::ServerConfiguration Server(int number);
    static config::AuthenticationConfiguration Account(int number);
    static config::ProductConfiguration Product(int number);

private:
    static Shape _ShapeOfFiles(int files);
    int _RootOf(int folder) const { return folder < _shape.roots ? folder : (folder - _shape.roots) % _shape.roots; }
    int _ParentOf(int folder) const;
    int _FolderOf(int file) const;
    QString _FolderName(int number) const;
    static QString _FileName(int number);
    /// The path below the place where the roots are.
    QString _RelativePath(int folder) const;

    Shape _shape;
};

/// A number below `limit` for each choice, in no order that a cache could profit from.
int Scattered(qint64 choice, int limit);

} // namespace sync::benchmarks
