#include "TerminationNotifier.h"

#include <QPointer>

#include <atomic>
#include <windows.h>

namespace {

std::atomic<bool> s_requested{false};
QPointer<TerminationNotifier> s_notifier;

BOOL WINAPI onConsoleEvent(DWORD type)
{
    if (type != CTRL_C_EVENT && type != CTRL_BREAK_EVENT && type != CTRL_CLOSE_EVENT)
        return FALSE;
    s_requested = true;
    // The handler runs on a thread of its own: hand over to the event loop.
    if (TerminationNotifier *notifier = s_notifier.data())
        QMetaObject::invokeMethod(notifier, [notifier, type] { Q_EMIT notifier->terminationRequested(int(type)); },
                                  Qt::QueuedConnection);
    return TRUE;
}

} // namespace

TerminationNotifier::TerminationNotifier(QObject *parent)
    : QObject(parent)
{
    s_requested = false;
    s_notifier = this;
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

TerminationNotifier::~TerminationNotifier()
{
    SetConsoleCtrlHandler(onConsoleEvent, FALSE);
    s_notifier.clear();
}

bool TerminationNotifier::requested()
{
    return s_requested;
}

void TerminationNotifier::onReadable()
{
}
