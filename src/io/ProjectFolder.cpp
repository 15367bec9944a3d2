#include "ProjectFolder.h"

#include "FileErrors.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

QStringList ProjectFolder::subfolderNames()
{
    return {QStringLiteral("recordings"), QStringLiteral("layouts"), QStringLiteral("exports")};
}

bool ProjectFolder::isValid(const QString &dir)
{
    return !dir.isEmpty() && QFileInfo::exists(definitionsPath(dir));
}

QString ProjectFolder::definitionsPath(const QString &dir)
{
    return QDir(dir).filePath(DefinitionFileName);
}

void ProjectFolder::ensureSubfolders(const QString &dir)
{
    const QDir project(dir);
    for (const QString &name : subfolderNames())
        project.mkpath(name);
}

QString ProjectFolder::subfolder(const QString &dir, const QString &name)
{
    const QString folder = QDir(dir).filePath(name);
    QDir(folder).mkpath(QStringLiteral("."));
    return folder;
}

QByteArray ProjectFolder::starterDefinitions()
{
    return QByteArrayLiteral(
        "// dashboard_signals.def: what your device sends, one declaration per line.\n"
        "// Lines that begin with // are comments. Replace the examples below with\n"
        "// your own and open the project again (File > Open Project) to load them.\n"
        "//\n"
        "// The device sends text lines such as\n"
        "//   12.5 TEMP=215 SUPPLY_V=3012 ST_PUMP=ON ERR=E_DRY pump started\n"
        "// an optional time stamp, NAME=value for a signal, ST_GROUP=STATE for a\n"
        "// state, ERR=NAME for an error; any other words are a message.\n"
        "\n"
        "// Signals: name, label, type (float or int).\n"
        "DASHBOARD_SIGNAL(TEMP, \"Temperature [degC]\", float)\n"
        "DASHBOARD_SIGNAL(SUPPLY_V, \"Supply Voltage [V]\", float)\n"
        "\n"
        "// Mappings from raw to physical values: name, offset, scale.\n"
        "// Shown value = raw * scale + offset; here millivolts become volts.\n"
        "DASHBOARD_MAPPING(SUPPLY_V, 0, 0.001)\n"
        "\n"
        "// State groups and their states: group, state, label.\n"
        "DASHBOARD_STATE_GROUP(PUMP, \"Pump\")\n"
        "DASHBOARD_STATE(PUMP, OFF, \"Off\")\n"
        "DASHBOARD_STATE(PUMP, ON, \"On\")\n"
        "\n"
        "// Errors: name, code, text.\n"
        "DASHBOARD_ERROR(E_DRY, 1, \"Pump running dry\")\n");
}

bool ProjectFolder::writeStarter(const QString &dir, QString *error)
{
    if (!QDir().mkpath(dir)) {
        *error = FileErrors::describe(dir, QCoreApplication::translate("ProjectFolder", "cannot create the folder"));
        return false;
    }
    const QString path = definitionsPath(dir);
    if (QFileInfo::exists(path))
        return true;
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(starterDefinitions()) != starterDefinitions().size()) {
        *error = FileErrors::describe(path, file.errorString());
        return false;
    }
    return true;
}

QString ProjectFolder::demoFolder()
{
    QStringList candidates{QCoreApplication::applicationDirPath() + QStringLiteral("/../share/ombrix/demo")};
    candidates += QStandardPaths::locateAll(QStandardPaths::GenericDataLocation, QStringLiteral("ombrix/demo"),
                                            QStandardPaths::LocateDirectory);
#ifdef OMBRIX_DEMO_SOURCE_DIR
    candidates.append(QStringLiteral(OMBRIX_DEMO_SOURCE_DIR));
#endif
    for (const QString &candidate : candidates) {
        if (isValid(candidate))
            return QDir(candidate).absolutePath();
    }
    return QString();
}

QString ProjectFolder::demoCopyFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/Ombrix/demo");
}

bool ProjectFolder::copyFolder(const QString &from, const QString &to, QString *error)
{
    const QDir source(from);
    QDirIterator files(from, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString file = files.next();
        const QString target = QDir(to).filePath(source.relativeFilePath(file));
        if (QFileInfo::exists(target))
            continue;
        QFile input(file);
        if (!QDir().mkpath(QFileInfo(target).absolutePath()) || !input.copy(target)) {
            *error = FileErrors::describe(target, input.errorString());
            return false;
        }
        // A copy of a read-only installed file must still be the user's to change.
        QFile::setPermissions(target, QFile::permissions(target) | QFile::WriteOwner | QFile::ReadOwner);
    }
    return true;
}
