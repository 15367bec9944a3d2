#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

QT_BEGIN_NAMESPACE
class QRegularExpression;
class QRegularExpressionMatch;
class QTextStream;
QT_END_NAMESPACE

// physical = raw * scale + offset; the file writes the arguments as (name, offset, scale).
struct SignalMapping
{
    QString name;
    double offset = 0.0;
    double scale = 1.0;

    double apply(double raw) const { return raw * scale + offset; }
};

struct SignalDef
{
    QString name;
    QString label;
    QString typeName;
    // Two further values of the record: 0 after parsing, never set by the
    // file and read by nothing. Kept so that a SignalDef is still built with
    // all five of its fields.
    double minValue = 0.0;
    double maxValue = 0.0;

    // A signal is shown by its label, or by its bare name when it has none.
    QString displayName() const { return label.isEmpty() ? name : label; }
};

struct StateGroupDef
{
    QString id;
    QString label;
};

struct StateDef
{
    QString groupId;
    QString stateId;
    QString label;
    QString key; // "ST_<group>_<state>"
};

struct ErrorDef
{
    QString name;
    int code = 0;
    QString text;
};

// The telemetry vocabulary of a project, parsed from dashboard_signals.def.
// Parsing is tolerant: a line that matches none of the five declaration
// forms is skipped silently; only an unopenable file fails the load.
class SignalDefinitions
{
public:
    SignalDefinitions() = default;
    explicit SignalDefinitions(const QString &path);

    bool load(const QString &path);
    // The same parsing of a definition text held in memory (path() stays empty).
    void loadText(const QString &text);
    QString lastError() const { return m_lastError; }
    QString path() const { return m_path; }

    std::optional<SignalDef> signalFor(const QString &name) const;
    std::optional<SignalMapping> mappingFor(const QString &name) const;
    std::optional<StateGroupDef> stateGroupFor(const QString &groupId) const;
    std::optional<StateDef> stateFor(const QString &groupId, const QString &stateId) const;
    std::optional<ErrorDef> errorFor(const QString &name) const;
    std::optional<ErrorDef> errorForCode(int code) const;
    QStringList stateGroupIds() const;

    // The label of the signal, or its name when undeclared or unlabelled.
    QString displayNameFor(const QString &name) const;
    // raw * scale + offset when the signal has a mapping, else raw unchanged.
    double mapped(const QString &name, double raw) const;
    QList<StateDef> statesOf(const QString &groupId) const;

    static QString stateKey(const QString &groupId, const QString &stateId);

    // The five declaration forms, in the order load() tries them on a line.
    enum class Declaration { Mapping, Signal, StateGroup, State, Error };
    static constexpr int DeclarationCount = 5;
    // The exact pattern load() matches a form with; its captures are the
    // arguments in file order. Checkers reuse it rather than restate it.
    static const QRegularExpression &pattern(Declaration form);
    // A trimmed line load() passes over before trying any pattern: empty,
    // or starting with "//" or "/*".
    static bool isSkipped(const QString &trimmedLine);
    // The form load() acts on for a trimmed line (the first that matches),
    // with the match in *match; empty when the line declares nothing.
    static std::optional<Declaration> declarationOf(const QString &trimmedLine, QRegularExpressionMatch *match);

    // The catalogue that widgets and dialogs consult; owned by the main window.
    static const SignalDefinitions *current();
    static void setCurrent(const SignalDefinitions *defs);

    // Read access, in file order, duplicates kept.
    const QList<SignalMapping> &mappings() const { return m_mappings; }
    const QList<SignalDef> &signals() const { return m_signals; }
    const QMap<QString, SignalMapping> &mappingByName() const { return m_mappingByName; }
    const QList<StateGroupDef> &stateGroups() const { return m_stateGroups; }
    const QList<StateDef> &states() const { return m_states; }
    const QList<ErrorDef> &errors() const { return m_errors; }

private:
    void parseLines(QTextStream &in);
    void parseLine(const QString &line);
    void addStateGroup(const QString &id, const QString &label);
    void addState(const QString &groupId, const QString &stateId, const QString &label);

    QString m_path;
    QString m_lastError;
    QList<SignalMapping> m_mappings;
    QList<SignalDef> m_signals;
    QMap<QString, SignalMapping> m_mappingByName;
    QList<StateGroupDef> m_stateGroups;
    QList<StateDef> m_states;
    QMap<QString, int> m_groupIndex;
    QMap<QString, QList<int>> m_statesByGroup;
    QMap<QString, int> m_stateIndex;
    QList<ErrorDef> m_errors;
    QMap<QString, int> m_errorIndexByName;
    QMap<int, int> m_errorIndexByCode;
};
