#pragma once

#include <QAbstractItemModelTester>

namespace tandry::test {

/// Holds a model to the rules of models at each of its changes. A violation ends the program.
class ModelTester
{
public:
    explicit ModelTester(QAbstractItemModel* model)
        : _tester(model, QAbstractItemModelTester::FailureReportingMode::Fatal)
    {
#if QT_VERSION >= QT_VERSION_CHECK(6, 4, 0)
        // It would open the branch of a row while that row is inserted, and then report that one change is in another.
        _tester.setUseFetchMore(false);
#endif
    }

private:
    QAbstractItemModelTester _tester;
};

} // namespace tandry::test
