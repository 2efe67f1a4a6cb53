#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>
#include <random>

namespace tandry::fuzz {

/// Generates texts in and around the form of stored documents, the same ones for the same seed: documents that the
/// library writes for odd names and values, with no or few changes, and sometimes one at the limits of what is read.
class DocumentGenerator
{
public:
    explicit DocumentGenerator(std::uint64_t seed)
        : _random(seed)
    {}

    QString Next();

private:
    int Number(int below) { return static_cast<int>(_random() % static_cast<std::uint64_t>(below)); }
    bool Once(int in) { return Number(in) == 0; }
    QString const& OneOf(QStringList const& texts) { return texts[Number(texts.size())]; }

    QString Name();
    QString Value();
    QString NameValues();
    QString FileLinks();
    QString AtTheLimits();
    void Change(QString& text);

    std::mt19937_64 _random;
};

} // namespace tandry::fuzz
