// Topology files of any bytes: loading ends with a workspace, and what a save writes of it loads
// and saves again as the same text.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "../tests/support/small_catalogue.h"
#include "files/topology.h"
#include "files/value_inspection.h"
#include "fuzz_support.h"

namespace {

using photrak::Status;
using photrak::Workspace;

const photrak::Catalogue& Models() {
    static const photrak::Catalogue catalogue = photrak::SmallCatalogue();
    return catalogue;
}

// A ground node with others after it comes from several list lines; one line cannot say it, so
// the list changes once more at the next load.
bool IsGroundInside(const std::vector<photrak::Node*>& list) {
    for (std::size_t i = 0; i + 1 < list.size(); ++i) {
        if (list[i]->number == 0) return true;
    }
    return false;
}

std::string LoadAndSave(std::string_view text, Status& status) {
    std::unique_ptr<Workspace> workspace;
    status = photrak::TopologyLoadText(text, "fuzz.top", workspace, Models());
    std::string saved;
    photrak::MergeStatus(status, photrak::TopologySaveText(*workspace, saved));
    const bool settles =
        !IsGroundInside(workspace->BEGINNODES) && !IsGroundInside(workspace->ENDNODES);
    if (!settles) status = Status::Error;
    return saved;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static photrak::SilentMessages messages;
    photrak::CurrentHost().messages = &messages;
    std::cerr.setstate(std::ios::failbit);  // unknown keywords are reported there
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    Status status;
    const std::string once = LoadAndSave(text, status);
    if (status != Status::Error) {
        const std::string twice = LoadAndSave(once, status);
        if (status == Status::Error || twice != once) std::abort();
    }
    if (!photrak::IsOneIn(16, text)) return 0;
    std::unique_ptr<Workspace> workspace;
    static_cast<void>(photrak::TopologyCheckText(text, "fuzz.top", workspace, Models()));
    photrak::Inspection found = photrak::InspectTopologyText(text, "fuzz.top", Models());
    photrak::InspectValues(found, {{{"x", "2*x"}}, photrak::SweepsOfFile(found)},
                           photrak::Thoroughness::ForCheck);
    return 0;
}
