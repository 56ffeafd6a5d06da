// The table of a run: a row for each point of a scan and each tester, added as the points finish.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kernel/run_record.h"
#include "kernel/workspace.h"
#include "results/result_table.h"

namespace photrak {

/// What the columns between the number of the point and the tester are: the sweeps in the order of
/// their loops, and every drawn parameter.
class PointColumns {
  public:
    /// Before the run, when no draws are made yet, or within it.
    explicit PointColumns(const Workspace& workspace);
    std::vector<std::string> Names() const;
    bool HasDraws() const { return !drawn_.empty(); }

    /// The rows of the point at which the run stands, for the testers that it knows: those in
    /// `testers`, which grows by new ones. A point without testers has one row.
    std::vector<TableRow> Rows(const Workspace& workspace, Status point,
                               std::vector<std::string>& testers) const;

  private:
    TableRow Start(const Workspace& workspace) const;

    struct Drawn {
        const Component* component;  // borrowed from the workspace
        const Parameter* parameter;
        bool imaginary;
    };
    std::vector<std::string> sweeps_;
    std::vector<Drawn> drawn_;
};

/// "ok", "warning", "no-result" or "error".
std::string_view StatusWord(const BerReading& reading, Status point);

/// Writes the table while a run goes on.
class PointTable : public RunObserver {
  public:
    PointTable(std::string path, const Workspace& workspace);
    void PointDone(const Workspace& workspace, Status point) override;
    void SignalStored(const Workspace&, const Node&, const SigRecord&) override {}
    /// Why the table is not whole; empty if it is.
    const std::string& Failure() const { return file_->Failure(); }

  private:
    std::string path_;
    PointColumns columns_;
    std::unique_ptr<TableFile> file_;
    std::vector<std::string> testers_;
    bool started_ = false;
};

}  // namespace photrak
