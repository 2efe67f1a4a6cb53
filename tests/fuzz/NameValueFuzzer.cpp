// Reads any text as a "NameValueXml" document, and expects the same properties when they are written and read again.

#include "config/DatabaseConfigurationManager.h"
#include "fuzz/DocumentAgreement.h"
#include "fuzz/FuzzInput.h"

#include <QRegularExpression>

using namespace tandry::fuzz;

namespace {

bool CanBeWritten(QMap<QString, QString> const& properties)
{
    static QRegularExpression const name(QStringLiteral("\\A[A-Za-z_][A-Za-z0-9_.-]*\\z"));
    for (auto entry = properties.cbegin(); entry != properties.cend(); ++entry) {
        if (!name.match(entry.key()).hasMatch() || !FitsCdata(entry.value()))
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    QString const text = FuzzInput(data, size).TakeDocument();
    RequireNameValuesAgree(text);
    sync::config::DatabaseConfigurationManager manager(nullptr);
    QMap<QString, QString> const properties = manager.ToNameValuePropertyMap(text);
    QMap<QString, QString> const again = manager.ToNameValuePropertyMap(manager.ToNameValuePropertyString(properties));
    Require(!CanBeWritten(properties) || again == properties, "properties read again are the same");
    return 0;
}
