#pragma once

#include "SpoolFile.h"

#include <QByteArray>
#include <QDataStream>
#include <QString>
#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

namespace tandryctl {

/// Returns about the memory that a text takes besides its object.
inline qint64 BytesOf(QString const& text)
{
    constexpr qint64 header = 32; // of the allocation and of the text in it
    return header + qint64(text.size()) * qint64(sizeof(QChar));
}

/// Sorts any number of values in bounded memory. Values that do not fit are written to the temporary folder in sorted
/// runs, which are merged as they are read. Equal values keep the order in which they were added.
///
/// `Less` compares two values. A value has `qint64 bytes() const`, about the memory that it takes, and the stream
/// operators of QDataStream.
template <class Value, class Less>
class ExternalSort
{
public:
    static constexpr qint64 MostBytes = qint64(8) * 1024 * 1024;

    explicit ExternalSort(qint64 mostBytes = MostBytes)
        : _mostBytes(mostBytes)
    {}

    /// Throws `Failure` if the temporary folder has no room.
    void Add(Value value)
    {
        _isSorted = false;
        _bytes += value.bytes();
        _values.push_back(std::move(value));
        if (_bytes >= _mostBytes)
            _WriteRun();
    }

    /// The number of values in memory, for tests.
    std::size_t held() const { return _values.size(); }

private:
    using Run = std::vector<SpoolFile::Block>;

    /// One run that is being read, a block at a time.
    class RunReader
    {
    public:
        RunReader(SpoolFile& file, Run const& run)
            : _file(file)
            , _run(run)
        {}

        bool Advance()
        {
            if (_stream == nullptr || _stream->atEnd()) {
                if (_next == _run.size())
                    return false;
                _stream = std::make_unique<QDataStream>(_file.Read(_run[_next++]));
            }
            *_stream >> _value;
            return true;
        }

        Value const& value() const { return _value; }

    private:
        SpoolFile& _file;
        Run const& _run;
        std::size_t _next = 0;
        std::unique_ptr<QDataStream> _stream;
        Value _value;
    };

public:
    /// Goes through the sorted values. Nothing may be added while there is a reader; there may be several readers.
    class Reader
    {
    public:
        /// Throws `Failure` if the temporary folder fails, like `Advance`.
        explicit Reader(ExternalSort& sort)
            : _sort(sort)
        {
            _sort._Finish();
            _runs.reserve(_sort._runs.size());
            for (Run const& run : _sort._runs) {
                _runs.emplace_back(_sort._file, run);
                if (_runs.back().Advance())
                    _Push(_runs.size() - 1);
            }
        }

        /// Returns the current value; null after the last one.
        Value const* value() const
        {
            if (!_heap.empty())
                return &_runs[_heap.front()].value();
            return _position < _sort._values.size() ? &_sort._values[_position] : nullptr;
        }

        void Advance()
        {
            if (_heap.empty()) {
                ++_position;
                return;
            }
            std::pop_heap(_heap.begin(), _heap.end(), _IsLater());
            std::size_t const run = _heap.back();
            _heap.pop_back();
            if (_runs[run].Advance())
                _Push(run);
        }

    private:
        auto _IsLater() const
        {
            return [this](std::size_t left, std::size_t right) {
                Value const& leftValue = _runs[left].value();
                Value const& rightValue = _runs[right].value();
                if (Less()(rightValue, leftValue))
                    return true;
                return left > right && !Less()(leftValue, rightValue); // the earlier run has what was added earlier
            };
        }

        void _Push(std::size_t run)
        {
            _heap.push_back(run);
            std::push_heap(_heap.begin(), _heap.end(), _IsLater());
        }

        ExternalSort& _sort;
        /// In the values in memory, if there are no runs.
        std::size_t _position = 0;
        std::vector<RunReader> _runs;
        /// The runs that have values left, the one with the least value in front.
        std::vector<std::size_t> _heap;
    };

private:
    static constexpr int BytesOfABlock = 16 * 1024;

    void _Sort()
    {
        if (!_isSorted)
            std::stable_sort(_values.begin(), _values.end(), Less());
        _isSorted = true;
    }

    void _WriteRun()
    {
        _Sort();
        Run run;
        QByteArray bytes;
        auto value = _values.cbegin();
        while (value != _values.cend()) {
            bytes.clear();
            QDataStream stream(&bytes, QIODevice::WriteOnly);
            for (; value != _values.cend() && bytes.size() < BytesOfABlock; ++value)
                stream << *value;
            run.push_back(_file.Append(bytes));
        }
        _runs.push_back(std::move(run));
        _values = {};
        _bytes = 0;
    }

    /// Has the values sorted in one place: in memory, or in runs.
    void _Finish()
    {
        if (_runs.empty())
            _Sort();
        else if (!_values.empty())
            _WriteRun();
    }

    qint64 const _mostBytes;
    std::vector<Value> _values;
    qint64 _bytes = 0;
    bool _isSorted = false;
    SpoolFile _file;
    std::vector<Run> _runs;
};

} // namespace tandryctl
