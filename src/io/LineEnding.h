#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// What ends a command sent to the device.
enum class LineEnding { Lf, CrLf, Cr, None };

namespace LineEndings {

QByteArray bytes(LineEnding ending);
// "lf", "crlf", "cr", "none".
QString name(LineEnding ending);
// The ending a name stands for (any case); false for none of them.
bool fromName(const QString &name, LineEnding *ending);
QStringList names();

} // namespace LineEndings
