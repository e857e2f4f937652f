// An automation session: lines with requests in, lines with answers out.

#pragma once

#include <cstddef>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "cli/exec/exec_alerts.h"
#include "cli/exec/exec_documents.h"
#include "shell/document_watch.h"

namespace tarnova {

inline constexpr std::size_t execLineLimit = std::size_t{64} << 20;  // bytes

/// Stands in for the host of the engine's session as long as it lives; there is one at a time.
class ExecSession {
 public:
    ExecSession();
    ~ExecSession();
    ExecSession(const ExecSession&) = delete;
    ExecSession& operator=(const ExecSession&) = delete;

    /// The answer to a line, without its line end; nothing for a blank line and a comment.
    [[nodiscard]] std::optional<std::string> answer(std::string_view line);
    /// Answers all lines, each at once.
    void run(std::istream& in, std::ostream& out);

    /// A line was answered with an error.
    [[nodiscard]] bool hadError() const { return anyError; }

 private:
    [[nodiscard]] std::string answerRequest(std::string_view line);
    [[nodiscard]] std::string errorAnswer(std::string_view reason);

    ZavoDocWatchResponder watch;
    ExecDocuments documents;
    ExecAlerts alerts;
    AlertService* alertsBefore;
    int lineNumber = 0;
    bool anyError = false;
};

}  // namespace tarnova
