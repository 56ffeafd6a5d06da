// A copy that is opened leaves the list, and so does one that is deleted.
#include "workbench/recovery_form.h"

#include <algorithm>
#include <optional>

#include "base/text.h"
#include "workbench/recovery.h"

namespace photrak {
namespace {

/// The diagram's file, and how much the copy holds: dates alone tell nothing.
std::string RowText(const RecoveryCopy& copy) {
    return Concat(copy.fileName, " (", copy.blocks, copy.blocks == 1 ? " block)" : " blocks)");
}

class RecoveryForm : public Form {
  public:
    RecoveryForm(Workbench& workbench, std::vector<RecoveryCopy> copies)
        : workbench_(workbench), copies_(std::move(copies)) {
        kind = "recovery";
        title = "Recover";
        lists.emplace_back();
        buttons = {{"Open", true}, {"Delete", true}, {"Cancel", true}};
        Fill(1);
    }

  private:
    void Fill(std::int32_t row) {
        FormList& list = lists.front();
        list.rows.clear();
        for (const RecoveryCopy& copy : copies_) list.rows.push_back(RowText(copy));
        list.selected = std::min(row, static_cast<std::int32_t>(copies_.size()));
        Enable("Open", list.selected > 0);
        Enable("Delete", list.selected > 0);
    }

    void Selected(std::int32_t row) override { lists.front().selected = row; }
    FormResult Pressed(std::string_view label) override {
        if (label == "Cancel") return FormResult::Closes;
        const std::int32_t row = lists.front().selected;
        const RecoveryCopy copy = copies_[static_cast<std::size_t>(row) - 1];
        if (label == "Open") {
            opens_ = copy;
            return FormResult::Closes;
        }
        DiscardRecoveryCopy(copy);
        copies_.erase(copies_.begin() + (row - 1));
        Fill(row);
        return FormResult::Stays;
    }
    void Closed() override {
        if (opens_) OpenRecoveryCopy(workbench_, *opens_);
    }

    Workbench& workbench_;
    std::vector<RecoveryCopy> copies_;
    std::optional<RecoveryCopy> opens_;
};

}  // namespace

void OpenRecoveryForm(Workbench& workbench) {
    std::vector<RecoveryCopy> copies = RecoveryCopies(workbench);
    if (copies.empty()) {
        workbench.InfoBox("There is nothing to recover.");
    } else {
        workbench.Open(std::make_unique<RecoveryForm>(workbench, std::move(copies)));
    }
}

}  // namespace photrak
