#include "SignalDefinitions.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextStream>

namespace {

const SignalDefinitions *s_current = nullptr;

// Indexed by SignalDefinitions::Declaration.
const QRegularExpression &compiledPattern(int form)
{
    static const QRegularExpression patterns[SignalDefinitions::DeclarationCount] = {
        QRegularExpression(QStringLiteral(
            R"re(^\s*DASHBOARD_MAPPING\s*\(\s*(\w+)\s*,\s*(-?\d+\.?\d*)\s*,\s*(-?\d+\.?\d*)\s*\))re")),
        QRegularExpression(QStringLiteral(
            R"re(^\s*DASHBOARD_SIGNAL\s*\(\s*(\w+)\s*,\s*"([^"]+)"\s*,\s*(\w+)\s*\))re")),
        QRegularExpression(QStringLiteral(
            R"re(^\s*DASHBOARD_STATE_GROUP\s*\(\s*(\w+)\s*,\s*"([^"]+)"\s*\))re")),
        QRegularExpression(QStringLiteral(
            R"re(^\s*DASHBOARD_STATE\s*\(\s*(\w+)\s*,\s*(\w+)\s*,\s*"([^"]+)"\s*\))re")),
        QRegularExpression(QStringLiteral(
            R"re(^\s*DASHBOARD_ERROR\s*\(\s*(\w+)\s*,\s*(-?\d+)\s*,\s*"([^"]+)"\s*\))re")),
    };
    return patterns[form];
}

// Linear search in file order: the first record of that name.
template <typename Record>
std::optional<Record> firstNamed(const QList<Record> &records, const QString &name)
{
    for (const Record &record : records) {
        if (record.name == name)
            return record;
    }
    return std::nullopt;
}

template <typename Key, typename Record>
std::optional<Record> indexed(const QMap<Key, int> &index, const QList<Record> &records, const Key &key)
{
    const auto it = index.constFind(key);
    if (it == index.cend())
        return std::nullopt;
    return records.at(*it);
}

} // namespace

SignalDefinitions::SignalDefinitions(const QString &path)
{
    load(path);
}

bool SignalDefinitions::load(const QString &path)
{
    *this = SignalDefinitions();
    m_path = path;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        m_lastError = QStringLiteral("Could not open file: %1").arg(path);
        return false;
    }
    QTextStream in(&file);
    parseLines(in);
    return true;
}

void SignalDefinitions::loadText(const QString &text)
{
    *this = SignalDefinitions();
    QString copy = text;
    QTextStream in(&copy, QIODevice::ReadOnly);
    parseLines(in);
}

void SignalDefinitions::parseLines(QTextStream &in)
{
    QString line;
    while (in.readLineInto(&line))
        parseLine(line.trimmed());
}

const QRegularExpression &SignalDefinitions::pattern(Declaration form)
{
    return compiledPattern(int(form));
}

bool SignalDefinitions::isSkipped(const QString &trimmedLine)
{
    return trimmedLine.isEmpty() || trimmedLine.startsWith(QLatin1String("//"))
        || trimmedLine.startsWith(QLatin1String("/*"));
}

std::optional<SignalDefinitions::Declaration> SignalDefinitions::declarationOf(const QString &trimmedLine,
                                                                              QRegularExpressionMatch *match)
{
    if (isSkipped(trimmedLine))
        return std::nullopt;
    for (int form = 0; form < DeclarationCount; ++form) {
        *match = compiledPattern(form).match(trimmedLine);
        if (match->hasMatch())
            return Declaration(form);
    }
    return std::nullopt;
}

void SignalDefinitions::parseLine(const QString &line)
{
    QRegularExpressionMatch m;
    const auto form = declarationOf(line, &m);
    if (!form)
        return;
    switch (*form) {
    case Declaration::Mapping: {
        const SignalMapping mapping{m.captured(1), m.captured(2).toDouble(), m.captured(3).toDouble()};
        m_mappings.append(mapping);
        m_mappingByName.insert(mapping.name, mapping);
        break;
    }
    case Declaration::Signal:
        m_signals.append(SignalDef{m.captured(1), m.captured(2), m.captured(3), 0.0, 0.0});
        break;
    case Declaration::StateGroup:
        addStateGroup(m.captured(1), m.captured(2));
        break;
    case Declaration::State:
        addState(m.captured(1), m.captured(2), m.captured(3));
        break;
    case Declaration::Error: {
        const int position = int(m_errors.size());
        m_errors.append(ErrorDef{m.captured(1), m.captured(2).toInt(), m.captured(3)});
        m_errorIndexByName.insert(m_errors.last().name, position);
        m_errorIndexByCode.insert(m_errors.last().code, position);
        break;
    }
    }
}

void SignalDefinitions::addState(const QString &groupId, const QString &stateId, const QString &label)
{
    if (!m_groupIndex.contains(groupId))
        addStateGroup(groupId, groupId); // a state may come before its group line
    const QString key = stateKey(groupId, stateId);
    const int position = int(m_states.size());
    m_states.append(StateDef{groupId, stateId, label, key});
    m_statesByGroup[groupId].append(position);
    m_stateIndex.insert(key, position);
}

void SignalDefinitions::addStateGroup(const QString &id, const QString &label)
{
    m_groupIndex.insert(id, int(m_stateGroups.size()));
    m_stateGroups.append(StateGroupDef{id, label});
}

std::optional<SignalDef> SignalDefinitions::signalFor(const QString &name) const
{
    return firstNamed(m_signals, name);
}

std::optional<SignalMapping> SignalDefinitions::mappingFor(const QString &name) const
{
    // The first line wins here, while mappingByName() holds the last one.
    return firstNamed(m_mappings, name);
}

std::optional<StateGroupDef> SignalDefinitions::stateGroupFor(const QString &groupId) const
{
    return indexed(m_groupIndex, m_stateGroups, groupId);
}

std::optional<StateDef> SignalDefinitions::stateFor(const QString &groupId, const QString &stateId) const
{
    const auto found = indexed(m_stateIndex, m_states, stateKey(groupId, stateId));
    if (!found || (found->groupId == groupId && found->stateId == stateId))
        return found;
    // Underscores in the ids made two states share a key; the group's own list tells them apart.
    const QList<int> positions = m_statesByGroup.value(groupId);
    for (auto it = positions.crbegin(); it != positions.crend(); ++it) {
        if (m_states.at(*it).stateId == stateId)
            return m_states.at(*it);
    }
    return std::nullopt;
}

std::optional<ErrorDef> SignalDefinitions::errorFor(const QString &name) const
{
    return indexed(m_errorIndexByName, m_errors, name);
}

std::optional<ErrorDef> SignalDefinitions::errorForCode(int code) const
{
    return indexed(m_errorIndexByCode, m_errors, code);
}

QStringList SignalDefinitions::stateGroupIds() const
{
    QStringList ids;
    ids.reserve(m_stateGroups.size());
    for (const StateGroupDef &group : m_stateGroups)
        ids.append(group.id);
    return ids;
}

QString SignalDefinitions::displayNameFor(const QString &name) const
{
    const auto def = signalFor(name);
    return def ? def->displayName() : name;
}

double SignalDefinitions::mapped(const QString &name, double raw) const
{
    const auto mapping = mappingFor(name);
    return mapping ? mapping->apply(raw) : raw;
}

QList<StateDef> SignalDefinitions::statesOf(const QString &groupId) const
{
    QList<StateDef> result;
    for (int position : m_statesByGroup.value(groupId))
        result.append(m_states.at(position));
    return result;
}

QString SignalDefinitions::stateKey(const QString &groupId, const QString &stateId)
{
    return QStringLiteral("ST_%1_%2").arg(groupId, stateId);
}

const SignalDefinitions *SignalDefinitions::current()
{
    return s_current;
}

void SignalDefinitions::setCurrent(const SignalDefinitions *defs)
{
    s_current = defs;
}
