#include "postgres/StatementText.h"

#include "database/store/StoredValues.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <iterator>

namespace sync::database {

namespace {

enum class TokenKind
{
    Word,
    Placeholder,
    Symbol,
    /// A quoted text or name, or a number.
    Other,
};

struct Token
{
    TokenKind kind;
    int begin;
    int end;
    /// How many parentheses are open around it.
    int depth;
};

/// A replacement of a part of the text.
struct Edit
{
    int begin;
    int end;
    QString text;
};

bool IsNameCharacter(QChar character)
{
    return character.isLetterOrNumber() || character == QLatin1Char('_') || character == QLatin1Char('$');
}

/// The tokens of a statement, without blanks and comments.
class Tokens
{
public:
    explicit Tokens(QString const& text)
        : _text(text)
    {
        int depth = 0;
        for (int position = 0; position < text.size();) {
            int const begin = position;
            QChar const first = text[begin];
            QStringView const rest = QStringView(text).mid(begin);
            if (first.isSpace()) {
                ++position;
            }
            else if (rest.startsWith(QLatin1String("--"))) {
                int const lineEnd = text.indexOf(QLatin1Char('\n'), begin);
                position = lineEnd < 0 ? text.size() : lineEnd;
            }
            else if (rest.startsWith(QLatin1String("/*"))) {
                int const commentEnd = text.indexOf(QLatin1String("*/"), begin + 2);
                position = commentEnd < 0 ? text.size() : commentEnd + 2;
            }
            else if (first == QLatin1Char('\'') || first == QLatin1Char('"')) {
                // A doubled quotation mark makes two tokens of one, which changes nothing.
                int const quoteEnd = text.indexOf(first, begin + 1);
                position = quoteEnd < 0 ? text.size() : quoteEnd + 1;
                _tokens.push_back({TokenKind::Other, begin, position, depth});
            }
            else if (rest.startsWith(QLatin1String("::"))) {
                position += 2;
                _tokens.push_back({TokenKind::Symbol, begin, position, depth});
            }
            else if (IsNameCharacter(first) ||
                     (first == QLatin1Char(':') && rest.size() > 1 && IsNameCharacter(rest.at(1)))) {
                do
                    ++position;
                while (position < text.size() && IsNameCharacter(text[position]));
                TokenKind kind = first.isDigit() ? TokenKind::Other : TokenKind::Word;
                if (first == QLatin1Char(':'))
                    kind = TokenKind::Placeholder;
                _tokens.push_back({kind, begin, position, depth});
            }
            else {
                ++position;
                if (first == QLatin1Char(')'))
                    --depth;
                _tokens.push_back({TokenKind::Symbol, begin, position, depth});
                if (first == QLatin1Char('('))
                    ++depth;
            }
        }
    }

    std::size_t size() const { return _tokens.size(); }
    Token const& operator[](std::size_t index) const { return _tokens[index]; }
    QString TextOf(std::size_t index) const
    {
        return _text.mid(_tokens[index].begin, _tokens[index].end - _tokens[index].begin);
    }

    void DropLast() { _tokens.pop_back(); }

    /// Whether the token is there and is this keyword or symbol.
    bool Is(std::size_t index, char const* text) const
    {
        return index < size() && _tokens[index].kind != TokenKind::Other &&
               QStringRef(&_text, _tokens[index].begin, _tokens[index].end - _tokens[index].begin)
                       .compare(QLatin1String(text), Qt::CaseInsensitive) == 0;
    }

    template <class Words>
    bool IsAnyOf(std::size_t index, Words const& words) const
    {
        return std::any_of(std::begin(words), std::end(words), [&](char const* word) { return Is(index, word); });
    }

    /// The first token outside of all parentheses that is one of the words, from `from` on; `size()` if there is none.
    template <class Words>
    std::size_t Find(Words const& words, std::size_t from = 0) const
    {
        for (std::size_t index = from; index < size(); ++index) {
            if (_tokens[index].depth == 0 && IsAnyOf(index, words))
                return index;
        }
        return size();
    }

