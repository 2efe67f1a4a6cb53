#pragma once

#include <QQmlExtensionPlugin>

/// `import Tandry 1.0`.
class TandryPlugin : public QQmlExtensionPlugin
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID QQmlExtensionInterface_iid)

public:
    void registerTypes(char const* uri) override;
};
