#include "Style.h"

namespace tandryctl {

namespace {

/// The parameter of the terminal's sequence.
char const* Rendition(Style style)
{
    switch (style) {
    case Style::None:
        break;
    case Style::Heading:
        return "1"; // bold
    case Style::Good:
        return "32"; // green
    case Style::Attention:
        return "33"; // yellow
    case Style::Bad:
        return "31"; // red
    }
    return nullptr;
}

} // namespace

QString Styled(QString const& text, Style style)
{
    char const* const rendition = Rendition(style);
    if (rendition == nullptr || text.isEmpty())
        return text;
    return QStringLiteral("\033[%1m%2\033[0m").arg(QLatin1String(rendition), text);
}

} // namespace tandryctl
