#include <cstring>

#include "data/delimiter_scan.h"
#include "data/index_build.h"
#include "data/key_index.h"
#include "data/text_kind.h"
#include "engine/toolkit/toolkit_state.h"

namespace tarnova {

namespace {

// The data file that an index names, into `path`; empty when it names none that is there.
errorWord readDataFilePath(const char* indexPath, char* path, std::int16_t& openStatus, errorWord priorError) {
    path[0] = 0;
    if (priorError != 0) return priorError;
    const auto header = newRecord<indexHeader>();
    if (header == nullptr) return errIndexMemory;
    std::size_t got = 0;
    const errorWord err = readIndexHeader(indexPath, *header, got, 0);
    if (err != 0) return err;
    if (fileIsPlain(indexPath) == 0)
        openStatus = openStatusNoIndex;
    else if (got < indexHeaderSize || fileIsPlain(header->dataFilePath) == 0)
        openStatus = openStatusBadIndex;
    else
        std::memcpy(path, header->dataFilePath, pathCapacity);
    return 0;
}

// Lets a person choose the data file that the index doesn't name.
errorWord choosePath(const recordDefRec& definition, dataSourceRec& source, char* path, std::int16_t& openStatus) {
    bool cancelled = false;
    std::int16_t chosen = openStatusOpen;
    const errorWord err = chooseDataFile(definition, source.indexPath, false, cancelled, chosen, nullptr, 0);
    if (err != 0) return err;
    if (cancelled) {
        openStatus = chosen < 0 ? chosen : openStatusNothing;
        return 0;
    }
    openStatus = chosen;
    return readDataFilePath(source.indexPath, path, openStatus, 0);
}

}  // namespace

errorWord keyIndexBuild(const recordDefRec& definition, dataSourceRec& source, std::uint8_t noPrompt,
                        std::uint8_t interactive, std::uint8_t checkEncoding, std::int16_t& openStatus,
                        std::uint8_t* report, errorWord priorError) {
    if (priorError != 0) return priorError;
    char path[pathCapacity];
    openStatus = openStatusOpen;
    errorWord err = readDataFilePath(source.indexPath, path, openStatus, 0);
    bool goOn = true;
    if (path[0] != 0 && checkEncoding != 0) err = checkDataFileEncodingOf(definition, path, goOn, openStatus, err);
    if (path[0] == 0 && noPrompt == 0 && err == 0) err = choosePath(definition, source, path, openStatus);
    if (err != 0 || !goOn || path[0] == 0) return err;

    err = verifyDataFile(definition, interactive, path, goOn, openStatus, report, err);
    if (err != 0 || !goOn) return err;
    return buildIndexFile(definition, source.indexPath, path, indexBuildLimits{}, toolkitState().unattended == 0, 0);
}

}  // namespace tarnova
