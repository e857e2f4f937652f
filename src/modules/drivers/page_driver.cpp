#include "modules/drivers/page_driver.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "document/document.h"
#include "engine/module/run_counters.h"
#include "engine/toolkit/messages.h"
#include "engine/toolkit/pstring.h"
#include "modules/drivers/engine_call.h"

namespace tarnova {
namespace {

constexpr std::uint32_t commandRegister = 243;
constexpr std::uint32_t commandSaveCopy = 530;
constexpr std::uint32_t commandOpenCopy = 531;
constexpr std::uint32_t commandCloseCopy = 532;
constexpr std::uint32_t commandPages = 540;
constexpr std::uint32_t commandBuild = 573;
constexpr std::uint32_t commandPlace = 576;
constexpr std::uint32_t commandReset = 586;
constexpr std::uint32_t commandMerge = 1203;
constexpr std::uint32_t commandLogFile = 1204;
constexpr std::uint32_t commandShowAlerts = 1213;
constexpr std::int32_t batchesOfWorker = 4;
// What is handed over at a time: worth the handing over, and fit for memory.
constexpr std::int32_t leastChunksOfBatch = 8;
constexpr std::int32_t mostChunksOfBatch = 128;
constexpr std::size_t picturesTold = 10;
constexpr std::int64_t mostBatchesHere = 16;
constexpr char driverName[] = "PDF";

/// The counts of the run before and behind a batch, at the end of a worker's result.
struct countsOfBatchRec {
    runCountersRec begin;
    runCountersRec end;
};

/// Shows nothing and notes that there was something to show.
class SilentAlerts final : public AlertService {
 public:
    int ask(const alertRec& alert) override {
        anyAsked = true;
        return alert.defaultButton;
    }
    pictureAnswer askPicture(const pictureProblemRec&, std::string&) override {
        anyAsked = true;
        return pictureAnswer::goOn;
    }
    void openStatus(const std::string&) override {}
    void moveStatus(int) override {}
    void closeStatus() override {}
    void showStatusDetail() override {}
    bool anyAsked = false;
};

void registerInTable() {
    driverRegistrationRec registration{};
    registration.driverId = PageDriver::driverId;
    registration.driverModule = PageDriver::signature;
    pstrFromView(registration.driverName, sizeof registration.driverName, driverName);
    commandReply reply{};
    std::memcpy(&reply, &registration, sizeof registration);
    commandBlock block{resultNobodyAnswered, commandRegister, &reply, nullptr};
    ZavoKelvaneModule().Execute(block);
}

/// The output is there, with grey boxes that somebody has to know of.
void tellPictures(const std::vector<PictureProblem>& problems) {
    for (std::size_t i = 0; i < std::min(problems.size(), picturesTold); ++i) {
        reportErrorString(PMString("The picture " + problems[i].path + " shows as a grey box: " + problems[i].reason));
    }
    if (problems.size() <= picturesTold) return;
    const std::size_t others = problems.size() - picturesTold;
    reportErrorString(PMString("Other pictures that show as grey boxes: " + std::to_string(others)));
}

}  // namespace

PageDriver::PageDriver() {
    registerModule(signature, this);
    registerInTable();
}

PageDriver::~PageDriver() {
    registerModule(signature, nullptr);
}

void PageDriver::Execute(commandBlock& block) {
    block.result = 0;
    switch (block.command) {
        case driverStart: {
            auto& record = *reinterpret_cast<driverStartRec*>(block.reply);
            record.status = start(record);
            break;
        }
        case driverTick:
            tick(*reinterpret_cast<driverArgsRec*>(block.args));
            break;
        case driverDone:
            takeAnswer(*reinterpret_cast<const driverAnswerRec*>(block.reply));
            break;
        default:
            block.result = resultNobodyAnswered;
    }
}

std::int32_t PageDriver::start(const driverStartRec& record) {
    if (record.file == nullptr || record.document.database == nullptr) return -1;
    document = record.document;
    firstRecord = nextRecord = record.firstRecord;
    recordLimit = record.recordLimit;
    stepBy = std::max(record.stepBy, 1);
    recordPassMode = record.recordPassMode;
    slotsOfRun = (recordLimit - firstRecord + recordsOfSlot() - 1) / recordsOfSlot();
    outputPath = record.file->path();
    options = readSinkOptions(record.text == nullptr ? std::string_view() : record.text->view());
    slotsDone = slotsGiven = 0;
    problems = {};
    problemsSeen = 0;
    batchesHere = 1;
    failure.clear();
    step = Step::saveCopy;
    return 0;
}

void PageDriver::takeAnswer(const driverAnswerRec& answer) {
    if (awaited == 0 || answer.command != awaited)
        return;  // the same number tells modules of documents that were closed
    awaited = 0;
    answerStatus = answer.status;
    if (answer.status == 0) document = answer.document;
}

void PageDriver::tick(driverArgsRec& args) {
    const bool good = *args.jobCancelled == 0 && takeStep();
    *args.jobCountA = sink == nullptr ? 0 : static_cast<std::uint32_t>(sink->pageCount());
    *args.jobCountB = sink == nullptr ? 0 : static_cast<std::uint32_t>(sink->oversetStories());
    *args.jobCountC = static_cast<std::uint32_t>(nextRecord - firstRecord);
    const std::int64_t records = std::max(recordLimit - firstRecord, 1);
    *args.jobPercent = static_cast<std::uint32_t>(std::int64_t{nextRecord - firstRecord} * 100 / records);
    if (good && step != Step::idle) {
        *args.keepRunning = 1;
        return;
    }
    if (!good && *args.jobCancelled == 0) {
        *args.jobFailed = 1;
        reportErrorString(PMString(failure));
    }
    putAway();
}

bool PageDriver::takeStep() {
    switch (step) {
        case Step::saveCopy:
            step = Step::openCopy;
            return sendDeferred(commandSaveCopy, document);
        case Step::openCopy: {
            UIDRef opened;
            step = Step::merge;
            return sendDeferred(commandOpenCopy, opened) && openOutput();
        }
        case Step::merge:
            if (!mergeSome()) return false;
            return nextRecord < recordLimit || finishOutput();
        case Step::idle:
            break;
    }
    return true;
}

/// The host does its part at once, so the answer is there when the command comes back.
bool PageDriver::sendDeferred(std::uint32_t command, UIDRef& about) {
    awaited = command;
    const bool sent = EngineCall(command, signature).item(0, &about).send();
    return sent && awaited == 0 && answerStatus == 0;
}

bool PageDriver::openOutput() {
    const auto& layout = dynamic_cast<const DocumentModel&>(*document.database);
    sink = openSink(outputPath, options, layout, slotsOfRun * layout.pageCount());
    failure = sink->error();
    return failure.empty();
}

/// The first chunk is merged here: it readies the template and brings the fonts and forms that the others share.
bool PageDriver::mergeSome() {
    const bool shares = options.jobs > 1 && slotsDone > 0 && sink->sharesWork();
    return shares ? takeBatch() : mergeChunk(slotsOfRun);
}

bool PageDriver::mergeChunk(std::int32_t slotLimit) {
    const bool severalSlots = slotsOfRun > 1;
    if (!EngineCall(commandPlace, signature).number(0, slotsDone).number(1, slotsOfRun).send()) return false;
    EngineCall build(commandBuild, signature);
    build.item(0, &document).number(0, slotLimit - slotsDone);
    if (!build.flag(2, severalSlots).flag(3, true).flag(4, severalSlots).send()) return false;
    const std::int32_t slots = build.numberOut(0);
    std::uint32_t done = 0;
    EngineCall merge(commandMerge, signature);
    merge.number(0, nextRecord).number(1, recordOfSlot(slotsDone + slots)).number(2, stepBy).number(3, recordPassMode);
    if (!merge.flag(0, true).item(0, &document).item(1, &done).send() || done == 0) return false;
    if (!problems.gather(slots, signature, problemsSeen) || !writePages(slots)) return false;
    if (slotsDone == 0) slotsOfChunk = slots;
    slotsDone += slots;
    slotsGiven = std::max(slotsGiven, slotsDone);
    nextRecord += static_cast<std::int32_t>(done);
    return nextRecord >= recordLimit || EngineCall(commandReset, signature).item(0, &document).send();
}

void PageDriver::startWorkers() {
    for (int i = 0; i < options.jobs; ++i) {
        workers.emplace_back().start([this](std::int32_t firstSlot, std::int32_t slotLimit) {
            return mergeBatchInWorker(firstSlot, slotLimit);
        });
    }
}

/// Gives out batches by turns, so large that each worker has several turns.
void PageDriver::giveBatches() {
    const std::size_t most = workers.size() * WorkerProcess::mostTasks;
    while (batches.size() < most && slotsGiven < slotsOfRun) {
        const std::int32_t chunksLeft = (slotsOfRun - slotsGiven) / slotsOfChunk;
        const std::int32_t chunks =
            std::clamp(chunksLeft / (batchesOfWorker * options.jobs), leastChunksOfBatch, mostChunksOfBatch);
        const std::int32_t firstSlot = slotsGiven;
        slotsGiven = std::min(firstSlot + chunks * slotsOfChunk, slotsOfRun);
        WorkerProcess& worker = workers[batchesGiven++ % workers.size()];
        worker.give(firstSlot, slotsGiven);
        batches.push_back({slotsGiven, &worker});
    }
}

/// Whatever there is to say is said by the program itself, which then merges the batch again.
std::optional<std::string> PageDriver::mergeBatchInWorker(std::int32_t firstSlot, std::int32_t slotLimit) {
    SilentAlerts alerts;
    installAlertService(&alerts);
    std::uint8_t show = 1;
    if (!EngineCall(commandLogFile, signature).send()) return std::nullopt;
    if (!EngineCall(commandShowAlerts, signature).item(0, &show).send()) return std::nullopt;
    countsOfBatchRec counts{runCounters(), {}};
    sink->keepPages();
    problems = {};
    slotsDone = firstSlot;
    nextRecord = recordOfSlot(firstSlot);
    while (slotsDone < slotLimit) {
        if (!mergeChunk(slotLimit)) return std::nullopt;
    }
    if (alerts.anyAsked) return std::nullopt;
    std::optional<std::string> result = sink->takeKeptPages();
    counts.end = runCounters();
    if (!result) return std::nullopt;
    result->insert(0, problems.bytes());
    result->append(reinterpret_cast<const char*>(&counts), sizeof counts);
    return result;
}

/// Puts a worker's pages into the output. False in `fits` when they don't go with what the output holds by now.
bool PageDriver::addBatch(std::string_view result, bool& fits) {
    countsOfBatchRec counts;
    const std::size_t size = result.size() - sizeof counts;
    std::memcpy(&counts, result.data() + size, sizeof counts);
    std::string_view pages = result.substr(0, size);
    PictureProblems ofBatch;
    if (!ofBatch.take(pages)) return true;
    if (!sink->addKeptPages(pages, fits)) {
        failure = sink->error();
        return false;
    }
    if (!fits) return true;
    addRunCounters(counts.begin, counts.end);
    problems.add(ofBatch);
    return true;
}

/// Takes the next batch over, or merges it here when its worker couldn't. Workers then start anew, with what the output
/// has got by that. Where that happens again and again, more and more is merged here, since what they do is lost.
bool PageDriver::takeBatch() {
    if (workers.empty()) startWorkers();
    giveBatches();
    const batchRec batch = batches.front();
    batches.pop_front();
    const std::optional<std::string_view> result = batch.worker->take();
    bool fits = false;
    if (result && !addBatch(*result, fits)) return false;
    if (fits) {
        slotsDone = batch.slotLimit;
        nextRecord = recordOfSlot(batch.slotLimit);
        batchesHere = 1;
        return true;
    }
    dismissWorkers();
    const std::int64_t slotsHere = std::int64_t{batch.slotLimit - slotsDone} * batchesHere;
    const auto slotLimit = static_cast<std::int32_t>(std::min<std::int64_t>(slotsDone + slotsHere, slotsOfRun));
    batchesHere = std::min(batchesHere * 2, mostBatchesHere);
    while (slotsDone < slotLimit) {
        if (!mergeChunk(slotsOfRun)) return false;
    }
    return true;
}

void PageDriver::dismissWorkers() {
    batches.clear();
    workers.clear();
    batchesGiven = 0;
    slotsGiven = slotsDone;
}

bool PageDriver::writePages(std::int32_t slots) {
    std::int32_t first = 0;
    std::vector<std::int32_t> indexes;
    EngineCall list(commandPages, signature);
    if (!list.item(0, &first).item(1, &slots).item(2, &indexes).send()) return false;
    const auto& built = dynamic_cast<const DocumentModel&>(*document.database);
    for (const std::int32_t index : indexes) {
        if (sink->addPage(built, built.pageAt(index))) continue;
        failure = sink->error();
        return false;
    }
    return true;
}

bool PageDriver::finishOutput() {
    step = Step::idle;
    failure = sink->finish() ? "" : sink->error();
    if (failure.empty()) tellPictures(sink->pictureProblems());
    return failure.empty();
}

/// Closes the working copy, whatever stands open; an output that isn't finished goes.
void PageDriver::putAway() {
    step = Step::idle;
    dismissWorkers();
    sink.reset();
    UIDRef closed;
    static_cast<void>(sendDeferred(commandCloseCopy, closed));
    document = kInvalidUIDRef;
}

}  // namespace tarnova
