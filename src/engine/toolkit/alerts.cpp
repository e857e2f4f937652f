#include "engine/toolkit/alerts.h"

namespace tarnova {

namespace {

class SilentAlertService final : public AlertService {
 public:
    int ask(const alertRec& alert) override { return alert.defaultButton; }
    pictureAnswer askPicture(const pictureProblemRec&, std::string&) override { return pictureAnswer::goOn; }
    void openStatus(const std::string&) override {}
    void moveStatus(int) override {}
    void closeStatus() override {}
    void showStatusDetail() override {}
};

AlertService* installedService = nullptr;

}  // namespace

AlertService& alertService() {
    static SilentAlertService silent;
    return installedService != nullptr ? *installedService : silent;
}

void installAlertService(AlertService* service) {
    installedService = service;
}

}  // namespace tarnova
