#include "ConsoleIo.h"

#include <atomic>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace {

std::atomic<bool> s_stopRequested{false};

BOOL WINAPI onConsoleEvent(DWORD type)
{
    if (type != CTRL_C_EVENT && type != CTRL_BREAK_EVENT && type != CTRL_CLOSE_EVENT)
        return FALSE;
    s_stopRequested = true;
    return TRUE;
}

} // namespace

void ConsoleIo::installStopHandlers()
{
    s_stopRequested = false;
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
    // Lines go out with their line feeds as the device sends them.
    _setmode(_fileno(stdout), _O_BINARY);
}

bool ConsoleIo::stopRequested()
{
    return s_stopRequested;
}

bool ConsoleIo::writeStdout(const QByteArray &bytes)
{
    qsizetype done = 0;
    while (done < bytes.size() && !s_stopRequested) {
        const int chunk = int(qMin<qsizetype>(bytes.size() - done, 1 << 20));
        const int n = _write(_fileno(stdout), bytes.constData() + done, unsigned(chunk));
        if (n < 0)
            return false;
        done += n;
    }
    return done == bytes.size();
}
