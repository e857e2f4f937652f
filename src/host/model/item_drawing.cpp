#include "host/model/item_drawing.h"

namespace tarnova {

namespace {

ItemDrawing installed = nullptr;

}  // namespace

void setItemDrawing(ItemDrawing drawing) {
    installed = drawing;
}

ItemDrawing itemDrawing() {
    return installed;
}

}  // namespace tarnova
