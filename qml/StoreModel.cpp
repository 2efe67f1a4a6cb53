#include "qml/StoreModel.h"

namespace sync::qml {

StoreModel::~StoreModel()
{
    setSourceModel(nullptr);
}

void StoreModel::setStore(Store* store)
{
    if (store == _store)
        return;
    if (_store != nullptr)
        disconnect(_store, nullptr, this, nullptr);
    _store = store;
    if (_store != nullptr) {
        connect(_store, &Store::opened, this, &StoreModel::MakeAnew);
        connect(_store, &QObject::destroyed, this, &StoreModel::MakeAnew);
    }
    MakeAnew();
    Q_EMIT storeChanged();
}

void StoreModel::MakeAnew()
{
    std::unique_ptr<QAbstractItemModel> rows;
    if (_store != nullptr && _store->isOpen())
        rows = Make(*_store);
    setSourceModel(rows.get());
    _rows = std::move(rows);
}

} // namespace sync::qml
