#include "DeclarationDiagnosis.h"

#include "SignalDefinitions.h"

#include <QList>
#include <QRegularExpression>
#include <QStringList>

#include <optional>

namespace {

using Declaration = SignalDefinitions::Declaration;

enum class Kind { Word, Number, WholeNumber, Label };

struct Argument
{
    QLatin1String role;
    Kind kind;
};

struct Form
{
    Declaration declaration;
    QLatin1String keyword;
    QList<Argument> arguments;
};

const QList<Form> &forms()
{
    static const QList<Form> table = {
        {Declaration::Mapping,
         QLatin1String("DASHBOARD_MAPPING"),
         {{QLatin1String("signal name"), Kind::Word},
          {QLatin1String("offset"), Kind::Number},
          {QLatin1String("scale"), Kind::Number}}},
        {Declaration::Signal,
         QLatin1String("DASHBOARD_SIGNAL"),
         {{QLatin1String("name"), Kind::Word}, {QLatin1String("label"), Kind::Label}, {QLatin1String("type"), Kind::Word}}},
        {Declaration::StateGroup,
         QLatin1String("DASHBOARD_STATE_GROUP"),
         {{QLatin1String("group id"), Kind::Word}, {QLatin1String("label"), Kind::Label}}},
        {Declaration::State,
         QLatin1String("DASHBOARD_STATE"),
         {{QLatin1String("group id"), Kind::Word},
          {QLatin1String("state id"), Kind::Word},
          {QLatin1String("label"), Kind::Label}}},
        {Declaration::Error,
         QLatin1String("DASHBOARD_ERROR"),
         {{QLatin1String("name"), Kind::Word}, {QLatin1String("code"), Kind::WholeNumber}, {QLatin1String("text"), Kind::Label}}},
    };
    return table;
}

const Form *formNamed(const QString &keyword)
{
    for (const Form &form : forms()) {
        if (form.keyword == keyword)
            return &form;
    }
    return nullptr;
}

// A well-formed argument of each kind, to stand in for the ones not under test.
QString standIn(Kind kind)
{
    switch (kind) {
    case Kind::Word:
        return QStringLiteral("A");
    case Kind::Number:
    case Kind::WholeNumber:
        return QStringLiteral("0");
    case Kind::Label:
        return QStringLiteral("\"a\"");
    }
    return QString();
}

// "name, "label", type": what goes between the parentheses.
QString roles(const Form &form)
{
    QStringList roles;
    for (const Argument &argument : form.arguments)
        roles.append(argument.kind == Kind::Label ? QLatin1Char('"') + argument.role + QLatin1Char('"')
                                                  : QString(argument.role));
    return roles.join(QLatin1String(", "));
}

QString knownKeywords()
{
    QStringList keywords;
    for (const Form &form : forms())
        keywords.append(form.keyword);
    const QString last = keywords.takeLast();
    return keywords.join(QLatin1String(", ")) + QLatin1String(" and ") + last;
}

// The text between the parentheses, split at the commas outside quotes.
struct Call
{
    QStringList arguments;
    bool closed = false;
    bool quoteOpen = false;
};

Call splitArguments(const QString &line, qsizetype from)
{
    Call call;
    QString current;
    for (qsizetype i = from; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (c == QLatin1Char('"'))
            call.quoteOpen = !call.quoteOpen;
        if (!call.quoteOpen && c == QLatin1Char(')')) {
            call.closed = true;
            break;
        }
        if (!call.quoteOpen && c == QLatin1Char(',')) {
            call.arguments.append(current);
            current.clear();
            continue;
        }
        current += c;
    }
    call.arguments.append(current);
    return call;
}

QString explainArgument(const Form &form, const Argument &argument, const QString &text)
{
    const QString prefix = form.keyword + QLatin1String(": the ") + argument.role;
    if (text.isEmpty())
        return prefix + QLatin1String(" is missing");
    switch (argument.kind) {
    case Kind::Word:
        return prefix + QLatin1String(" must be one word of letters, digits and underscores (%1 is not)").arg(text);
    case Kind::Number:
        return prefix + QLatin1String(" must be a plain decimal number (%1 is not)").arg(text);
    case Kind::WholeNumber:
        return prefix + QLatin1String(" must be a whole number (%1 is not)").arg(text);
    case Kind::Label:
        if (text == QLatin1String("\"\""))
            return prefix + QLatin1String(" is empty");
        if (!text.startsWith(QLatin1Char('"')) || !text.endsWith(QLatin1Char('"')) || text.size() < 2)
            return prefix + QLatin1String(" must be written in double quotes (%1 is not)").arg(text);
        return prefix + QLatin1String(" cannot contain a double quote");
    }
    return prefix + QLatin1String(" is not valid");
}

// The first argument that fails the real pattern among well-formed others.
std::optional<QString> wrongArgument(const Form &form, const QStringList &arguments)
{
    const QRegularExpression &pattern = SignalDefinitions::pattern(form.declaration);
    for (qsizetype tested = 0; tested < arguments.size(); ++tested) {
        QStringList candidate;
        for (qsizetype i = 0; i < arguments.size(); ++i)
            candidate.append(i == tested ? arguments.at(i) : standIn(form.arguments.at(i).kind));
        const QString line = form.keyword + QLatin1Char('(') + candidate.join(QLatin1Char(',')) + QLatin1Char(')');
        if (!pattern.match(line).hasMatch())
            return explainArgument(form, form.arguments.at(tested), arguments.at(tested).trimmed());
    }
    return std::nullopt;
}

QString explainCall(const Form &form, const QString &line, qsizetype afterParenthesis)
{
    const Call call = splitArguments(line, afterParenthesis);
    if (call.quoteOpen)
        return form.keyword + QLatin1String(": a double quote is not closed");
    if (!call.closed)
        return form.keyword + QLatin1String(": the closing parenthesis is missing");
    if (call.arguments.size() != form.arguments.size())
        return QStringLiteral("%1 takes %2 arguments (%3), not %4")
            .arg(form.keyword)
            .arg(form.arguments.size())
            .arg(roles(form))
            .arg(call.arguments.size());
    if (const auto wrong = wrongArgument(form, call.arguments))
        return *wrong;
    return form.keyword + QLatin1String(": not in the form ") + form.keyword + QLatin1Char('(') + roles(form)
        + QLatin1Char(')');
}

QString explainOther(const QString &line)
{
    static const QRegularExpression anyCase(QStringLiteral("^(dashboard_\\w*)"),
                                            QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch word = anyCase.match(line);
    if (word.hasMatch())
        return QStringLiteral("declares nothing: the word is written %1 (case matters)").arg(word.captured(1).toUpper());
    if (line.contains(QLatin1String("DASHBOARD_")))
        return QStringLiteral("declares nothing: a declaration must begin its line");
    return QStringLiteral("declares nothing");
}

} // namespace

QString DeclarationDiagnosis::explain(const QString &trimmedLine)
{
    static const QRegularExpression head(QStringLiteral("^(DASHBOARD_\\w*)\\s*(\\(?)"));
    const QRegularExpressionMatch match = head.match(trimmedLine);
    if (!match.hasMatch())
        return explainOther(trimmedLine);
    const Form *form = formNamed(match.captured(1));
    if (!form)
        return QStringLiteral("%1 is not a declaration; the known ones are %2").arg(match.captured(1), knownKeywords());
    if (match.captured(2).isEmpty())
        return form->keyword + QLatin1String(": an opening parenthesis must follow it");
    return explainCall(*form, trimmedLine, match.capturedEnd());
}
