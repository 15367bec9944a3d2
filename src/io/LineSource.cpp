#include "LineSource.h"

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
