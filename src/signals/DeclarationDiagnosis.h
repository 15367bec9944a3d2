#pragma once

#include <QString>

/**
 * Why a line of a definition file declares nothing, in words for the person
 * who wrote it: "DASHBOARD_MAPPING: the offset must be a plain decimal
 * number (1e3 is not)".
 *
 * It never restates the grammar: the verdict on each argument comes from
 * SignalDefinitions' own pattern, tried with that argument among
 * well-formed stand-ins for the others. What this class adds is only the
 * role of each argument, to name the one that is wrong.
 */
class DeclarationDiagnosis
{
public:
    // trimmedLine: a line that SignalDefinitions neither skips nor matches.
    static QString explain(const QString &trimmedLine);
};
