#pragma once

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QStringView>

// One state or error report of a line, in the order its token stood.
struct LineEvent
{
    enum Kind { State, Error };
    Kind kind = State;
    QString groupId; // State only
    QString id;      // State: the state id; Error: the error name
};

// Where each value of the previous line sits in its map, so that a line with
// the same keys in the same order updates the map in place instead of
// rebuilding it. Internal to LineParser::parse.
struct ValueShape
{
    QStringList keys;       // the value keys in token order
    QList<int> slots;       // for each key, its position in map order
    QStringList sortedKeys; // the map's keys, in map order
};

// Everything one line of the device's protocol carries.
struct ParsedLine
{
    double timestamp = 0.0;        // the line's own leading number, or the default
    bool ownTimestamp = false;     // true when the first token was a number
    QString line;                  // the whole trimmed line
    QList<LineEvent> events;       // states and errors in token order
    QMap<QString, double> values;  // a repeated key keeps the last value
    QStringList unrecognized;      // words for unrecognizedParsed, in order
    ValueShape shape;              // the last line's value layout, for reuse

    void clear();
    // The unrecognised words joined with one space, as unrecognizedParsed carries them.
    QString unrecognizedText() const { return unrecognized.join(QLatin1Char(' ')); }
};

// One token read under the token rules of the wire grammar.
struct LineToken
{
    enum Kind {
        Word,    // no "=", or "=" first: an unrecognised word
        State,   // ST_<group>=<state>
        Error,   // ERR=<name>
        Value,   // <name>=<number>
        Dropped, // a key with an empty or non-numeric value: no report
    };
    Kind kind = Dropped;
    QStringView key;     // State: the group id; Value: the signal name
    QStringView value;   // State: the state id; Error: the error name
    double number = 0.0; // Value
};

// The wire grammar of one line: white-space separated tokens, an optional
// leading number as the line's time stamp, then KEY=VALUE pairs where
// ST_<group>=<state> is a state, ERR=<name> an error, and any other key with
// a numeric value a signal value. Words without "=" (or starting with it) are
// unrecognised; a non-numeric value is dropped silently.
//
// Keys and ids are interned per thread, so a steady stream of the same names
// costs no string allocations.
class LineParser
{
public:
    // False (and nothing to emit) for an empty line or a line without tokens.
    static bool parse(QStringView trimmedLine, double defaultTimestamp, ParsedLine &out);
    // Same, sharing the caller's string as out.line instead of copying it.
    static bool parse(const QString &trimmedLine, double defaultTimestamp, ParsedLine &out);

    // The token rules for one token; equals is the position of its first
    // "=" (-1 when none). The views point into token.
    static LineToken readToken(QStringView token, qsizetype equals);

    // The next token of text at or after pos, or a null view when none is
    // left; pos moves past the token.
    static QStringView nextToken(QStringView text, qsizetype &pos);
    // Same, also giving the position of the token's first "=" (-1 when none).
    static QStringView nextToken(QStringView text, qsizetype &pos, qsizetype &equals);
    // The characters that separate tokens: those of the pattern \s
    // (tab, line feed, vertical tab, form feed, carriage return, space).
    static bool isSeparator(QChar c)
    {
        const char16_t u = c.unicode();
        return u == u' ' || (u >= u'\t' && u <= u'\r');
    }
};
