#include "LineSource.h"

#include <QIODevice>

LineSource::LineSource(const QString &name, QObject *parent)
    : QObject(parent)
    , m_name(name)
{
}

void LineSource::fail(const QString &reason, const QString &systemText)
{
    const State was = m_state;
    m_errorString = systemText.isEmpty() ? reason : systemText;
    close();
    if (was == Opening)
        Q_EMIT openFailed(reason);
    else if (was == Open)
        Q_EMIT lost(reason);
}

bool LineSource::writeAll(QIODevice *device, QByteArrayView bytes)
{
    if (device->write(bytes.data(), bytes.size()) == bytes.size())
        return true;
    m_errorString = device->errorString();
    return false;
}
