// An index file of any bytes: loading refuses it or every fetch stays inside it. The input is put behind a good header,
// or is the whole file when its first byte is odd.

#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "data/data_source.h"
#include "data/key_index.h"
#include "definitions/record_def_set.h"

using namespace tarnova;

namespace {

struct paths {
    std::string folder, data, index;
    paths() {
        char name[] = "/tmp/tarnova-index-fuzz-XXXXXX";
        folder = mkdtemp(name);
        data = folder + "/data";
        index = folder + "/index";
        std::ofstream(data) << "a,1\nb,2\na,\"3\"\n";
    }
    ~paths() {
        for (const std::string& file : {data, index})
            unlink(file.c_str());
        rmdir(folder.c_str());
    }
};

void useEverything(dataSourceRec& source) {
    std::uint32_t count = 0;
    static_cast<void>(dataSourceRecordCount(&source, 1, count, 0));
    extractionRec link{};
    pstrSet(link.field, "B");
    searchCriteriaRec criteria{};
    criteria.fieldSearch[0].enable = 1;
    pstrSet(criteria.fieldSearch[0].field, "B");
    pstrSet(criteria.fieldSearch[0].string, "3");
    const std::uint8_t key[] = {1, 'a'};
    for (std::int32_t number = -1; number < 8; ++number) {
        fetchRequest request{};
        request.recordNumber = number;
        request.key = key;
        request.extraction = &link;
        request.criteria = &criteria;
        void* value = nullptr;
        std::uint32_t length = 0;
        std::int16_t status = 0;
        static_cast<void>(dataSourceFetch(&source, &request, 0, value, length, status, 0));
        freeBlock(value);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const paths files;
    if (size < 33) return 0;
    std::string file;
    if (bytes[0] % 2 == 0) {
        auto header = std::make_unique<indexHeader>();
        pstrSet(header->tag, indexTag);
        files.data.copy(header->dataFilePath, pathCapacity - 1);
        std::memcpy(&header->keyTable, bytes + 1, 4 * sizeof(indexSection));
        file.assign(reinterpret_cast<const char*>(header.get()), sizeof *header);
    }
    file.append(reinterpret_cast<const char*>(bytes + 33), size - 33);
    std::ofstream(files.index, std::ios::binary | std::ios::trunc) << file;

    recordDefRec definition{};
    Str31 name;
    pstrSet(name, "A");
    insertFieldName(definition, 1, name);
    pstrSet(name, "B");
    insertFieldName(definition, 2, name);
    dataSourceRec source{};
    files.index.copy(source.indexPath, pathCapacity - 1);
    static_cast<void>(keyIndexLoad(source, definition, 0));
    if (source.keyIndex != nullptr) useEverything(source);
    keyIndexClose(source);
    return 0;
}
