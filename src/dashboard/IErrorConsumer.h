#pragma once

#include <QString>

// Widgets that list errors (the error console). Routing appends every error,
// live and played back, and clears them when playback resets the errors.
class IErrorConsumer
{
public:
    virtual ~IErrorConsumer() = default;
    // description: the catalogue's text, or the id when none is declared.
    virtual void appendError(double tSec, const QString &id, const QString &description) = 0;
    virtual void clearErrors() = 0;
};
