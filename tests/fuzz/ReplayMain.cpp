// Stands in for the fuzzer's own main where there is no fuzzer: runs the inputs of the folders that it is given.

#include <QDir>
#include <QFile>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size);

int main(int argc, char** argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        QDir const folder(QFile::decodeName(argv[i]));
        for (QString const& name : folder.entryList(QDir::Files, QDir::Name)) {
            QFile file(folder.filePath(name));
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "can't read %s\n", qPrintable(file.fileName()));
                return 1;
            }
            QByteArray const input = file.readAll();
            std::printf("%s\n", qPrintable(name));
            std::fflush(stdout); // the last line tells which input it was
            LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(input.constData()), std::size_t(input.size()));
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
