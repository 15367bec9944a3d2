#include "StateIndicatorWidget.h"

#include "SignalDefinitions.h"

#include <QComboBox>
#include <QFontMetrics>
#include <QFormLayout>
#include <QJsonObject>
#include <QPainter>

#include <algorithm>

StateIndicatorWidget::StateIndicatorWidget(QWidget *parent)
    : DashboardWidget(parent)
    , m_font(font())
{
    m_font.setPointSize(14);
    setMinimumSize(120, 60);
}

void StateIndicatorWidget::setValue(double value)
{
    Q_UNUSED(value);
}

QString StateIndicatorWidget::typeName() const
{
    return QStringLiteral("StateIndicator");
}

void StateIndicatorWidget::loadConfig(const QJsonObject &config)
{
    const QJsonValue group = config.value(QLatin1String("groupId"));
    if (!group.isUndefined())
        setGroupId(group.toString());
    const QJsonValue corner = config.value(QLatin1String("corner"));
    if (!corner.isUndefined()) {
        m_corner = corner.toInt();
        update();
    }
}

QJsonObject StateIndicatorWidget::saveConfig() const
{
    return QJsonObject{{QStringLiteral("groupId"), m_groupId}, {QStringLiteral("corner"), m_corner}};
}

void StateIndicatorWidget::buildConfigForm(QFormLayout *form, QWidget *parent)
{
    m_groupCombo = new QComboBox(parent);
    if (const SignalDefinitions *defs = SignalDefinitions::current()) {
        for (const StateGroupDef &group : defs->stateGroups())
            m_groupCombo->addItem(group.label, group.id);
    }
    const int current = m_groupCombo->findData(m_groupId);
    if (current >= 0)
        m_groupCombo->setCurrentIndex(current);
    form->addRow(tr("State Group:"), m_groupCombo);
}

void StateIndicatorWidget::applyConfigForm()
{
    if (m_groupCombo && m_groupCombo->currentIndex() >= 0)
        setGroupId(m_groupCombo->currentData().toString());
}

void StateIndicatorWidget::setGroupId(const QString &id)
{
    const QString trimmed = id.trimmed();
    if (trimmed == m_groupId)
        return;
    m_groupId = trimmed;
    m_title = trimmed;
    if (const SignalDefinitions *defs = SignalDefinitions::current()) {
        if (const auto group = defs->stateGroupFor(trimmed))
            m_title = group->label.isEmpty() ? group->id : group->label;
    }
    update();
}

void StateIndicatorWidget::setState(const QString &stateId, const QString &label)
{
    m_stateId = stateId.trimmed();
    m_stateLabel = label.isEmpty() ? stateId : label;
    markDirty();
}

QString StateIndicatorWidget::pillText() const
{
    if (!m_stateLabel.isEmpty())
        return m_stateLabel;
    if (!m_stateId.isEmpty())
        return m_stateId;
    return QStringLiteral("\u2014");
}

QColor StateIndicatorWidget::colorForState(const QString &stateId)
{
    const QString id = stateId.toUpper();
    auto containsAny = [&id](std::initializer_list<const char *> words) {
        return std::any_of(words.begin(), words.end(),
                           [&id](const char *word) { return id.contains(QLatin1String(word)); });
    };
    if (containsAny({"STOP", "OUT", "FAIL"}))
        return QColor(200, 60, 60);
    if (containsAny({"GO", "IN", "PASS"}))
        return QColor(60, 170, 80);
    if (id.contains(QLatin1String("PAUSE")))
        return QColor(230, 170, 40);
    return QColor(90, 120, 160);
}

void StateIndicatorWidget::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().color(QPalette::Window));

    const QRect inner = rect().adjusted(m_margin, m_margin, -m_margin, -m_margin);
    painter.setFont(m_font);
    const int lineHeight = QFontMetrics(m_font).height();
    const QRect captionBand(inner.left(), inner.top(), inner.width(), lineHeight);
    painter.setPen(Qt::black);
    painter.drawText(captionBand, Qt::AlignCenter, m_title.isEmpty() ? QStringLiteral("State") : m_title);

    // The pill takes the rest of the inner rectangle, never less than 24 px.
    const int pillTop = captionBand.bottom() + 1 + 6;
    const int pillHeight = std::max(24, inner.bottom() + 1 - pillTop);
    const QRect pill(inner.left(), pillTop, inner.width(), pillHeight);
    painter.setPen(Qt::NoPen);
    painter.setBrush(stateColor());
    painter.drawRoundedRect(pill, m_corner, m_corner);

    painter.setPen(Qt::white);
    painter.drawText(pill.adjusted(8, 0, -8, 0), Qt::AlignCenter, pillText());
}
