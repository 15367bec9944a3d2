#pragma once

#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>

// Everything a recording holds for one distinct time, in file order.
struct PlaybackFrame
{
    double t = 0.0;                           // seconds from the recording's origin
    QMap<QString, double> values;             // signal values set at t
    QList<QPair<QString, QString>> states;    // (group id, state id)
    QStringList errors;                       // error ids
    QStringList messages;                     // free-text messages
};
