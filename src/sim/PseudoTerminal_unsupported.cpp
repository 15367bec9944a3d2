#include "PseudoTerminal.h"

// Systems without pseudo-terminals: the simulated device streams to
// standard output instead (ombrix-cli simulate --stdout).

PseudoTerminal::~PseudoTerminal() = default;

bool PseudoTerminal::open(QString &error)
{
    error = QStringLiteral("pseudo-terminals are not available on this system; use --stdout");
    return false;
}

bool PseudoTerminal::link(const QString &, QString &error)
{
    error = QStringLiteral("pseudo-terminals are not available on this system");
    return false;
}

bool PseudoTerminal::readerAttached() const
{
    return false;
}

bool PseudoTerminal::writeSome(QByteArray &)
{
    return false;
}

void PseudoTerminal::discardStale() const
{
}

void PseudoTerminal::waitWritable(int) const
{
}
