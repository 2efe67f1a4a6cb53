#pragma once

#include "database/StoreFactory.h"
#include "models/AccountModel.h"
#include "models/FolderTreeModel.h"
#include "models/ProductModel.h"
#include "models/ScheduleModel.h"
#include "models/ServerModel.h"
#include "qml/Store.h"

#include <QIdentityProxyModel>
#include <QPointer>

#include <memory>

namespace sync::qml {

/// A model of the library that QML can create before there is a store: it has the rows of the store that its property
/// names while that is open, follows its watcher, and is empty otherwise.
class StoreModel : public QIdentityProxyModel
{
    Q_OBJECT
    Q_PROPERTY(sync::qml::Store* store READ store WRITE setStore NOTIFY storeChanged)

public:
    using QIdentityProxyModel::QIdentityProxyModel;
    ~StoreModel() override;

    Store* store() const { return _store; }
    void setStore(Store* store);

Q_SIGNALS:
    void storeChanged();
    /// The model's signals `Loaded` and `Failed`.
    void loaded();
    void failed(QString const& reason);

private:
    /// Makes the library's model of an open store.
    virtual std::unique_ptr<QAbstractItemModel> Make(Store const& store) = 0;
    void MakeAnew();

    QPointer<Store> _store;
    std::unique_ptr<QAbstractItemModel> _rows;
};

template <class Model>
class StoreModelOf : public StoreModel
{
public:
    using StoreModel::StoreModel;

private:
    std::unique_ptr<QAbstractItemModel> Make(Store const& store) override
    {
        auto model = std::make_unique<Model>(store.factory());
        connect(model.get(), &Model::Loaded, this, &StoreModel::loaded);
        connect(model.get(), &Model::Failed, this, &StoreModel::failed);
        Prepare(*model);
        model->Follow(store.watcher());
        return model;
    }

    /// Called with each new model.
    virtual void Prepare(Model& /*model*/) {}
};

class FolderTreeModel : public StoreModelOf<sync::models::FolderTreeModel>
{
    Q_OBJECT
};

class ServerModel : public StoreModelOf<sync::models::ServerModel>
{
    Q_OBJECT
};

class AccountModel : public StoreModelOf<sync::models::AccountModel>
{
    Q_OBJECT
};

class ProductModel : public StoreModelOf<sync::models::ProductModel>
{
    Q_OBJECT
};

class ScheduleModel : public StoreModelOf<sync::models::ScheduleModel>
{
    Q_OBJECT
};

} // namespace sync::qml
