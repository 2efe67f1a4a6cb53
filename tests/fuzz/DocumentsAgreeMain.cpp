// Usage: documents_agree [COUNT [SEED]]
//
// Compares the readers of stored documents with QDomDocument on COUNT generated texts (default 50,000), the same ones
// for the same SEED (default 1). Prints the first text that they read differently, and aborts.

#include "fuzz/DocumentAgreement.h"
#include "fuzz/DocumentGenerator.h"
#include "support/DocumentCorpus.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>

using namespace tandry::fuzz;

namespace {

QByteArray current; // the text, to print after a crash

extern "C" void PrintCurrent(int)
{
    std::fprintf(stderr, "read differently, or not at all: %s\n", current.constData());
    std::_Exit(EXIT_FAILURE);
}

} // namespace

int main(int argc, char** argv)
{
    int const count = argc > 1 ? std::atoi(argv[1]) : 50'000;
    DocumentGenerator generator(argc > 2 ? std::strtoull(argv[2], nullptr, 10) : 1);
    std::signal(SIGABRT, PrintCurrent);

    int written = 0;
    for (int i = 0; i < count; ++i) {
        QString const text = generator.Next();
        current = tandry::test::ToLiteral(text);
        if (RequireNameValuesAgree(text) == ReadAs::Written)
            ++written;
        if (RequireFileLinksAgree(text) == ReadAs::Written)
            ++written;
    }
    std::printf("%d texts read alike, %d of them in the written form\n", count, written);
    // Both ways of reading must have been used often enough.
    return count > 0 && written >= count / 10 && written <= count - count / 10 ? EXIT_SUCCESS : EXIT_FAILURE;
}
