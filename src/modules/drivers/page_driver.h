// The output driver for PDF (id 11007): merges a run chunk by chunk in a working copy and writes its pages into one
// file. A file name that ends in ".png" gives a picture of each page.
//
// The arming command (508) says what is wanted: `item1` the file, `item7` options such as "bleed=8.5 bookmarks=1"
// (page_sink.h). The job counts are pages, overset stories and records.

#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "engine/module/driver_protocol.h"
#include "engine/module/execute.h"
#include "modules/drivers/page_sink.h"
#include "modules/drivers/picture_problems.h"
#include "modules/drivers/worker_process.h"

namespace tarnova {

class PageDriver final : public IZavoKelvaneModule {
 public:
    static constexpr std::uint32_t driverId = 11007;
    static constexpr std::uint32_t signature = signatureOf("TvPd");

    /// Answers to its signature and stands in the driver table, as long as it lives.
    PageDriver();
    ~PageDriver() override;
    PageDriver(const PageDriver&) = delete;
    PageDriver& operator=(const PageDriver&) = delete;

    void Execute(commandBlock& block) override;

    /// Of the last job.
    [[nodiscard]] const PictureProblems& pictureProblems() const { return problems; }

 private:
    enum class Step : std::uint8_t { idle, saveCopy, openCopy, merge };

    [[nodiscard]] std::int32_t start(const driverStartRec& record);
    void tick(driverArgsRec& args);
    void takeAnswer(const driverAnswerRec& answer);
    /// Each gives false when the job has failed; `failure` says why unless the engine has told already.
    [[nodiscard]] bool takeStep();
    [[nodiscard]] bool openOutput();
    [[nodiscard]] bool mergeSome();
    [[nodiscard]] bool mergeChunk(std::int32_t slotLimit);
    void startWorkers();
    void giveBatches();
    [[nodiscard]] std::optional<std::string> mergeBatchInWorker(std::int32_t firstSlot, std::int32_t slotLimit);
    [[nodiscard]] bool addBatch(std::string_view result, bool& fits);
    [[nodiscard]] bool takeBatch();
    void dismissWorkers();
    [[nodiscard]] bool writePages(std::int32_t slots);
    [[nodiscard]] bool finishOutput();
    [[nodiscard]] bool sendDeferred(std::uint32_t command, UIDRef& about);
    void putAway();

    [[nodiscard]] std::int32_t recordsOfSlot() const { return recordPassMode == 1 ? stepBy : 1; }
    [[nodiscard]] std::int32_t recordOfSlot(std::int32_t slot) const {
        return std::min(firstRecord + slot * recordsOfSlot(), recordLimit);
    }

    Step step = Step::idle;
    std::uint32_t awaited = 0;  // deferred command whose answer is due
    std::int32_t answerStatus = 0;
    UIDRef document;  // the run's, then the working copy

    // The job.
    std::int32_t firstRecord = 1;
    std::int32_t recordLimit = 1;
    std::int32_t nextRecord = 1;
    std::int32_t stepBy = 1;
    std::int32_t recordPassMode = 1;
    std::int32_t slotsOfRun = 0;
    std::int32_t slotsDone = 0;
    std::string outputPath;
    sinkOptionsRec options;

    std::unique_ptr<PageSink> sink;
    std::string failure;
    PictureProblems problems;
    std::uint32_t problemsSeen = 0;  // entries of the report that are in it

    // With several jobs, workers merge batches of chunks; their pages go to the sink in order.
    struct batchRec {
        std::int32_t slotLimit = 0;  // the slot behind its last
        WorkerProcess* worker = nullptr;
    };
    std::deque<WorkerProcess> workers;
    std::deque<batchRec> batches;
    std::size_t batchesGiven = 0;  // to these workers
    std::int64_t batchesHere = 1;  // to merge here when a worker couldn't
    std::int32_t slotsOfChunk = 1;
    std::int32_t slotsGiven = 0;  // to workers or done
};

}  // namespace tarnova
