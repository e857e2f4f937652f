#include "cli/run_job.h"

#include <fmt/format.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "cli/console_alerts.h"
#include "cli/interrupt.h"
#include "cli/job_setup.h"
#include "engine/run/idle_step.h"
#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/strings.h"
#include "merge/pull_frame_callback.h"

namespace tarnova {
namespace {

constexpr std::uint32_t pagesOfChunk = 32;  // keeps what a chunk needs in the processor's cache

std::string makeTemporaryFolder() {
    std::error_code failure;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
    std::string pattern = (folder / "tarnova-XXXXXX").string();
    return failure || mkdtemp(pattern.data()) == nullptr ? std::string() : pattern;
}

constexpr std::uint32_t commandStartPriceRun = 562;

/// Whether the last run came to its end.
bool ended() {
    return session().jobFailed == 0 && session().jobCancelled == 0;
}

int shownErrors() {
    const auto* const alerts = dynamic_cast<const ConsoleAlerts*>(&alertService());
    return alerts == nullptr ? 0 : alerts->errorCount();
}

struct statusRow {
    std::int32_t status;
    errorWord error;
};
constexpr statusRow statusErrors[] = {{-6002, errDefinitionMissing},
                                      {-6015, errImportTranslation},
                                      {-6018, errDataFileMissing},
                                      {-6020, errRangeBehindEnd},
                                      {-6024, errNoLinks}};

/// Text of a command's refusal.
std::string refusal(std::int32_t status) {
    const auto* const row = std::find_if(std::begin(statusErrors), std::end(statusErrors),
                                         [status](const statusRow& known) { return known.status == status; });
    return row == std::end(statusErrors) ? fmt::format("the run can't be started (code {})", status)
                                         : takeErrorText(row->error);
}

}  // namespace

RunJob::RunJob() : folder(makeTemporaryFolder()), userFolder(session().dataFolder) {
    watchInterrupts();
    session().dataFolder = folder;  // two programs may merge layouts of one name at the same time
    appPrefs().chunkAutomatic = 0;
    appPrefs().chunkRecords = pagesOfChunk;
    appPrefs().warnAtEnd = 0;  // places left over at the end are what people expect
    // Positions behind the last record stay blank: unused labels of a sheet carry no text.
    appPrefs().textDefaults.endOfFile.string[0] = 0;
    appPrefs().textDefaults.stackPad.string[0] = 0;
    appPrefs().pictureDefaults.endOfFile.string[0] = 0;
    appPrefs().pictureDefaults.stackPad.string[0] = 0;
    appPrefs().promptMissingAssets = 0;  // told at the end, with how many there are
    appPrefs().showProgress = isatty(STDERR_FILENO) != 0 ? 1 : 0;
}

RunJob::~RunJob() {
    session().dataFolder = userFolder;
    std::error_code ignored;
    if (!folder.empty()) std::filesystem::remove_all(folder, ignored);
}

bool RunJob::send(EngineCommand& command) {
    const int shownBefore = shownErrors();
    const std::int32_t status = command.run();
    if (status != 0 && shownErrors() == shownBefore) sayError(refusal(status));
    return status == 0;
}

bool RunJob::send(std::uint32_t command) {
    EngineCommand bare(command);
    return send(bare);
}

PictureProblems RunJob::pictureProblems(bool toOutput) const {
    if (toOutput) return engine.pictureProblems();
    PictureProblems problems;
    for (const pictureNoteRec& note : session().missingPictures) {
        ++(note.text.view() == pictureNoteMissing ? problems.missing : problems.damaged);
        problems.addExample(pictureExample(note.text.view(), note.fileName.view(), note.record + 1, note.page.view()));
    }
    return problems;
}

bool RunJob::run(std::uint32_t command) {
    return send(command) && push();
}

bool RunJob::runStarted(errorWord error) {
    session().engineError = error;
    surfaceError();
    return runIsActive() && push();
}

bool RunJob::runPrice() {
    if (!send(commandStartPriceRun)) return false;
    while (session().priceStart != 0 || session().engineError != 0)
        idleStep();  // the walk shows how far it is
    return ended();
}

bool RunJob::push() {
    const PMString title = PMString::ofKey("kZavoBuildingDocumentMessageStringKey");
    const bool shows = appPrefs().showProgress != 0;
    statusDialog(title, 0, shows, false, 0);
    while (runIsActive() || session().engineError != 0) {
        idleStep();
        statusDialog(title, static_cast<int>(std::max(session().jobPercent, 1U)), shows, false, 0);
    }
    statusDialog(title, -1, shows, false, 0);
    return ended();
}

}  // namespace tarnova
