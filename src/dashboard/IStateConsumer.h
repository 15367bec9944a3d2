#pragma once

#include <QString>

// Widgets that show the state of one state group (the state indicator).
// Routing hands them every state change of their group.
class IStateConsumer
{
public:
    virtual ~IStateConsumer() = default;
    // The group whose states this widget shows; empty for none.
    virtual QString groupId() const = 0;
    // stateId as received; label from the catalogue, empty when it has none.
    virtual void setState(const QString &stateId, const QString &label) = 0;
};
