#include "DefinitionLinter.h"

#include "DeclarationDiagnosis.h"

#include <QFile>
#include <QRegularExpressionMatch>
#include <QTextStream>

#include <algorithm>

namespace {

// Whether a /* */ comment is still open at the end of the line. Loading only
// looks at how a line begins, so this is what tells a commented-out line
// from one that loading still reads.
bool blockCommentOpenAfter(const QString &line, bool open)
{
    bool quoted = false;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QStringView rest = QStringView(line).mid(i);
        if (open) {
            if (rest.startsWith(QLatin1String("*/"))) {
                open = false;
                ++i;
            }
        } else if (line.at(i) == QLatin1Char('"')) {
            quoted = !quoted;
        } else if (!quoted && rest.startsWith(QLatin1String("//"))) {
            break;
        } else if (!quoted && rest.startsWith(QLatin1String("/*"))) {
            open = true;
            ++i;
        }
    }
    return open;
}

// "/* note */ DASHBOARD_SIGNAL(...)": loading skips the whole line.
bool declaresAfterLeadingComment(const QString &line)
{
    if (!line.startsWith(QLatin1String("/*")))
        return false;
    const qsizetype end = line.indexOf(QLatin1String("*/"), 2);
    if (end < 0)
        return false;
    QRegularExpressionMatch match;
    return SignalDefinitions::declarationOf(line.mid(end + 2).trimmed(), &match).has_value();
}

} // namespace

QList<DefinitionLinter::Finding> DefinitionLinter::check(QTextStream &in)
{
    DefinitionLinter linter;
    QString line;
    int number = 0;
    while (in.readLineInto(&line))
        linter.checkLine(++number, line);
    linter.finish();
    return linter.m_findings;
}

QList<DefinitionLinter::Finding> DefinitionLinter::checkText(const QString &text)
{
    QString copy = text;
    QTextStream in(&copy, QIODevice::ReadOnly);
    return check(in);
}

bool DefinitionLinter::checkFile(const QString &path, QList<Finding> *findings, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        *error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    QTextStream in(&file);
    *findings = check(in);
    return true;
}

void DefinitionLinter::checkLine(int number, const QString &rawLine)
{
    const QString line = rawLine.trimmed();
    const bool commented = m_inBlockComment;
    m_inBlockComment = blockCommentOpenAfter(rawLine, m_inBlockComment);

    QRegularExpressionMatch match;
    if (const auto form = SignalDefinitions::declarationOf(line, &match)) {
        if (commented)
            add(number, QStringLiteral("this declaration counts although it lies inside a /* */ comment: "
                                       "only a line that begins with // or /* is skipped"));
        checkDeclaration(number, *form, match);
    } else if (declaresAfterLeadingComment(line)) {
        add(number, QStringLiteral("the declaration after */ is skipped with the comment: "
                                   "a line that begins with /* declares nothing"));
    } else if (!commented && !SignalDefinitions::isSkipped(line)) {
        add(number, DeclarationDiagnosis::explain(line));
    }
}

void DefinitionLinter::checkDeclaration(int number, Declaration form, const QRegularExpressionMatch &match)
{
    switch (form) {
    case Declaration::Mapping:
        checkMapping(number, match.captured(1));
        break;
    case Declaration::Signal:
        checkSignal(number, match.captured(1));
        break;
    case Declaration::StateGroup:
        checkStateGroup(number, match.captured(1));
        break;
    case Declaration::State:
        checkState(number, match.captured(1), match.captured(2));
        break;
    case Declaration::Error:
        checkError(number, match.captured(1), match.captured(2));
        break;
    }
}

void DefinitionLinter::checkMapping(int number, const QString &name)
{
    m_mappings.append({name, number});
    if (const auto first = m_mappingLines.constFind(name); first != m_mappingLines.cend())
        add(number, QStringLiteral("%1 is mapped again (first on line %2): values are mapped with the first "
                                   "mapping, so this line has no effect")
                        .arg(name)
                        .arg(*first));
    else
        m_mappingLines.insert(name, number);
}

void DefinitionLinter::checkSignal(int number, const QString &name)
{
    if (const auto first = m_signalLines.constFind(name); first != m_signalLines.cend())
        add(number, QStringLiteral("signal %1 is declared again (first on line %2): look-ups use the first, "
                                   "so this label and type are not used")
                        .arg(name)
                        .arg(*first));
    else
        m_signalLines.insert(name, number);
}

void DefinitionLinter::checkStateGroup(int number, const QString &id)
{
    if (const auto first = m_groupLines.constFind(id); first != m_groupLines.cend())
        add(number, QStringLiteral("state group %1 is declared again (first on line %2): look-ups use this "
                                   "later line, and the group is listed twice")
                        .arg(id)
                        .arg(*first));
    else if (const auto implied = m_impliedGroupLines.constFind(id); implied != m_impliedGroupLines.cend())
        add(number, QStringLiteral("state group %1 comes after its state on line %2, which declared it "
                                   "already: the group is listed twice; move this line above its states")
                        .arg(id)
                        .arg(*implied));
    m_groupLines.insert(id, number);
}

void DefinitionLinter::checkState(int number, const QString &groupId, const QString &stateId)
{
    if (!m_groupLines.contains(groupId) && !m_impliedGroupLines.contains(groupId)) {
        m_impliedGroupLines.insert(groupId, number);
        add(number,
            QStringLiteral("state group %1 is not declared before its state: the state declares it, "
                           "with %1 as its label")
                .arg(groupId),
            true);
    }
    const QPair<QString, QString> key(groupId, stateId);
    if (const auto first = m_stateLines.constFind(key); first != m_stateLines.cend())
        add(number, QStringLiteral("state %1 of group %2 is declared again (first on line %3): look-ups use "
                                   "this later line")
                        .arg(stateId, groupId)
                        .arg(*first));
    else
        m_stateLines.insert(key, number);
}

void DefinitionLinter::checkError(int number, const QString &name, const QString &codeText)
{
    bool inRange = false;
    const int code = codeText.toInt(&inRange);
    if (!inRange)
        add(number, QStringLiteral("DASHBOARD_ERROR: the code %1 is too large and reads as 0").arg(codeText));

    const auto sameName = m_errorLines.constFind(name);
    if (sameName != m_errorLines.cend())
        add(number, QStringLiteral("error %1 is declared again (first on line %2): look-ups by name use this "
                                   "later line")
                        .arg(name)
                        .arg(*sameName));
    else
        m_errorLines.insert(name, number);

    const auto sameCode = m_errorCodes.constFind(code);
    if (sameCode == m_errorCodes.cend())
        m_errorCodes.insert(code, {name, number});
    else if (sameCode->first != name) // a repeated declaration was reported above
        add(number, QStringLiteral("error code %1 is used again (first by %2 on line %3): look-ups by code "
                                   "use this later line")
                        .arg(code)
                        .arg(sameCode->first)
                        .arg(sameCode->second));
}

void DefinitionLinter::finish()
{
    for (const auto &[name, line] : std::as_const(m_mappings)) {
        if (!m_signalLines.contains(name))
            add(line, QStringLiteral("%1 is mapped but never declared with DASHBOARD_SIGNAL").arg(name));
    }
    std::stable_sort(m_findings.begin(), m_findings.end(),
                     [](const Finding &a, const Finding &b) { return a.line < b.line; });
}

void DefinitionLinter::add(int line, const QString &message, bool warning)
{
    m_findings.append(Finding{line, warning, message});
}
