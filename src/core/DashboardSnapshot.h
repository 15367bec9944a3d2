#pragma once

#include <QImage>
#include <QSize>
#include <QString>

/**
 * The dashboard of a layout as the window shows it, as a picture: the
 * project's definitions, the layout's items and, when a recording is given,
 * the moment `atSeconds` of it, reached as the slider would (the values,
 * states, errors and messages in force, the plots filled with the history
 * before it). Builds a DashboardCore of its own: no window, no settings, no
 * file written. The application must be a QApplication (on the offscreen
 * platform for unattended use).
 */
class DashboardSnapshot
{
public:
    struct Request
    {
        QString projectDir;
        QString layoutPath;
        QString recordingPath; // empty: no recording, the widgets as loaded
        double atSeconds = 0.0;
        QSize size;            // empty: the items' extent and a margin
    };

    // False with *error saying what is wrong and where.
    static bool render(const Request &request, QImage *image, QString *error);

    // The largest picture render() makes, each way.
    static constexpr int MaxSide = 8192;
};
