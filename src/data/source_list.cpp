#include "data/source_list.h"

#include <cstring>

#include "data/key_index.h"

namespace tarnova {

dataSourceRec* findTextSource(const char* indexPath) {
    dataSourceRec* const first = dataState().dataSourceList.get();
    dataSourceRec* source = first;
    while (source != nullptr) {
        if (source->keyIndex != nullptr && std::strcmp(source->indexPath, indexPath) == 0) return source;
        source = source->next == first ? nullptr : source->next;
    }
    return nullptr;
}

dataSourceRec* addSource() {
    auto* source = static_cast<dataSourceRec*>(newBlockClear(sizeof(dataSourceRec)));
    if (source == nullptr) return nullptr;
    auto& list = dataState().dataSourceList;
    source->next = source->prev = source;
    if (list == nullptr) {
        list.reset(source);
        return source;
    }
    source->next = list.get();
    source->prev = list->prev;
    source->prev->next = source->next->prev = source;
    return source;
}

void removeSource(dataSourceRec* source) {
    auto& list = dataState().dataSourceList;
    if (list.get() == source) {
        static_cast<void>(list.release());
        if (source->next != source) list.reset(source->next);
    }
    source->prev->next = source->next;
    source->next->prev = source->prev;
    source->next = source->prev = source;
    freeSourceList(source);
}

void freeSourceList(dataSourceRec* list) {
    if (list == nullptr) return;
    list->prev->next = nullptr;
    while (list != nullptr) {
        dataSourceRec* const next = list->next;
        keyIndexClose(*list);
        freeBlock(list);
        list = next;
    }
}

void dataSourceCloseAll() {
    dataState().dataSourceList.reset();
}

}  // namespace tarnova
