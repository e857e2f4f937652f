// `tarnova data numbers`: a data file of running numbers.

#include <fmt/format.h>

#include "cli/data_verb.h"
#include "cli/engine_client.h"
#include "cli/job_setup.h"
#include "cli/verb.h"
#include "merge/number_file.h"

namespace tarnova {

int makeNumbers(const numberVerbRec& options) {
    const EngineClient engine;
    numberingOptionsRec numbers{options.start, options.end, options.width, {}, {}};
    pstrFromView(numbers.prefix, sizeof(numbers.prefix), options.prefix);
    pstrFromView(numbers.suffix, sizeof(numbers.suffix), options.suffix);
    const errorWord error = writeNumberFile(options.outputPath, numbers, options.pad, 0);
    if (error != 0) {
        sayError(fmt::format("{}: {}", options.outputPath, takeErrorText(error)));
        return exitFailed;
    }
    fmt::print("{}: {} to {}\n", options.outputPath, numberedText(numbers, options.pad, numbers.start),
               numberedText(numbers, options.pad, numbers.end));
    return exitDone;
}

}  // namespace tarnova
