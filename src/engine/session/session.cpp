#include "engine/session/session.h"

#include <memory>

#include "definitions/document_definition.h"
#include "engine/session/preferences_file.h"

namespace tarnova {

namespace {

std::unique_ptr<sessionRec> theSession;

void makeSession() {
    theSession = std::make_unique<sessionRec>();
    installToolkitState(theSession.get());
    installDefinitionState(theSession.get());
    installDataState(theSession.get());
    installWalkState(theSession.get());
}

/// Brings the mode's own settings in. Where the session came from the other mode, that one's settings are kept first.
void exchangeModeSettings(appPrefsRec& prefs, std::uint16_t previous, std::uint16_t mode) {
    if (previous == mode) return;
    const std::uint16_t otherMode = mode == modeMerge ? modePrice : modeMerge;
    if (previous == otherMode) prefs.modeSettings[otherMode] = liveModeSettings(prefs);
    setLiveModeSettings(prefs, prefs.modeSettings[mode]);
}

}  // namespace

sessionRec::sessionRec() : definitionStateRec{} {
    writeDefaultPreferences(prefs, modeMerge, false);
    walkDeferredStories = &prefs.walkDeferredStories;
    saveDefinitionToDocument = tarnova::saveDefinitionToDocument;
}

// What is destroyed behind the session, its own parts among them, must not find it installed.
sessionRec::~sessionRec() {
    while (currentDefSet != nullptr) {
        recordDefSetDiscard(currentDefSet, currentDefSet);
    }
    installToolkitState(nullptr);
    installDefinitionState(nullptr);
    installDataState(nullptr);
    installWalkState(nullptr);
}

sessionRec& session() {
    if (theSession == nullptr) makeSession();
    return *theSession;
}

void sessionInit() {
    static_cast<void>(session());
}

void sessionReset() {
    theSession.reset();
    makeSession();
}

errorWord switchEngineMode(std::uint16_t mode, bool checked) {
    sessionRec& current = session();
    if (checked && mode == current.engineMode) return 0;
    const bool attached =
        (mode == modeMerge && current.mergeAttached != 0) || (mode == modePrice && current.priceAttached != 0);
    if (!attached) return errModeNotAttached;
    const std::uint16_t previous = current.prefs.lastEngineMode;
    current.prefs.lastEngineMode = mode;
    exchangeModeSettings(current.prefs, previous, mode);
    savePreferences();
    current.engineMode = mode;
    if (current.modeChanged != nullptr) current.modeChanged(mode);
    return 0;
}

const char* engineName() {
    return session().engineMode == modeMerge ? "Kelvane" : "Tallyra";
}

bool runIsActive() {
    return session().runStage != runStageIdle;
}

void resetRunLists() {
    static_cast<runListsRec&>(session()) = runListsRec{};
}

}  // namespace tarnova
