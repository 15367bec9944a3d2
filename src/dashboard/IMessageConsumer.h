#pragma once

#include <QString>

// Widgets that list free-text messages (the messages console). Routing
// appends every message, live and played back, and clears them when
// playback resets the messages.
class IMessageConsumer
{
public:
    virtual ~IMessageConsumer() = default;
    virtual void appendMessage(double tSec, const QString &text) = 0;
    virtual void clearMessages() = 0;
};
