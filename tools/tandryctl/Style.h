#pragma once

#include <QString>

namespace tandryctl {

/// What a text on a terminal stands out for; each has a colour or weight.
enum class Style
{
    None,
    Heading,
    Good,
    Attention,
    Bad
};

/// Returns the text with the terminal's sequences for the style around it.
QString Styled(QString const& text, Style style);

} // namespace tandryctl
