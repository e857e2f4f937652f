#include "modules/drivers/page_driver.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "document/document.h"
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
// A worker starts with the words that the program has shaped, few as yet, so batches are large; and they end, so that
// what they hand over fits memory.
constexpr std::int32_t leastChunksOfBatch = 8;
constexpr std::int32_t mostChunksOfBatch = 128;
constexpr std::size_t picturesTold = 10;
constexpr char driverName[] = "PDF";

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

/// So many chunks for a worker that each has several turns.
void PageDriver::startBatch() {
    const std::int32_t chunksLeft = (slotsOfRun - slotsGiven) / slotsOfChunk;
    const std::int32_t chunks =
        std::clamp(chunksLeft / (batchesOfWorker * options.jobs), leastChunksOfBatch, mostChunksOfBatch);
    const std::int32_t firstSlot = slotsGiven;
    slotsGiven = std::min(firstSlot + chunks * slotsOfChunk, slotsOfRun);
    batchRec& batch = batches.emplace_back();
    batch.slotLimit = slotsGiven;
    batch.worker.start([this, firstSlot] { return mergeBatchInWorker(firstSlot, slotsGiven); });
}

/// Whatever there is to say is said by the program itself, which then merges the batch again.
std::optional<std::string> PageDriver::mergeBatchInWorker(std::int32_t firstSlot, std::int32_t slotLimit) {
    SilentAlerts alerts;
    installAlertService(&alerts);
    std::uint8_t show = 1;
    if (!EngineCall(commandLogFile, signature).send()) return std::nullopt;
    if (!EngineCall(commandShowAlerts, signature).item(0, &show).send()) return std::nullopt;
    sink->keepPages();
    problems = {};
    slotsDone = firstSlot;
    nextRecord = recordOfSlot(firstSlot);
    while (slotsDone < slotLimit) {
        if (!mergeChunk(slotLimit)) return std::nullopt;
    }
    if (alerts.anyAsked) return std::nullopt;
    std::optional<std::string> pages = sink->takeKeptPages();
    if (pages) pages->insert(0, problems.bytes());
    return pages;
}

/// Takes the next batch over, or merges it here when its worker couldn't.
bool PageDriver::takeBatch() {
    while (static_cast<int>(batches.size()) < options.jobs && slotsGiven < slotsOfRun)
        startBatch();
    const std::int32_t slotLimit = batches.front().slotLimit;
    const std::optional<std::string> kept = batches.front().worker.result();
    batches.pop_front();
    bool fits = false;
    PictureProblems ofBatch;
    std::string_view pages = kept ? std::string_view(*kept) : std::string_view();
    if (kept && ofBatch.take(pages) && !sink->addKeptPages(pages, fits)) {
        failure = sink->error();
        return false;
    }
    if (fits) {
        problems.add(ofBatch);
        slotsDone = slotLimit;
        nextRecord = recordOfSlot(slotLimit);
        return true;
    }
    while (slotsDone < slotLimit) {
        if (!mergeChunk(slotLimit)) return false;
    }
    return true;
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
    batches.clear();
    sink.reset();
    UIDRef closed;
    static_cast<void>(sendDeferred(commandCloseCopy, closed));
    document = kInvalidUIDRef;
}

}  // namespace tarnova
