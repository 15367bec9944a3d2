#pragma once

#include <QString>

// Widgets that take values together with the time of their frame (plots).
class ITimeStampedConsumer
{
public:
    virtual ~ITimeStampedConsumer() = default;
    virtual void setValueForSignalAt(const QString &name, double value, double tSec) = 0;
};
