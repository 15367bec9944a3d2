#include "SettingsStores.h"

#include <QCoreApplication>

namespace {

const QString Organisation = QStringLiteral("Tarnwell");
const QString Application = QStringLiteral("Ombrix");

} // namespace

void SettingsStores::setApplicationIdentity()
{
    QCoreApplication::setOrganizationName(Organisation);
    QCoreApplication::setOrganizationDomain(QStringLiteral("tarnwell.example"));
    QCoreApplication::setApplicationName(Application);
}

QSettings SettingsStores::remembered()
{
    return QSettings(Organisation, Application);
}

QSettings SettingsStores::openedProjects()
{
    return QSettings(QStringLiteral("YourCompany"), Application);
}
