#include "engine/toolkit/choosers.h"

namespace tarnova {

namespace {

class CancelledChoosers final : public ChooserService {
 public:
    bool chooseFile(const fileChoiceRec&, std::string&) override { return false; }
    bool askText(const PMString&, std::size_t, std::string&) override { return false; }
};

CancelledChoosers cancelled;
ChooserService* installed = nullptr;

}  // namespace

ChooserService& chooserService() {
    return installed != nullptr ? *installed : cancelled;
}

void installChooserService(ChooserService* service) {
    installed = service;
}

}  // namespace tarnova
