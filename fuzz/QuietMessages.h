#pragma once

#include <QtGlobal>

// Qt's warnings about what an input holds (a font size of zero, a picture
// that cannot be read) would flood the fuzzer's output and slow it down. A
// fatal message still aborts once the handler returns.
inline void quietQtMessages()
{
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
}
