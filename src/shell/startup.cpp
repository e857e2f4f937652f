#include "shell/startup.h"

#include "data/data_source.h"
#include "definitions/definition_store.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "output/build_tables.h"

namespace tarnova {

namespace {

/// What each start sets, whatever the file says: modules register again.
void setFixedPreferences() {
    resetStartFlags(appPrefs());
    resetDriverTable(appPrefs());
    savePreferences();
}

}  // namespace

errorWord ZavoStartupShutdown::Startup(std::string_view applicationFolder, std::string_view roamingFolder) {
    sessionInit();
    settleDataFolder(applicationFolder, roamingFolder);
    loadPreferences();
    const errorWord err = openDefinitionStore(session().engineError);
    setFixedPreferences();
    return err;
}

errorWord ZavoStartupShutdown::Shutdown() {
    const errorWord err = saveDefinitionStore(0);
    dataSourceCloseAll();
    freeBuildTables();
    return err;
}

}  // namespace tarnova
