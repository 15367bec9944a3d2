#pragma once

#include <QObject>

QT_BEGIN_NAMESPACE
class QSocketNotifier;
QT_END_NAMESPACE

// Turns a request to end the process into a Qt signal, so that a command ends
// its work cleanly from the event loop instead of dying half-way. On POSIX
// systems: SIGINT, SIGTERM and SIGHUP (unless hang-ups are ignored, as under
// nohup), through a self-pipe watched by a QSocketNotifier; on Windows the
// console's Ctrl+C, Ctrl+Break and close events. Work that runs without an event loop polls requested().
// The previous handlers are restored on destruction; at most one notifier
// should exist at a time.
class TerminationNotifier : public QObject
{
    Q_OBJECT

public:
    explicit TerminationNotifier(QObject *parent = nullptr);
    ~TerminationNotifier() override;

    // True once one of those signals arrived while a notifier was installed.
    static bool requested();

Q_SIGNALS:
    // Emitted from the event loop once per arriving signal.
    void terminationRequested(int signalNumber);

private:
    void onReadable();

    QSocketNotifier *m_notifier = nullptr;
};
