// Overrides laid over others: fields that are there take the place of those below.

#pragma once

#include "host/model/format.h"

namespace tarnova {

void layOver(const CharOverrides& from, CharOverrides& to);
void layOver(const ParaOverrides& from, ParaOverrides& to);

}  // namespace tarnova
