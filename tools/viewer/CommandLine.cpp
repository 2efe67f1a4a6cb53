#include "tools/viewer/CommandLine.h"

#include "tools/findings/StoreLocation.h"

#include <QCommandLineParser>
#include <QCoreApplication>

namespace tandry::viewer {

namespace {

QString UnnamedStore()
{
    return qEnvironmentVariableIsSet(findings::StoreVariable) ? qEnvironmentVariable(findings::StoreVariable)
                                                              : findings::OwnStorePath();
}

/// Returns a sentence as a part of one.
QString AsPart(QString sentence)
{
    sentence[0] = sentence.at(0).toLower();
    while (sentence.endsWith(QLatin1Char('.')))
        sentence.chop(1);
    return sentence;
}

} // namespace

CommandLine::CommandLine(QStringList const& arguments)
{
    QCommandLineOption const help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    QCommandLineOption const version(QStringList{QStringLiteral("V"), QStringLiteral("version")});
    QCommandLineOption const store(QStringLiteral("store"), {}, QStringLiteral("FILE"));
    QCommandLineParser parser;
    parser.addOptions({help, version, store});

    auto const refuse = [this](QString const& reason) {
        request = Request::Refuse;
        fault = reason;
    };
    bool const isParsed = parser.parse(QStringList{QString()} + arguments);
    QStringList const named = parser.values(store) + parser.positionalArguments();
    storePath = named.isEmpty() ? UnnamedStore() : named.front();
    if (!isParsed)
        refuse(AsPart(parser.errorText()));
    else if (parser.isSet(help))
        request = Request::PrintHelp;
    else if (parser.isSet(version))
        request = Request::PrintVersion;
    else if (named.size() > 1)
        refuse(QStringLiteral("more than one store is named"));
    else if (storePath.isEmpty())
        refuse(QStringLiteral("the store's name is empty"));
    else if (findings::IsOnServer(storePath))
        refuse(QStringLiteral("the viewer shows store files, and the store is on a server; copy it to a file with "
                              "'tandryctl copy'"));
}

QString HelpText()
{
    return QCoreApplication::translate("tandry::viewer::CommandLine",
                                       "Usage: tandry-viewer [OPTION...] [FILE]\n"
                                       "\n"
                                       "Shows a store of synchronised folders, and follows it while other programs "
                                       "write. Changes nothing.\n"
                                       "\n"
                                       "FILE is the store; by default $TANDRY_STORE, or the user's own store.\n"
                                       "\n"
                                       "  --store FILE    The same, as tandryctl has it\n"
                                       "  -h, --help      Print this help and exit\n"
                                       "  -V, --version   Print the version and exit\n"
                                       "\n"
                                       "Qt's own options, such as -style and -platform, are taken too.\n"
                                       "\n"
                                       "Exit status: 0 success; 2 wrong usage; 3 the output could not be written.\n");
}

} // namespace tandry::viewer
