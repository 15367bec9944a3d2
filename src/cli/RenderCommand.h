#pragma once

#include <QStringList>

// ombrix-cli render LAYOUT --project DIR [--recording FILE.rec --at SECONDS]
// [--size WxH] -o OUT.png: the dashboard as the window shows it, at a moment
// of a recording, as a PNG, without a display. Needs a QApplication on the
// offscreen platform (main() makes one for this command).
class RenderCommand
{
public:
    static int run(const QStringList &args);
    // "1280x800" -> QSize; false for anything else or a side outside 16 .. max.
    static bool parseSize(const QString &text, int max, int *width, int *height);
};
