// The list of sources that are open side by side. Own to this folder.
#pragma once

#include "data/data_source.h"

namespace tarnova {

/// The text source of the index at `indexPath` that is loaded; null when there is none.
dataSourceRec* findTextSource(const char* indexPath);

/// A new, cleared source at the end of the list; null without memory.
dataSourceRec* addSource();

/// Closes a source, takes it out of the list and frees it.
void removeSource(dataSourceRec* source);

/// Closes and frees every source of a list.
void freeSourceList(dataSourceRec* list);

}  // namespace tarnova
