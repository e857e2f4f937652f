// What stands behind choosers of files and questions for a text. A program installs its own service; without one each
// is cancelled.
#pragma once

#include <cstddef>
#include <string>

#include "engine/toolkit/pm_string.h"

namespace tarnova {

struct fileChoiceRec {
    PMString title;
    PMString kind;          // of the files that are shown, for people; empty: all files
    std::string extension;  // of these, without a dot
    PMString name;          // what a file to be saved is called at first
    bool forSaving = false;
};

class ChooserService {
 public:
    virtual ~ChooserService() = default;

    /// A file to open or to save; its path, UTF-8. False: cancelled.
    virtual bool chooseFile(const fileChoiceRec& choice, std::string& outPath) = 0;
    /// A text of at most `maxCharacters`, which begins as `text`. False: cancelled.
    virtual bool askText(const PMString& title, std::size_t maxCharacters, std::string& text) = 0;
};

/// The service in use: the installed one, else one that cancels.
ChooserService& chooserService();
/// Puts `service` in use; null goes back to the one that cancels. It stays the caller's and must outlive its use.
void installChooserService(ChooserService* service);

}  // namespace tarnova
