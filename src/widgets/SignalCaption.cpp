#include "SignalCaption.h"

SignalCaption::SignalCaption(const QString &boundName)
{
    const QStringList parts = boundName.split(QLatin1Char(':'), Qt::SkipEmptyParts);
    if (!parts.isEmpty())
        m_lower = parts.at(0);
    if (parts.size() > 1)
        m_upper = parts.at(1);
}
