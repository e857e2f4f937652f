#include "shell/startup.h"

#include <tuple>

#include "data/data_source.h"
#include "data/translation_table.h"
#include "definitions/definition_store.h"
#include "engine/session/folder_test.h"
#include "engine/session/preferences_file.h"
#include "engine/session/session.h"
#include "engine/toolkit/strings.h"
#include "output/build_tables.h"
#include "rules/rule_data.h"

namespace tarnova {

namespace {

void readHostTexts() {
    constexpr const char* months[] = {"kZavoMonthJanuary", "kZavoMonthFebruary", "kZavoMonthMarch",
                                      "kZavoMonthApril",   "kZavoMonthMay",      "kZavoMonthJune",
                                      "kZavoMonthJuly",    "kZavoMonthAugust",   "kZavoMonthSeptember",
                                      "kZavoMonthOctober", "kZavoMonthNovember", "kZavoMonthDecember"};
    sessionRec& current = session();
    static_assert(std::size(months) == std::tuple_size_v<decltype(current.monthNames)>);
    for (std::size_t i = 0; i < std::size(months); ++i)
        current.monthNames[i] = PMString::ofKey(months[i]);
    current.languageIsEnglish = stringLanguage().starts_with("en") ? 1 : 0;
}

/// What each start sets, whatever the file says: modules register again.
void setFixedPreferences() {
    resetStartFlags(appPrefs());
    resetDriverTable(appPrefs());
    savePreferences();
}

}  // namespace

errorWord ZavoStartupShutdown::Startup(std::string_view applicationFolder, std::string_view roamingFolder) {
    sessionInit();
    readHostTexts();
    settleDataFolder(applicationFolder, roamingFolder);
    testFolderWritable(session().dataFolder, true);
    loadPreferences();
    session().putDefinitionRules = putDefinitionRules;
    errorWord err = openDefinitionStore(false, nullptr, session().engineError);
    err = writeTransTableTemplate(err);
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
