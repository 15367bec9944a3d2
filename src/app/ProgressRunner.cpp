#include "ProgressRunner.h"

#include <QCoreApplication>
#include <QProgressDialog>

#include <algorithm>

namespace {
constexpr int Steps = 1000;
constexpr int EventIntervalMs = 30;
} // namespace

ProgressRunner::ProgressRunner(const QString &labelText, QWidget *parent)
    : QObject(parent)
    , m_parentWidget(parent)
    , m_labelText(labelText)
{
    m_clock.start();
}

ProgressRunner::~ProgressRunner()
{
    if (m_dialog) {
        m_dialog->hide();
        m_dialog->deleteLater();
    }
}

Recording::Progress ProgressRunner::callback()
{
    return [this](qint64 done, qint64 total) { return update(done, total); };
}

void ProgressRunner::restart(const QString &labelText)
{
    m_labelText = labelText;
    m_clock.restart();
    if (m_dialog)
        m_dialog->setLabelText(labelText);
}

bool ProgressRunner::update(qint64 done, qint64 total)
{
    if (m_cancelled)
        return false;
    if (!m_dialog && m_clock.elapsed() >= m_showDelayMs)
        showDialog();
    if (!m_dialog)
        return true;
    const int value = total > 0 ? int(std::clamp<qint64>(done * Steps / total, 0, Steps)) : 0;
    m_dialog->setValue(value);
    if (m_sinceEvents.hasExpired(EventIntervalMs)) {
        QCoreApplication::processEvents();
        m_sinceEvents.restart();
    }
    m_cancelled = m_dialog->wasCanceled();
    return !m_cancelled;
}

void ProgressRunner::showDialog()
{
    m_dialog = new QProgressDialog(m_labelText, tr("Cancel"), 0, Steps, m_parentWidget);
    m_dialog->setWindowModality(Qt::WindowModal);
    m_dialog->setMinimumDuration(0);
    m_dialog->setAutoReset(false);
    m_dialog->setAutoClose(false);
    m_dialog->show();
    m_sinceEvents.start();
    QCoreApplication::processEvents();
}
