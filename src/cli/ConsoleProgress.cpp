#include "ConsoleProgress.h"

#include "TerminationNotifier.h"

#include <QTextStream>

#include <algorithm>

#include <cstdio>

ConsoleProgress::ConsoleProgress(const QString &label)
    : m_label(label)
{
    m_clock.start();
}

ConsoleProgress::~ConsoleProgress()
{
    finish();
}

Recording::Progress ConsoleProgress::callback()
{
    return [this](qint64 done, qint64 total) { return update(done, total); };
}

bool ConsoleProgress::update(qint64 done, qint64 total)
{
    if (TerminationNotifier::requested())
        return false;
    if (m_clock.elapsed() <= ShowAfterMs || total <= 0)
        return true;
    const int percent = int(std::clamp<qint64>(done * 100 / total, 0, 100));
    if (percent != m_shownPercent) {
        m_shownPercent = percent;
        QTextStream(stderr) << '\r' << m_label << ' ' << percent << '%';
    }
    return true;
}

void ConsoleProgress::finish()
{
    if (m_shownPercent >= 0)
        QTextStream(stderr) << '\n';
    m_shownPercent = -1;
}
