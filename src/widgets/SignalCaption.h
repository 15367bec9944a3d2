#pragma once

#include <QString>
#include <QStringList>

/**
 * The two caption lines drawn under a gauge or a display for a bound name
 * such as "Temp:Engine": the name is split at ':' with empty parts skipped;
 * the second part goes on the upper line, the first on the lower one.
 */
class SignalCaption
{
public:
    explicit SignalCaption(const QString &boundName);

    QString upper() const { return m_upper; }
    QString lower() const { return m_lower; }

private:
    QString m_upper;
    QString m_lower;
};
