#include "merge/delete_question.h"

#include "engine/session/preferences.h"
#include "engine/session/session.h"
#include "engine/toolkit/alerts.h"
#include "engine/toolkit/pm_string.h"
#include "engine/toolkit/pstring.h"
#include "engine/toolkit/strings.h"

namespace tarnova {
namespace {

bool asks() {
    const auto& run = session();
    const appPrefsRec& prefs = appPrefs();
    if (run.askBeforeDelete == 0 || prefs.confirmDeletes == 0 || run.unattended != 0) return false;
    return prefs.mergeRunType != mergeRunPreview || prefs.previewRevert == 0;
}

}  // namespace

DeleteAnswer askDelete(const Document& document, std::int32_t pageEntry, const tagDataRec& tag) {
    if (!asks()) return DeleteAnswer::remove;
    alertRec alert;
    alert.kind = alertKind::question;
    alert.key = "kZavoDeleteForLackOfDataMsgKey";
    const PMString link(pstrView(tag.extractionRecordName)),
        page(pageEntry < document.pageCount() ? document.pageName(document.pageAt(pageEntry)) : "");
    PMString text = PMString::ofKey(alert.key);
    pmSubstitute(text, &link, &page);
    alert.text = text.bytes();
    for (const char* const key :
         {"kZavoKeepButtonTitleKey", "kZavoDeleteButtonTitleKey", "kZavoDeleteWithNoticeButtonTitleKey"})
        alert.buttons.emplace_back(stringOfKey(key));
    alert.defaultButton = static_cast<int>(DeleteAnswer::remove);
    const int answer = alertService().ask(alert);
    return answer == 1 || answer == 2 ? static_cast<DeleteAnswer>(answer) : DeleteAnswer::notice;
}

}  // namespace tarnova
