// The main function of a fuzzer that is built without libFuzzer: runs the inputs in the given folders.

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
                std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
                return 1;
            }
            QByteArray const input = file.readAll();
            std::printf("%s\n", qPrintable(name));
            std::fflush(stdout); // after a crash, the last line is the input
            LLVMFuzzerTestOneInput(reinterpret_cast<std::uint8_t const*>(input.constData()), std::size_t(input.size()));
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
