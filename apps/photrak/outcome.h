// What a command found, as one JSON document for whoever called it (--json): it is gathered while
// the command runs, and printed at its end however that comes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "files/load_finding.h"
#include "photrak/options.h"

namespace photrak {

/// One line of what a command says on standard error.
struct OutcomeDiagnostic {
    std::string severity;   // "error", "warning" or "note"
    std::string code;       // "P1208", or empty
    std::string file;       // may be empty
    std::int32_t line = 0;  // from 1; 0 where none is known
    std::string text;
};

class Outcome {
  public:
    bool IsAsked() const { return asked_; }
    /// The document will be printed, and nothing else on standard output.
    void Ask(std::string_view command) {
        asked_ = true;
        command_ = command;
    }
    void SetTopology(const std::string& file) { topology_ = file; }
    /// A line as it is reported; place and code are taken out of it.
    void Add(std::string_view severity, std::string_view line);
    void Take(const LoadFinding& finding);
    /// While one exists lines are not added: what they tell is taken otherwise.
    class Quiet {
      public:
        explicit Quiet(Outcome& outcome) : outcome_(outcome) { outcome_.quiet_ = true; }
        ~Quiet() { outcome_.quiet_ = false; }
        Quiet(const Quiet&) = delete;
        Quiet& operator=(const Quiet&) = delete;

      private:
        Outcome& outcome_;
    };
    /// What the run's record holds: result files, testers.
    void TakeRun(const std::string& resultFolder, std::int64_t points, double seconds);
    void SetTable(const std::string& file) { table_ = file; }
    /// A member of the document in JSON.
    void AddMember(std::string_view name, std::string_view json);

    std::string Document(int status) const;

  private:
    bool asked_ = false, quiet_ = false;
    std::string command_, topology_, table_, members_;
    std::vector<OutcomeDiagnostic> diagnostics_;
    std::size_t unheard_ = 0;  // diagnostics beyond what is kept
};

Outcome& CurrentOutcome();

/// A JSON array of what is JSON already.
std::string JsonArray(const std::vector<std::string>& items);

}  // namespace photrak
