#pragma once

#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

#include "SignalDefinitions.h"

QT_BEGIN_NAMESPACE
class QRegularExpressionMatch;
class QTextStream;
QT_END_NAMESPACE

/**
 * Reads a definition file the way SignalDefinitions loads it and reports
 * what loading passes over in silence: lines that declare nothing (and what
 * they nearly were), declarations inside a block comment that still count,
 * repeated names, keys and codes (and which of them look-ups use), mappings
 * of signals never declared, and states whose group is only implied.
 *
 * Loading itself stays tolerant; this is for the person editing the file.
 */
class DefinitionLinter
{
public:
    struct Finding
    {
        int line = 0;         // counted from 1
        bool warning = false; // allowed, but perhaps not meant
        QString message;
    };

    // Every finding about the text, sorted by line (stable within a line).
    static QList<Finding> check(QTextStream &in);
    static QList<Finding> checkText(const QString &text);
    // False with *error set when the file cannot be opened.
    static bool checkFile(const QString &path, QList<Finding> *findings, QString *error);

private:
    using Declaration = SignalDefinitions::Declaration;

    void checkLine(int number, const QString &rawLine);
    void checkDeclaration(int number, Declaration form, const QRegularExpressionMatch &match);
    void checkMapping(int number, const QString &name);
    void checkSignal(int number, const QString &name);
    void checkStateGroup(int number, const QString &id);
    void checkState(int number, const QString &groupId, const QString &stateId);
    void checkError(int number, const QString &name, const QString &codeText);
    void finish();
    void add(int line, const QString &message, bool warning = false);

    QList<Finding> m_findings;
    bool m_inBlockComment = false;
    QHash<QString, int> m_signalLines;
    QHash<QString, int> m_mappingLines;
    QList<QPair<QString, int>> m_mappings; // every mapping line, for the undeclared check at the end
    QHash<QString, int> m_groupLines;
    QHash<QString, int> m_impliedGroupLines; // the state that declared the group implicitly
    QHash<QPair<QString, QString>, int> m_stateLines; // by group and state id
    QHash<QString, int> m_errorLines;
    QHash<int, QPair<QString, int>> m_errorCodes; // code -> first name and line
};