    /// Whether the word is anywhere in the statement.
    bool Have(char const* word) const
    {
        for (std::size_t index = 0; index < size(); ++index) {
            if (_tokens[index].kind == TokenKind::Word && Is(index, word))
                return true;
        }
        return false;
    }

private:
    QString const& _text;
    std::vector<Token> _tokens;
};

constexpr char const* From[] = {"FROM"};
constexpr char const* Order[] = {"ORDER"};
constexpr char const* AfterOrder[] = {"LIMIT", "OFFSET", "FETCH", "FOR"};
/// With one of these a SELECT does not return the rows of a table one by one.
constexpr char const* Combining[] = {"GROUP", "HAVING", "WINDOW", "UNION", "INTERSECT", "EXCEPT"};

using Edits = std::vector<Edit>;

int EndOf(Tokens const& tokens)
{
    return tokens[tokens.size() - 1].end;
}

/// Where an order belongs in a SELECT that has none.
int PlaceOfOrder(Tokens const& tokens)
{
    return tokens[tokens.Find(AfterOrder) - 1].end;
}

/// Whether the first column of a SELECT is a row's id.
bool SelectsIdFirst(Tokens const& tokens)
{
    std::size_t index = 1;
    if (tokens.Is(index + 1, "."))
        index += 2;
    return tokens.Is(index, "id") && (tokens.Is(index + 1, ",") || tokens.Is(index + 1, "FROM"));
}

// The rules. Each looks at the tokens and adds the edits that it makes.

/// "NOT IN ()" is no SQL for PostgreSQL. In SQLite it matches every row, and "IN ()" none.
void ReplaceEmptyList(Tokens const& tokens, Edits& edits)
{
    for (std::size_t in = 1; in + 2 < tokens.size(); ++in) {
        if (!tokens.Is(in, "IN") || !tokens.Is(in + 1, "(") || !tokens.Is(in + 2, ")"))
            continue;
        bool const isNegated = tokens.Is(in - 1, "NOT");
        std::size_t operand = in - (isNegated ? 2 : 1);
        if (operand >= 2 && tokens.Is(operand - 1, "."))
            operand -= 2;
        edits.push_back(
            {tokens[operand].begin, tokens[in + 2].end, isNegated ? QStringLiteral("TRUE") : QStringLiteral("FALSE")});
    }
}

/// In SQLite NULL is smaller than every value; in PostgreSQL it is greater. Rows that are equal come by their ids.
void SortNullFirst(Tokens const& tokens, Edits& edits)
{
    std::size_t const order = tokens.Find(Order);
    if (order == tokens.size())
        return;
    std::size_t const end = tokens.Find(AfterOrder, order);
    for (std::size_t index = order + 2; index < end; ++index) {
        bool const isLastOfTerm = index + 1 == end || (tokens[index].depth == 0 && tokens.Is(index + 1, ","));
        if (!isLastOfTerm || tokens.Is(index - 1, "NULLS"))
            continue;
        int const at = tokens[index].end;
        edits.push_back(
            {at, at, tokens.Is(index, "DESC") ? QStringLiteral(" NULLS LAST") : QStringLiteral(" NULLS FIRST")});
        if (index + 1 == end && tokens.Is(0, "SELECT") && SelectsIdFirst(tokens))
            edits.push_back({at, at, QStringLiteral(", 1")});
    }
}

/// PostgreSQL moves a row that is updated; in SQLite rows come by their ids.
void SortById(Tokens const& tokens, Edits& edits)
{
    if (!tokens.Is(0, "SELECT") || tokens.Find(Order) != tokens.size() || tokens.Find(Combining) != tokens.size())
        return;
    if (SelectsIdFirst(tokens))
        edits.push_back({PlaceOfOrder(tokens), PlaceOfOrder(tokens), QStringLiteral(" ORDER BY 1")});
}

/// Distinct rows have no id; in SQLite they come in the order of the index.
void SortDistinctRows(Tokens const& tokens, Edits& edits)
{
    if (!tokens.Is(0, "SELECT") || !tokens.Is(1, "DISTINCT") || tokens.Is(2, "ON"))
        return;
    if (tokens.Find(Order) != tokens.size() || tokens.Find(Combining) != tokens.size())
        return;
    QString order = QStringLiteral(" ORDER BY 1 NULLS FIRST");
    int column = 1;
    for (std::size_t index = 2; index < tokens.Find(From); ++index) {
        if (tokens[index].depth == 0 && tokens.Is(index, ","))
            order += QStringLiteral(", %1 NULLS FIRST").arg(++column);
    }
    edits.push_back({PlaceOfOrder(tokens), PlaceOfOrder(tokens), order});
}

// Together these make a regular expression of a pattern that stands between them. The pattern is taken apart into sets,
// whose parts are "^" or nothing and the members, and other characters, the third part. A set that does not end matches
// nothing. A range whose end is smaller than its beginning is its beginning alone.
QString const BeforePattern = QStringLiteral(R"sql((SELECT '^(?:' || string_agg(
    CASE part[3] WHEN '*' THEN '.*' WHEN '?' THEN '.' WHEN '[' THEN '(?!)' ELSE coalesce(
        regexp_replace(part[3], '[].+(){}|$\\^[-]', '\\\&'),
        '[' || part[1] || (SELECT string_agg(
            regexp_replace(left(member[1], 1), '[].+(){}|$\\^[-]', '\\\&') ||
            CASE WHEN length(member[1]) = 3 AND left(member[1], 1) <= right(member[1], 1) COLLATE "C"
                THEN '-' || regexp_replace(right(member[1], 1), '[].+(){}|$\\^[-]', '\\\&') ELSE '' END, '' ORDER BY place)
            FROM regexp_matches(part[2], '[^]]-.|.', 'g') WITH ORDINALITY AS members(member, place)) || ']',
        left(pattern, 0)) END, '' ORDER BY place) || ')$'
    FROM (SELECT CAST()sql");
QString const AfterPattern = QStringLiteral(R"sql( AS text) AS pattern) AS patterns
    LEFT JOIN LATERAL regexp_matches(pattern, '\[(\^|(?!\^))(.[^]]*)\]|(.)', 'g')
        WITH ORDINALITY AS parts(part, place) ON TRUE))sql");

/// PostgreSQL has regular expressions in place of GLOB.
void ReplaceGlob(Tokens const& tokens, Edits& edits)
{
    for (std::size_t glob = 1; glob + 1 < tokens.size(); ++glob) {
        if (!tokens.Is(glob, "GLOB"))
            continue;
        bool const isNegated = tokens.Is(glob - 1, "NOT");
        edits.push_back({tokens[isNegated ? glob - 1 : glob].begin,
                         tokens[glob].end,
                         (isNegated ? QStringLiteral("!~ ") : QStringLiteral("~ ")) + BeforePattern});
        int const patternEnd = tokens[glob + 1].end;
        edits.push_back({patternEnd, patternEnd, AfterPattern});
    }
}

/// `lastInsertId` is a value of SQLite's connection; PostgreSQL returns it as a row.
void ReturnId(Tokens const& tokens, Edits& edits)
{
    if (tokens.Is(0, "INSERT"))
        edits.push_back({EndOf(tokens), EndOf(tokens), QStringLiteral(" RETURNING id")});
}

/// What may stand in front of a parenthesis in a SELECT that changes nothing.
constexpr char const* Harmless[] = {
    "AND", "COALESCE", "COUNT", "EXISTS", "FROM", "IN", "MAX", "MIN", "NOT", "OR", "SELECT", "SUM", "VALUES", "WHERE"};

/// A SELECT may call a function that writes, and FOR locks rows.
bool MayWrite(Tokens const& tokens)
{
    if (!tokens.Is(0, "SELECT") || tokens.Have("FOR"))
        return true;
    for (std::size_t index = 2; index < tokens.size(); ++index) {
        bool const mayCall = tokens.Is(index, "(") && tokens[index - 1].kind != TokenKind::Symbol;
        if (mayCall && (tokens.Is(index - 2, ".") || !tokens.IsAnyOf(index - 1, Harmless)))
            return true;
    }
    return false;
}

/// Where two add text at one place, that of the first one comes first.
constexpr void (*Rules[])(Tokens const&, Edits&) = {
    ReplaceEmptyList, ReplaceGlob, SortNullFirst, SortById, SortDistinctRows, ReturnId};

std::vector<QString> NumberPlaceholders(Tokens const& tokens, Edits& edits)
{
    std::vector<QString> names;
    for (std::size_t index = 0; index < tokens.size(); ++index) {
        if (tokens[index].kind != TokenKind::Placeholder)
            continue;
        QString const name = tokens.TextOf(index);
        auto const found = std::find(names.begin(), names.end(), name);
        auto const number = found - names.begin() + 1;
        if (found == names.end())
            names.push_back(name);
        edits.push_back({tokens[index].begin, tokens[index].end, QLatin1Char('$') + QString::number(number)});
    }
    return names;
}

QString Apply(QString const& text, Edits edits)
{
    std::stable_sort(
        edits.begin(), edits.end(), [](Edit const& left, Edit const& right) { return left.begin < right.begin; });
    QString edited;
    int position = 0;
    for (Edit const& edit : edits) {
        if (edit.begin < position) // inside of a part that was replaced
            continue;
        edited += text.mid(position, edit.begin - position);
        edited += edit.text;
        position = edit.end;
    }
    return edited + text.mid(position);
}

/// Returns why the store refuses the statement; null if it does not.
QString WhyRefused(Tokens const& tokens)
{
    bool const writes = tokens.Is(0, "INSERT") || tokens.Is(0, "UPDATE") || tokens.Is(0, "DELETE");
    if (writes && tokens.Have("RETURNING"))
        return QStringLiteral("statements that write and give rows back are not supported");
    if (writes)
        return {};
    bool const reads = tokens.Is(0, "SELECT") || tokens.Is(0, "WITH");
    if (!reads)
        return QStringLiteral("only SELECT, INSERT, UPDATE and DELETE are supported");
    for (char const* writing : {"INSERT", "UPDATE", "DELETE", "MERGE", "INTO"}) {
        if (tokens.Have(writing))
            return QStringLiteral("statements that write and give rows back are not supported");
    }
    return {};
}

} // namespace

std::shared_ptr<StatementText const> StatementText::Make(QString const& text, QString& words)
{
    if (!IsUnicode(text) || text.contains(QChar(0))) {
        words = QStringLiteral("the statement is no Unicode text, or has a null character");
        return nullptr;
    }
    Tokens tokens(text);
    while (tokens.size() > 0 && tokens.Is(tokens.size() - 1, ";"))
        tokens.DropLast();
    if (tokens.size() == 0) {
        words = QStringLiteral("the statement is empty");
        return nullptr;
    }
    constexpr char const* separator[] = {";"};
    if (tokens.Find(separator) != tokens.size()) {
        words = QStringLiteral("there is more than one statement in the text");
        return nullptr;
    }
    words = WhyRefused(tokens);
    if (!words.isNull())
        return nullptr;

    static std::atomic<int> lastNumber{0};
    std::shared_ptr<StatementText> statement(new StatementText);
    statement->_number = ++lastNumber;
    // A text made by `fromRawData` belongs to somebody else, who may change or free it.
    statement->_text = QString(text.constData(), text.size());
    statement->_isReading = tokens.Is(0, "SELECT") || tokens.Is(0, "WITH");
    statement->_mayWrite = MayWrite(tokens);
    statement->_returnsId = tokens.Is(0, "INSERT");
    Edits edits;
    for (auto const rule : Rules)
        rule(tokens, edits);
    statement->_placeholders = NumberPlaceholders(tokens, edits);
    statement->_serverText = Apply(text.left(EndOf(tokens)), std::move(edits)).toUtf8();
    return statement;
}

} // namespace sync::database
