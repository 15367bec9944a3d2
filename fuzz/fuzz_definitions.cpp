// Feeds arbitrary text to the definition file parser (SignalDefinitions) and
// to the definition linter, and checks what must always hold: every
// declaration the catalogue lists is found again by its own look-up, and
// every finding of the linter names a line of the text.
#include "DefinitionLinter.h"
#include "SignalDefinitions.h"

#include <QString>

#include <cstdint>
#include <cstdlib>

namespace {

void checkLookUps(const SignalDefinitions &defs)
{
    for (const SignalDef &signal : defs.signals()) {
        if (!defs.signalFor(signal.name))
            std::abort();
    }
    for (const SignalMapping &mapping : defs.mappings()) {
        if (!defs.mappingFor(mapping.name) || !defs.mappingByName().contains(mapping.name))
            std::abort();
    }
    for (const StateGroupDef &group : defs.stateGroups()) {
        if (!defs.stateGroupFor(group.id))
            std::abort();
    }
    for (const StateDef &state : defs.states()) {
        const auto found = defs.stateFor(state.groupId, state.stateId);
        if (!found || found->groupId != state.groupId || found->stateId != state.stateId)
            std::abort();
        if (!defs.stateGroupFor(state.groupId))
            std::abort();
    }
    for (const ErrorDef &error : defs.errors()) {
        if (!defs.errorFor(error.name) || !defs.errorForCode(error.code))
            std::abort();
    }
}

void checkFindings(const QString &text)
{
    const qsizetype lines = text.count(u'\n') + text.count(u'\r') + 1;
    for (const DefinitionLinter::Finding &finding : DefinitionLinter::checkText(text)) {
        if (finding.line < 1 || finding.line > lines || finding.message.isEmpty())
            std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), qsizetype(size));
    SignalDefinitions defs;
    defs.loadText(text);
    checkLookUps(defs);
    checkFindings(text);
    return 0;
}
